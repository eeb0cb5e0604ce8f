#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationGroup.h"
#include "core/fs/operations/ZQRenamePerformer.h"
#include "core/rename/PXBatchOutlineModel.h"
#include "core/rename/PXFileRenamer.h"
#include "core/rename/PXFileRenamerQuestions.h"
#include "core/rename/PXRenamePresets.h"

#include "core/model/PXFile.h"
#include "core/rename/RenameLogCapture.h"
#include "core/rename/RenameRuleRows.h"
#include "support/TestDir.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace C = PXRenameConstant;

namespace {

// Answers the renamer's questions as a test decides, and remembers what was asked.
class ScriptedQuestions : public PXFileRenamerQuestions
{
public:
    ZQFileOperationResolution answer = ZQFileOperationResolution::skip;
    bool applyToAll = false;
    QList<ZQFileOperationError> asked;
    QStringList shownErrors;

    ZQFileOperationResolution queryUserWithError(const ZQFileOperationError &error, bool *all) override
    {
        asked.append(error);
        *all = applyToAll;
        return answer;
    }
    void showRenameError(const QString &message, const QString &) override { shownErrors.append(message); }
    PXUnsavedPresetAnswer askToSaveChangesToPreset(const QJsonObject &) override
    {
        return PXUnsavedPresetAnswer::cancel;
    }
};

// The real rename, except that just before the unit that would write `target` another program
// creates a file of that name.
class InterferingRenamePerformer : public ZQRenamePerformer
{
public:
    explicit InterferingRenamePerformer(QString target)
        : m_target(std::move(target))
    { }

    ZQFileOperationError perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) override
    {
        if (unit.destinationPath() == m_target) {
            QFile file(m_target);
            if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
                file.write("written meanwhile");
        }
        return ZQRenamePerformer::perform(unit, group);
    }

private:
    QString m_target;
};

class BatchRename : public ::testing::Test
{
protected:
    void SetUp() override
    {
        settings =
            std::make_unique<QSettings>(settingsDir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        presets = std::make_unique<PXRenamePresets>(settings.get());
        renamer = std::make_unique<PXFileRenamer>(presets.get(), &controller);
        renamer->setWatchesFiles(false);
        renamer->setQuestions(&questions);
    }

    void add(const QStringList &relativePaths)
    {
        QList<PXFilePtr> files;
        for (const QString &path : relativePaths)
            files.append(PXFile::fileForPath(dir.filePath(path)));
        renamer->addFilesToRename(files);
        if (renamer->workInProgress()) {
            ASSERT_TRUE(QSignalSpy(renamer.get(), &PXFileRenamer::scanFinished).wait(5000));
        }
        renamer->updateNow();
    }

    // "name -> proposed" for every arranged item, folders as "name/".
    QStringList proposals() const
    {
        QStringList lines;
        for (const PXFileRenameItemPtr &item : renamer->arrangedItems()) {
            if (item->isContainer())
                lines.append(item->representedObject()->name() + QLatin1Char('/'));
            else
                lines.append(item->representedObject()->name() + QStringLiteral(" -> ") + item->potentialName()
                             + (item->hasCollision() ? QStringLiteral(" !") : QString()));
        }
        return lines;
    }

    // Runs the rename to its end; answers the count of renamed files and what stopped the run.
    std::pair<qsizetype, ZQFileOperationError> renameAll()
    {
        QSignalSpy finished(renamer.get(), &PXFileRenamer::renameFinished);
        if (renamer->rename() != PXFileRenamer::RenameStart::started)
            return {-1, {}};
        if (!finished.wait(10000))
            return {-2, {}};
        return {finished.first().at(0).value<qsizetype>(), finished.first().at(1).value<ZQFileOperationError>()};
    }

    QStringList namesOnDisk(const QString &folder = QString()) const
    {
        return QDir(dir.filePath(folder)).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }

    TestDir dir;
    TestDir settingsDir;
    ZQFileController controller;
    ScriptedQuestions questions;
    std::unique_ptr<QSettings> settings;
    std::unique_ptr<PXRenamePresets> presets;
    std::unique_ptr<PXFileRenamer> renamer;
};

} // namespace

