#pragma once

#include "core/activities/ActivitiesManager.h"

#include <QObject>
#include <QPointer>

#include <functional>

class QWidget;

class ActivitiesWindow;
class QMessageBox;

// The activities' user interface: the activities window (made when first shown, opening by itself
// when an operation runs longer than a moment), the questions an operation asks (a name already
// taken: replace, skip, keep both, with "apply to all"), the messages of operations that failed,
// and the question "Operations Not Complete" when the user quits while activities work.
//
// Questions during an operation are window-modal and answered asynchronously: the operation waits
// for the answer, the GUI keeps running. A question whose operation ends meanwhile closes.
class ActivitiesWindowController : public QObject, public ActivitiesPrompter
{
    Q_OBJECT
public:
    // 1 s: a quick operation never flashes a window; a long one shows its progress soon.
    static constexpr int showWindowDelayMs = 1000;

    explicit ActivitiesWindowController(ActivitiesManager *manager, QObject *parent = nullptr);
    ~ActivitiesWindowController() override;

    ActivitiesManager *manager() const { return m_manager; }
    void showWindow();
    // Null until first shown.
    ActivitiesWindow *window() const;
    // The question or message on screen now, null when there is none (tests answer it).
    QMessageBox *currentQuestion() const;

    // ActivitiesPrompter
    void resolveConflicts(ActivityItem *activity, ZQFileOperationGroup &group,
                          std::function<void(bool proceed)> done) override;
    void showError(ActivityItem *activity, const ZQFileOperationError &error) override;
    // Quitting: whether working activities let the program quit (asks "Operations Not Complete",
    // as a sheet of `window`), then stops them and calls `done` once all ended.
    bool shouldQuit(QWidget *window);
    void finishActivities(std::function<void()> done);

Q_SIGNALS:
    // A question or message was put on screen.
    void questionShown(QMessageBox *box);

private:
    struct Conflicts;
    void askNext(const std::shared_ptr<Conflicts> &conflicts);
    void present(QMessageBox *box);
    QWidget *dialogParent() const;

    ActivitiesManager *m_manager;
    QPointer<ActivitiesWindow> m_window;
    QPointer<QMessageBox> m_question;
};
