#include "ui/activities/ActivitiesWindowController.h"

#include "core/activities/ActivitiesModel.h"
#include "core/app/Log.h"
#include "core/fs/operations/ZQFileOperationGroup.h"
#include "ui/activities/ActivitiesWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace Code = ZQFileOperationErrorCode;

// The units of one operation still to be asked about, and the answer to give when done.
struct ActivitiesWindowController::Conflicts
{
    QPointer<ActivityItem> activity;
    ZQFileOperationGroup *group = nullptr;
    std::function<void(bool)> done;
    int next = 0;

    // Whether the operation still waits: once it ended, its group is no longer ours to touch.
    bool isWaiting() const { return activity && activity->state() == ActivityItem::State::working; }
};

ActivitiesWindowController::ActivitiesWindowController(ActivitiesManager *manager, QObject *parent)
    : QObject(parent)
    , m_manager(manager)
{
    m_manager->setPrompter(this);
    QPointer<ActivitiesWindowController> self(this);
    m_manager->activitiesModel()->newActivityHandler = [self](ActivityItem *item) {
        if (!self)
            return;
        QPointer<ActivityItem> started(item);
        QTimer::singleShot(showWindowDelayMs, self, [self, started] {
            if (self && started && started->state() == ActivityItem::State::working && !started->isHidden())
                self->showWindow();
        });
    };
}

ActivitiesWindowController::~ActivitiesWindowController()
{
    if (m_manager->prompter() == this)
        m_manager->setPrompter(nullptr);
    m_manager->activitiesModel()->newActivityHandler = nullptr;
    delete m_question.data();
    delete m_window.data();
}

ActivitiesWindow *ActivitiesWindowController::window() const
{
    return m_window.data();
}

QMessageBox *ActivitiesWindowController::currentQuestion() const
{
    return m_question.data();
}

void ActivitiesWindowController::showWindow()
{
    if (!m_window)
        m_window = new ActivitiesWindow(m_manager->activitiesModel());
    m_window->show();
    m_window->raise();
}

QWidget *ActivitiesWindowController::dialogParent() const
{
    if (QWidget *active = QApplication::activeWindow())
        return active;
    return m_window && m_window->isVisible() ? m_window.data() : nullptr;
}

void ActivitiesWindowController::present(QMessageBox *box)
{
    // An earlier question stays until answered: its operation waits for it.
    m_question = box;
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(box->parentWidget() ? Qt::WindowModal : Qt::ApplicationModal);
    box->open();
    Q_EMIT questionShown(box);
}

void ActivitiesWindowController::resolveConflicts(ActivityItem *activity, ZQFileOperationGroup &group,
                                                  std::function<void(bool proceed)> done)
{
    auto conflicts = std::make_shared<Conflicts>();
    conflicts->activity = activity;
    conflicts->group = &group;
    conflicts->done = std::move(done);
    askNext(conflicts);
}

