// Opens a folder in the browser (grid and preview) and reports: the time until the first screen
// of thumbnails is complete, the longest stall of the event loop while the grid scrolls from top
// to bottom at 60 steps per second, and the resident memory afterwards.
// Usage: bench_grid_ui_event FOLDER [--layout right|top|none] [--size N] [--depth N] [--hold SECONDS]
//   --hold keeps the window open afterwards (for screenshots) instead of scrolling.
#include "StallMeter.h"
#include "core/imaging/ImageSource.h"
#include "core/model/PXFile.h"
#include "core/settings/WindowSettings.h"
#include "ui/browser/BrowserViewController.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/inspector/InspectorViewController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QScrollBar>
#include <QSplitter>
#include <QTextStream>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {
long residentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return -1;
}

bool firstScreenComplete(ThumbnailsViewController *thumbnails)
{
    if (thumbnails->isLoading())
        return false;
    const auto [first, last] = thumbnails->gridView()->onscreenRange();
    if (first >= last)
        return false;
    for (int i = first; i < last; ++i) {
        const ThumbnailItemPtr item = thumbnails->itemAt(i);
        if (!item || !item->lookedForThumbnail())
            return false;
    }
    return true;
}
} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    ImageSource::install();
    const QStringList args = app.arguments();
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [--layout right|top|none] [--size N] [--depth N] [--hold SECONDS]\n",
                     argv[0]);
        return 2;
    }
    auto settings = std::make_shared<WindowSettings>();
    int hold = -1;
    for (int i = 2; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--layout"))
            settings->setBrowserLayout(args[i + 1] == QLatin1String("top")        ? BrowserLayout::topPreview
                                           : args[i + 1] == QLatin1String("none") ? BrowserLayout::noPreview
                                                                                  : BrowserLayout::rightPreview);
        else if (args[i] == QLatin1String("--size"))
            settings->setThumbnailSize(args[i + 1].toInt());
        else if (args[i] == QLatin1String("--depth"))
            settings->setThumbnailsFolderSearchDepth(args[i + 1].toInt());
        else if (args[i] == QLatin1String("--hold"))
            hold = args[i + 1].toInt();
    }

    // The browser beside the inspector, as a main window holds them.
    QSplitter window;
    auto *browserWidget = new BrowserViewController(settings);
    auto *inspector = new InspectorViewController(settings);
    BrowserViewController &browser = *browserWidget;
    window.addWidget(browserWidget);
    window.addWidget(inspector);
    window.setSizes({1080, 320});
    QObject::connect(browserWidget, &BrowserViewController::selectionChanged, inspector,
                     &InspectorViewController::setFiles);
    window.resize(1400, 900);
    window.setWindowTitle(QStringLiteral("Pixcove browser"));
    window.show();
    ThumbnailsViewController *thumbnails = browser.thumbnailsViewController();
    QScrollBar *bar = thumbnails->gridView()->verticalScrollBar();

    QElapsedTimer clock;
    clock.start();
    browser.setSources({PXFile::fileForPath(args[1])});

    QTextStream out(stdout);
    auto *poll = new QTimer(&app);
    poll->setInterval(2);
    qint64 firstScreenMs = -1;
    QObject::connect(poll, &QTimer::timeout, &app, [&] {
        if (!firstScreenComplete(thumbnails))
            return;
        poll->stop();
        firstScreenMs = clock.elapsed();
        out << "files: " << thumbnails->files().size() << "\n"
            << "first screen of thumbnails complete: " << firstScreenMs << " ms\n";
        out.flush();
        if (hold >= 0) {
            if (!thumbnails->files().isEmpty())
                thumbnails->selectFiles({thumbnails->files().value(1, thumbnails->files().first())});
            QTimer::singleShot(hold * 1000, &app, &QCoreApplication::quit);
            return;
        }
        // Scroll top to bottom, one step per frame, while a 1 ms timer measures the gaps between
        // its own turns: the longest one is the longest time the GUI thread did not come back.
        // Reported with what the GUI thread did meanwhile: worked, or waited for a core.
        auto *scroller = new QTimer(&app);
        scroller->setTimerType(Qt::PreciseTimer);
        scroller->setInterval(16);
        auto gaps = std::make_shared<StallMeter>();
        const int step = std::max(40, bar->maximum() / 600); // about ten seconds for any folder
        QObject::connect(scroller, &QTimer::timeout, &app, [&, scroller, gaps, step] {
            if (bar->value() >= bar->maximum()) {
                scroller->stop();
                gaps->stop();
                out << "longest event-loop stall while scrolling: " << gaps->longestUs() / 1000.0 << " ms wall, "
                    << gaps->longest().runningUs / 1000.0 << " ms of it GUI-thread CPU, "
                    << gaps->longest().waitingUs / 1000.0 << " ms waiting for a core\n"
                    << "stalls over 16 ms: " << gaps->overOneFrame()
                    << "; most GUI-thread CPU between two turns: " << gaps->mostWorkUs() / 1000.0 << " ms\n"
                    << "resident memory: " << residentKilobytes() / 1024 << " MB\n";
                out.flush();
                QCoreApplication::quit();
                return;
            }
            bar->setValue(bar->value() + step);
        });
        scroller->start();
    });
    poll->start();
    QTimer::singleShot(120000, &app, [&] {
        out << "timed out\n";
        QCoreApplication::exit(1);
    });
    return app.exec();
}
