#include "core/fs/operations/ZQFileOperationHandler.h"

#include "core/app/Dispatch.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationPerformer.h"

#include <QElapsedTimer>
#include <QPointer>

#include <atomic>

namespace {

// 50 ms: a progress bar moves smoothly, and 10 000 quick units cost a few hundred posts, not 10 000.
constexpr qint64 progressIntervalMs = 50;

using State = ZQFileOperationUnit::State;

} // namespace

// What the worker thread shares with the handler: it outlives a handler deleted early.
struct ZQFileOperationHandler::Run
{
    ZQFileOperationGroup group;
    std::unique_ptr<ZQFileOperationPerformer> performer;
    std::atomic<bool> cancelled{false};
};

ZQFileOperationHandler::ZQFileOperationHandler(ZQFileOperationType type, ZQFileOperationGroup group,
                                               std::unique_ptr<ZQFileOperationPerformer> performer,
                                               ZQFileOperationDelegate *delegate, QObject *parent)
    : QObject(parent)
    , m_type(type)
    , m_run(std::make_shared<Run>())
    , m_delegate(delegate)
{
    m_run->group = std::move(group);
    m_run->performer = std::move(performer);
}

ZQFileOperationHandler::~ZQFileOperationHandler()
{
    m_run->cancelled = true;
}

ZQFileOperationGroup &ZQFileOperationHandler::group()
{
    return m_run->group;
}

bool ZQFileOperationHandler::isCancelled() const
{
    return m_run->cancelled.load();
}

template<typename Work, typename Then>
void ZQFileOperationHandler::runOnWorker(Work work, Then then)
{
    m_workerRunning = true;
    QPointer<ZQFileOperationHandler> self(this);
    runOnPool(QString::fromLatin1(ZQFileController::poolName), [run = m_run, self, work, then]() mutable {
        work(*run);
        postToGui([self, then]() mutable {
            if (!self)
                return;
            self->m_workerRunning = false;
            then(self.data());
        });
    });
}

void ZQFileOperationHandler::setStage(ZQFileOperationStage stage)
{
    m_stage = stage;
    ZQFileOperationTransaction transaction = m_lastTransaction;
    transaction.stage = stage;
    transaction.error = {};
    report(transaction);
}

void ZQFileOperationHandler::report(const ZQFileOperationTransaction &transaction)
{
    m_lastTransaction = transaction;
    if (transaction.isError() && !m_stoppingError.isError())
        m_stoppingError = transaction.error;
    if (m_delegate)
        m_delegate->fileOperationHandlerReportingTransaction(this, transaction);
    Q_EMIT transactionReported(transaction);
}

bool ZQFileOperationHandler::cancelIfAsked()
{
    if (m_run->cancelled) {
        finish();
        return true;
    }
    for (const ZQFileOperationUnit &unit : m_run->group.units()) {
        if (unit.resolution() == ZQFileOperationResolution::cancel) {
            cancel();
            return true;
        }
    }
    return false;
}

void ZQFileOperationHandler::start()
{
    m_lastTransaction.totalUnitCount = m_run->group.units().size();
    setStage(ZQFileOperationStage::preparing);
    runOnWorker([](Run &run) { run.performer->prepare(run.group); },
                [](ZQFileOperationHandler *handler) { handler->afterPreparation(); });
}

void ZQFileOperationHandler::afterPreparation()
{
    if (cancelIfAsked())
        return;
    bool anyError = false;
    for (const ZQFileOperationUnit &unit : m_run->group.units())
        anyError = anyError || unit.hasError();
    if (!anyError || !m_delegate) {
        continueToPreflight();
        return;
    }
    setStage(ZQFileOperationStage::awaitingInitialResolution);
    m_delegate->fileOperationHandlerNeedsInitialResolution(this, m_run->group);
}

