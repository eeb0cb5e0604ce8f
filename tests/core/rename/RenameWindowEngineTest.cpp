#include "core/rename/PXFileRenameItem.h"
#include "core/rename/PXFileRenamer.h"
#include "core/rename/PXRenameComputation.h"
#include "core/rename/PXRenameCriterion.h"
#include "core/rename/PXRenamePresets.h"

#include "core/fs/operations/ZQFileController.h"
#include "core/model/PXFile.h"
#include "core/rename/RenameRuleRows.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QDir>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <functional>

namespace C = PXRenameConstant;

namespace {

PXFileRenameItemPtr numberedItem(const QString &path, quint64 index = 0)
{
    auto item = std::make_shared<PXFileRenameItem>(PXFile::fileForPath(path));
    quint64 overall = index;
    item->setOverallIndex(overall, index);
    return item;
}

PXRenameRow insertDate(int constant, const QString &pattern)
{
    return simple({rule(C::insert), rule(C::insertAtBeginning), rule(constant), rule(C::label),
                   rule(C::dateFormatValue, pattern)});
}

// Every row the editor can build: one per path through the criterion tree, fields filled.
void collectRows(int rowType, QList<PXRenameCriterion::Step> steps, QList<QList<PXRenameRule>> &rows)
{
    const QList<PXRenameCriterionPtr> &choices =
        steps.isEmpty() ? PXRenameCriterion::rootCriteria(rowType) : steps.last().criterion->childCriteria();
    if (choices.isEmpty()) {
        rows.append(PXRenameCriterion::rulesForSteps(steps));
        return;
    }
    for (const PXRenameCriterionPtr &choice : choices) {
        QList<PXRenameCriterion::Step> next = steps;
        next.append({choice, choice->isField() ? QStringLiteral("v%1").arg(steps.size()) : QString()});
        collectRows(rowType, next, rows);
    }
}

} // namespace

// Linux takes names of 255 bytes; 255 UTF-16 units of CJK text are 765 of them. Such a name is
// not proposed, so that a rename never stops halfway on it.
TEST(RenameWindowEngine, NamesOverTheFileSystemLimitKeepTheirNameAndAreMarked)
{
    TestDir dir;
    const PXFileRenameItemPtr item = numberedItem(dir.write(QStringLiteral("photo.JPG")));
    // 82 three-byte characters and the name's 9 bytes: 255 bytes, the most a name may have.
    item->updateForRenameRules({insertCharacters(C::insertAtBeginning, QString(82, QChar(0x65E5)))});
    EXPECT_TRUE(item->nameHasChanged());
    EXPECT_FALSE(item->nameTooLong());
    EXPECT_EQ(QFile::encodeName(item->potentialName()).size(), 255);
    item->updateForRenameRules({insertCharacters(C::insertAtBeginning, QString(83, QChar(0x65E5)))});
    EXPECT_EQ(item->potentialName(), QStringLiteral("photo.JPG"));
    EXPECT_FALSE(item->nameHasChanged());
    EXPECT_TRUE(item->nameTooLong());

    // The batch renames the others and leaves that one, rather than failing on it.
    TestDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    PXRenamePresets presets(&settings);
    ZQFileController controller;
    PXFileRenamer renamer(&presets, &controller);
    renamer.setWatchesFiles(false);
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        dir.write(QString::fromLatin1(name));
    renamer.setRenameRules({in(C::searchFilename, {insertCharacters(C::insertAtEnd, QStringLiteral("_x"))}),
                            regexRow(QStringLiteral("^b"), QString(130, QChar(0xE9)) + QLatin1Char('b'))});
    renamer.addFilesToRename({PXFile::fileForPath(dir.filePath(QStringLiteral("a.jpg"))),
                              PXFile::fileForPath(dir.filePath(QStringLiteral("b.jpg"))),
                              PXFile::fileForPath(dir.filePath(QStringLiteral("c.jpg")))});
    QSignalSpy finished(&renamer, &PXFileRenamer::renameFinished);
    ASSERT_EQ(renamer.rename(), PXFileRenamer::RenameStart::started);
    ASSERT_TRUE(finished.wait(10000));
    EXPECT_EQ(finished.first().at(0).value<qsizetype>(), 2);
    EXPECT_FALSE(finished.first().at(1).value<ZQFileOperationError>().isError());
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files, QDir::Name),
              (QStringList{"a_x.jpg", "b.jpg", "c_x.jpg", "photo.JPG"}));
}

