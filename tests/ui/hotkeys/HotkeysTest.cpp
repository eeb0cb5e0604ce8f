#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "ui/hotkeys/HotkeysController.h"
#include "ui/hotkeys/HotkeysView.h"
#include "ui/hotkeys/KeyRecorder.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandKeys.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/TabbedWindow.h"
#include "ui/windows/ViewerCommands.h"

#include "support/LogCapture.h"
#include "ui/ShellFixture.h"

#include <QFile>
#include <QJsonDocument>
#include <QLabel>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using Keys = QList<QKeySequence>;

const CommandRegistry &registry()
{
    return CommandRegistry::shared();
}

QJsonObject savedHotkeys(const QString &file)
{
    QFile saved(file);
    EXPECT_TRUE(saved.open(QIODevice::ReadOnly));
    return QJsonDocument::fromJson(saved.readAll()).object().value("hotkeys").toObject();
}

} // namespace

TEST(Hotkeys, EveryCommandOfTheWindowsHasARowAndNoTwoDefaultsCollide)
{
    ShellFixture shell;
    HotkeysController hotkeys(shell.settings(), registry(), CommandKeys::shared());
    const HotkeyTable &table = hotkeys.table();

    // Every item a main window or a viewer window carries, menus and key-only commands alike.
    TabbedWindow *window = shell.windows->newMainWindow(shell.photos)->tabbedWindow();
    QWidget viewer;
    ViewerCommands::install(&viewer, nullptr, registry(), {CommandId::openQuickview});
    QList<QAction *> items = window->actions() + viewer.actions();
    EXPECT_GT(items.size(), 120);
    for (QAction *action : std::as_const(items)) {
        auto *item = qobject_cast<CommandAction *>(action);
        if (!item)
            continue;
        const QString identifier = hotkeys.identifierOf(item->commandId(), item->argument());
        EXPECT_FALSE(identifier.isEmpty()) << qPrintable(CommandKeys::itemName(item->commandId(), item->argument()));
        if (const HotkeyTable::Row *row = table.row(identifier)) {
            EXPECT_EQ(item->shortcuts(), row->keys()) << qPrintable(identifier);
        }
    }

    // The viewer's commands go by their short names, in the groups the user looks for them in.
    const QStringList scrolling{"IV-MoveUp",        "IV-MoveDown",      "IV-MoveLeft",
                                "IV-MoveRight",     "IV-MoveNorthWest", "IV-MoveNorthEast",
                                "IV-MoveSouthWest", "IV-MoveSouthEast", "IV-Recenter"};
    const QStringList video{"VID-PlayPause",      "VID-FastBackward",  "VID-FastForward", "VID-Slow",
                            "VID-JumpBackward15", "VID-JumpForward15", "VID-NextFrame",   "VID-PrevFrame",
                            "VID-Mute",           "VID-VolumeDown",    "VID-VolumeUp"};
    const QStringList others{"OpenQuickview",
                             "FitToScreen",
                             "FitToWindow",
                             "Scale200Percent",
                             "Scale100Percent",
                             "Scale50Percent",
                             "ZoomIn",
                             "ZoomOut",
                             "Rotate180",
                             "RotateClockwise",
                             "RotateCounterclockwise",
                             "NextImageInFolder",
                             "PreviousImageInFolder"};
    for (const QString &name : scrolling + video + others) {
        const HotkeyTable::Row *row = table.row(name);
        ASSERT_TRUE(row) << qPrintable(name);
        EXPECT_EQ(row->identifier, name);
        if (scrolling.contains(name)) {
            EXPECT_EQ(row->group, "Keyboard Image Scrolling");
        }
        if (video.contains(name)) {
            EXPECT_EQ(row->group, "Video Player Control");
        }
    }
    EXPECT_EQ(table.row("renameFile")->keys(), Keys{QKeySequence(Qt::Key_F2)});
    EXPECT_EQ(table.row("moveToTrash")->keys(), Keys{QKeySequence(Qt::Key_Delete)});
    EXPECT_EQ(table.row("openSettings")->keys(), Keys{QKeySequence(Qt::CTRL | Qt::Key_Comma)});
    EXPECT_EQ(table.row("changeThumbnailSize:1")->group, "View");

    // Two commands on one key would leave the key doing nothing in every window.
    for (const auto &[key, rows] : table.conflicts())
        ADD_FAILURE() << qPrintable(key.toString()) << " is the default of " << qPrintable(rows.join(", "));
}

