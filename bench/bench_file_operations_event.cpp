// File operations as the program runs them: as activities of the activities manager, through a
// file controller, on its pool, with progress texts made on the main thread. One operation a
// run; prints its wall time, the CPU time the process spent (user + system), which the
// neighbours on a shared machine do not inflate, and the longest time the main thread went
// without turning its event loop (a stall the user would feel as a frozen window).
//   bench_file_operations_event copy SOURCE_FOLDER DESTINATION_FOLDER
//   bench_file_operations_event move FOLDER COUNT    (COUNT files from FOLDER/a to FOLDER/b)
//   bench_file_operations_event trash FOLDER COUNT   (COUNT files, into FOLDER/Trash)
//   bench_file_operations_event rotate FOLDER each   (every JPEG in FOLDER a quarter turn, in place,
//                                                    each on its own, as one picture is turned)
//   bench_file_operations_event rotate FOLDER batch  (the same as one selection, as the activity
//                                                    turns it: the files share a workspace)
//   bench_file_operations_event rotate FOLDER activity (the same through the activities manager, with
//                                                    the main thread's longest stall)
#include "StallMeter.h"
#include "core/activities/ActivitiesManager.h"
#include "core/activities/ActivitiesModel.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationHandler.h"
#include "core/fs/operations/ZQItemCopier.h"
#include "core/fs/operations/ZQTrashPerformer.h"
#include "core/imaging/ImageSource.h"
#include "core/imaging/JpegRotation.h"
#include "core/model/PXFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <sys/resource.h>

