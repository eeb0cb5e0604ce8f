#pragma once

#include <QImage>
#include <QSize>

class QVideoFrame;

struct SwsContext;

// Turns decoded pictures into images of the size they are shown at, in one pass of libswscale
// (colour conversion and scaling together) on the thread that calls it. Qt's own conversion goes
// through the GPU when it can, which on a software-rendered display costs more than the decode;
// the formats libswscale does not know are left to Qt. One converter per thread.
class VideoFrameConverter
{
public:
    VideoFrameConverter() = default;
    ~VideoFrameConverter();
    VideoFrameConverter(const VideoFrameConverter &) = delete;
    VideoFrameConverter &operator=(const VideoFrameConverter &) = delete;

    // `frame` scaled to fit `fitSize` (keeping its shape; its own size when `fitSize` is empty).
    QImage convert(const QVideoFrame &frame, QSize fitSize);

private:
    SwsContext *m_context = nullptr;
};