// The date the picture was taken, formatted like the other dates; a file without one (a
// screenshot, a scan) uses its creation date.
TEST(RenameWindowEngine, DateTakenComesFromTheExifDateElseTheCreationDate)
{
    TestDir dir;
    TestImages::JpegOptions options;
    options.dateTimeOriginal = QStringLiteral("2021:08:15 17:42:09");
    const PXFileRenameItemPtr camera =
        numberedItem(TestImages::writeJpeg(dir.filePath(QStringLiteral("IMG_4410.JPG")), QSize(32, 24), options));
    camera->updateForRenameRules({in(C::searchFilename, {insertDate(C::addDateTaken, "yyyy-MM-dd HH.mm.ss ")})});
    EXPECT_EQ(camera->potentialName(), QStringLiteral("2021-08-15 17.42.09 IMG_4410.JPG"));

    const PXFileRenameItemPtr screenshot = numberedItem(dir.write(QStringLiteral("Screenshot.png"), "x"));
    screenshot->updateForRenameRules({insertDate(C::addDateTaken, "yyyy ")});
    const QDateTime created = screenshot->representedObject()->creationDate();
    if (created.isValid()) {
        EXPECT_EQ(screenshot->potentialName(), QString::number(created.date().year()) + " Screenshot.png");
    }
    EXPECT_TRUE(
        QRegularExpression(QStringLiteral("^\\d{4} Screenshot\\.png$")).match(screenshot->potentialName()).hasMatch())
        << qPrintable(screenshot->potentialName());

    // A pattern that yields path separators is cleaned like any other result.
    camera->updateForRenameRules({insertDate(C::addDateTaken, "yyyy/MM/dd HH:mm ")});
    EXPECT_EQ(camera->potentialName(), QStringLiteral("2021|08|15 17.42 IMG_4410.JPG"));

    // The default preset beside the modification-date one.
    TestDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    const std::optional<QJsonObject> preset =
        PXRenamePresets(&settings).presetNamed(QStringLiteral("Date Taken Prefix"));
    ASSERT_TRUE(preset);
    const auto rules = renameRulesFromJson(preset->value(PXRenameSettingsKey::rules));
    ASSERT_TRUE(rules);
    camera->updateForRenameRules(*rules);
    EXPECT_EQ(camera->potentialName(), QStringLiteral("2021-08-15 17.42.09 IMG_4410.JPG"));
}

