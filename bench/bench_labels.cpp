// Colour labels and lasting flags at the sizes of a cull: reading the label and the flag of 5 000
// camera files (from the disk, and again from the records' caches), labelling 1 000 files, and
// saving a store of 2 000 marks for files that keep no attributes.

#include "core/imaging/ImageSource.h"
#include "core/model/ColorLabels.h"
#include "core/model/FlagStore.h"
#include "core/model/PXFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

constexpr int fileCount = 5000;

// DSC_0001.JPG ... with a third labelled (among a file manager's other tags) and a fifth flagged.
struct CameraFolder
{
    CameraFolder()
    {
        for (int i = 1; i <= fileCount; ++i) {
            const QString path = dir.filePath(QStringLiteral("DSC_%1.JPG").arg(i, 4, 10, QLatin1Char('0')));
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly))
                continue;
            file.close();
            const QByteArray native = QFile::encodeName(path);
            if (i % 3 == 0)
                ::setxattr(native.constData(), "user.xdg.tags", "Trip 2024,Red", 13, 0);
            if (i % 5 == 0)
                ::setxattr(native.constData(), FlagStore::flagAttribute, "flagged", 7, 0);
            paths.append(native);
        }
    }
    QTemporaryDir dir;
    QList<QByteArray> paths;
};

CameraFolder &folder()
{
    static CameraFolder shared;
    return shared;
}

// The first read of each file's marks: the grid reads its visible cells' this way on a worker,
// "Select Flagged" reads every file's on its first use.
void BM_ReadLabelAndFlag5000(benchmark::State &state)
{
    FlagStore store(folder().dir.filePath(QStringLiteral("flags.json")));
    for (auto _ : state) {
        int labelled = 0;
        int flagged = 0;
        for (const QByteArray &path : std::as_const(folder().paths)) {
            labelled += ColorLabels::readLabel(path) != 0;
            flagged += store.read(path) == FileFlag::flagged;
        }
        benchmark::DoNotOptimize(labelled + flagged);
    }
    state.counters["files"] = double(folder().paths.size());
}
BENCHMARK(BM_ReadLabelAndFlag5000)->Unit(benchmark::kMillisecond)->UseRealTime();

// Every later read: the records answer from their caches.
void BM_WarmCachedRecords5000(benchmark::State &state)
{
    FlagStore store(folder().dir.filePath(QStringLiteral("flags.json")));
    FlagStore::setShared(&store);
    QList<PXFilePtr> records;
    for (const QByteArray &path : std::as_const(folder().paths))
        records.append(PXFile::fileForNativePath(path));
    for (const PXFilePtr &record : std::as_const(records))
        record->warmAttributes();
    for (auto _ : state) {
        for (const PXFilePtr &record : std::as_const(records))
            record->warmAttributes();
    }
    FlagStore::setShared(nullptr);
}
BENCHMARK(BM_WarmCachedRecords5000)->Unit(benchmark::kMillisecond)->UseRealTime();

// Labelling a selection of 1 000 files (read, merge with the other tags, write).
void BM_Label1000(benchmark::State &state)
{
    int value = 1;
    for (auto _ : state) {
        QString error;
        for (int i = 0; i < 1000; ++i)
            ColorLabels::writeLabel(folder().paths[i], value, &error);
        value = value % 7 + 1;
    }
}
BENCHMARK(BM_Label1000)->Unit(benchmark::kMillisecond)->UseRealTime();

// One save of the per-user store holding 2 000 marks (files that keep no attributes: pipes here),
// written atomically as the throttle does at most every 3 s.
void BM_SaveStore2000(benchmark::State &state)
{
    QTemporaryDir pipes;
    FlagStore store(pipes.filePath(QStringLiteral("flags.json")));
    QString error;
    for (int i = 0; i < 2000; ++i) {
        const QByteArray path = QFile::encodeName(pipes.filePath(QStringLiteral("IMG_%1.CR3").arg(i)));
        ::mkfifo(path.constData(), 0644);
        store.write(path, FileFlag::rejected, &error);
    }
    int flip = 0;
    for (auto _ : state) {
        // One change makes the store dirty again; the save writes all 2 000.
        store.write(QFile::encodeName(pipes.filePath(QStringLiteral("IMG_0.CR3"))),
                    ++flip % 2 ? FileFlag::flagged : FileFlag::rejected, &error);
        store.flush(&error);
    }
}
BENCHMARK(BM_SaveStore2000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ImageSource::install();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
