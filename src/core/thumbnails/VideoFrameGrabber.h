#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

#include <atomic>

// Still frames of a video file through FFmpeg, scaled to fit a size. The only file that sees
// FFmpeg types; safe to call from several threads at once (one grab per call).
namespace VideoFrameGrabber {

// The thumbnail frame: the first frame that is not black from about 10% of the duration on.
QImage thumbnailFrame(const QByteArray &nativePath, QSize fitSize, QString *error = nullptr);

// Frames at `seconds` (one image per time; a null image where no frame could be had). Stops
// early, with what it has, when `cancelled` becomes true.
QList<QImage> framesAt(const QByteArray &nativePath, const QList<double> &seconds, QSize fitSize,
                       const std::atomic<bool> *cancelled = nullptr, QString *error = nullptr);

// The duration in seconds; 0 when unknown.
double duration(const QByteArray &nativePath, QString *error = nullptr);

} // namespace VideoFrameGrabber