namespace {

double cpuSeconds()
{
    struct rusage usage
    { };
    ::getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Camera and desktop names: IMG_7.JPG, DSC_00007.JPG, "photo (7).jpeg".
QString cameraName(int i)
{
    const int n = i / 3 + 1;
    switch (i % 3) {
    case 0: return QStringLiteral("IMG_%1.JPG").arg(n);
    case 1: return QStringLiteral("DSC_%1.JPG").arg(n, 5, 10, QLatin1Char('0'));
    default: return QStringLiteral("photo (%1).jpeg").arg(n);
    }
}

// Small files with a camera's names; their size does not matter to a rename.
QList<ZQFileOperationUnit> makeFiles(const QString &folder, int count)
{
    QDir().mkpath(folder);
    QList<ZQFileOperationUnit> units;
    for (int i = 0; i < count; ++i) {
        const QString path = folder + QLatin1Char('/') + cameraName(i);
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write("JPEG");
        file.close();
        units.append(ZQFileOperationUnit(ZQStandardFile::newFileForPath(path), {}));
    }
    return units;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ImageSource::install();
    const QStringList args = app.arguments().mid(1);
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: bench_file_operations_event copy|move|trash ARG ARG\n");
        return 2;
    }
    if (args[0] == QLatin1String("rotate") && args[2] != QLatin1String("activity")) {
        // One after another on this thread: the cost of one turn, as jpegtran pays it per process.
        const bool batch = args[2] == QLatin1String("batch");
        JpegRotation::Workspace workspace;
        const QStringList names =
            QDir(args[1]).entryList({QStringLiteral("*.jpg"), QStringLiteral("*.JPG")}, QDir::Files);
        const double cpuBefore = cpuSeconds();
        QElapsedTimer clock;
        clock.start();
        for (const QString &name : names) {
            const JpegRotation::Result result =
                JpegRotation::rotateFile(args[1] + QLatin1Char('/') + name, JpegRotation::Turn::clockwise,
                                         JpegRotation::Fallback::refuse, batch ? &workspace : nullptr);
            if (result.kind != JpegRotation::Result::Kind::lossless) {
                std::fprintf(stderr, "%s\n", qPrintable(result.error));
                return 1;
            }
        }
        std::printf("%.4f %.4f 0 %lld %lld 0\n", double(clock.nsecsElapsed()) / 1e9, cpuSeconds() - cpuBefore,
                    static_cast<long long>(names.size()), static_cast<long long>(names.size()));
        return 0;
    }
    ZQFileController controller;
    ZQFileOperationType type = ZQFileOperationType::copy;
    QList<ZQFileOperationUnit> units;
    ZQFilePtr destination;
    if (args[0] == QLatin1String("copy")) {
        units.append(ZQFileOperationUnit(ZQStandardFile::newFileForPath(args[1]), {}));
        destination = ZQStandardFile::newFileForPath(args[2]);
    } else if (args[0] == QLatin1String("move")) {
        type = ZQFileOperationType::move;
        QDir(args[1]).removeRecursively();
        units = makeFiles(args[1] + QStringLiteral("/a"), args[2].toInt());
        QDir().mkpath(args[1] + QStringLiteral("/b"));
        destination = ZQStandardFile::newFileForPath(args[1] + QStringLiteral("/b"));
    } else if (args[0] == QLatin1String("rotate")) {
        for (const QString &name :
             QDir(args[1]).entryList({QStringLiteral("*.jpg"), QStringLiteral("*.JPG")}, QDir::Files))
            units.append(ZQFileOperationUnit(ZQStandardFile::newFileForPath(args[1] + QLatin1Char('/') + name), {}));
    } else if (args[0] == QLatin1String("trash")) {
        type = ZQFileOperationType::trash;
        QDir(args[1]).removeRecursively();
        units = makeFiles(args[1] + QStringLiteral("/photos"), args[2].toInt());
        const ZQTrash trash(QFile::encodeName(args[1] + QStringLiteral("/Trash")));
        controller.setPerformerFactory(type, [trash] {
            return std::make_unique<ZQTrashPerformer>(ZQFileOperationType::trash, trash);
        });
    } else {
        std::fprintf(stderr, "unknown operation %s\n", argv[1]);
        return 2;
    }
    const qsizetype count = units.size();
    ActivitiesManager manager(&controller);
    manager.activitiesModel()->setFinishedLinger(0);
    QEventLoop loop; // sleeps between reports, as the program's own loop does
    FileOperationOutcome outcome;
    bool completed = false;
    int reports = 0;
    StallMeter stalls;
    const double cpuBefore = cpuSeconds();
    QElapsedTimer clock;
    clock.start();
    const auto finished = [&](const FileOperationOutcome &done) {
        outcome = done;
        completed = true;
        loop.quit();
    };
    ActivityItem *activity = nullptr;
    if (args[0] == QLatin1String("rotate")) {
        QList<PXFilePtr> files;
        for (const ZQFileOperationUnit &unit : units)
            files.append(PXFile::from(unit.sourceItem()));
        activity = manager.rotateImages(files, JpegRotation::Turn::clockwise, finished);
    } else {
        activity = manager.performOperation(type, ZQFileOperationGroup(std::move(units), destination), finished);
    }
    if (!activity) {
        std::fprintf(stderr, "the operation could not be started\n");
        return 1;
    }
    QObject::connect(activity, &ActivityItem::progressChanged, [&reports] { ++reports; });
    if (!completed)
        loop.exec();
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    const double cpu = cpuSeconds() - cpuBefore;
    if (outcome.error.isError()) {
        std::fprintf(stderr, "%s\n", qPrintable(outcome.error.description));
        return 1;
    }
    qint64 bytes = 0;
    qint64 files = 0;
    for (const FileOperationOutcome::Item &item : outcome.items) {
        const QFileInfo info(item.destination);
        bytes += info.isFile() ? info.size() : 0;
        files += 1;
    }
    if (args[0] == QLatin1String("copy") && !outcome.items.isEmpty()) {
        // A folder copied whole: its files and bytes.
        const ZQItemCopier::Work work = ZQItemCopier::measure(QFile::encodeName(outcome.items.first().destination));
        bytes = work.bytes;
        files = work.files;
    }
    // "seconds cpu-seconds bytes files units progress-reports longest-main-thread-stall-ms", then
    // of that stall the ms the main thread ran and waited for a core, and the most ms it ran in any
    // one gap: a stall that is mostly waiting is the machine's load, not our work.
    std::printf("%.4f %.4f %lld %lld %lld %d %.1f %.1f %.1f %.1f\n", seconds, cpu, static_cast<long long>(bytes),
                static_cast<long long>(files), static_cast<long long>(count), reports, stalls.longestUs() / 1000.0,
                stalls.longest().runningUs / 1000.0, stalls.longest().waitingUs / 1000.0, stalls.mostWorkUs() / 1000.0);
    return 0;
}
