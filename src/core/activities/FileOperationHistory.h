#pragma once

#include "core/activities/FileOperationOutcome.h"

#include <QList>
#include <QObject>
#include <QPointer>

class ActivitiesManager;
class ActivityItem;

// Undo and redo of the file operations: moves, copies, duplicates, links, new folders, renames
// (one file's or a batch's) and trashing. Each undo runs the opposite operation as an activity:
// a move goes back where it came from, a rename takes its old name, what was made (a copy, a
// link, a folder) goes to the trash, and what was trashed is put back at its original path. A
// redo undoes the undo the same way (a copy comes back out of the trash). Nothing is ever
// deleted, and an item in the way is a conflict asked about like any other.
//
// Every undoable operation the manager runs is recorded, and renames that the batch renamer runs
// on the same file controller. One undo or redo runs at a time; a new operation clears the redo
// list. Use from the GUI thread.
class FileOperationHistory : public QObject
{
    Q_OBJECT
public:
    // Enough steps back for any session; each holds only paths.
    static constexpr int maximumSteps = 50;

    explicit FileOperationHistory(ActivitiesManager *manager, QObject *parent = nullptr);
    ~FileOperationHistory() override;
    static FileOperationHistory &shared();
    static void setShared(FileOperationHistory *history); // not owned

    // An undo or redo is running.
    bool isBusy() const { return m_busy; }
    bool canUndo() const;
    bool canRedo() const;
    // "Undo Move to Trash"; "Undo" when there is nothing to undo.
    QString undoTitle() const;
    QString redoTitle() const;

    // Start the opposite operation; null when nothing can be done now.
    ActivityItem *undo();
    ActivityItem *redo();

    // Records a finished operation (the manager's are recorded by themselves).
    void record(const FileOperationOutcome &outcome);

Q_SIGNALS:
    void changed();

private:
    struct Step
    {
        FileOperationOutcome outcome; // what was last done in this step's direction
        QString title;
        int id = 0;
    };
    ActivityItem *runOpposite(const Step &step, bool undoing);
    void watchController();

    QPointer<ActivitiesManager> m_manager;
    QList<Step> m_undo;
    QList<Step> m_redo;
    bool m_busy = false;
    int m_nextStepId = 1;
};
