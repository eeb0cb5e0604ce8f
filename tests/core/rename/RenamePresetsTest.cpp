#include "core/fs/operations/ZQFileController.h"
#include "core/rename/PXFileRenamer.h"
#include "core/rename/PXFileRenamerQuestions.h"
#include "core/rename/PXRenamePresets.h"

#include "core/model/PXFile.h"
#include "core/rename/RenameRuleRows.h"
#include "support/TestDir.h"

#include <QJsonArray>
#include <QSettings>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace C = PXRenameConstant;
namespace Key = PXRenameSettingsKey;

namespace {

class PresetAnswers : public PXFileRenamerQuestions
{
public:
    PXUnsavedPresetAnswer answer = PXUnsavedPresetAnswer::cancel;
    int asked = 0;

    ZQFileOperationResolution queryUserWithError(const ZQFileOperationError &, bool *) override
    {
        return ZQFileOperationResolution::cancel;
    }
    void showRenameError(const QString &, const QString &) override { }
    PXUnsavedPresetAnswer askToSaveChangesToPreset(const QJsonObject &) override
    {
        ++asked;
        return answer;
    }
};

class RenamePresets : public ::testing::Test
{
protected:
    std::unique_ptr<QSettings> openSettings() const
    {
        return std::make_unique<QSettings>(settingsDir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    }
    qsizetype indexOfPreset(PXRenamePresets &presets, const QString &name)
    {
        for (qsizetype i = 0; i < presets.savedPresets().size(); ++i) {
            if (presets.savedPresets()[i].value(Key::presetName).toString() == name)
                return i;
        }
        return -1;
    }

    TestDir settingsDir;
    TestDir dir;
    ZQFileController controller;
};

QJsonObject settingsWithDepth(int depth)
{
    return QJsonObject{{Key::rules, QJsonArray()}, {Key::depth, depth}, {Key::sortType, 0},
                       {Key::sortAscending, true}, {Key::listType, 0},  {Key::sequenceType, 0},
                       {Key::predicate, QString()}};
}

} // namespace

TEST_F(RenamePresets, RecentSettingsAreNewestFirstAtMostTenAndNeverTwoEqual)
{
    auto settings = openSettings();
    PXRenamePresets presets(settings.get());
    presets.buildPresetList(settingsWithDepth(0));
    // Without saved presets the defaults are offered; without recent settings, the current ones.
    EXPECT_GE(presets.savedPresets().size(), 4);
    ASSERT_EQ(presets.recentSettings().size(), 1);
    EXPECT_EQ(presets.recentSettings().first().value(Key::presetName).toString(), QStringLiteral("Recent Setting 1"));

    for (int depth = 1; depth <= 12; ++depth)
        presets.savePresets(settingsWithDepth(depth));
    presets.savePresets(settingsWithDepth(7));
    settings->sync();

    const auto rereadSettings = openSettings();
    PXRenamePresets reread(rereadSettings.get());
    reread.buildPresetList(settingsWithDepth(0));
    QList<int> depths;
    for (const QJsonObject &recent : reread.recentSettings())
        depths.append(recent.value(Key::depth).toInt());
    EXPECT_EQ(depths, (QList<int>{7, 12, 11, 10, 9, 8, 6, 5, 4, 3}));
    EXPECT_EQ(reread.recentSettings().last().value(Key::presetName).toString(), QStringLiteral("Recent Setting 10"));

    // Equality ignores the name, the group, the date and the mark, and nothing else.
    QJsonObject named = settingsWithDepth(3);
    named.insert(Key::presetName, QStringLiteral("Mine"));
    named.insert(Key::dateSaved, QStringLiteral("2020-01-01T00:00:00.000Z"));
    named.insert(Key::altered, Key::altered);
    EXPECT_TRUE(PXRenamePresets::settingsAreEqual(named, settingsWithDepth(3)));
    named.insert(Key::dragIndex, 2);
    EXPECT_FALSE(PXRenamePresets::settingsAreEqual(named, settingsWithDepth(3)));
}

TEST_F(RenamePresets, AnAlteredPresetIsMarkedAndAskedAboutBeforeItIsLeft)
{
    auto settings = openSettings();
    PXRenamePresets presets(settings.get());
    PresetAnswers answers;
    PXFileRenamer renamer(&presets, &controller);
    renamer.setWatchesFiles(false);
    renamer.setQuestions(&answers);
    presets.buildPresetList(renamer.currentSettingsDict());
    const qsizetype lower = indexOfPreset(presets, QStringLiteral("Lowercase Extensions"));
    ASSERT_GE(lower, 0);

    ASSERT_TRUE(renamer.selectPreset(PXRenamePresets::savedPresetsGroup, lower));
    renamer.updateNow();
    EXPECT_FALSE(renamer.isCurrentPresetAltered());
    const PXRenameRules presetRules = renamer.renameRules();
    renamer.setRenameRules({insertCharacters(C::insertAtEnd, QStringLiteral("!"))});
    renamer.updateNow();
    EXPECT_TRUE(renamer.isCurrentPresetAltered());
    renamer.setRenameRules(presetRules);
    renamer.updateNow();
    EXPECT_FALSE(renamer.isCurrentPresetAltered());

    // "Cancel" keeps the window open and the preset selected.
    renamer.setPerFolder(true);
    renamer.updateNow();
    EXPECT_FALSE(renamer.windowShouldClose());
    EXPECT_FALSE(renamer.selectPreset(PXRenamePresets::savedPresetsGroup, 0));
    EXPECT_EQ(renamer.currentSavedPresetIndex(), lower);
    // "Save" stores the current settings under the preset's name; closing writes it.
    answers.answer = PXUnsavedPresetAnswer::save;
    EXPECT_TRUE(renamer.windowShouldClose());
    EXPECT_EQ(answers.asked, 3);
    EXPECT_FALSE(renamer.isCurrentPresetAltered());
    renamer.windowWillClose();
    settings->sync();

    const std::optional<QJsonObject> saved =
        PXRenamePresets(openSettings().get()).presetNamed(QStringLiteral("Lowercase Extensions"));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->value(Key::sequenceType).toInt(), PXFileRenamer::perFolderSequence);
    EXPECT_FALSE(saved->contains(Key::altered));
}

