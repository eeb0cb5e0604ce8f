#include "ui/windows/TabbedWindow.h"

#include "core/activities/FileOperationHistory.h"
#include "core/app/Log.h"
#include "core/fs/Applications.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/FileMenus.h"
#include "ui/windows/MainMenuBar.h"
#include "ui/windows/MainWindowController.h"
#include "ui/windows/MainWindowViewController.h"

#include <QAction>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSet>
#include <QStackedWidget>
#include <QTabBar>
#include <QTimer>
#include <QVBoxLayout>

namespace {
QPointer<TabbedWindow> lastActiveTabbedWindow;
}

// The resources of a static library are registered by name, outside any namespace.
static void initResources()
{
    Q_INIT_RESOURCE(pixcove_ui);
}

TabbedWindow::TabbedWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_registry(CommandRegistry::shared())
    , m_tabBar(new QTabBar(this))
    , m_stack(new QStackedWidget(this))
    , m_validateTimer(new QTimer(this))
{
    initResources();
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowIcon(QIcon::fromTheme(QStringLiteral("pixcove"), QIcon(QStringLiteral(":/pixcove/pixcove.svg"))));
    // Most of the screen, up to a size past which more room only spreads the grid thinner.
    const QRect screen = QGuiApplication::primaryScreen() ? QGuiApplication::primaryScreen()->availableGeometry()
                                                          : QRect(0, 0, 1600, 1000);
    resize(qMin(1480, screen.width() * 9 / 10), qMin(940, screen.height() * 9 / 10));

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_tabBar->setDocumentMode(true);
    m_tabBar->setTabsClosable(true);
    m_tabBar->setMovable(false);
    m_tabBar->setExpanding(true);
    m_tabBar->hide();
    layout->addWidget(m_tabBar);
    layout->addWidget(m_stack, 1);
    setCentralWidget(central);

    m_actions = MainMenuBar::build(menuBar(), m_registry);
    // The viewer's commands without a menu item work by their keys. Stepping is the grid's here:
    // its arrows stay with it.
    QSet<int> inMenus;
    for (const CommandAction *action : std::as_const(m_actions))
        inMenus.insert(int(action->commandId()));
    for (const Command &command : m_registry.commands()) {
        if (command.owner() != CommandOwner::viewer || inMenus.contains(int(command.id()))
            || command.id() == CommandId::nextImageInFolder || command.id() == CommandId::previousImageInFolder)
            continue;
        auto *action = new CommandAction(command, {}, {}, this);
        action->bindKeys(command);
        action->setEnabled(false);
        m_actions.append(action);
    }
    for (CommandAction *action : std::as_const(m_actions)) {
        addAction(action); // shortcuts work while the menu bar is hidden too
        connect(action, &QAction::triggered, this,
                [this, action] { performCommand(action->commandId(), action->argument()); });
    }
    for (QMenu *menu : menuBar()->findChildren<QMenu *>()) {
        connect(menu, &QMenu::aboutToShow, this, [this, menu] {
            if (menu->objectName() == QLatin1String(MainMenuBar::openWithMenuName))
                rebuildOpenWithMenu(menu);
            else if (menu->objectName() == QLatin1String(MainMenuBar::moveToMenuName))
                rebuildFolderMenu(menu, CommandId::moveToMenuAction);
            else if (menu->objectName() == QLatin1String(MainMenuBar::copyToMenuName))
                rebuildFolderMenu(menu, CommandId::copyToMenuAction);
            else if (menu->objectName() == QLatin1String(MainMenuBar::aliasToMenuName))
                rebuildFolderMenu(menu, CommandId::aliasToMenuAction);
            validateActions();
        });
    }

    // 0 ms: a burst of state changes (a selection made by dragging) costs one validation.
    m_validateTimer->setSingleShot(true);
    m_validateTimer->setInterval(0);
    connect(m_validateTimer, &QTimer::timeout, this, &TabbedWindow::validateActions);
    // Undo and Redo are enabled by the file history, which no window's state tells of; their keys
    // belong to these items, so they must follow it while the menu stays closed.
    connect(&FileOperationHistory::shared(), &FileOperationHistory::changed, m_validateTimer,
            qOverload<>(&QTimer::start));

    connect(m_tabBar, &QTabBar::currentChanged, this, &TabbedWindow::showCurrent);
    connect(m_tabBar, &QTabBar::tabCloseRequested, this, [this](int index) {
        if (MainWindowController *controller = m_controllers.value(index))
            controller->close();
    });
    lastActiveTabbedWindow = this;
}

TabbedWindow::~TabbedWindow() = default;

TabbedWindow *TabbedWindow::lastActivated()
{
    return lastActiveTabbedWindow;
}

void TabbedWindow::addController(MainWindowController *controller)
{
    controller->setTabbedWindow(this);
    const int index = m_tabBar->currentIndex() + 1;
    m_controllers.insert(index, controller);
    m_stack->insertWidget(index, controller->mainViewController());
    m_tabBar->insertTab(index, controller->title());
    m_tabBar->setVisible(m_controllers.size() > 1);
    connect(controller, &MainWindowController::titleChanged, this, [this, controller](const QString &title) {
        m_tabBar->setTabText(int(m_controllers.indexOf(controller)), title);
        updateTitle();
    });
    connect(controller, &MainWindowController::commandsChanged, m_validateTimer, qOverload<>(&QTimer::start));
    connect(controller, &MainWindowController::closed, this, &TabbedWindow::controllerClosed);
    m_tabBar->setCurrentIndex(index);
    showCurrent(index);
}

