#include "ui/app/MainWindowsManager.h"

#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "ui/app/AuxiliaryWindowsManager.h"
#include "ui/app/ImageWindowsManager.h"
#include "ui/app/SlideshowWindowsManager.h"
#include "ui/app/WarningsManager.h"
#include "ui/windows/MainWindowController.h"
#include "ui/windows/TabbedWindow.h"

#include <QApplication>

namespace {
MainWindowsManager *installedManager = nullptr;
}

MainWindowsManager::MainWindowsManager(AppSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
{ }

MainWindowsManager::~MainWindowsManager() = default;

MainWindowsManager &MainWindowsManager::shared()
{
    if (installedManager)
        return *installedManager;
    static auto *own = new MainWindowsManager(SettingsManager::shared().settings());
    return *own;
}

void MainWindowsManager::setShared(MainWindowsManager *manager)
{
    installedManager = manager;
}

MainWindowController *MainWindowsManager::frontMainWindow() const
{
    if (m_windowControllers.isEmpty())
        return nullptr;
    if (auto *window = qobject_cast<TabbedWindow *>(QApplication::activeWindow()))
        return window->currentController();
    // Without an active window (another application has the focus) the last raised tabbed window counts.
    TabbedWindow *front = TabbedWindow::lastActivated();
    if (front && front->currentController())
        return front->currentController();
    return m_windowControllers.last();
}

MainWindowController *MainWindowsManager::newMainWindow(const PXFilePtr &file, bool asTab)
{
    MainWindowController *front = frontMainWindow();
    WindowSettingsPtr templateSettings;
    if (front)
        templateSettings = front->windowSettings();
    else if (!m_settings->windowSettings().isEmpty())
        templateSettings = m_settings->windowSettings().first();
    WindowSettingsPtr settings = templateSettings ? templateSettings->duplicate() : std::make_shared<WindowSettings>();

    auto *controller = new MainWindowController(settings, this, this, file);
    m_windowControllers.append(controller);
    // Closing a window makes its settings the only saved ones; the windows still open take the
    // list back once it has closed.
    connect(controller, &MainWindowController::closed, this, &MainWindowsManager::publishWindowSettings);
    publishWindowSettings();
    // A window opened while the front one is in full screen joins it: a new top-level window
    // would open behind the full-screen one.
    if ((asTab || (front && front->isFullscreen())) && front && front->tabbedWindow()) {
        front->tabbedWindow()->addController(controller);
    } else {
        auto *window = new TabbedWindow;
        window->addController(controller);
        if (front && front->tabbedWindow())
            window->resize(front->tabbedWindow()->size());
        window->show();
        window->raise();
        window->activateWindow();
    }
    Q_EMIT windowControllersChanged();
    return controller;
}

bool MainWindowsManager::hasVisibleWindows() const
{
    for (MainWindowController *controller : m_windowControllers) {
        if (controller->tabbedWindow() && controller->tabbedWindow()->isVisible()
            && !controller->tabbedWindow()->isMinimized())
            return true;
    }
    return false;
}

void MainWindowsManager::closeAll()
{
    const QList<MainWindowController *> controllers = m_windowControllers;
    for (MainWindowController *controller : controllers)
        controller->close();
}

void MainWindowsManager::windowControllerWillClose(QObject *controller)
{
    if (m_windowControllers.removeIf([controller](MainWindowController *entry) { return entry == controller; }) > 0)
        Q_EMIT windowControllersChanged();
}

void MainWindowsManager::publishWindowSettings()
{
    if (m_windowControllers.isEmpty())
        return;
    QList<WindowSettingsPtr> open;
    open.reserve(m_windowControllers.size());
    for (auto controller = m_windowControllers.crbegin(); controller != m_windowControllers.crend(); ++controller)
        open.append((*controller)->windowSettings());
    m_settings->setWindowSettings(open);
}

void MainWindowsManager::folderDepthIncreased(QWidget *window)
{
    WarningsManager::shared().showFolderDepthWarning(window);
}

void MainWindowsManager::thumbnailSelectionChanged(const QList<PXFilePtr> &files)
{
    AuxiliaryWindowsManager::shared().setRecentlySelectedFiles(files);
}

void MainWindowsManager::openInViewer(const PXFilePtr &file, const QList<PXFilePtr> &set)
{
    ImageWindowsManager::shared().openFile(file, set);
}

void MainWindowsManager::startSlideshow(const QList<PXFilePtr> &sources)
{
    SlideshowWindowsManager::shared().startSlideshow(sources);
}
