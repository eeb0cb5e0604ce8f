#include "core/activities/ActivitiesSupport.h"

#include <QSignalSpy>

#include <sys/stat.h>

#include <gtest/gtest.h>

namespace {

using Type = ZQFileOperationType;
using Stage = ZQFileOperationStage;
using Resolution = ZQFileOperationResolution;

ZQFileOperationTransaction transaction(Stage stage, qint64 done = 0, qint64 total = 0, double percent = 0)
{
    ZQFileOperationTransaction t;
    t.stage = stage;
    t.completedByteCount = done;
    t.totalByteCount = total;
    t.completedUnitCount = 1;
    t.totalUnitCount = 4;
    t.percentComplete = percent;
    return t;
}

} // namespace

TEST(ActivitiesManager, ProgressTextsFollowTheStages)
{
    ActivityItem item(QStringLiteral("row"), false);
    ActivitiesManager::applyTransaction(item, Type::copy, transaction(Stage::preparing), 0);
    EXPECT_EQ(item.status(), "Preparing...");
    EXPECT_TRUE(item.isIndeterminate());

    // Too early for an estimate, then one from the pace so far: 25 % in 10 s leaves 30 s.
    const qint64 mb = 1000 * 1000;
    ActivitiesManager::applyTransaction(item, Type::copy, transaction(Stage::performing, 25 * mb, 100 * mb, 25), 500);
    EXPECT_FALSE(item.isIndeterminate());
    EXPECT_DOUBLE_EQ(item.progress(), 0.25);
    EXPECT_TRUE(item.status().endsWith(" complete - Calculating remaining time...")) << item.status().toStdString();
    EXPECT_TRUE(item.timeLeft().isEmpty());
    ActivitiesManager::applyTransaction(item, Type::copy, transaction(Stage::performing, 25 * mb, 100 * mb, 25), 10000);
    EXPECT_EQ(item.timeLeft(), "About 30 seconds left");
    EXPECT_TRUE(item.status().contains(" of ")) << item.status().toStdString();
    EXPECT_TRUE(item.status().endsWith(" - About 30 seconds left"));
    ActivitiesManager::applyTransaction(item, Type::copy, transaction(Stage::performing, 1, 100, 1), 600000);
    EXPECT_EQ(item.timeLeft(), "About 17 hours left");
    // Without bytes (a move within a volume, the trash) the items count.
    ActivitiesManager::applyTransaction(item, Type::trash, transaction(Stage::performing, 0, 0, 25), 0);
    EXPECT_EQ(item.status(), "1 of 4 complete - Calculating remaining time...");

    ActivitiesManager::applyTransaction(item, Type::rename, transaction(Stage::performing), 0);
    EXPECT_EQ(item.status(), "Renaming");
    ActivitiesManager::applyTransaction(item, Type::copy, transaction(Stage::cancelling), 0);
    EXPECT_EQ(item.status(), "Cancelling...");
    ZQFileOperationTransaction failed = transaction(Stage::performing);
    failed.error = ZQFileOperationError::forCode(ENOSPC, QStringLiteral("/x/photo.jpg"));
    ActivitiesManager::applyTransaction(item, Type::copy, failed, 0);
    EXPECT_EQ(item.status(), "An error occurred");
    ActivitiesManager::applyTransaction(item, Type::copy, transaction(Stage(42)), 0);
    EXPECT_TRUE(item.status().startsWith("Unknown stage "));
}

TEST(ActivitiesManager, NameClashesAreAskedAndNothingIsReplacedWithoutAnAnswer)
{
    ActivitiesFixture f;
    f.dir.write(QStringLiteral("in/a.jpg"), "new a");
    f.dir.write(QStringLiteral("in/b.jpg"), "new b");
    f.dir.write(QStringLiteral("in/c.jpg"), "new c");
    f.dir.write(QStringLiteral("out/a.jpg"), "old a");
    f.dir.write(QStringLiteral("out/b.jpg"), "old b");
    const QStringList all{"in/a.jpg", "in/b.jpg", "in/c.jpg"};

    // Nobody to ask: the clashing items are left alone, the others copied.
    f.manager->setPrompter(nullptr);
    FileOperationOutcome outcome = f.run(Type::copy, all, QStringLiteral("out"));
    EXPECT_EQ(outcome.items.size(), 1);
    EXPECT_EQ(readAll(f.dir.filePath("out/a.jpg")), "old a");
    EXPECT_EQ(readAll(f.dir.filePath("out/b.jpg")), "old b");
    EXPECT_EQ(readAll(f.dir.filePath("out/c.jpg")), "new c");

    // The user stops at the first question: nothing more is done.
    f.manager->setPrompter(&f.prompter);
    f.prompter.answer = Resolution::cancel;
    outcome = f.run(Type::copy, all, QStringLiteral("out"));
    EXPECT_TRUE(outcome.cancelled);
    EXPECT_TRUE(outcome.items.isEmpty());
    EXPECT_EQ(f.prompter.questions, (QStringList{"a.jpg"}));
    EXPECT_EQ(entriesOf(f.dir.filePath("out")), (QStringList{"a.jpg", "b.jpg", "c.jpg"}));

    // Keep both, for all: numbered copies beside the old ones.
    f.prompter.questions.clear();
    f.prompter.answer = Resolution::keepBoth;
    outcome = f.run(Type::copy, {"in/a.jpg", "in/b.jpg"}, QStringLiteral("out"));
    EXPECT_EQ(f.prompter.questions, (QStringList{"a.jpg", "b.jpg"}));
    EXPECT_EQ(entriesOf(f.dir.filePath("out")), (QStringList{"a 2.jpg", "a.jpg", "b 2.jpg", "b.jpg", "c.jpg"}));
    EXPECT_EQ(readAll(f.dir.filePath("out/a.jpg")), "old a");
    EXPECT_EQ(readAll(f.dir.filePath("out/a 2.jpg")), "new a");

    // Replace: the answer given, the old item gives way.
    f.prompter.answer = Resolution::replace;
    outcome = f.run(Type::move, {"in/a.jpg"}, QStringLiteral("out"));
    EXPECT_EQ(readAll(f.dir.filePath("out/a.jpg")), "new a");
    EXPECT_FALSE(QFileInfo::exists(f.dir.filePath("in/a.jpg")));
    EXPECT_TRUE(f.prompter.errors.isEmpty());
}

