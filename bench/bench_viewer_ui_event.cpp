// Opens 24 MP camera JPEGs in the image view, cold (the page cache warm, no decoded picture
// kept), and reports the time from handing the file to the view until each step is painted: the
// embedded preview, the picture at the fit of a 1600 x 1000 view, and, after a zoom to 100 %, the
// whole image. Medians over every file and round, with the process's CPU time (all threads)
// from handing over the file to the fit's paint.
// Usage: bench_viewer_ui_event FILE... [--rounds N] [--stamps]
//   --stamps: shows the first file once, prints wall-clock stamps (microseconds since the epoch)
//   of the window's showing and of the preview's and the fit's paints, and exits; for timing
//   from exec under an X server (bench/viewer_open.py).
#include "core/imaging/ImageSource.h"
#include "core/model/PXFile.h"
#include "core/viewer/DecodedImageCache.h"
#include "core/viewer/ImageViewDataSource.h"
#include "ui/viewer/ImageView.h"
#include "ui/viewer/ImageViewController.h"
#include "ui/viewer/ZoomingScrollView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstdio>

namespace {

struct Times
{
    double previewMs = -1;
    double fitMs = -1;
    double fitCpuMs = -1;
    double fullMs = -1;
};

double cpuMilliseconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000.0
        + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000.0;
}

long long epochMicroseconds()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
}

void warmPageCache(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        while (!file.read(1 << 20).isEmpty()) { }
}

// Hands `path` to `view` as the media view does and paints each step as it arrives.
Times open(ImageViewController &view, const QString &path, bool stamps)
{
    DecodedImageCache::shared().clear();
    const ImageViewDataSourcePtr dataSource = ImageViewDataSource::create(PXFile::fileForPath(path));
    dataSource->setStickiness(Stickiness::always);
    Times times;
    QEventLoop loop;
    QElapsedTimer timer;
    QWidget *viewport = view.scrollView()->viewport();
    auto paintNow = [&] {
        // The paint itself is part of the time: the picture is on the screen's buffer after it.
        viewport->repaint();
        return timer.nsecsElapsed() / 1e6;
    };
    const auto ready = QObject::connect(&view, &ImageViewController::imageReady, [&] {
        times.previewMs = paintNow();
        if (stamps)
            std::printf("preview_paint %lld\n", epochMicroseconds());
    });
    const double cpuStart = cpuMilliseconds();
    timer.start();
    view.setLoadingImage(true);
    view.setDataSource(dataSource);
    // Connected after the view's own handler, so that the view has taken the picture.
    const auto changed = QObject::connect(dataSource.get(), &ImageViewDataSource::changed, [&] {
        const QImage shown = view.imageView()->currentImage();
        if (shown.cacheKey() != dataSource->image().cacheKey())
            return;
        if (times.fitMs < 0 && dataSource->imageQuality() >= ImageViewDataSource::Quality::scaled) {
            times.fitMs = paintNow();
            times.fitCpuMs = cpuMilliseconds() - cpuStart;
            if (stamps) {
                std::printf("fit_paint %lld\n", epochMicroseconds());
                loop.quit();
                return;
            }
            timer.restart();
            view.setZoom(1.0);
        } else if (times.fitMs >= 0 && dataSource->imageQuality() == ImageViewDataSource::Quality::full) {
            times.fullMs = paintNow();
            loop.quit();
        }
    });
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    loop.exec();
    QObject::disconnect(ready);
    QObject::disconnect(changed);
    view.setDataSource({});
    return times;
}

double median(QList<double> values)
{
    values.removeIf([](double v) { return v < 0; });
    if (values.isEmpty())
        return -1;
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    ImageSource::install();
    QStringList files;
    int rounds = 3;
    bool stamps = false;
    const QStringList args = app.arguments();
    for (int i = 1; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--rounds") && i + 1 < args.size())
            rounds = args[++i].toInt();
        else if (args[i] == QLatin1String("--stamps"))
            stamps = true;
        else
            files.append(args[i]);
    }
    if (files.isEmpty()) {
        std::fprintf(stderr, "usage: %s FILE... [--rounds N] [--stamps]\n", argv[0]);
        return 2;
    }

    ImageViewController view;
    view.setDisableAnimation(true);
    view.resize(1600, 1000);
    view.show();
    if (stamps) {
        std::printf("window_shown %lld\n", epochMicroseconds());
        const Times times = open(view, files.first(), true);
        std::fflush(stdout);
        // Long enough for a poll of the window list to see the window.
        QTimer::singleShot(500, &app, &QCoreApplication::quit);
        app.exec();
        return times.fitMs < 0 ? 1 : 0;
    }
    QApplication::processEvents();
    for (const QString &file : std::as_const(files))
        warmPageCache(file);
    // One untimed open: the pools' threads and the decoders' first allocations.
    open(view, files.first(), false);

    QList<double> preview, fit, fitCpu, full;
    for (int round = 0; round < rounds; ++round) {
        for (const QString &file : std::as_const(files)) {
            const Times times = open(view, file, false);
            preview.append(times.previewMs);
            fit.append(times.fitMs);
            fitCpu.append(times.fitCpuMs);
            full.append(times.fullMs);
        }
    }
    std::printf("opens %lld (%lld files x %d rounds), view 1600 x 1000, medians:\n", (long long)preview.size(),
                (long long)files.size(), rounds);
    std::printf("embedded preview painted   %7.1f ms\n", median(preview));
    std::printf("fit quality painted        %7.1f ms  (CPU %.1f ms, all threads)\n", median(fit), median(fitCpu));
    std::printf("whole image at 100 %% painted %5.1f ms  (after the zoom)\n", median(full));
    return 0;
}