// The editor saves each row as the engine reads it and restores it from what it saved, for every
// row its menus can build; the default presets restore completely.
TEST(RenameWindowEngine, EveryRowOfTheCriterionTreeRestoresFromItsSavedRules)
{
    const auto noDefault = [](const PXRenameCriterion &) { return QString(); };
    int rowCount = 0;
    QSet<int> constants;
    for (const int rowType : {int(PXRenameRow::simple), int(PXRenameRow::compound)}) {
        QList<QList<PXRenameRule>> rows;
        collectRows(rowType, {}, rows);
        for (const QList<PXRenameRule> &saved : std::as_const(rows)) {
            bool complete = false;
            const QList<PXRenameCriterion::Step> steps =
                PXRenameCriterion::stepsForRules(rowType, saved, noDefault, &complete);
            EXPECT_TRUE(complete);
            EXPECT_EQ(PXRenameCriterion::rulesForSteps(steps), saved);
            for (const PXRenameRule &r : saved)
                constants.insert(r.operationConstant);
            ++rowCount;
        }
    }
    EXPECT_GT(rowCount, 60);
    // Every operation, target, value and format of the catalogue is reachable.
    for (const QString &name : PXRenameCriterion::allNames()) {
        const int constant = PXRenameCriterion::operationConstantForName(name);
        if (constant != C::label && constant != C::dateFormatHelp && constant != C::rangeFormatHelp) {
            EXPECT_TRUE(constants.contains(constant)) << qPrintable(name);
        }
    }

    for (const QJsonObject &preset : PXRenamePresets::defaultPresets()) {
        const std::function<void(const PXRenameRules &)> check = [&](const PXRenameRules &rowsOfPreset) {
            for (const PXRenameRow &row : rowsOfPreset) {
                bool complete = false;
                const auto steps = PXRenameCriterion::stepsForRules(row.rowType, row.rules, noDefault, &complete);
                EXPECT_TRUE(complete) << qPrintable(preset.value(PXRenameSettingsKey::presetName).toString());
                EXPECT_EQ(PXRenameCriterion::rulesForSteps(steps), row.rules);
                check(row.subRules);
            }
        };
        check(*renameRulesFromJson(preset.value(PXRenameSettingsKey::rules)));
    }

    // A row the tree does not know is completed with first choices, and says so.
    bool complete = true;
    const auto steps = PXRenameCriterion::stepsForRules(PXRenameRow::simple, {rule(C::insert), rule(C::replaceRange)},
                                                        noDefault, &complete);
    EXPECT_FALSE(complete);
    ASSERT_GE(steps.size(), 3);
    EXPECT_EQ(steps[1].criterion->operationConstant(), C::insertAtBeginning);
}

// Names computed on a worker are those computed at once; a newer edit makes an older
// computation's result go unused.
TEST(RenameWindowEngine, BackgroundUpdatesGiveTheNamesOfTheLatestRules)
{
    TestDir dir;
    TestDir settingsDir;
    for (int i = 1; i <= 300; ++i)
        dir.write(QStringLiteral("Trip/IMG_%1.JPG").arg(i));
    dir.write(QStringLiteral("Trip/taken.JPG"));
    QSettings settings(settingsDir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    PXRenamePresets presets(&settings);
    ZQFileController controller;
    PXFileRenamer renamer(&presets, &controller);
    renamer.setWatchesFiles(false);
    renamer.setComputesInBackground(true);
    renamer.setFolderScanDepth(1);
    renamer.addFilesToRename({PXFile::fileForPath(dir.filePath(QStringLiteral("Trip")))});
    ASSERT_TRUE(QSignalSpy(&renamer, &PXFileRenamer::scanFinished).wait(5000));

    const PXRenameRules first{regexRow(QStringLiteral("^IMG_(\\d+)"), QStringLiteral("first_$1"))};
    const PXRenameRules latest{regexRow(QStringLiteral("^IMG_(\\d+)"), QStringLiteral("taken"))};
    renamer.setRenameRules(first);
    ASSERT_TRUE(waitUntil([&] { return !renamer.isUpdatePending(); }));
    renamer.setRenameRules(latest);
    ASSERT_TRUE(waitUntil([&] { return !renamer.isUpdatePending(); }));

    const QList<PXFileRenameItemPtr> items = renamer.arrangedItems();
    ASSERT_EQ(items.size(), 302);
    QStringList background;
    for (const PXFileRenameItemPtr &item : items)
        background.append(item->potentialName() + (item->hasCollision() ? QStringLiteral("!") : QString()));
    EXPECT_EQ(background[1], QStringLiteral("taken.JPG!"));
    EXPECT_TRUE(renamer.hasCollisions());
    renamer.updateNow();
    QStringList atOnce;
    for (const PXFileRenameItemPtr &item : items)
        atOnce.append(item->potentialName() + (item->hasCollision() ? QStringLiteral("!") : QString()));
    EXPECT_EQ(background, atOnce);

    // A computation cancelled before it ran leaves the items as they were.
    PXRenameComputation stale(items, first, false);
    stale.cancel();
    const PXRenameComputation::Result result = stale.run();
    EXPECT_TRUE(result.cancelled);
    stale.apply(result);
    EXPECT_EQ(items[1]->potentialName(), QStringLiteral("taken.JPG"));
}