void ActivitiesWindowController::askNext(const std::shared_ptr<Conflicts> &conflicts)
{
    if (!conflicts->isWaiting()) {
        conflicts->done(false);
        return;
    }
    QList<ZQFileOperationUnit> &units = conflicts->group->units();
    // The next unit with an error that nobody answered yet ("apply to all" answers several).
    while (conflicts->next < units.size()
           && (!units[conflicts->next].hasError()
               || units[conflicts->next].state() != ZQFileOperationUnit::State::pending
               || units[conflicts->next].resolution() != ZQFileOperationResolution::unresolved))
        ++conflicts->next;
    if (conflicts->next >= units.size()) {
        conflicts->done(true);
        return;
    }
    const ZQFileOperationUnit &unit = units[conflicts->next];
    const ZQFileOperationError error = unit.error();
    int alike = 0;
    for (int i = conflicts->next + 1; i < units.size(); ++i) {
        alike += units[i].hasError() && units[i].state() == ZQFileOperationUnit::State::pending
                && units[i].resolution() == ZQFileOperationResolution::unresolved && units[i].error().code == error.code
            ? 1
            : 0;
    }

    auto *box = new QMessageBox(QMessageBox::Warning, conflicts->activity->title(), error.description,
                                QMessageBox::NoButton, dialogParent());
    box->setObjectName(QStringLiteral("conflictQuestion"));
    const bool occupied = error.code == Code::destinationExists;
    box->setInformativeText(occupied ? tr("Do you want to replace it, skip this item, or keep both?")
                                     : error.failureReason);
    QPushButton *replace = occupied ? box->addButton(tr("Replace"), QMessageBox::DestructiveRole) : nullptr;
    QPushButton *keepBoth = occupied ? box->addButton(tr("Keep Both"), QMessageBox::AcceptRole) : nullptr;
    QPushButton *skip = box->addButton(tr("Skip"), QMessageBox::RejectRole);
    QPushButton *stop = box->addButton(tr("Stop"), QMessageBox::RejectRole);
    if (replace)
        replace->setObjectName(QStringLiteral("replace"));
    if (keepBoth)
        keepBoth->setObjectName(QStringLiteral("keepBoth"));
    skip->setObjectName(QStringLiteral("skip"));
    stop->setObjectName(QStringLiteral("stop"));
    // Nothing is replaced by pressing Return.
    box->setDefaultButton(keepBoth ? keepBoth : skip);
    box->setEscapeButton(stop);
    if (alike > 0) {
        auto *all = new QCheckBox(tr("Apply to all (%n more)", nullptr, alike));
        all->setObjectName(QStringLiteral("applyToAll"));
        box->setCheckBox(all);
    }
    QPointer<ActivitiesWindowController> self(this);
    connect(box, &QMessageBox::finished, this, [self, box, conflicts, replace, keepBoth, skip] {
        if (!self)
            return;
        QAbstractButton *clicked = box->clickedButton();
        ZQFileOperationResolution resolution = ZQFileOperationResolution::cancel;
        if (clicked && clicked == replace)
            resolution = ZQFileOperationResolution::replace;
        else if (clicked && clicked == keepBoth)
            resolution = ZQFileOperationResolution::keepBoth;
        else if (clicked && clicked == skip)
            resolution = ZQFileOperationResolution::skip;
        const bool toAll = box->checkBox() && box->checkBox()->isChecked();
        if (!conflicts->isWaiting() || resolution == ZQFileOperationResolution::cancel) {
            conflicts->done(false);
            return;
        }
        ZQFileOperationUnit &unit = conflicts->group->units()[conflicts->next];
        const int code = unit.error().code;
        unit.setResolution(resolution);
        if (toAll)
            conflicts->group->resolveAll(code, resolution);
        ++conflicts->next;
        // The next question once this one is gone.
        QTimer::singleShot(0, self, [self, conflicts] {
            if (self)
                self->askNext(conflicts);
        });
    });
    // A question about an operation that ended meanwhile goes away.
    QPointer<QMessageBox> guarded(box);
    if (conflicts->activity) {
        connect(conflicts->activity.data(), &ActivityItem::stateChanged, box, [guarded](ActivityItem::State state) {
            if (guarded && state != ActivityItem::State::working)
                guarded->reject();
        });
    }
    present(box);
}

void ActivitiesWindowController::showError(ActivityItem *activity, const ZQFileOperationError &error)
{
    auto *box = new QMessageBox(QMessageBox::Warning, activity ? activity->title() : tr("Activity"), error.description,
                                QMessageBox::Ok, dialogParent());
    box->setObjectName(QStringLiteral("operationError"));
    box->setInformativeText(error.failureReason);
    present(box);
}

bool ActivitiesWindowController::shouldQuit(QWidget *window)
{
    if (!m_manager->hasWorkingActivities())
        return true;
    QMessageBox box(QMessageBox::Warning, tr("Operations Not Complete"), tr("Operations Not Complete"),
                    QMessageBox::NoButton, window);
    box.setObjectName(QStringLiteral("quitQuestion"));
    box.setInformativeText(tr("Are you sure you want to quit? Some operations have not yet finished. If you quit "
                              "now, the operations will be stopped."));
    QPushButton *keepRunning = box.addButton(tr("Continue Operations"), QMessageBox::RejectRole);
    QPushButton *quit = box.addButton(tr("Quit"), QMessageBox::DestructiveRole);
    keepRunning->setObjectName(QStringLiteral("continueOperations"));
    quit->setObjectName(QStringLiteral("quit"));
    box.setDefaultButton(keepRunning);
    box.setEscapeButton(keepRunning);
    m_question = &box;
    Q_EMIT questionShown(&box);
    box.exec();
    m_question = nullptr;
    return box.clickedButton() == quit;
}

void ActivitiesWindowController::finishActivities(std::function<void()> done)
{
    m_manager->stopActivities(std::move(done));
}
