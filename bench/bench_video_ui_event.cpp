// Time to the first frame of a video on screen in a video view as the viewer makes it, and the
// CPU that cost. The first load of a run includes loading the player library's module; the
// following loads (each in a new view) show what every later video pays.
// Usage: bench_video_ui_event FILE [--source native|vlc] [--runs N] [--once] [--preloaded]
//   --once: one load, then exit (for timing the whole process beside other players).
//   --preloaded: the module is loaded in the background first, as the viewer does 2 s after it
//   is made, and the first load starts those 2 s later (a user picking a video).
#include "core/imaging/ImageSource.h"
#include "ui/viewer/video/VideoEngineLoader.h"
#include "ui/viewer/video/VideoView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

namespace {

double cpuMilliseconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000.0
        + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000.0;
}

struct Load
{
    double firstFrameMs = -1;
    double canPlayMs = -1;
    double cpuMs = 0;
    QString error;
};

Load loadOnce(const QString &path, VideoPlayerSource source)
{
    Load load;
    auto view = makeVideoView(source);
    view->resize(1280, 720);
    view->show();
    QEventLoop loop;
    QElapsedTimer clock;
    QObject::connect(view.get(), &VideoView::canPlayChanged, [&](bool canPlay) {
        if (canPlay)
            load.canPlayMs = clock.nsecsElapsed() / 1e6;
    });
    QObject::connect(view.get(), &VideoView::firstFrameShown, &loop, [&] {
        load.firstFrameMs = clock.nsecsElapsed() / 1e6;
        loop.quit();
    });
    QObject::connect(view.get(), &VideoView::failed, &loop, [&](const QString &message) {
        load.error = message;
        loop.quit();
    });
    // 20 s: far beyond any first frame; a player that never shows one is reported, not waited on.
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    const double cpuBefore = cpuMilliseconds();
    clock.start();
    view->loadPath(path);
    loop.exec();
    load.cpuMs = cpuMilliseconds() - cpuBefore;
    return load;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    ImageSource::install();
    const QStringList arguments = app.arguments();
    if (arguments.size() < 2) {
        std::fprintf(stderr,
                     "usage: bench_video_ui_event FILE [--source native|vlc] [--runs N] [--once] [--preloaded]\n");
        return 2;
    }
    const QString path = arguments.at(1);
    VideoPlayerSource source = VideoPlayerSource::native;
    int runs = 6;
    bool once = false;
    bool preloaded = false;
    for (int i = 2; i < arguments.size(); ++i) {
        if (arguments.at(i) == QLatin1String("--source") && i + 1 < arguments.size())
            source = arguments.at(++i) == QLatin1String("vlc") ? VideoPlayerSource::vlc : VideoPlayerSource::native;
        else if (arguments.at(i) == QLatin1String("--runs") && i + 1 < arguments.size())
            runs = std::max(2, arguments.at(++i).toInt());
        else if (arguments.at(i) == QLatin1String("--once"))
            once = true;
        else if (arguments.at(i) == QLatin1String("--preloaded"))
            preloaded = true;
    }
    if (preloaded) {
        VideoEngineLoader::preload(source);
        QEventLoop idle;
        QTimer::singleShot(2000, &idle, &QEventLoop::quit);
        idle.exec();
    }
    if (once) {
        const Load load = loadOnce(path, source);
        return load.firstFrameMs >= 0 ? 0 : 1;
    }

    QList<Load> loads;
    for (int i = 0; i < runs; ++i)
        loads.append(loadOnce(path, source));
    for (const Load &load : std::as_const(loads)) {
        if (load.firstFrameMs < 0) {
            std::printf("no first frame: %s\n",
                        qPrintable(load.error.isEmpty() ? QStringLiteral("timed out") : load.error));
            return 1;
        }
    }
    const Load &cold = loads.first();
    std::printf(preloaded ? "first load (module loaded before): first frame %.0f ms, ready %.0f ms, CPU %.0f ms\n"
                          : "first load (module loaded): first frame %.0f ms, ready %.0f ms, CPU %.0f ms\n",
                cold.firstFrameMs, cold.canPlayMs, cold.cpuMs);
    QList<Load> warm = loads.mid(1);
    const auto median = [&warm](auto member) {
        QList<double> values;
        for (const Load &load : std::as_const(warm))
            values.append(load.*member);
        std::sort(values.begin(), values.end());
        return values.at(values.size() / 2);
    };
    std::printf("later loads, median of %lld: first frame %.0f ms, ready %.0f ms, CPU %.0f ms\n",
                static_cast<long long>(warm.size()), median(&Load::firstFrameMs), median(&Load::canPlayMs),
                median(&Load::cpuMs));
    return 0;
}