TEST_F(BatchRename, FoldersBecomeContainersAndTakeNoNumbers)
{
    for (const char *name : {"Trip/b.jpg", "Trip/a.jpg", "Trip/Day/d.jpg", "Trip/Day/c.jpg", "Trip/.hidden"})
        dir.write(QString::fromLatin1(name));
    renamer->setRenameRules(
        {in(C::searchFilename, {insertSequence(C::insertAtEnd, QStringLiteral("1"), C::sequenceFormat01)})});

    // Depth 0: the folder stands for itself and is never renamed.
    add({QStringLiteral("Trip")});
    EXPECT_EQ(proposals(), QStringList{QStringLiteral("Trip/")});
    EXPECT_EQ(renamer->windowTitle(), QStringLiteral("Rename Files (1 files)"));

    renamer->setFolderScanDepth(2);
    ASSERT_TRUE(QSignalSpy(renamer.get(), &PXFileRenamer::scanFinished).wait(5000));
    renamer->updateNow();
    EXPECT_EQ(proposals(),
              (QStringList{"Trip/", "a.jpg -> a01.jpg", "b.jpg -> b02.jpg", "Day/", "c.jpg -> c03.jpg",
                           "d.jpg -> d04.jpg"}));

    renamer->setPerFolder(true);
    renamer->setSortSetting(PXFileRenamer::byName, false);
    renamer->updateNow();
    EXPECT_EQ(proposals(),
              (QStringList{"Trip/", "Day/", "d.jpg -> d01.jpg", "c.jpg -> c02.jpg", "b.jpg -> b01.jpg",
                           "a.jpg -> a02.jpg"}));

    // A flat list holds the files alone, numbered across it in its own order.
    renamer->setPerFolder(false);
    renamer->setFlatList(true);
    renamer->setSortSetting(PXFileRenamer::byName, true);
    renamer->updateNow();
    EXPECT_EQ(proposals(),
              (QStringList{"a.jpg -> a01.jpg", "b.jpg -> b02.jpg", "c.jpg -> c03.jpg", "d.jpg -> d04.jpg"}));
}

TEST(BatchModel, FilesInsideListedFoldersGetContainersForTheFoldersBetween)
{
    TestDir dir;
    const auto item = [&](const QString &path, bool container = false) -> PXBatchItemPtr {
        return std::make_shared<PXFileRenameItem>(PXFile::fileForPath(path), container);
    };
    PXBatchOutlineModel outline([](const PXFilePtr &file, bool container) -> PXBatchItemPtr {
        return std::make_shared<PXFileRenameItem>(file, container);
    });
    outline.setSortDescriptors(sortDescriptorsForSortType(FileSortType::name, FolderSortType::mixed, true,
                                                          QStringLiteral("representedObject")));
    outline.setItems({item(dir.write(QStringLiteral("Top/A/B/deep.jpg"))), item(dir.mkdir(QStringLiteral("Top")), true),
                      item(dir.write(QStringLiteral("Elsewhere/loose.jpg"))),
                      item(dir.write(QStringLiteral("Top/first.jpg")))});
    outline.commitChanges();
    QStringList shown;
    for (const PXBatchItemPtr &each : outline.arrangedItems())
        shown.append(
            QStringLiteral("%1%2:%3")
                .arg(each->isContainer() ? QStringLiteral("+") : QString(), each->representedObject()->name())
                .arg(each->itemOverallIndex() == PXBatchItem::notFound ? -1 : qint64(each->itemOverallIndex())));
    EXPECT_EQ(shown, (QStringList{"loose.jpg:0", "+Top:-1", "+A:-1", "+B:-1", "deep.jpg:1", "first.jpg:2"}));
    EXPECT_EQ(outline.allItems().size(), 6);

    // Removing a folder with its children leaves the loose file alone.
    outline.removeItems({outline.itemForIdentifier(dir.filePath(QStringLiteral("Top")))}, true);
    outline.commitChanges();
    ASSERT_EQ(outline.arrangedItems().size(), 1);
    EXPECT_EQ(outline.arrangedItems().first()->representedObject()->name(), QStringLiteral("loose.jpg"));
}

