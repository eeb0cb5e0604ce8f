// Steps through a folder of camera JPEGs in an image window (offscreen, 1280 x 800) as a user
// does who looks at each picture for a moment: the next picture has been decoded ahead by the
// time the key is pressed. Reports the time from the key's command to the end of the window's
// paint showing the next picture (median, 95th percentile, worst, how many within one frame of
// 16 ms), how long the picture ahead took to decode, and the resident memory after all the steps.
// Usage: bench_viewer_step_ui_event FOLDER [COUNT] [CACHE_MB]
//   COUNT pictures (500 by default); CACHE_MB sets the decoded-picture cache's capacity (its
//   default otherwise), to see what the cache costs in resident memory.
#include "core/imaging/ImageSource.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/viewer/DecodedImageCache.h"
#include "core/viewer/ImageViewDataSource.h"
#include "ui/viewer/ImageViewController.h"
#include "ui/viewer/MediaViewActionHandler.h"
#include "ui/viewer/MediaViewController.h"
#include "ui/windows/ImageWindowController.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QWidget>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

namespace {

long statusKilobytes(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(qsizetype(qstrlen(field))).trimmed().split(' ').first().toLong();
    }
    return -1;
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Runs the event loop until `done` or `timeoutMs`; answers whether it was done.
template<typename Predicate>
bool spinUntil(Predicate done, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }
    return true;
}

double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(fraction * double(values.size() - 1) + 0.5))];
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    ImageSource::install();
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_viewer_step_ui_event FOLDER [COUNT]\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    const int count = argc > 2 ? std::atoi(argv[2]) : 500;
    if (argc > 3)
        DecodedImageCache::shared().setCapacity(qint64(std::atoi(argv[3])) * 1024 * 1024);
    QList<PXFilePtr> files;
    for (const QString &name :
         folder.entryList({QStringLiteral("*.jpg"), QStringLiteral("*.JPG"), QStringLiteral("*.jpeg")}, QDir::Files,
                          QDir::Name)) {
        files.append(PXFile::fileForPath(folder.absoluteFilePath(name)));
        if (files.size() == count)
            break;
    }
    if (files.size() < 2) {
        std::fprintf(stderr, "bench_viewer_step_ui_event: fewer than two JPEGs in %s\n", argv[1]);
        return 1;
    }

    AppSettings settings;
    auto *window = new ImageWindowController(&settings, nullptr, files);
    window->window()->resize(1280, 800);
    window->show();
    MediaViewController *view = window->mediaView();
    const auto shows = [view](const PXFilePtr &file) {
        ImageViewController *child = view->currentImageChild();
        return view->currentFile() == file && !view->waitingForLoadingChild() && child && child->dataSource()
            && child->dataSource()->file() == file;
    };
    // The picture ahead is decoded for the view's size when the cache holds it at that quality.
    const auto prefetched = [](const PXFilePtr &file) {
        return DecodedImageCache::shared().find(file->resolvedNativePath()).quality
            >= ImageViewDataSource::Quality::scaled;
    };
    if (!spinUntil([&] { return shows(files.first()); }, 20000)) {
        std::fprintf(stderr, "bench_viewer_step_ui_event: the first picture was not shown\n");
        return 1;
    }

    std::vector<double> stepMs;
    std::vector<double> aheadMs;
    int notPrefetched = 0;
    const double cpuBefore = cpuSeconds();
    QElapsedTimer total;
    total.start();
    for (int i = 1; i < files.size(); ++i) {
        const PXFilePtr next = files.at(i);
        QElapsedTimer ahead;
        ahead.start();
        // The user looks at the picture; the one after it is decoded meanwhile (up to 2 s).
        if (!spinUntil([&] { return prefetched(next); }, 2000))
            ++notPrefetched;
        aheadMs.push_back(double(ahead.nsecsElapsed()) / 1e6);
        QElapsedTimer step;
        step.start();
        window->mediaView()->actionHandler()->nextImageInFolder();
        if (!spinUntil([&] { return shows(next); }, 10000)) {
            std::fprintf(stderr, "bench_viewer_step_ui_event: %s was not shown\n", qPrintable(next->path()));
            return 1;
        }
        window->window()->repaint();
        stepMs.push_back(double(step.nsecsElapsed()) / 1e6);
    }
    const double cpu = cpuSeconds() - cpuBefore;
    const int withinFrame = int(std::count_if(stepMs.begin(), stepMs.end(), [](double ms) { return ms < 16.0; }));
    std::printf("steps: %zu pictures of %s, window 1280 x 800, decoded-picture cache %lld MB\n", stepMs.size() + 1,
                argv[1], DecodedImageCache::shared().capacity() / (1024 * 1024));
    std::printf("key to painted next picture: median %.1f ms, 95th percentile %.1f ms, worst %.1f ms; "
                "%d of %zu within 16 ms\n",
                percentile(stepMs, 0.5), percentile(stepMs, 0.95), percentile(stepMs, 1.0), withinFrame, stepMs.size());
    std::printf("picture ahead decoded after: median %.1f ms (%d not ready within 2 s)\n", percentile(aheadMs, 0.5),
                notPrefetched);
    std::printf("resident memory after the steps: %ld MB (peak %ld MB)\n", statusKilobytes("VmRSS:") / 1024,
                statusKilobytes("VmHWM:") / 1024);
    std::printf("cpu %.1f s for %.1f s of stepping\n", cpu, double(total.elapsed()) / 1000.0);
    window->close();
    QCoreApplication::processEvents();
    return 0;
}
