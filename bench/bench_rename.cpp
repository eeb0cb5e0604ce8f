// Batch renaming at the sizes users bring: proposed names for 10 000 files under a rule set with a
// regular expression, a date and a sequence (recomputed after every edit of the rules), and the
// rename of 10 000 files in one folder as one file operation.

#include "core/imaging/ImageSource.h"
#include "core/model/PXFile.h"
#include "core/rename/PXBatchOutlineModel.h"
#include "core/rename/PXFileRenameItem.h"
#include "core/rename/PXFileRenamer.h"
#include "core/rename/PXRenamePresets.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

namespace C = PXRenameConstant;

constexpr int fileCount = 10000;

PXRenameRule rule(int constant, const QString &text = QString())
{
    return PXRenameRule{constant, text};
}

// Five rows: a regular expression, a date and a sequence in the name, a replacement, and the
// extension in lower case.
PXRenameRules fiveRowRules()
{
    const PXRenameRules inName = {
        {PXRenameRow::simple,
         {rule(C::regex), rule(C::regexSearchValue, QStringLiteral("^img_(\\d+)")), rule(C::label),
          rule(C::regexReplaceValue, QStringLiteral("photo-$1"))},
         {}},
        {PXRenameRow::simple,
         {rule(C::insert), rule(C::insertAtBeginning), rule(C::addModificationDate), rule(C::label),
          rule(C::dateFormatValue, QStringLiteral("yyyy-MM-dd HH.mm "))},
         {}},
        {PXRenameRow::simple,
         {rule(C::insert), rule(C::insertAtEnd), rule(C::addSequence), rule(C::label),
          rule(C::initialSequenceValue, QStringLiteral("1")), rule(C::label), rule(C::sequenceFormat00001)},
         {}},
        {PXRenameRow::simple,
         {rule(C::replace), rule(C::replaceCharacters), rule(C::charactersToReplace, QStringLiteral("-")),
          rule(C::label), rule(C::addCharacters), rule(C::replacementCharacters, QStringLiteral("_"))},
         {}},
    };
    const PXRenameRules inExtension = {
        {PXRenameRow::simple, {rule(C::replace), rule(C::replaceEntirely), rule(C::label), rule(C::makeLowercase)}, {}},
    };
    return {{PXRenameRow::compound, {rule(C::label), rule(C::searchFilename)}, inName},
            {PXRenameRow::compound, {rule(C::label), rule(C::searchExtension)}, inExtension}};
}

// A folder of `fileCount` empty files named IMG_00000.JPG ...
const QTemporaryDir &folderOfFiles()
{
    static QTemporaryDir *dir = [] {
        auto *made = new QTemporaryDir;
        for (int i = 0; i < fileCount; ++i) {
            const QByteArray path =
                QFile::encodeName(made->filePath(QStringLiteral("IMG_%1.JPG").arg(i, 5, 10, QLatin1Char('0'))));
            ::close(::open(path.constData(), O_CREAT | O_WRONLY, 0644));
        }
        return made;
    }();
    return *dir;
}

void BM_ProposedNames(benchmark::State &state)
{
    QList<PXFileRenameItemPtr> items;
    const QDir folder(folderOfFiles().path());
    quint64 overall = 0;
    for (const QString &name : folder.entryList(QDir::Files)) {
        auto item = std::make_shared<PXFileRenameItem>(PXFile::fileForPath(folder.filePath(name)));
        quint64 index = overall;
        item->setOverallIndex(overall, index);
        items.append(item);
    }
    const PXRenameRules rules = fiveRowRules();
    for (auto _ : state) {
        for (const PXFileRenameItemPtr &item : std::as_const(items))
            item->updateForRenameRules(rules);
        benchmark::DoNotOptimize(items.last()->potentialName());
    }
    state.counters["files"] = double(items.size());
}
BENCHMARK(BM_ProposedNames)->Unit(benchmark::kMillisecond);

// The renamer's whole update after an edit: numbering, names and the collision scan.
void BM_RenamerUpdate(benchmark::State &state)
{
    QTemporaryDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    PXRenamePresets presets(&settings);
    PXFileRenamer renamer(&presets);
    renamer.setWatchesFiles(false);
    renamer.setFolderScanDepth(1);
    renamer.setRenameRules(fiveRowRules());
    renamer.addFilesToRename({PXFile::fileForPath(folderOfFiles().path())});
    QEventLoop loop;
    QObject::connect(&renamer, &PXFileRenamer::scanFinished, &loop, &QEventLoop::quit);
    if (renamer.workInProgress())
        loop.exec();
    renamer.updateNow();
    for (auto _ : state) {
        renamer.outline().setNeedsUpdate();
        renamer.updateNow();
    }
    state.counters["files"] = double(renamer.arrangedItems().size());
}
BENCHMARK(BM_RenamerUpdate)->Unit(benchmark::kMillisecond);

// Renames every file of the folder, then back, through the renamer and one file operation.
void BM_Rename10000(benchmark::State &state)
{
    QTemporaryDir dir;
    for (int i = 0; i < fileCount; ++i) {
        const QByteArray path =
            QFile::encodeName(dir.filePath(QStringLiteral("IMG_%1.JPG").arg(i, 5, 10, QLatin1Char('0'))));
        ::close(::open(path.constData(), O_CREAT | O_WRONLY, 0644));
    }
    QTemporaryDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    PXRenamePresets presets(&settings);
    PXFileRenamer renamer(&presets);
    renamer.setWatchesFiles(false);
    renamer.setFolderScanDepth(1);
    renamer.addFilesToRename({PXFile::fileForPath(dir.path())});
    QEventLoop loop;
    QObject::connect(&renamer, &PXFileRenamer::scanFinished, &loop, &QEventLoop::quit);
    QObject::connect(&renamer, &PXFileRenamer::renameFinished, &loop, &QEventLoop::quit);
    if (renamer.workInProgress())
        loop.exec();

    const PXRenameRules there = {{PXRenameRow::simple,
                                  {rule(C::insert), rule(C::insertAtBeginning), rule(C::addCharacters),
                                   rule(C::replacementCharacters, QStringLiteral("renamed-"))},
                                  {}}};
    const PXRenameRules back = {{PXRenameRow::simple,
                                 {rule(C::regex), rule(C::regexSearchValue, QStringLiteral("^renamed-")),
                                  rule(C::label), rule(C::regexReplaceValue, QString())},
                                 {}}};
    bool forth = true;
    for (auto _ : state) {
        renamer.setRenameRules(forth ? there : back);
        forth = !forth;
        if (renamer.rename() != PXFileRenamer::RenameStart::started) {
            state.SkipWithError("the rename did not start");
            break;
        }
        loop.exec();
    }
    state.counters["files"] = double(fileCount);
}
BENCHMARK(BM_Rename10000)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(4);

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