TEST_F(BatchRename, CollisionsMarkLaterItemsAndBlockTheRename)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg", "photo.JPG", "Taken.jpg"})
        dir.write(QString::fromLatin1(name), name);
    renamer->setRenameRules(
        {regexRow(QStringLiteral("^[ab]\\."), QStringLiteral("x.")),
         regexRow(QStringLiteral("^c"), QStringLiteral("taken")),
         in(C::searchExtension,
            {simple({rule(C::replace), rule(C::replaceEntirely), rule(C::label), rule(C::makeLowercase)})})});
    add({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("c.jpg"), QStringLiteral("photo.JPG")});
    // The first of two equal names is clear; a name taken on disk counts whatever its case; a change
    // of case alone is no collision.
    EXPECT_EQ(proposals(),
              (QStringList{"a.jpg -> x.jpg", "b.jpg -> x.jpg !", "c.jpg -> taken.jpg !", "photo.JPG -> photo.jpg"}));
    EXPECT_TRUE(renamer->hasCollisions());
    EXPECT_EQ(renamer->rename(), PXFileRenamer::RenameStart::refused);
    EXPECT_EQ(namesOnDisk(), (QStringList{"Taken.jpg", "a.jpg", "b.jpg", "c.jpg", "photo.JPG"}));

    renamer->setRenameRules(
        {in(C::searchExtension,
            {simple({rule(C::replace), rule(C::replaceEntirely), rule(C::label), rule(C::makeLowercase)})})});
    const auto [renamed, error] = renameAll();
    EXPECT_EQ(renamed, 1);
    EXPECT_FALSE(error.isError());
    EXPECT_TRUE(QFile::exists(dir.filePath(QStringLiteral("photo.jpg"))));
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("photo.JPG"))));
}

TEST_F(BatchRename, RenamesChangedFilesInOneOperationAndFollowsThem)
{
    for (const char *name : {"Pics/c.jpg", "Pics/a.jpg", "Pics/b.jpg", "Pics/002.jpg"})
        dir.write(QString::fromLatin1(name), name);
    renamer->setFolderScanDepth(1);
    renamer->setRenameRules(
        {in(C::searchFilename,
            {simple({rule(C::replace), rule(C::replaceEntirely), rule(C::label), rule(C::addSequence), rule(C::label),
                     rule(C::initialSequenceValue, QStringLiteral("2")), rule(C::label),
                     rule(C::sequenceFormat001)})})});
    add({QStringLiteral("Pics")});
    EXPECT_EQ(proposals(),
              (QStringList{"Pics/", "002.jpg -> 002.jpg", "a.jpg -> 003.jpg", "b.jpg -> 004.jpg", "c.jpg -> 005.jpg"}));
    QSignalSpy progress(renamer.get(), &PXFileRenamer::progressChanged);
    const auto [renamed, error] = renameAll();
    EXPECT_EQ(renamed, 3);
    EXPECT_FALSE(error.isError());
    EXPECT_FALSE(renamer->workInProgress());
    EXPECT_EQ(renamer->progressPercentage(), 100);
    EXPECT_EQ(namesOnDisk(QStringLiteral("Pics")), (QStringList{"002.jpg", "003.jpg", "004.jpg", "005.jpg"}));
    QFile moved(dir.filePath(QStringLiteral("Pics/003.jpg")));
    ASSERT_TRUE(moved.open(QIODevice::ReadOnly));
    EXPECT_EQ(moved.readAll(), QByteArray("Pics/a.jpg"));
    // The items now stand for the renamed files: the same rules change nothing more.
    renamer->updateNow();
    EXPECT_EQ(proposals(),
              (QStringList{"Pics/", "002.jpg -> 002.jpg", "003.jpg -> 003.jpg", "004.jpg -> 004.jpg",
                           "005.jpg -> 005.jpg"}));
    EXPECT_EQ(renamer->rename(), PXFileRenamer::RenameStart::nothingToRename);
}

