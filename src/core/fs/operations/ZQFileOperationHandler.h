#pragma once

#include "core/fs/operations/ZQFileOperationDelegate.h"
#include "core/fs/operations/ZQFileOperationGroup.h"

#include <QObject>

#include <memory>

class ZQFileOperationPerformer;

// One running file operation: takes a group of units through preparing, the initial resolution,
// preflight, the preflight resolution and performing, then completes.
//
// The checks and the work run on the file operations pool; the stages in between, every delegate
// call and every signal happen on the GUI thread, where the handler lives. A question to the
// delegate pauses the run until it answers with continueToPreflight / continueToPerform, so no
// thread waits for the user. Cancelling stops the unit at work (the performer undoes it) and the
// ones after it; a failed unit stops the run, and units done before it stay done. Progress (units,
// bytes and files) is reported at most every 50 ms. The handler deletes itself after the
// completion call.
class ZQFileOperationHandler : public QObject
{
    Q_OBJECT

public:
    ~ZQFileOperationHandler() override;

    ZQFileOperationType type() const { return m_type; }
    ZQFileOperationStage stage() const { return m_stage; }
    // Only between stages (in the delegate's callbacks) and after completion.
    ZQFileOperationGroup &group();
    const ZQFileOperationTransaction &lastTransaction() const { return m_lastTransaction; }
    bool isCancelled() const;
    // The first unit error that stopped the run; none when the run was not stopped by one.
    const ZQFileOperationError &stoppingError() const { return m_stoppingError; }

    void setDelegate(ZQFileOperationDelegate *delegate) { m_delegate = delegate; }

    void continueToPreflight();
    void continueToPerform();
    void cancel();

Q_SIGNALS:
    void transactionReported(const ZQFileOperationTransaction &transaction);
    void completed();

private:
    friend class ZQFileController;
    struct Run;

    ZQFileOperationHandler(ZQFileOperationType type, ZQFileOperationGroup group,
                           std::unique_ptr<ZQFileOperationPerformer> performer, ZQFileOperationDelegate *delegate,
                           QObject *parent);
    void start();
    void afterPreparation();
    void afterPreflight();
    void afterPerforming();
    void finish();
    void setStage(ZQFileOperationStage stage);
    void report(const ZQFileOperationTransaction &transaction);
    bool cancelIfAsked();
    template<typename Work, typename Then>
    void runOnWorker(Work work, Then then);

    ZQFileOperationType m_type;
    std::shared_ptr<Run> m_run;
    ZQFileOperationDelegate *m_delegate = nullptr;
    ZQFileOperationStage m_stage = ZQFileOperationStage::notStarted;
    ZQFileOperationTransaction m_lastTransaction;
    ZQFileOperationError m_stoppingError;
    bool m_workerRunning = false;
};
