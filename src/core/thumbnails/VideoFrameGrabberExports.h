#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

#include <atomic>

// The entry points of the video module (FFmpeg and its hundred libraries, loaded on the first
// video rather than at every start). Plain names, looked up by the loader.
extern "C" {
using PixcoveVideoThumbnailFrame = QImage (*)(const QByteArray &nativePath, QSize fitSize, QString *error);
using PixcoveVideoFramesAt = QList<QImage> (*)(const QByteArray &nativePath, const QList<double> &seconds,
                                               QSize fitSize, const std::atomic<bool> *cancelled, QString *error);
using PixcoveVideoDuration = double (*)(const QByteArray &nativePath, QString *error);
}
