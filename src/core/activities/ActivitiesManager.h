#pragma once

#include "core/activities/ActivityItem.h"
#include "core/activities/FileOperationOutcome.h"
#include "core/fs/operations/ZQFileOperationDelegate.h"
#include "core/fs/operations/ZQFileOperationGroup.h"
#include "core/imaging/JpegRotation.h"
#include "core/model/PXFileForward.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QPointer>

#include <functional>

class ActivitiesModel;
class ZQFileController;
class ZQFileOperationHandler;

// What the manager asks of the user interface during an operation. Without one, units in
// conflict are skipped (nothing is replaced without an answer) and errors are only logged.
class ActivitiesPrompter
{
public:
    virtual ~ActivitiesPrompter() = default;
    // Units of `group` have errors (a name taken, an item gone): set each unit's resolution
    // (replace, skip, keep both; "apply to all" through resolveAll), then call `done(true)`, or
    // `done(false)` to cancel the operation. May answer later; `group` lives until `done`.
    virtual void resolveConflicts(ActivityItem *activity, ZQFileOperationGroup &group,
                                  std::function<void(bool proceed)> done) = 0;
    // The operation stopped on `error` (already logged).
    virtual void showError(ActivityItem *activity, const ZQFileOperationError &error) = 0;
};

// The one process-wide owner of the activities: starts file operations through the file
// controller as activities, is the delegate of their handlers (progress texts, conflict questions
// through the prompter, errors), runs image rotations, and keeps the activities model. Quitting
// asks it first whether activities are still working, then to stop them. Use from the GUI thread.
class ActivitiesManager : public QObject, public ZQFileOperationDelegate
{
    Q_OBJECT
public:
    using Completion = std::function<void(const FileOperationOutcome &outcome)>;

    // `controller`: null for the shared file controller.
    explicit ActivitiesManager(ZQFileController *controller = nullptr, QObject *parent = nullptr);
    ~ActivitiesManager() override;
    static ActivitiesManager &shared();
    static void setShared(ActivitiesManager *manager); // not owned; null goes back to the process's own

    ActivitiesModel *activitiesModel() const { return m_model; }
    ZQFileController *fileController() const { return m_controller; }
    void setPrompter(ActivitiesPrompter *prompter) { m_prompter = prompter; }
    // Where the thumbnails that rotations turn with their files are cached; empty for the
    // desktop's own cache (tests redirect it).
    void setThumbnailCacheRoot(const QString &root) { m_thumbnailCacheRoot = root; }
    ActivitiesPrompter *prompter() const { return m_prompter; }

    // Starts `group` as an activity titled after `type` and the items; `done` runs on completion
    // (also when cancelled or stopped by an error), after operationFinished. Null with an error
    // message logged when nothing can be started.
    ActivityItem *performOperation(ZQFileOperationType type, ZQFileOperationGroup group, Completion done = {},
                                   bool undoable = true);
    // Turns images a quarter turn on the file pool, one after another; cancellable between files.
    ActivityItem *rotateImages(const QList<PXFilePtr> &files, JpegRotation::Turn turn, Completion done = {});

    bool hasWorkingActivities() const;
    // Whether `handler` runs one of this manager's activities.
    bool isManaging(ZQFileOperationHandler *handler) const { return m_running.contains(handler); }
    // Cancels every unfinished activity and calls `done` (on the GUI thread) once all finished.
    void stopActivities(std::function<void()> done);

    // The row's texts for a progress report, `elapsedMs` after the work began.
    static void applyTransaction(ActivityItem &item, ZQFileOperationType type,
                                 const ZQFileOperationTransaction &transaction, qint64 elapsedMs);
    // "Move to Trash", "Copy", ...: the action's name in the Edit menu.
    static QString actionTitle(ZQFileOperationType type);
    // The row's title: "Moving “photo.jpg” to “Trips”", "Copying 12 items to “Trips”".
    static QString activityTitle(ZQFileOperationType type, const ZQFileOperationGroup &group);

Q_SIGNALS:
    // Every operation that ends, after its activity finished.
    void operationFinished(const FileOperationOutcome &outcome);
    // Images whose pixels were turned (their thumbnails follow at once).
    void imagesRotated(const QList<PXFilePtr> &files, JpegRotation::Turn turn);

protected:
    // ZQFileOperationDelegate
    void fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                    ZQFileOperationGroup &group) override;
    void fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler,
                                                      ZQFileOperationGroup &group) override;
    void fileOperationHandlerReportingTransaction(ZQFileOperationHandler *handler,
                                                  const ZQFileOperationTransaction &transaction) override;
    void fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler) override;

private:
    struct Running
    {
        QPointer<ActivityItem> activity;
        Completion done;
        QElapsedTimer clock;
        bool undoable = true;
        QString title;
    };
    void askForResolution(ZQFileOperationHandler *handler, ZQFileOperationGroup &group, bool preflight);
    void checkStopped();

    ZQFileController *m_controller;
    ActivitiesModel *m_model;
    ActivitiesPrompter *m_prompter = nullptr;
    QHash<ZQFileOperationHandler *, Running> m_running;
    QList<std::function<void()>> m_whenStopped;
    int m_nextId = 1;
    QString m_thumbnailCacheRoot;
};