TEST_F(RenamePresets, DefaultPresetsRenameAsTheirNamesSay)
{
    const QDateTime modified(QDate(2021, 3, 4), QTime(5, 6, 7));
    dir.write(QStringLiteral("Trip/IMG 7.JPG"), "x", modified);
    const QHash<QString, QString> expected = {
        {QStringLiteral("Date Modified Prefix"), QStringLiteral("2021-03-04 05.06.07 IMG 7.JPG")},
        {QStringLiteral("Sequence Renumbering"), QStringLiteral("001.JPG")},
        {QStringLiteral("Folder Name and Number"), QStringLiteral("Trip 001.JPG")},
        {QStringLiteral("Lowercase Extensions"), QStringLiteral("IMG 7.jpg")},
        {QStringLiteral("Spaces to Underscores"), QStringLiteral("IMG_7.JPG")},
    };
    auto settings = openSettings();
    PXRenamePresets presets(settings.get());
    // And "Date Taken Prefix", whose date depends on the file (RenameWindowEngineTest checks it).
    EXPECT_EQ(PXRenamePresets::defaultPresets().size(), expected.size() + 1);
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        const std::optional<QJsonObject> preset = presets.presetNamed(it.key());
        ASSERT_TRUE(preset) << qPrintable(it.key());
        PXFileRenamer renamer(&presets, &controller);
        renamer.setWatchesFiles(false);
        renamer.updateWithPreset(*preset);
        renamer.addFilesToRename({PXFile::fileForPath(dir.filePath(QStringLiteral("Trip")))});
        if (renamer.workInProgress()) {
            ASSERT_TRUE(QSignalSpy(&renamer, &PXFileRenamer::scanFinished).wait(5000));
        }
        renamer.updateNow();
        ASSERT_EQ(renamer.arrangedItems().size(), 2) << qPrintable(it.key());
        EXPECT_EQ(renamer.arrangedItems().last()->potentialName(), it.value()) << qPrintable(it.key());
    }
}
