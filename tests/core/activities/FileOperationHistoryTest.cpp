#include "core/activities/ActivitiesSupport.h"

#include "core/fs/operations/ZQFileOperationHandler.h"

#include <gtest/gtest.h>

namespace {

using Type = ZQFileOperationType;
using Resolution = ZQFileOperationResolution;

} // namespace

TEST(FileOperationHistory, UndoAndRedoPutMovesRenamesAndTrashingBackOnDisk)
{
    ActivitiesFixture f;
    f.dir.write(QStringLiteral("a/one.jpg"), "1");
    f.dir.write(QStringLiteral("b/two.jpg"), "2");
    f.dir.mkdir(QStringLiteral("to"));
    EXPECT_FALSE(f.history->canUndo());
    EXPECT_EQ(f.history->undoTitle(), "Undo");

    // A move from two folders goes back to both.
    f.run(Type::move, {"a/one.jpg", "b/two.jpg"}, "to");
    ASSERT_EQ(entriesOf(f.dir.filePath("to")), (QStringList{"one.jpg", "two.jpg"}));
    EXPECT_EQ(f.history->undoTitle(), "Undo Move");
    ASSERT_TRUE(f.history->undo());
    ASSERT_TRUE(f.settle());
    EXPECT_TRUE(entriesOf(f.dir.filePath("to")).isEmpty());
    EXPECT_EQ(readAll(f.dir.filePath("a/one.jpg")), "1");
    EXPECT_EQ(readAll(f.dir.filePath("b/two.jpg")), "2");
    EXPECT_EQ(f.history->redoTitle(), "Redo Move");
    ASSERT_TRUE(f.history->redo());
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(entriesOf(f.dir.filePath("to")), (QStringList{"one.jpg", "two.jpg"}));

    // Trashing comes back to the original path.
    f.run(Type::trash, {"to/one.jpg"});
    EXPECT_FALSE(QFileInfo::exists(f.dir.filePath("to/one.jpg")));
    EXPECT_EQ(f.history->undoTitle(), "Undo Move to Trash");
    f.history->undo();
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(readAll(f.dir.filePath("to/one.jpg")), "1");
    EXPECT_TRUE(entriesOf(f.trashFolder + "/files").isEmpty());

    // A batch rename run on the controller by someone else (the renamer) is undone too.
    RecordingOperationDelegate renamer;
    f.controller.performOperation(Type::rename,
                                  ZQFileOperationGroup({ZQFileOperationUnit(f.file("to/one.jpg"), "uno.jpg"),
                                                        ZQFileOperationUnit(f.file("to/two.jpg"), "dos.jpg")}),
                                  &renamer);
    ASSERT_TRUE(waitUntil([&] { return renamer.completed && f.history->undoTitle() == "Undo Rename"; }));
    EXPECT_EQ(entriesOf(f.dir.filePath("to")), (QStringList{"dos.jpg", "uno.jpg"}));
    f.history->undo();
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(entriesOf(f.dir.filePath("to")), (QStringList{"one.jpg", "two.jpg"}));

    // A new operation clears what could be redone.
    EXPECT_TRUE(f.history->canRedo());
    f.run(Type::duplicate, {"to/one.jpg"});
    EXPECT_FALSE(f.history->canRedo());
}

TEST(FileOperationHistory, UndoingWhatWasMadeTrashesItAndNeverDeletes)
{
    ActivitiesFixture f;
    f.dir.write(QStringLiteral("photo.jpg"), "p");
    f.dir.mkdir(QStringLiteral("copies"));
    f.run(Type::copy, {"photo.jpg"}, "copies");
    ASSERT_EQ(readAll(f.dir.filePath("copies/photo.jpg")), "p");

    f.history->undo();
    ASSERT_TRUE(f.settle());
    EXPECT_FALSE(QFileInfo::exists(f.dir.filePath("copies/photo.jpg")));
    // The copy is in the trash, whole, and the original untouched.
    EXPECT_EQ(entriesOf(f.trashFolder + "/files"), QStringList{"photo.jpg"});
    EXPECT_EQ(readAll(f.trashFolder + "/files/photo.jpg"), "p");
    EXPECT_EQ(readAll(f.dir.filePath("photo.jpg")), "p");

    // Redo takes it back out of the trash.
    f.history->redo();
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(readAll(f.dir.filePath("copies/photo.jpg")), "p");
    EXPECT_TRUE(entriesOf(f.trashFolder + "/files").isEmpty());
    EXPECT_EQ(f.history->undoTitle(), "Undo Copy");
}

TEST(FileOperationHistory, AnUndoThatWouldOverwriteAsks)
{
    ActivitiesFixture f;
    f.dir.write(QStringLiteral("in/photo.jpg"), "moved");
    f.dir.mkdir(QStringLiteral("out"));
    f.run(Type::move, {"in/photo.jpg"}, "out");
    // Meanwhile another file took the old name.
    f.dir.write(QStringLiteral("in/photo.jpg"), "newcomer");

    f.prompter.answer = Resolution::skip;
    f.history->undo();
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(f.prompter.questions, QStringList{"photo.jpg"});
    EXPECT_EQ(readAll(f.dir.filePath("in/photo.jpg")), "newcomer");
    EXPECT_EQ(readAll(f.dir.filePath("out/photo.jpg")), "moved");
    // Nothing came back: the step stays, to be tried again.
    EXPECT_EQ(f.history->undoTitle(), "Undo Move");

    f.prompter.answer = Resolution::keepBoth;
    f.history->undo();
    ASSERT_TRUE(f.settle());
    EXPECT_EQ(readAll(f.dir.filePath("in/photo.jpg")), "newcomer");
    EXPECT_EQ(readAll(f.dir.filePath("in/photo 2.jpg")), "moved");
    EXPECT_TRUE(f.history->canRedo());
}
