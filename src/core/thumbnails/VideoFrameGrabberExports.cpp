// Built into the video module only, beside VideoFrameGrabber.cpp.
#include "core/thumbnails/VideoFrameGrabberExports.h"
#include "core/thumbnails/VideoFrameGrabber.h"

extern "C" {

Q_DECL_EXPORT QImage pixcove_video_thumbnail_frame(const QByteArray &nativePath, QSize fitSize, QString *error)
{
    return VideoFrameGrabber::thumbnailFrame(nativePath, fitSize, error);
}

Q_DECL_EXPORT QList<QImage> pixcove_video_frames_at(const QByteArray &nativePath, const QList<double> &seconds,
                                                    QSize fitSize, const std::atomic<bool> *cancelled, QString *error)
{
    return VideoFrameGrabber::framesAt(nativePath, seconds, fitSize, cancelled, error);
}

Q_DECL_EXPORT double pixcove_video_duration(const QByteArray &nativePath, QString *error)
{
    return VideoFrameGrabber::duration(nativePath, error);
}

} // extern "C"
