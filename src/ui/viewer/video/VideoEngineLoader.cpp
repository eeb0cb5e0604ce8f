#include "ui/viewer/video/VideoEngineLoader.h"

#include "ui/viewer/video/VideoEngine.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/app/ModuleLoader.h"

#include <QCoreApplication>
#include <QHash>
#include <QLibrary>

#include <atomic>

#ifndef PIXCOVE_QTMEDIA_MODULE_BUILD
#define PIXCOVE_QTMEDIA_MODULE_BUILD ""
#endif
#ifndef PIXCOVE_QTMEDIA_MODULE_INSTALLED
#define PIXCOVE_QTMEDIA_MODULE_INSTALLED ""
#endif
#ifndef PIXCOVE_VLC_MODULE_BUILD
#define PIXCOVE_VLC_MODULE_BUILD ""
#endif
#ifndef PIXCOVE_VLC_MODULE_INSTALLED
#define PIXCOVE_VLC_MODULE_INSTALLED ""
#endif

// Qt Multimedia brings about twenty audio and codec libraries with it and libvlc a plugin scan:
// both would be paid at every start if linked into the program, so each is a module loaded on
// the first video that needs it, and then kept for the rest of the run.
namespace {

struct EngineModule
{
    PixcoveNewVideoEngine newEngine = nullptr;
    PixcoveWarmVideoEngine warm = nullptr;
    QString error;
};

EngineModule loadModule(const ModuleLoader::Location &location, const QString &libraryName)
{
    EngineModule module;
    const auto resolve = [&module](QLibrary &library) {
        module.newEngine = reinterpret_cast<PixcoveNewVideoEngine>(library.resolve("pixcove_new_video_engine"));
        module.warm = reinterpret_cast<PixcoveWarmVideoEngine>(library.resolve("pixcove_warm_video_engine"));
        return module.newEngine != nullptr;
    };
    if (ModuleLoader::load(location, resolve, &module.error))
        return module;
    if (module.error.isEmpty())
        module.error = QCoreApplication::translate("VideoEngineLoader", "%1 support is not installed").arg(libraryName);
    logError(QStringLiteral("Videos cannot be played with %1: %2").arg(libraryName, module.error));
    return module;
}

// Thread-safe: the statics below are made once, and a second caller waits for the first.
const EngineModule &engineModule(VideoPlayerSource source)
{
    if (source == VideoPlayerSource::vlc) {
        static const EngineModule vlc =
            loadModule({"PIXCOVE_VLC_MODULE", "pixcove_vlc.so", PIXCOVE_VLC_MODULE_INSTALLED, PIXCOVE_VLC_MODULE_BUILD},
                       QStringLiteral("VLC"));
        return vlc;
    }
    static const EngineModule native = loadModule({"PIXCOVE_QTMEDIA_MODULE", "pixcove_qtmedia.so",
                                                   PIXCOVE_QTMEDIA_MODULE_INSTALLED, PIXCOVE_QTMEDIA_MODULE_BUILD},
                                                  QStringLiteral("Qt Multimedia"));
    return native;
}

} // namespace

namespace VideoEngineLoader {

std::unique_ptr<VideoEngine> newEngine(VideoPlayerSource source, QString *error)
{
    const EngineModule &module = engineModule(source);
    if (!module.newEngine) {
        if (error)
            *error = module.error;
        return {};
    }
    QString reason;
    std::unique_ptr<VideoEngine> engine(module.newEngine(&reason));
    if (!engine && error)
        *error = reason;
    return engine;
}

bool isAvailable(VideoPlayerSource source)
{
    // Starting libvlc scans its plugins once; what it answered then holds for the run.
    static QHash<int, bool> known;
    const int key = static_cast<int>(source);
    if (const auto it = known.constFind(key); it != known.constEnd())
        return *it;
    QString error;
    const bool available = newEngine(source, &error) != nullptr;
    if (!available)
        logError(QStringLiteral("The video player cannot start: %1").arg(error));
    known.insert(key, available);
    return available;
}

void preload(VideoPlayerSource source)
{
    const VideoPlayerSource loaded = source == VideoPlayerSource::vlc ? source : VideoPlayerSource::native;
    static std::atomic_bool started[2];
    if (started[loaded == VideoPlayerSource::vlc ? 1 : 0].exchange(true))
        return;
    runOnPool(QStringLiteral("Video Module"), [loaded] {
        if (const EngineModule &module = engineModule(loaded); module.warm)
            module.warm();
    });
}

} // namespace VideoEngineLoader
