#include "core/hotkeys/HotkeyTable.h"

#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace {

HotkeyTable makeTable()
{
    HotkeyTable table;
    table.addRow(
        {"RotateClockwise", {"rotateClockwise"}, "Rotate Clockwise", "View", {QKeySequence(Qt::CTRL | Qt::Key_R)}, {}});
    table.addRow({"renameFile", {}, "Edit Filename", "File", {QKeySequence(Qt::Key_F2)}, {}});
    table.addRow({"IV-MoveUp",
                  {"moveImageUp"},
                  "Scroll Image Up",
                  "Keyboard Image Scrolling",
                  {QKeySequence(Qt::ALT | Qt::SHIFT | Qt::Key_Up)},
                  {}});
    table.addRow({"rotate180", {}, "Rotate 180°", "View", {}, {}});
    return table;
}

} // namespace

TEST(HotkeyTable, SharedKeysAreConflictsUntilOneMoves)
{
    HotkeyTable table = makeTable();
    EXPECT_TRUE(table.conflicts().isEmpty());

    const QKeySequence ctrlR(Qt::CTRL | Qt::Key_R);
    table.setKeys("renameFile", {QKeySequence(Qt::Key_F2), ctrlR});
    ASSERT_EQ(table.conflicts().size(), 1);
    EXPECT_EQ(table.conflicts().first().first, ctrlR);
    EXPECT_EQ(table.conflicts().first().second, (QStringList{"RotateClockwise", "renameFile"}));
    EXPECT_TRUE(table.hasConflict("RotateClockwise"));
    EXPECT_TRUE(table.hasConflict("renameFile"));
    EXPECT_FALSE(table.hasConflict("IV-MoveUp"));
    EXPECT_EQ(table.rowsWithKey(ctrlR, "renameFile"), QStringList{"RotateClockwise"});

    // Moving the other command's key away ends the conflict; so does resetting.
    table.setKeys("RotateClockwise", {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R)});
    EXPECT_TRUE(table.conflicts().isEmpty());
    table.reset("RotateClockwise");
    EXPECT_TRUE(table.hasConflict("renameFile"));
    table.resetAll();
    EXPECT_TRUE(table.conflicts().isEmpty());
    EXPECT_TRUE(table.bindings().isEmpty());
}

TEST(HotkeyTable, OnlyTheUsersOwnKeysAreStoredAndStoredNamesAreMatched)
{
    HotkeyTable table = makeTable();
    // Choosing the defaults again stores nothing; no keys at all is a choice that is stored.
    table.setKeys("renameFile", {QKeySequence(Qt::Key_F2)});
    table.setKeys("rotate180",
                  {QKeySequence(Qt::CTRL | Qt::Key_3), QKeySequence(), QKeySequence(Qt::CTRL | Qt::Key_3)});
    table.setKeys("RotateClockwise", {});
    HotkeyBindings expected;
    expected.keys.insert("rotate180", {QKeySequence(Qt::CTRL | Qt::Key_3)});
    expected.keys.insert("RotateClockwise", {});
    EXPECT_EQ(table.bindings(), expected);

    // Bindings stored under a command's other name count; its own name wins over it; unknown
    // commands are reported and change nothing.
    HotkeyBindings stored;
    stored.keys.insert("moveImageUp", {QKeySequence(Qt::Key_W)});
    stored.keys.insert("rotateClockwise", {QKeySequence(Qt::Key_A)});
    stored.keys.insert("RotateClockwise", {QKeySequence(Qt::Key_B)});
    stored.keys.insert("noSuchCommand", {QKeySequence(Qt::Key_C)});
    LogCapture log;
    QStringList problems;
    table.applyBindings(stored, &problems);
    EXPECT_EQ(table.row("IV-MoveUp")->keys(), QList<QKeySequence>{QKeySequence(Qt::Key_W)});
    EXPECT_EQ(table.row("RotateClockwise")->keys(), QList<QKeySequence>{QKeySequence(Qt::Key_B)});
    // Rows without an entry are back to their defaults.
    EXPECT_EQ(table.row("rotate180")->keys(), QList<QKeySequence>());
    ASSERT_EQ(problems.size(), 1);
    EXPECT_TRUE(problems.first().contains("noSuchCommand"));
    EXPECT_EQ(log.lines, QStringList{"ERROR: " + problems.first()});
    // Saved again, they go under the rows' own names only.
    EXPECT_EQ(table.bindings().keys.keys(), (QStringList{"IV-MoveUp", "RotateClockwise"}));
}
