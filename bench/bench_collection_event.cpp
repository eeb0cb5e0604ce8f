// How long one file event in a folder of 100 000 files takes to reach a republished collection.
// Prints the end-to-end latency and the work left after the two coalescing delays it includes:
// 30 ms in which the folder subscription gathers a burst of kernel events into one event, then
// 50 ms in which the collection gathers file events into one re-sort.
#include "core/imaging/ImageSource.h"
#include "core/model/FileCollectionModel.h"
#include "core/model/PXFile.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ImageSource::install();
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_collection_event FOLDER\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    FileCollectionModel collection;
    QElapsedTimer clock;
    clock.start();
    collection.setCollectionRoots({PXFile::fileForPath(folder)});
    while (!collection.isSettled())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    std::printf("initial listing of %d files: %lld ms\n", collection.itemCount(), clock.elapsed());

    QList<double> latencies;
    const QString target = collection.flatRepresentation().at(collection.itemCount() / 2)->file()->path();
    for (int round = 0; round < 10; ++round) {
        bool published = false;
        const auto connection = QObject::connect(&collection, &FileCollectionModel::representationsPublished,
                                                 [&published] { published = true; });
        clock.restart();
        QFile file(target);
        file.open(QIODevice::Append);
        file.write("x");
        file.close();
        while (!published)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        latencies.append(double(clock.nsecsElapsed()) / 1e6);
        QObject::disconnect(connection);
    }
    std::sort(latencies.begin(), latencies.end());
    const double median = latencies.at(latencies.size() / 2);
    constexpr double coalescingDelaysMs = 30.0 + 50.0;
    std::printf("one file event to republished collection: median %.1f ms end to end, %.1f ms of work after the "
                "30 ms + 50 ms coalescing delays\n",
                median, median - coalescingDelaysMs);
    return 0;
}
