#pragma once

#include "ui/common/Command.h"
#include "ui/windows/FileMenus.h"

#include <QList>
#include <QMainWindow>
#include <QPointer>

class CommandAction;
class CommandRegistry;
class MainWindowController;
class QAction;
class QStackedWidget;
class QTabBar;
class QTimer;

// The top-level window of one or more main windows shown as tabs: the menu bar, a tab bar that
// appears with the second tab, and the current tab's content. Menu commands go to their owner:
// this window, the current tab's content or its thumbnail pane, or the application; their
// enabled and checked states are validated when a menu opens and whenever the current window says
// its commands changed.
class TabbedWindow : public QMainWindow
{
    Q_OBJECT
public:
    static constexpr CommandOwner commandOwner = CommandOwner::tabbedWindow;

    explicit TabbedWindow(QWidget *parent = nullptr);
    ~TabbedWindow() override;

    // The tabbed window that was active last (null when none is open).
    static TabbedWindow *lastActivated();

    void addController(MainWindowController *controller);
    MainWindowController *currentController() const;
    const QList<MainWindowController *> &controllers() const { return m_controllers; }

    // Runs a command (from the menu bar, a toolbar button or a test); false when it is disabled.
    bool performCommand(CommandId id, const QVariant &argument = {});
    CommandState commandState(CommandId id, const QVariant &argument = {}) const;
    // Validates every menu action now.
    void validateActions();
    // The menu bar's item for a command ("changeThumbnailFileSort") and value, null when none.
    QAction *action(const QString &identifier, const QVariant &argument = {}) const;

    // This window's commands.
    void performClose();
    bool hasCurrentWindow() const;
    void toggleFullScreen();
    CommandState toggleFullScreenState() const;
    void selectNextTab();
    void selectPreviousTab();
    bool hasSeveralTabs() const;
    // Opens the current tab's selection with the application (a .desktop file or a program).
    void openWithApplication(const QString &applicationPath);
    bool hasSelection() const;

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void controllerClosed(MainWindowController *controller);
    void showCurrent(int index);
    void updateTitle();
    FileMenus::AddItem menuItemMaker();
    void rebuildOpenWithMenu(QMenu *menu);
    void rebuildFolderMenu(QMenu *menu, CommandId id);

    const CommandRegistry &m_registry;
    QTabBar *m_tabBar;
    QStackedWidget *m_stack;
    QList<MainWindowController *> m_controllers;
    QList<CommandAction *> m_actions;
    QTimer *m_validateTimer;
};
