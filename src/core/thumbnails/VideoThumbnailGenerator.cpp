#include "core/thumbnails/VideoThumbnailGenerator.h"

#include "core/app/Dispatch.h"
#include "core/thumbnails/VideoFrameGrabber.h"

#include <QPointer>

#include <algorithm>

VideoThumbnailGenerator::VideoThumbnailGenerator(QObject *parent)
    : QObject(parent)
{ }

VideoThumbnailGenerator &VideoThumbnailGenerator::shared()
{
    // Never deleted: grabs may still run while static destructors run.
    static VideoThumbnailGenerator *generator = new VideoThumbnailGenerator;
    return *generator;
}

VideoThumbnailGenerator::RequestPtr VideoThumbnailGenerator::generate(const QByteArray &nativePath,
                                                                      const QList<double> &seconds, QSize maxSize,
                                                                      Handler handler)
{
    auto request = std::make_shared<Request>();
    QPointer<VideoThumbnailGenerator> self = this;
    runOnPool(QStringLiteral("Video Thumbnail Generator"), [self, request, nativePath, seconds, maxSize, handler] {
        if (request->isCancelled())
            return;
        QString message;
        QList<QImage> frames =
            VideoFrameGrabber::framesAt(nativePath, seconds, maxSize, &request->m_cancelled, &message);
        std::optional<ThumbnailError> error;
        if (std::all_of(frames.cbegin(), frames.cend(), [](const QImage &frame) { return frame.isNull(); })
            && !seconds.isEmpty())
            error = ThumbnailError{QStringLiteral("VideoThumbnailGenerator"), 1, message};
        if (!self)
            return;
        postTo(self, [request, handler, frames = std::move(frames), error] {
            if (!request->isCancelled())
                handler(frames, error);
        });
    });
    return request;
}
