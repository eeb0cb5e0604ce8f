#include "core/fs/operations/ZQFileOperationHandler.h"

#include "core/app/Dispatch.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationPerformer.h"

#include <QElapsedTimer>
#include <QPointer>

#include <algorithm>
#include <atomic>
#include <functional>

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
                // An occupied name is settled in preflight by a free name or by replacing.
                const bool settled = (unit.resolution() == ZQFileOperationResolution::keepBoth
                                      || unit.resolution() == ZQFileOperationResolution::replace)
                    && unit.destinationError().code == ZQFileOperationErrorCode::destinationExists
                    && !unit.sourceError().isError();
                if (unit.state() == State::pending && unit.hasError() && !settled)
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
    qint64 totalBytes = 0;
    qint64 totalFiles = 0;
    for (ZQFileOperationUnit &unit : m_run->group.units()) {
        // What preflight could not settle is left alone.
        if (unit.state() == State::pending && unit.hasError())
            unit.setState(State::skipped);
        if (unit.state() != State::pending)
            continue;
        ++total;
        totalBytes += unit.byteCount();
        totalFiles += unit.fileCount();
    }
    m_lastTransaction.totalUnitCount = total;
    m_lastTransaction.completedUnitCount = 0;
    m_lastTransaction.totalByteCount = totalBytes;
    m_lastTransaction.completedByteCount = 0;
    m_lastTransaction.totalFileCount = totalFiles;
    m_lastTransaction.completedFileCount = 0;
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
        [post, start = m_lastTransaction](Run &run) {
            // Counts what the performer did, and posts it at most every 50 ms.
            struct Progress : ZQFileOperationProgress
            {
                Run *run = nullptr;
                ZQFileOperationTransaction transaction;
                QElapsedTimer sinceReport;
                std::function<void(const ZQFileOperationTransaction &)> post;

                bool isCancelled() const override { return run->cancelled.load(); }
                void advance(qint64 bytes, qint64 files) override
                {
                    transaction.completedByteCount += bytes;
                    transaction.completedFileCount += files;
                    reportIfDue();
                }
                void reportIfDue()
                {
                    if (sinceReport.elapsed() < progressIntervalMs)
                        return;
                    update();
                    post(transaction);
                    sinceReport.restart();
                }
                void update()
                {
                    const double done = transaction.totalByteCount > 0
                        ? double(transaction.completedByteCount) / double(transaction.totalByteCount)
                        : double(transaction.completedUnitCount)
                            / double(std::max<qsizetype>(1, transaction.totalUnitCount));
                    transaction.percentComplete = std::min(100.0, 100.0 * done);
                }
            } progress;
            progress.run = &run;
            progress.transaction = start;
            progress.post = post;
            progress.sinceReport.start();
            run.performer->setProgress(&progress);
            ZQFileOperationTransaction &transaction = progress.transaction;
            for (ZQFileOperationUnit &unit : run.group.units()) {
                if (run.cancelled)
                    break;
                if (unit.state() != State::pending)
                    continue;
                transaction.currentPath = unit.sourceItem() ? unit.sourceItem()->path() : unit.destinationPath();
                const qint64 bytesBefore = transaction.completedByteCount;
                const qint64 filesBefore = transaction.completedFileCount;
                const ZQFileOperationError error = run.performer->perform(unit, run.group);
                if (error.code == ZQFileOperationErrorCode::cancelled)
                    break;
                if (error.isError()) {
                    unit.setState(State::failed);
                    transaction.error = error;
                    run.performer->finishPerforming(); // what was done before stays done
                    progress.update();
                    post(transaction);
                    run.performer->setProgress(nullptr);
                    return;
                }
                unit.setState(State::done);
                ++transaction.completedUnitCount;
                // A unit counts in full once done, whatever the performer reported on the way.
                transaction.completedByteCount = bytesBefore + unit.byteCount();
                transaction.completedFileCount = filesBefore + unit.fileCount();
                progress.reportIfDue();
            }
            transaction.error = run.performer->finishPerforming();
            run.performer->setProgress(nullptr);
            progress.update();
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
