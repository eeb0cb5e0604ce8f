#include "ui/windows/MainWindowController.h"

#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/TabbedWindow.h"
#include "ui/windows/WindowManager.h"

MainWindowController::MainWindowController(WindowSettingsPtr settings, WindowManager *delegate, MainWindowHost *host,
                                           const PXFilePtr &file, QObject *parent)
    : QObject(parent)
    , m_windowSettings(std::move(settings))
    , m_mainViewController(new MainWindowViewController(m_windowSettings, host, file))
    , m_delegate(delegate)
{
    connect(m_mainViewController, &MainWindowViewController::titleChanged, this, &MainWindowController::titleChanged);
    connect(m_mainViewController, &MainWindowViewController::commandsChanged, this,
            &MainWindowController::commandsChanged);
}

MainWindowController::~MainWindowController()
{
    delete m_mainViewController;
}

bool MainWindowController::isCurrentlyKey() const
{
    return m_tabbedWindow && m_tabbedWindow->isActiveWindow() && m_tabbedWindow->currentController() == this;
}

bool MainWindowController::isShown() const
{
    return m_tabbedWindow && m_tabbedWindow->isVisible();
}

bool MainWindowController::isFullscreen() const
{
    return m_tabbedWindow && m_tabbedWindow->isFullScreen();
}

QString MainWindowController::title() const
{
    return m_mainViewController->title();
}

void MainWindowController::close()
{
    if (m_closed)
        return;
    m_closed = true;
    m_mainViewController->writeLayoutToSettings();
    if (m_delegate)
        m_delegate->windowControllerWillClose(this);
    SettingsManager::shared().settings()->setWindowSettings({m_windowSettings});
    Q_EMIT closed(this);
    deleteLater();
}

MainWindowViewController *MainWindowController::mainViewController() const
{
    return m_mainViewController;
}