MainWindowController *TabbedWindow::currentController() const
{
    return m_controllers.value(m_tabBar->currentIndex());
}

void TabbedWindow::showCurrent(int index)
{
    if (MainWindowController *controller = m_controllers.value(index)) {
        m_stack->setCurrentWidget(controller->mainViewController());
        controller->mainViewController()->setFocus();
    }
    updateTitle();
    m_validateTimer->start();
}

void TabbedWindow::updateTitle()
{
    const MainWindowController *controller = currentController();
    setWindowTitle(controller ? controller->title() : QStringLiteral("Pixcove"));
}

void TabbedWindow::controllerClosed(MainWindowController *controller)
{
    const int index = int(m_controllers.indexOf(controller));
    if (index < 0)
        return;
    m_controllers.removeAt(index);
    m_stack->removeWidget(controller->mainViewController());
    m_tabBar->removeTab(index);
    m_tabBar->setVisible(m_controllers.size() > 1);
    if (m_controllers.isEmpty())
        close();
}

void TabbedWindow::closeEvent(QCloseEvent *event)
{
    const QList<MainWindowController *> controllers = m_controllers;
    for (MainWindowController *controller : controllers)
        controller->close();
    event->accept();
}

void TabbedWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        lastActiveTabbedWindow = this;
    QMainWindow::changeEvent(event);
}

// The tabbed window runs its own and the application's commands; the current tab runs the others.
bool TabbedWindow::performCommand(CommandId id, const QVariant &argument)
{
    const Command &command = m_registry.command(id);
    switch (command.owner()) {
    case CommandOwner::tabbedWindow: return command.perform(this, argument, this);
    case CommandOwner::application: return command.perform(m_registry.application(), argument, this);
    case CommandOwner::window:
    case CommandOwner::pane:
    case CommandOwner::viewer: break;
    }
    MainWindowController *controller = currentController();
    return controller && controller->mainViewController()->performCommand(command, argument);
}

CommandState TabbedWindow::commandState(CommandId id, const QVariant &argument) const
{
    const Command &command = m_registry.command(id);
    switch (command.owner()) {
    case CommandOwner::tabbedWindow: return command.state(this, argument);
    case CommandOwner::application: return command.state(m_registry.application(), argument);
    case CommandOwner::window:
    case CommandOwner::pane:
    case CommandOwner::viewer: break;
    }
    const MainWindowController *controller = currentController();
    return controller ? controller->mainViewController()->commandState(command, argument) : CommandState{};
}

void TabbedWindow::validateActions()
{
    for (CommandAction *action : std::as_const(m_actions))
        action->applyState(commandState(action->commandId(), action->argument()));
}

QAction *TabbedWindow::action(const QString &identifier, const QVariant &argument) const
{
    const Command *command = m_registry.find(identifier);
    if (!command)
        return nullptr;
    for (CommandAction *action : m_actions) {
        if (action->commandId() == command->id() && action->argument() == argument)
            return action;
    }
    return nullptr;
}

void TabbedWindow::performClose()
{
    if (MainWindowController *controller = currentController())
        controller->close();
}

bool TabbedWindow::hasCurrentWindow() const
{
    return currentController() != nullptr;
}

void TabbedWindow::toggleFullScreen()
{
    setWindowState(windowState() ^ Qt::WindowFullScreen);
}

CommandState TabbedWindow::toggleFullScreenState() const
{
    return {true, isFullScreen()};
}

void TabbedWindow::selectNextTab()
{
    m_tabBar->setCurrentIndex((m_tabBar->currentIndex() + 1) % m_tabBar->count());
}

void TabbedWindow::selectPreviousTab()
{
    m_tabBar->setCurrentIndex((m_tabBar->currentIndex() - 1 + m_tabBar->count()) % m_tabBar->count());
}

bool TabbedWindow::hasSeveralTabs() const
{
    return m_controllers.size() > 1;
}

void TabbedWindow::openWithApplication(const QString &applicationPath)
{
    QStringList paths;
    for (const PXFilePtr &file : currentController()->mainViewController()->selectedFiles())
        paths.append(file->path());
    QString error;
    if (!Applications::launch(applicationPath, paths, &error))
        logError(QStringLiteral("Cannot open with %1: %2").arg(applicationPath, error));
}

bool TabbedWindow::hasSelection() const
{
    const MainWindowController *controller = currentController();
    return controller && !controller->mainViewController()->selectedFiles().isEmpty();
}

// Items of the menus rebuilt when they open, validated and run like the menu bar's.
FileMenus::AddItem TabbedWindow::menuItemMaker()
{
    return [this](QMenu *menu, CommandId id, const QVariant &argument, const QString &title) -> QAction * {
        auto *item = new CommandAction(m_registry.command(id), argument, title, menu);
        menu->addAction(item);
        item->applyState(commandState(id, argument));
        connect(item, &QAction::triggered, this, [this, id, argument] { performCommand(id, argument); });
        return item;
    };
}

// Favourite applications that are gone are left out until they come back.
void TabbedWindow::rebuildOpenWithMenu(QMenu *menu)
{
    menu->clear();
    const MainWindowController *controller = currentController();
    FileMenus::fillOpenWith(menu, controller ? controller->mainViewController()->selectedFiles() : QList<PXFilePtr>(),
                            menuItemMaker());
}

void TabbedWindow::rebuildFolderMenu(QMenu *menu, CommandId id)
{
    menu->clear();
    FileMenus::fillFolders(menu, id, menuItemMaker());
}
