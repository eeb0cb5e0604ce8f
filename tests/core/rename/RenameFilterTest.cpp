#include "core/rename/PXRenameFilter.h"

#include "core/fs/operations/ZQFileController.h"
#include "core/model/PXFile.h"
#include "core/rename/PXFileRenamer.h"
#include "core/rename/PXRenamePresets.h"

#include "core/rename/RenameLogCapture.h"
#include "core/rename/RenameRuleRows.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QJsonArray>
#include <QSettings>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace C = PXRenameConstant;
namespace Key = PXRenameSettingsKey;

TEST(RenameFilter, ReadsItsTextBackAndMatchesAsTheRowsSay)
{
    TestDir dir;
    const PXFilePtr jpeg = PXFile::fileForPath(
        dir.write(QStringLiteral("IMG_0042.JPG"), QByteArray(2000, 'x'), QDateTime(QDate(2023, 7, 14), QTime(9, 30))));
    const PXFilePtr text = PXFile::fileForPath(
        dir.write(QStringLiteral("Notes café.txt"), "x", QDateTime(QDate(2019, 1, 2), QTime(10, 0))));

    PXRenameFilter filter;
    filter.setRows({{PXRenameFilter::Key::extension, PXRenameFilter::Comparison::equal, QStringLiteral("jpg")},
                    {PXRenameFilter::Key::fileSize, PXRenameFilter::Comparison::greater, QStringLiteral("1000")}});
    const QString stored = filter.text();
    EXPECT_EQ(stored, QStringLiteral("(extension ==[cd] \"jpg\") && (fileSize > 1000)"));
    const std::optional<PXRenameFilter> read = PXRenameFilter::fromText(stored);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->text(), stored);
    EXPECT_TRUE(read->matches(*jpeg));
    EXPECT_FALSE(read->matches(*text));

    // Any of the rows; texts without case or accents; dates as days; quotes inside values.
    const std::optional<PXRenameFilter> any =
        PXRenameFilter::fromText(QStringLiteral("name CONTAINS[cd] \"CAFE\" || modificationDate >= \"2023-07-14\""));
    ASSERT_TRUE(any);
    EXPECT_FALSE(any->matchesAll());
    EXPECT_TRUE(any->matches(*jpeg));
    EXPECT_TRUE(any->matches(*text));
    const std::optional<PXRenameFilter> exact = PXRenameFilter::fromText(QStringLiteral("name CONTAINS \"CAFE\""));
    ASSERT_TRUE(exact);
    EXPECT_FALSE(exact->matches(*text));
    PXRenameFilter quoted;
    quoted.setRows({{PXRenameFilter::Key::name, PXRenameFilter::Comparison::contains, QStringLiteral("a \"b\" \\c")}});
    EXPECT_EQ(PXRenameFilter::fromText(quoted.text()), quoted);

    // A day that is no day matches nothing rather than everything.
    const std::optional<PXRenameFilter> badDay = PXRenameFilter::fromText(QStringLiteral("EXIFDate < \"soon\""));
    ASSERT_TRUE(badDay);
    EXPECT_FALSE(badDay->matches(*jpeg));

    EXPECT_TRUE(PXRenameFilter::fromText(QString())->isEmpty());
    EXPECT_TRUE(PXRenameFilter::fromText(QStringLiteral("TRUEPREDICATE"))->isEmpty());
    for (const char *bad : {"bogus == 1", "name CONTAINS", "name CONTAINS \"open", "fileSize CONTAINS 3",
                            "name == \"a\" && name == \"b\" || name == \"c\"", "(name == \"a\"", "name ~ 3"}) {
        QString error;
        EXPECT_FALSE(PXRenameFilter::fromText(QString::fromLatin1(bad), &error)) << bad;
        EXPECT_FALSE(error.isEmpty()) << bad;
    }
}

// A preset's filter is part of the preset: a preset meant for JPEGs renames JPEGs alone, and a
// filter that cannot be read lets no file through rather than every file.
TEST(RenameFilter, PresetFiltersDecideWhichFilesAreRenamed)
{
    TestDir dir;
    TestDir settingsDir;
    dir.write(QStringLiteral("Trip/a.JPG"));
    dir.write(QStringLiteral("Trip/b.txt"));
    QSettings settings(settingsDir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    PXRenamePresets presets(&settings);
    ZQFileController controller;

    const auto proposalsFor = [&](const QString &predicate) {
        PXFileRenamer renamer(&presets, &controller);
        renamer.setWatchesFiles(false);
        QJsonObject preset{{Key::presetName, QStringLiteral("JPEGs")},
                           {Key::depth, 1},
                           {Key::predicate, predicate},
                           {Key::rules, jsonFromRenameRules({insertCharacters(C::insertAtBeginning, "x_")})}};
        renamer.updateWithPreset(preset);
        renamer.addFilesToRename({PXFile::fileForPath(dir.filePath(QStringLiteral("Trip")))});
        if (renamer.workInProgress()) {
            EXPECT_TRUE(QSignalSpy(&renamer, &PXFileRenamer::scanFinished).wait(5000));
        }
        renamer.updateNow();
        QStringList lines;
        for (const PXFileRenameItemPtr &item : renamer.arrangedItems()) {
            if (!item->isContainer())
                lines.append(item->representedObject()->name() + QStringLiteral(" -> ") + item->potentialName());
        }
        EXPECT_EQ(renamer.filterPredicateText(), predicate);
        return lines;
    };
    EXPECT_EQ(proposalsFor(QStringLiteral("extension ==[c] \"jpg\"")), QStringList{QStringLiteral("a.JPG -> x_a.JPG")});
    EXPECT_EQ(proposalsFor(QString()), (QStringList{"a.JPG -> x_a.JPG", "b.txt -> x_b.txt"}));
    RenameLogCapture log;
    EXPECT_EQ(proposalsFor(QStringLiteral("(isInvisible == NO) && (isImage == YES)")), QStringList());
    EXPECT_TRUE(log.contains(QStringLiteral("Could not read the rename filter")));
}