TEST(Hotkeys, ABindingReachesEveryWindowAtOnceAndOutlivesARestart)
{
    ShellFixture shell;
    auto hotkeys = std::make_unique<HotkeysController>(shell.settings(), registry(), CommandKeys::shared());
    TabbedWindow *window = shell.windows->newMainWindow(shell.photos)->tabbedWindow();
    QWidget viewer;
    ViewerCommands::install(&viewer, nullptr, registry());
    QAction *viewerUp = viewer.findChild<QAction *>("moveImageUp");
    ASSERT_TRUE(viewerUp);
    const QKeySequence defaultUp(Qt::ALT | Qt::SHIFT | Qt::Key_Up);
    ASSERT_EQ(viewerUp->shortcuts(), Keys{defaultUp});

    const QKeySequence ctrlE(Qt::CTRL | Qt::Key_E);
    const QKeySequence ctrlUp(Qt::CTRL | Qt::Key_Up);
    hotkeys->setKeys("renameFile", {ctrlE, QKeySequence(Qt::Key_F2)});
    hotkeys->setKeys("IV-MoveUp", {ctrlUp});
    hotkeys->setKeys("changeThumbnailSize:1", {});
    EXPECT_EQ(window->action("renameFile")->shortcuts(), (Keys{ctrlE, QKeySequence(Qt::Key_F2)}));
    EXPECT_EQ(window->action("moveImageUp")->shortcuts(), Keys{ctrlUp});
    EXPECT_EQ(viewerUp->shortcuts(), Keys{ctrlUp});
    EXPECT_TRUE(window->action("changeThumbnailSize", 1)->shortcuts().isEmpty());
    EXPECT_EQ(window->action("changeThumbnailSize", -1)->shortcuts(), Keys{QKeySequence(QKeySequence::ZoomOut)});
    // A window made later starts with them.
    QWidget later;
    ViewerCommands::install(&later, nullptr, registry());
    EXPECT_EQ(later.findChild<QAction *>("moveImageUp")->shortcuts(), Keys{ctrlUp});

    ASSERT_TRUE(shell.settingsManager->saveNow());
    const QString file = shell.settingsManager->settingsFile();
    EXPECT_EQ(QJsonDocument(savedHotkeys(file)).toJson(QJsonDocument::Compact),
              QByteArray(R"({"IV-MoveUp":["Ctrl+Up"],"changeThumbnailSize:1":[],"renameFile":["Ctrl+E","F2"]})"));

    // Without a controller the windows have their defaults; a new one on the same file brings the
    // user's keys back.
    hotkeys.reset();
    EXPECT_EQ(viewerUp->shortcuts(), Keys{defaultUp});
    SettingsManager restarted(file);
    HotkeysController again(restarted.settings(), registry(), CommandKeys::shared());
    EXPECT_EQ(again.table().row("renameFile")->keys(), (Keys{ctrlE, QKeySequence(Qt::Key_F2)}));
    EXPECT_TRUE(again.table().row("changeThumbnailSize:1")->keys().isEmpty());
    EXPECT_EQ(viewerUp->shortcuts(), Keys{ctrlUp});
    EXPECT_EQ(window->action("renameFile")->shortcuts().first(), ctrlE);
}

