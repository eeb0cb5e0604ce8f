#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationHandler.h"

#include "support/TestDir.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QPointer>

#include <gtest/gtest.h>

namespace {

using State = ZQFileOperationUnit::State;

// Resolves every unit error with one answer and records what the handler reported.
class RecordingDelegate : public ZQFileOperationDelegate
{
public:
    ZQFileOperationResolution answer = ZQFileOperationResolution::skip;
    QList<ZQFileOperationStage> stages;
    int initialQuestions = 0;
    int preflightQuestions = 0;
    double lastPercent = -1;
    bool completed = false;
    QList<State> finalStates;
    QStringList finalNames;
    QStringList finalErrors;

    void fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                    ZQFileOperationGroup &group) override
    {
        ++initialQuestions;
        for (ZQFileOperationUnit &unit : group.units()) {
            if (unit.hasError())
                unit.setResolution(answer);
        }
        handler->continueToPreflight();
    }
    void fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler, ZQFileOperationGroup &) override
    {
        ++preflightQuestions;
        handler->continueToPerform();
    }
    void fileOperationHandlerReportingTransaction(ZQFileOperationHandler *,
                                                  const ZQFileOperationTransaction &transaction) override
    {
        if (stages.isEmpty() || stages.last() != transaction.stage)
            stages.append(transaction.stage);
        if (transaction.stage == ZQFileOperationStage::performing)
            lastPercent = transaction.percentComplete;
    }
    void fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler) override
    {
        for (const ZQFileOperationUnit &unit : handler->group().units()) {
            finalStates.append(unit.state());
            finalNames.append(unit.renamedFilename());
            finalErrors.append(unit.destinationError().description);
        }
        completed = true;
    }
};

class RenameOperation : public ::testing::Test
{
protected:
    ZQFileOperationUnit unit(const QString &name, const QString &newName)
    {
        const QString path = dir.filePath(name);
        if (!QFile::exists(path))
            dir.write(name, name.toUtf8());
        return ZQFileOperationUnit(ZQStandardFile::newFileForPath(path), newName);
    }
    bool run(QList<ZQFileOperationUnit> units)
    {
        QPointer<ZQFileOperationHandler> handler =
            controller.performOperation(ZQFileOperationType::rename, ZQFileOperationGroup(std::move(units)), &delegate);
        return handler && waitUntil([&] { return delegate.completed; }) && waitUntil([&] { return handler.isNull(); });
    }
    QStringList names() const { return QDir(dir.path()).entryList(QDir::Files, QDir::Name); }

    TestDir dir;
    ZQFileController controller;
    RecordingDelegate delegate;
};

} // namespace

TEST_F(RenameOperation, KeepBothGivesATakenNameTheNextFreeNumber)
{
    for (const char *taken : {"za.jpg", "za 2.jpg", "zb.jpg"})
        dir.write(QString::fromLatin1(taken), "was here first");
    delegate.answer = ZQFileOperationResolution::keepBoth;
    ASSERT_TRUE(run({unit(QStringLiteral("a.jpg"), QStringLiteral("za.jpg")),
                     unit(QStringLiteral("b.jpg"), QStringLiteral("zb.jpg"))}));
    EXPECT_EQ(delegate.initialQuestions, 1);
    EXPECT_EQ(delegate.finalNames, (QStringList{"za 3.jpg", "zb 2.jpg"}));
    EXPECT_EQ(names(), (QStringList{"za 2.jpg", "za 3.jpg", "za.jpg", "zb 2.jpg", "zb.jpg"}));
    EXPECT_EQ(delegate.stages,
              (QList<ZQFileOperationStage>{ZQFileOperationStage::preparing,
                                           ZQFileOperationStage::awaitingInitialResolution,
                                           ZQFileOperationStage::preflight, ZQFileOperationStage::performing}));
    EXPECT_EQ(delegate.lastPercent, 100);
}

TEST_F(RenameOperation, BadNamesAndTwoUnitsAimingAtOneNameAreLeftOut)
{
    ASSERT_TRUE(run({unit(QStringLiteral("a.jpg"), QStringLiteral("x.jpg")),
                     unit(QStringLiteral("b.jpg"), QStringLiteral("x.jpg")), unit(QStringLiteral("c.jpg"), QString()),
                     unit(QStringLiteral("d.jpg"), QStringLiteral("d/e")),
                     unit(QStringLiteral("e.jpg"), QStringLiteral(".."))}));
    EXPECT_EQ(delegate.initialQuestions, 1);
    EXPECT_EQ(delegate.preflightQuestions, 1);
    EXPECT_EQ(delegate.finalStates,
              (QList<State>{State::done, State::skipped, State::skipped, State::skipped, State::skipped}));
    EXPECT_EQ(names(), (QStringList{"b.jpg", "c.jpg", "d.jpg", "e.jpg", "x.jpg"}));
    // The message names what was typed, not the part after the slash.
    EXPECT_EQ(delegate.finalErrors.value(3), QStringLiteral("“d/e” can’t be used as a name."));
}

TEST_F(RenameOperation, CaseChangesWorkAndCancellingBeforeTheStartDoesNothing)
{
    ASSERT_TRUE(run({unit(QStringLiteral("photo.JPG"), QStringLiteral("photo.jpg"))}));
    EXPECT_EQ(delegate.initialQuestions, 0);
    EXPECT_EQ(names(), QStringList{"photo.jpg"});

    delegate = RecordingDelegate();
    QPointer<ZQFileOperationHandler> handler =
        controller.performOperation(ZQFileOperationType::rename,
                                    ZQFileOperationGroup(
                                        {unit(QStringLiteral("photo.jpg"), QStringLiteral("other.jpg"))}),
                                    &delegate);
    ASSERT_TRUE(handler);
    handler->cancel();
    EXPECT_TRUE(delegate.completed);
    EXPECT_EQ(delegate.finalStates, QList<State>{State::pending});
    // Deleted later, as after every completion; the queued start never runs.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(handler.isNull());
    QCoreApplication::processEvents();
    EXPECT_EQ(names(), QStringList{"photo.jpg"});
    EXPECT_EQ(controller.performOperation(ZQFileOperationType::rename, ZQFileOperationGroup(), &delegate), nullptr);
}