TEST(ActivitiesManager, AFailedOrCancelledOperationLeavesTheSourcesAndNoHalfCopies)
{
    ActivitiesFixture f;
    // A pipe cannot be copied: the copy stops there with a message, the items before it are
    // copied, the ones after it left alone, and no original is touched.
    f.dir.write(QStringLiteral("in/1.raw"), bytesOfSize(1000, '1'));
    ASSERT_EQ(::mkfifo(QFile::encodeName(f.dir.filePath("in/2.pipe")).constData(), 0600), 0);
    f.dir.write(QStringLiteral("in/3.raw"), bytesOfSize(1000, '3'));
    f.dir.mkdir(QStringLiteral("out"));
    FileOperationOutcome stopped = f.run(Type::copy, {"in/1.raw", "in/2.pipe", "in/3.raw"}, "out");
    EXPECT_EQ(stopped.error.code, ZQFileOperationErrorCode::unsupportedType);
    ASSERT_EQ(f.prompter.errors.size(), 1);
    EXPECT_EQ(f.prompter.errors.first().code, ZQFileOperationErrorCode::unsupportedType);
    EXPECT_EQ(entriesOf(f.dir.filePath("out")), QStringList{"1.raw"});
    EXPECT_EQ(entriesOf(f.dir.filePath("in")), (QStringList{"1.raw", "2.pipe", "3.raw"}));

    // Cancelled as the work starts: every original stays, and the destination holds exactly what
    // the outcome says was done, nothing half-written.
    for (int i = 0; i < 4; ++i)
        f.dir.write(QStringLiteral("big/%1.raw").arg(i), bytesOfSize(8 * 1024 * 1024, char('a' + i)));
    QStringList names;
    for (int i = 0; i < 4; ++i)
        names << QStringLiteral("big/%1.raw").arg(i);
    f.dir.mkdir(QStringLiteral("copies"));
    QList<ZQFileOperationUnit> units;
    for (const QString &name : names)
        units.append(ZQFileOperationUnit(f.file(name), QString()));
    ActivityItem *item =
        f.manager->performOperation(Type::copy, ZQFileOperationGroup(units, f.file(QStringLiteral("copies"))));
    ASSERT_TRUE(item);
    QPointer<ActivityItem> row(item);
    QObject::connect(item, &ActivityItem::statusChanged, item, [row] {
        if (row && !row->isIndeterminate())
            row->cancel();
    });
    const FileOperationOutcome outcome = f.wait(item);
    EXPECT_TRUE(outcome.cancelled);
    QStringList made;
    for (const FileOperationOutcome::Item &done : outcome.items)
        made << QFileInfo(done.destination).fileName();
    EXPECT_EQ(entriesOf(f.dir.filePath("copies")), made);
    EXPECT_LT(made.size(), 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(readAll(f.dir.filePath(names[i])), bytesOfSize(8 * 1024 * 1024, char('a' + i)));
}

TEST(ActivitiesManager, StoppingForQuitWaitsUntilEveryActivityEnded)
{
    ActivitiesFixture f;
    f.dir.write(QStringLiteral("in/a.jpg"), "a");
    f.dir.write(QStringLiteral("out/a.jpg"), "old");
    // An operation waiting for an answer that never comes.
    struct Silent : ActivitiesPrompter
    {
        void resolveConflicts(ActivityItem *, ZQFileOperationGroup &, std::function<void(bool)>) override { }
        void showError(ActivityItem *, const ZQFileOperationError &) override { }
    } silent;
    f.manager->setPrompter(&silent);
    ActivityItem *item =
        f.manager->performOperation(Type::copy,
                                    ZQFileOperationGroup({ZQFileOperationUnit(f.file("in/a.jpg"), QString())},
                                                         f.file("out")));
    ASSERT_TRUE(item);
    ASSERT_TRUE(waitUntil([&] { return item->status() == "Waiting for your answer..."; }));
    EXPECT_TRUE(f.manager->hasWorkingActivities());

    bool stopped = false;
    f.manager->stopActivities([&] { stopped = true; });
    ASSERT_TRUE(waitUntil([&] { return stopped; }));
    EXPECT_FALSE(f.manager->hasWorkingActivities());
    EXPECT_EQ(readAll(f.dir.filePath("out/a.jpg")), "old");
    EXPECT_EQ(readAll(f.dir.filePath("in/a.jpg")), "a");

    // Nothing running: answered at once.
    bool again = false;
    f.manager->stopActivities([&] { again = true; });
    EXPECT_TRUE(again);
}
