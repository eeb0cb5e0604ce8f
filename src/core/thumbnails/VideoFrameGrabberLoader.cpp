#include "core/thumbnails/VideoFrameGrabber.h"
#include "core/thumbnails/VideoFrameGrabberExports.h"

#include "core/app/Log.h"

#include <QCoreApplication>
#include <QFileInfo>
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
    QStringList candidates;
    if (const QString chosen = qEnvironmentVariable("PIXCOVE_VIDEO_MODULE"); !chosen.isEmpty())
        candidates.append(chosen);
    if (QCoreApplication::instance())
        candidates.append(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/pixcove/pixcove_video.so"));
    candidates.append(QStringLiteral(PIXCOVE_VIDEO_MODULE_INSTALLED));
    candidates.append(QStringLiteral(PIXCOVE_VIDEO_MODULE_BUILD));
    VideoModule module;
    for (const QString &path : std::as_const(candidates)) {
        if (path.isEmpty() || !QFileInfo::exists(path))
            continue;
        auto *library = new QLibrary(path); // kept loaded for the rest of the run
        if (!library->load()) {
            module.error = library->errorString();
            delete library;
            continue;
        }
        module.thumbnailFrame =
            reinterpret_cast<PixcoveVideoThumbnailFrame>(library->resolve("pixcove_video_thumbnail_frame"));
        module.framesAt = reinterpret_cast<PixcoveVideoFramesAt>(library->resolve("pixcove_video_frames_at"));
        module.duration = reinterpret_cast<PixcoveVideoDuration>(library->resolve("pixcove_video_duration"));
        if (module.thumbnailFrame && module.framesAt && module.duration)
            return module;
        module = {};
        module.error = QStringLiteral("%1 lacks its entry points").arg(path);
    }
    if (module.error.isEmpty())
        module.error = QStringLiteral("the video module is not installed");
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
