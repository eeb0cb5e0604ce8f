#include "core/thumbnails/VideoFrameGrabber.h"
#include "core/thumbnails/VideoFrameGrabberExports.h"

#include "core/app/Log.h"
#include "core/app/ModuleLoader.h"

#include <QLibrary>

#ifndef PIXCOVE_VIDEO_MODULE_BUILD
#define PIXCOVE_VIDEO_MODULE_BUILD ""
#endif
#ifndef PIXCOVE_VIDEO_MODULE_INSTALLED
#define PIXCOVE_VIDEO_MODULE_INSTALLED ""
#endif

// FFmpeg lives in a module of its own: linked into the program it would load about 120 shared
// libraries at every start, which costs more than building the main window. The module is loaded
// once, on the first video, from beside the program when installed, else from the build tree.
namespace {

struct VideoModule
{
    PixcoveVideoThumbnailFrame thumbnailFrame = nullptr;
    PixcoveVideoFramesAt framesAt = nullptr;
    PixcoveVideoDuration duration = nullptr;
    QString error;
};

VideoModule loadModule()
{
    VideoModule module;
    const auto resolve = [&module](QLibrary &library) {
        module.thumbnailFrame =
            reinterpret_cast<PixcoveVideoThumbnailFrame>(library.resolve("pixcove_video_thumbnail_frame"));
        module.framesAt = reinterpret_cast<PixcoveVideoFramesAt>(library.resolve("pixcove_video_frames_at"));
        module.duration = reinterpret_cast<PixcoveVideoDuration>(library.resolve("pixcove_video_duration"));
        return module.thumbnailFrame && module.framesAt && module.duration;
    };
    if (ModuleLoader::load({"PIXCOVE_VIDEO_MODULE", "pixcove_video.so", PIXCOVE_VIDEO_MODULE_INSTALLED,
                            PIXCOVE_VIDEO_MODULE_BUILD},
                           resolve, &module.error))
        return module;
    const QString error = module.error.isEmpty() ? QStringLiteral("the video module is not installed") : module.error;
    module = {};
    module.error = error;
    logError(QStringLiteral("Videos cannot be read: %1").arg(module.error));
    return module;
}

// Made once, by whichever thread needs it first (function statics are thread-safe).
const VideoModule &videoModule()
{
    static const VideoModule module = loadModule();
    return module;
}

} // namespace

namespace VideoFrameGrabber {

QImage thumbnailFrame(const QByteArray &nativePath, QSize fitSize, QString *error)
{
    const VideoModule &module = videoModule();
    if (!module.thumbnailFrame) {
        if (error)
            *error = module.error;
        return {};
    }
    return module.thumbnailFrame(nativePath, fitSize, error);
}

QList<QImage> framesAt(const QByteArray &nativePath, const QList<double> &seconds, QSize fitSize,
                       const std::atomic<bool> *cancelled, QString *error)
{
    const VideoModule &module = videoModule();
    if (!module.framesAt) {
        if (error)
            *error = module.error;
        return QList<QImage>(seconds.size());
    }
    return module.framesAt(nativePath, seconds, fitSize, cancelled, error);
}

double duration(const QByteArray &nativePath, QString *error)
{
    const VideoModule &module = videoModule();
    if (!module.duration) {
        if (error)
            *error = module.error;
        return 0;
    }
    return module.duration(nativePath, error);
}

} // namespace VideoFrameGrabber
