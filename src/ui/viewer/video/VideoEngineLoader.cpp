#include "ui/viewer/video/VideoEngineLoader.h"

#include "ui/viewer/video/VideoEngine.h"

#include "core/app/Log.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <QLibrary>

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
    QString error;
};

struct ModulePaths
{
    const char *environment;
    const char *fileName;
    const char *installed;
    const char *build;
};

EngineModule loadModule(const ModulePaths &paths, const QString &libraryName)
{
    QStringList candidates;
    if (const QString chosen = qEnvironmentVariable(paths.environment); !chosen.isEmpty())
        candidates.append(chosen);
    if (QCoreApplication::instance())
        candidates.append(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/pixcove/")
                          + QLatin1String(paths.fileName));
    candidates.append(QString::fromUtf8(paths.installed));
    candidates.append(QString::fromUtf8(paths.build));
    EngineModule module;
    for (const QString &path : std::as_const(candidates)) {
        if (path.isEmpty() || !QFileInfo::exists(path))
            continue;
        auto *library = new QLibrary(path); // kept loaded for the rest of the run
        if (!library->load()) {
            module.error = library->errorString();
            delete library;
            continue;
        }
        module.newEngine = reinterpret_cast<PixcoveNewVideoEngine>(library->resolve("pixcove_new_video_engine"));
        if (module.newEngine)
            return module;
        module.error = QStringLiteral("%1 lacks its entry point").arg(path);
    }
    if (module.error.isEmpty())
        module.error = QCoreApplication::translate("VideoEngineLoader", "%1 support is not installed").arg(libraryName);
    logError(QStringLiteral("Videos cannot be played with %1: %2").arg(libraryName, module.error));
    return module;
}

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

} // namespace VideoEngineLoader