TEST_F(BatchRename, VanishedFilesAreAskedAboutAndNothingIsLost)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        dir.write(QString::fromLatin1(name));
    renamer->setRenameRules({insertCharacters(C::insertAtBeginning, QStringLiteral("new-"))});
    add({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("c.jpg")});
    ASSERT_TRUE(QFile::remove(dir.filePath(QStringLiteral("b.jpg"))));

    // Cancelling the question renames nothing at all.
    questions.answer = ZQFileOperationResolution::cancel;
    auto [renamed, error] = renameAll();
    EXPECT_EQ(renamed, 0);
    EXPECT_EQ(error.code, ZQFileOperationErrorCode::sourceMissing);
    EXPECT_EQ(namesOnDisk(), (QStringList{"a.jpg", "c.jpg"}));

    // Skipping it renames the others.
    questions.asked.clear();
    questions.answer = ZQFileOperationResolution::skip;
    std::tie(renamed, error) = renameAll();
    EXPECT_EQ(renamed, 2);
    EXPECT_FALSE(error.isError());
    ASSERT_EQ(questions.asked.size(), 1);
    EXPECT_EQ(questions.asked.first().path, dir.filePath(QStringLiteral("b.jpg")));
    EXPECT_EQ(namesOnDisk(), (QStringList{"new-a.jpg", "new-c.jpg"}));
}

TEST_F(BatchRename, FilesWhoseFolderIsGoneAreLeftOutSilently)
{
    for (const char *name : {"Gone/a.jpg", "Gone/b.jpg", "Stays/c.jpg"})
        dir.write(QString::fromLatin1(name));
    renamer->setRenameRules({insertCharacters(C::insertAtEnd, QStringLiteral("~"))});
    add({QStringLiteral("Gone/a.jpg"), QStringLiteral("Gone/b.jpg"), QStringLiteral("Stays/c.jpg")});
    // The folder is replaced by a regular file: nothing under it can be renamed, whoever runs the test.
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("Gone"))).removeRecursively());
    dir.write(QStringLiteral("Gone"), "not a folder");
    const auto [renamed, error] = renameAll();
    EXPECT_EQ(renamed, 1);
    EXPECT_FALSE(error.isError());
    EXPECT_TRUE(questions.asked.isEmpty());
    EXPECT_EQ(namesOnDisk(QStringLiteral("Stays")), QStringList{"c.jpg~"});
}

// A file that takes a new name after the names were checked (another program writing into the
// folder while the rename runs): the run stops there, the files before keep their new names, the
// rest their old ones, the other program's file is untouched, and the user is told.
TEST_F(BatchRename, AnErrorStopsTheRunAndKeepsWhatWasRenamed)
{
    for (const char *name : {"IMG_0001.JPG", "IMG_0002.JPG", "IMG_0003.JPG", "IMG_0004.JPG", "IMG_0005.JPG"})
        dir.write(QString::fromLatin1(name), name);
    const QString intruder = dir.filePath(QStringLiteral("Lisbon IMG_0003.JPG"));
    controller.setPerformerFactory(ZQFileOperationType::rename,
                                   [intruder] { return std::make_unique<InterferingRenamePerformer>(intruder); });
    renamer->setRenameRules({insertCharacters(C::insertAtBeginning, QStringLiteral("Lisbon "))});
    add({QStringLiteral("IMG_0005.JPG"), QStringLiteral("IMG_0004.JPG"), QStringLiteral("IMG_0003.JPG"),
         QStringLiteral("IMG_0002.JPG"), QStringLiteral("IMG_0001.JPG")});
    ASSERT_FALSE(renamer->hasCollisions());

    RenameLogCapture log;
    const auto [renamed, error] = renameAll();
    EXPECT_EQ(renamed, 2);
    EXPECT_EQ(error.code, ZQFileOperationErrorCode::destinationExists);
    EXPECT_EQ(questions.shownErrors.size(), 1);
    EXPECT_TRUE(log.contains(QStringLiteral("File operation error:")));
    EXPECT_EQ(namesOnDisk(),
              (QStringList{"IMG_0003.JPG", "IMG_0004.JPG", "IMG_0005.JPG", "Lisbon IMG_0001.JPG", "Lisbon IMG_0002.JPG",
                           "Lisbon IMG_0003.JPG"}));
    QFile kept(intruder);
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), QByteArray("written meanwhile"));
    QFile renamedFirst(dir.filePath(QStringLiteral("Lisbon IMG_0001.JPG")));
    ASSERT_TRUE(renamedFirst.open(QIODevice::ReadOnly));
    EXPECT_EQ(renamedFirst.readAll(), QByteArray("IMG_0001.JPG"));
    EXPECT_FALSE(renamer->workInProgress());
}
