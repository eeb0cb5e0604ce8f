#pragma once

#include "ui/windows/CommandState.h"

#include <QList>
#include <QMainWindow>
#include <QPointer>

class MainWindowController;
class QAction;
class QStackedWidget;
class QTabBar;
class QTimer;

// The top-level window of one or more main windows shown as tabs: the menu bar, a tab bar that
// appears with the second tab, and the current tab's content. Menu commands go to the current
// main window, else to the application; their enabled and checked states are validated when a
// menu opens and whenever the current window says its commands changed.
class MainWindowFrame : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindowFrame(QWidget *parent = nullptr);
    ~MainWindowFrame() override;

    // The frame that was active last (null when none is open).
    static MainWindowFrame *lastActivated();

    void addController(MainWindowController *controller);
    MainWindowController *currentController() const;
    const QList<MainWindowController *> &controllers() const { return m_controllers; }

    // Runs a command (from the menu bar, a toolbar button or a test).
    bool performCommand(const Command &command);
    CommandState commandState(const Command &command) const;
    // Validates every menu action now.
    void validateActions();
    QAction *action(const QString &command, const QVariant &argument = {}) const;

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void controllerClosed(MainWindowController *controller);
    void showCurrent(int index);
    void updateTitle();
    void rebuildOpenWithMenu(QMenu *menu);
    void rebuildMoveToMenu(QMenu *menu);

    QTabBar *m_tabBar;
    QStackedWidget *m_stack;
    QList<MainWindowController *> m_controllers;
    QList<QAction *> m_actions;
    QTimer *m_validateTimer;
};
