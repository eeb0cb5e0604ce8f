#include "core/settings/HotkeyBindings.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"

#include "support/LogCapture.h"
#include "support/TestDir.h"

#include <QFile>
#include <QJsonDocument>

#include <gtest/gtest.h>

// The hotkeys are the one part of the settings file that a user edits by hand most, so a bad
// entry there costs that entry alone: never the other bindings, never the other settings.

TEST(HotkeyBindings, BadEntriesAreDroppedAndEverythingElseIsKept)
{
    TestDir dir;
    const QString file = dir.write(QStringLiteral("settings.json"), R"({
        "hideOnDeactivate": true,
        "thumbnailOutlineThickness": 4,
        "hotkeys": {
            "renameFile": ["Ctrl+Nope", "F3"],
            "flagItem": ["Shift+P", 7, "Shift+P"],
            "duplicate": "Ctrl+D",
            "videoMute": ["Bogus", ""],
            "selectAll": [],
            "laterCommand": ["Ctrl+K"]
        }
    })");
    LogCapture log;
    SettingsManager manager(file);

    ASSERT_EQ(manager.loadOutcome(), SettingsManager::LoadOutcome::loaded) << qPrintable(manager.loadError());
    const AppSettings *settings = manager.settings();
    EXPECT_TRUE(settings->hideOnDeactivate());
    EXPECT_EQ(settings->thumbnailOutlineThickness(), 4);

    const QMap<QString, QList<QKeySequence>> &keys = settings->hotkeys().keys;
    EXPECT_EQ(keys.value("renameFile"), QList<QKeySequence>{QKeySequence(Qt::Key_F3)});
    EXPECT_EQ(keys.value("flagItem"), QList<QKeySequence>{QKeySequence(Qt::SHIFT | Qt::Key_P)});
    // No readable key at all: the command keeps its defaults instead of losing every key.
    EXPECT_FALSE(keys.contains("videoMute"));
    EXPECT_FALSE(keys.contains("duplicate"));
    // An empty list is the user's choice of no keys; which commands exist is not for the file
    // to say.
    EXPECT_TRUE(keys.contains("selectAll") && keys.value("selectAll").isEmpty());
    EXPECT_TRUE(keys.contains("laterCommand"));

    const QString lines = log.lines.join('\n');
    EXPECT_TRUE(lines.contains(R"(hotkeys.renameFile[0]: "Ctrl+Nope" is not a key)")) << qPrintable(lines);
    EXPECT_TRUE(lines.contains("hotkeys.flagItem[1]")) << qPrintable(lines);
    EXPECT_TRUE(lines.contains("hotkeys.duplicate: expected an array of keys")) << qPrintable(lines);
    EXPECT_TRUE(lines.contains("hotkeys.videoMute: none of its keys can be read")) << qPrintable(lines);
    EXPECT_FALSE(lines.contains("Error loading settings file")) << qPrintable(lines);

    // Hotkeys that are not even an object are dropped the same way.
    const QString other = dir.write(QStringLiteral("other.json"), R"({"hotkeys": "F2", "detailedLogging": true})");
    SettingsManager second(other);
    EXPECT_EQ(second.loadOutcome(), SettingsManager::LoadOutcome::loaded);
    EXPECT_TRUE(second.settings()->detailedLogging());
    EXPECT_TRUE(second.settings()->hotkeys().isEmpty());
}

TEST(HotkeyBindings, KeysAreStoredAsPortableTextAndReadBack)
{
    for (const char *text : {"Ctrl+Shift+R", "F2", "Space", "Del", "Ctrl+,", "Alt+Shift+Left", "PgDown", "Meta+1"}) {
        const std::optional<QKeySequence> key = HotkeyBindings::keyFromText(QLatin1String(text));
        ASSERT_TRUE(key) << text;
        EXPECT_EQ(HotkeyBindings::textOf(*key), QLatin1String(text));
    }
    for (const char *text : {"", "  ", "Ctrl+", "Ctrl+Nope", "Ctrl+K, Ctrl+C"})
        EXPECT_FALSE(HotkeyBindings::keyFromText(QLatin1String(text))) << text;

    TestDir dir;
    const QString file = dir.filePath(QStringLiteral("settings.json"));
    HotkeyBindings bindings;
    bindings.keys.insert(QStringLiteral("renameFile"), {QKeySequence(Qt::Key_F2), QKeySequence(Qt::CTRL | Qt::Key_E)});
    bindings.keys.insert(QStringLiteral("videoMute"), {});
    {
        SettingsManager manager(file);
        manager.settings()->setHotkeys(bindings);
        ASSERT_TRUE(manager.saveNow());
    }
    QFile saved(file);
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    const QJsonObject json = QJsonDocument::fromJson(saved.readAll()).object();
    EXPECT_EQ(QJsonDocument(json.value("hotkeys").toObject()).toJson(QJsonDocument::Compact),
              QByteArray(R"({"renameFile":["F2","Ctrl+E"],"videoMute":[]})"));
    SettingsManager reloaded(file);
    EXPECT_EQ(reloaded.settings()->hotkeys(), bindings);
}
