#pragma once

#include "core/activities/FileOperationOutcome.h"
#include "core/imaging/JpegRotation.h"
#include "core/model/PXFileForward.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

class ActivitiesManager;
class ActivityItem;
class FileOperationHistory;
class QMenu;
class QWidget;

// The file-changing commands as the windows run them: each starts an activity through the
// activities manager (progress in the activities window, name clashes asked, errors shown, a way
// back through undo). The thumbnail pane, the sidebar, drops and the Move To / Copy To / Alias To
// menus all call here. Each call answers the activity started, or null when there was nothing to
// do; `done` runs on the GUI thread when the operation ends (also when cancelled or stopped by an
// error). Use from the GUI thread.
class FileOperationsController : public QObject
{
    Q_OBJECT
public:
    using Completion = std::function<void(const FileOperationOutcome &outcome)>;

    // Null arguments take the shared manager and history.
    explicit FileOperationsController(ActivitiesManager *manager = nullptr, FileOperationHistory *history = nullptr,
                                      QObject *parent = nullptr);
    ~FileOperationsController() override;
    static FileOperationsController &shared();
    static void setShared(FileOperationsController *controller); // not owned; null: the process's own

    ActivitiesManager *manager() const { return m_manager; }
    FileOperationHistory *history() const { return m_history; }

    // Into `folder`, under the items' own names.
    ActivityItem *move(const QList<PXFilePtr> &files, const PXFilePtr &folder, Completion done = {});
    ActivityItem *copy(const QList<PXFilePtr> &files, const PXFilePtr &folder, Completion done = {});
    // Symbolic links in `folder` to each item.
    ActivityItem *link(const QList<PXFilePtr> &files, const PXFilePtr &folder, Completion done = {});
    // Beside each item: "photo copy.jpg", "photo alias.jpg".
    ActivityItem *duplicate(const QList<PXFilePtr> &files, Completion done = {});
    ActivityItem *makeAlias(const QList<PXFilePtr> &files, Completion done = {});
    ActivityItem *moveToTrash(const QList<PXFilePtr> &files, Completion done = {});
    // "untitled folder" (numbered when taken) in `parent`.
    ActivityItem *newFolder(const PXFilePtr &parent, Completion done = {});
    // One file's rename; a change of extension asks first, as a sheet of `window`. Null when the
    // user declined or the name is the same.
    ActivityItem *rename(const PXFilePtr &file, const QString &newName, QWidget *window, Completion done = {});
    // A quarter turn for good (lossless where the format allows).
    ActivityItem *rotate(const QList<PXFilePtr> &files, JpegRotation::Turn turn, Completion done = {});

    // A menu at the pointer offering to move, copy or link `files` into `folder`, for a drop that
    // asks (Alt held); deletes itself when closed.
    QMenu *offerPlacement(const QList<PXFilePtr> &files, const PXFilePtr &folder, QWidget *parent);

    // Whether `name` -> `newName` changes the extension, so that the rename must ask.
    static bool changesExtension(const QString &name, const QString &newName);
    // Asks the extension question; true to go on with the new extension. Tests answer it
    // through `extensionQuestion`.
    bool confirmExtensionChange(const QString &name, const QString &newName, QWidget *window);
    std::function<bool(const QString &name, const QString &newName)> extensionQuestion;

Q_SIGNALS:
    // An operation this controller started ended (the panes select what arrived).
    void operationFinished(const FileOperationOutcome &outcome);

private:
    ActivityItem *start(int type, const QList<PXFilePtr> &files, const PXFilePtr &folder, Completion done);

    ActivitiesManager *m_manager;
    FileOperationHistory *m_history;
};