TEST(Hotkeys, ABindingToAnUnknownCommandOrAnUnreadableKeyIsIgnoredAndTheRestKept)
{
    TestDir dir;
    const QString file = dir.write("settings.json", R"({
        "hideOnDeactivate": true,
        "hotkeys": {"noSuchCommand": ["Ctrl+K"], "renameFile": ["Ctrl+Nope", "F3"], "moveImageUp": ["W"]}
    })");
    LogCapture log;
    SettingsManager manager(file);
    HotkeysController hotkeys(manager.settings(), registry(), CommandKeys::shared());

    EXPECT_TRUE(manager.settings()->hideOnDeactivate());
    EXPECT_EQ(hotkeys.table().row("renameFile")->keys(), Keys{QKeySequence(Qt::Key_F3)});
    // Stored under the command's identifier rather than its short name: found all the same.
    EXPECT_EQ(hotkeys.table().row("IV-MoveUp")->keys(), Keys{QKeySequence(Qt::Key_W)});
    EXPECT_EQ(hotkeys.table().row("RotateClockwise")->keys(), Keys{QKeySequence(Qt::CTRL | Qt::Key_R)});
    const QString lines = log.lines.join('\n');
    EXPECT_TRUE(lines.contains("noSuchCommand")) << qPrintable(lines);
    EXPECT_TRUE(lines.contains("Ctrl+Nope")) << qPrintable(lines);

    // The next edit stores what the table knows, under the rows' names.
    hotkeys.setKeys("flagItem", {QKeySequence(Qt::SHIFT | Qt::Key_P)});
    EXPECT_EQ(manager.settings()->hotkeys().keys.keys(), (QStringList{"IV-MoveUp", "flagItem", "renameFile"}));
}

TEST(Hotkeys, TheSectionRecordsKeysMarksConflictsSearchesAndResets)
{
    TestDir dir;
    SettingsManager manager(dir.filePath("settings.json"));
    HotkeysController hotkeys(manager.settings(), registry(), CommandKeys::shared());
    HotkeysView view(&hotkeys);
    view.resize(700, 500);
    view.show();
    const auto keysOf = [&](const char *identifier) { return hotkeys.table().row(identifier)->keys(); };

    // Ctrl+F added to Flag: Find has it already, and both say so.
    ASSERT_TRUE(view.selectCommand("flagItem"));
    view.recordKey();
    ASSERT_TRUE(view.recorder()->isRecording());
    QTest::keyClick(view.recorder(), Qt::Key_Control, Qt::ControlModifier); // a modifier alone records nothing
    EXPECT_TRUE(view.recorder()->isRecording());
    QTest::keyClick(view.recorder(), Qt::Key_F, Qt::ControlModifier);
    EXPECT_FALSE(view.recorder()->isRecording());
    EXPECT_EQ(keysOf("flagItem"), (Keys{QKeySequence(Qt::Key_P), QKeySequence(Qt::CTRL | Qt::Key_F)}));
    EXPECT_TRUE(view.isMarkedAsConflict("flagItem"));
    EXPECT_TRUE(view.isMarkedAsConflict("filterThumbnails"));
    EXPECT_FALSE(view.isMarkedAsConflict("renameFile"));
    EXPECT_TRUE(
        view.findChild<QLabel *>("hotkeyDetails")->text().contains(hotkeys.table().row("filterThumbnails")->title));

    // Escape gives up recording and changes nothing.
    view.recordKey();
    QTest::keyClick(view.recorder(), Qt::Key_Escape);
    EXPECT_FALSE(view.recorder()->isRecording());
    EXPECT_EQ(keysOf("flagItem").size(), 2);

    // Search by title, group or key.
    view.setSearchText("video player");
    EXPECT_TRUE(view.shownCommands().contains("VID-Mute"));
    EXPECT_FALSE(view.shownCommands().contains("flagItem"));
    view.setSearchText(HotkeysController::keyText(QKeySequence(Qt::Key_F2)));
    EXPECT_TRUE(view.shownCommands().contains("renameFile"));
    view.setSearchText("edit filename");
    EXPECT_EQ(view.shownCommands(), QStringList{"renameFile"});
    view.setSearchText({});

    // Reset one, clear one, reset all: each saved with the settings.
    ASSERT_TRUE(view.selectCommand("flagItem"));
    view.resetSelected();
    EXPECT_FALSE(view.isMarkedAsConflict("filterThumbnails"));
    ASSERT_TRUE(view.selectCommand("renameFile"));
    view.clearKeys();
    EXPECT_TRUE(keysOf("renameFile").isEmpty());
    EXPECT_EQ(manager.settings()->hotkeys().keys.keys(), QStringList{"renameFile"});
    view.resetAll();
    EXPECT_TRUE(manager.settings()->hotkeys().isEmpty());
    EXPECT_EQ(keysOf("renameFile"), Keys{QKeySequence(Qt::Key_F2)});
}