void ZQFileOperationHandler::continueToPreflight()
{
    if (m_workerRunning
        || (m_stage != ZQFileOperationStage::preparing && m_stage != ZQFileOperationStage::awaitingInitialResolution))
        return;
    if (cancelIfAsked())
        return;
    setStage(ZQFileOperationStage::preflight);
    runOnWorker(
        [](Run &run) {
            for (ZQFileOperationUnit &unit : run.group.units()) {
                const bool keepsBoth = unit.resolution() == ZQFileOperationResolution::keepBoth
                    && unit.destinationError().code == ZQFileOperationErrorCode::destinationExists
                    && !unit.sourceError().isError();
                if (unit.state() == State::pending && unit.hasError() && !keepsBoth)
                    unit.setState(State::skipped);
            }
            run.performer->preflight(run.group);
        },
        [](ZQFileOperationHandler *handler) { handler->afterPreflight(); });
}

void ZQFileOperationHandler::afterPreflight()
{
    if (cancelIfAsked())
        return;
    bool anyError = false;
    for (const ZQFileOperationUnit &unit : m_run->group.units())
        anyError = anyError || (unit.state() == State::pending && unit.hasError());
    if (!anyError || !m_delegate) {
        continueToPerform();
        return;
    }
    setStage(ZQFileOperationStage::awaitingPreflightResolution);
    m_delegate->fileOperationHandlerNeedsPreflightResolution(this, m_run->group);
}

void ZQFileOperationHandler::continueToPerform()
{
    if (m_workerRunning
        || (m_stage != ZQFileOperationStage::preflight && m_stage != ZQFileOperationStage::awaitingPreflightResolution))
        return;
    if (cancelIfAsked())
        return;
    qsizetype total = 0;
    for (ZQFileOperationUnit &unit : m_run->group.units()) {
        // What preflight could not settle is left alone.
        if (unit.state() == State::pending && unit.hasError())
            unit.setState(State::skipped);
        total += unit.state() == State::pending ? 1 : 0;
    }
    m_lastTransaction.totalUnitCount = total;
    m_lastTransaction.completedUnitCount = 0;
    m_lastTransaction.percentComplete = 0;
    setStage(ZQFileOperationStage::performing);

    QPointer<ZQFileOperationHandler> self(this);
    const auto post = [self](const ZQFileOperationTransaction &transaction) {
        postToGui([self, transaction] {
            if (self)
                self->report(transaction);
        });
    };
    runOnWorker(
        [post, total](Run &run) {
            ZQFileOperationTransaction transaction;
            transaction.stage = ZQFileOperationStage::performing;
            transaction.totalUnitCount = total;
            QElapsedTimer sinceReport;
            sinceReport.start();
            for (ZQFileOperationUnit &unit : run.group.units()) {
                if (run.cancelled)
                    break;
                if (unit.state() != State::pending)
                    continue;
                transaction.currentPath = unit.sourceItem() ? unit.sourceItem()->path() : QString();
                const ZQFileOperationError error = run.performer->perform(unit, run.group);
                if (error.isError()) {
                    unit.setState(State::failed);
                    transaction.error = error;
                    post(transaction);
                    return;
                }
                unit.setState(State::done);
                ++transaction.completedUnitCount;
                transaction.percentComplete = 100.0 * double(transaction.completedUnitCount) / double(total);
                if (sinceReport.elapsed() >= progressIntervalMs) {
                    post(transaction);
                    sinceReport.restart();
                }
            }
            post(transaction);
        },
        [](ZQFileOperationHandler *handler) { handler->afterPerforming(); });
}

void ZQFileOperationHandler::afterPerforming()
{
    finish();
}

void ZQFileOperationHandler::cancel()
{
    if (m_stage == ZQFileOperationStage::completed || m_stage == ZQFileOperationStage::cancelling)
        return;
    m_run->cancelled = true;
    setStage(ZQFileOperationStage::cancelling);
    // A worker still running finishes the run when it returns.
    if (!m_workerRunning)
        finish();
}

void ZQFileOperationHandler::finish()
{
    if (m_stage == ZQFileOperationStage::completed)
        return;
    m_stage = ZQFileOperationStage::completed;
    m_lastTransaction.stage = ZQFileOperationStage::completed;
    if (m_delegate)
        m_delegate->fileOperationHandlerCompletedOperation(this);
    Q_EMIT completed();
    deleteLater();
}
