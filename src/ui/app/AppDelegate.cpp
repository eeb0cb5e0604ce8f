#include "ui/app/AppDelegate.h"

#include "core/activities/ActivitiesManager.h"
#include "core/activities/FileOperationHistory.h"
#include "core/app/Log.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/model/FlagManager.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "core/shell/BuildConfiguration.h"
#include "ui/activities/ActivitiesWindowController.h"
#include "ui/app/ActivitiesGate.h"
#include "ui/app/AuxiliaryWindowsManager.h"
#include "ui/app/ImageWindowsManager.h"
#include "ui/app/MainWindowsManager.h"
#include "ui/app/ServicesProvider.h"
#include "ui/app/SlideshowWindowsManager.h"
#include "ui/app/UpdateController.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/rename/RenameManager.h"
#include "ui/hotkeys/HotkeysController.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/windows/CommandKeys.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/MainWindowController.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/TabbedWindow.h"

#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

AppDelegate *runningDelegate = nullptr;

// Quitting asks the activities' window controller.
class ActivitiesWindowGate : public ActivitiesGate
{
public:
    explicit ActivitiesWindowGate(ActivitiesWindowController *controller)
        : m_controller(controller)
    { }
    bool shouldQuit(QWidget *window) override { return !m_controller || m_controller->shouldQuit(window); }
    void finishActivities(std::function<void()> done) override
    {
        if (m_controller)
            m_controller->finishActivities(std::move(done));
        else
            done();
    }

private:
    QPointer<ActivitiesWindowController> m_controller;
};

} // namespace

// The managers are taken in the order their dependencies need: settings before anything that
// reads them, the window managers before the first window.
AppDelegate::AppDelegate(QObject *parent)
    : QObject(parent)
    , m_settingsManager(&SettingsManager::shared())
    , m_auxiliaryWindowsManager(&AuxiliaryWindowsManager::shared())
    , m_slideshowWindowsManager(&SlideshowWindowsManager::shared())
    , m_imageWindowsManager(&ImageWindowsManager::shared())
    , m_mainWindowsManager(&MainWindowsManager::shared())
    , m_flagManager(&FlagManager::shared())
    , m_fileHandler(new ActivitiesWindowController(&ActivitiesManager::shared(), this))
    , m_fileHandlerGate(std::make_unique<ActivitiesWindowGate>(m_fileHandler))
    , m_activitiesGate(m_fileHandlerGate.get())
{
    // The history records from the first operation on.
    FileOperationHistory::shared();
    runningDelegate = this;
    m_servicesProvider =
        std::make_unique<ServicesProvider>([this](const QList<PXFilePtr> &files) { openRenamer(files); },
                                           [this](const QList<PXFilePtr> &files) { startSlideshow(files); });
    closeSlideshows = [this] { m_slideshowWindowsManager->closeAll(); };
    closeRenamer = [] { RenameManager::shared().cancelRenamer(); };
    // The windows have been closed by then; quit() would ask them again, and one that refused
    // would keep the program running.
    terminate = [] { QCoreApplication::exit(0); };
    showMessage = [](const QString &title, const QString &text) { QMessageBox::information(nullptr, title, text); };
    // The updater is made now and started at launch; it reads the feed this build names, if any.
    m_updateController =
        std::make_unique<UpdateController>(m_settingsManager->settings(), QUrl(BuildConfiguration::appcastLink()),
                                           BuildConfiguration::version());
    m_hotkeysController = std::make_unique<HotkeysController>(m_settingsManager->settings(), CommandRegistry::shared(),
                                                              CommandKeys::shared());
    registerCommands();
    // A window that closes may have been the last one.
    connect(m_mainWindowsManager, &MainWindowsManager::windowControllersChanged, this,
            &AppDelegate::quitAfterLastWindow);
    connect(m_imageWindowsManager, &ImageWindowsManager::imageWindowControllersChanged, this,
            &AppDelegate::quitAfterLastWindow);
    connect(m_slideshowWindowsManager, &SlideshowWindowsManager::slideshowWindowControllersChanged, this,
            &AppDelegate::quitAfterLastWindow);
    connect(m_auxiliaryWindowsManager, &AuxiliaryWindowsManager::bugReporterChanged, this,
            &AppDelegate::quitAfterLastWindow);
}

AppDelegate::~AppDelegate()
{
    delete m_settingsWindow.data();
    CommandRegistry &registry = CommandRegistry::shared();
    if (registry.application() == this)
        registry.setApplication(nullptr);
    if (runningDelegate == this)
        runningDelegate = nullptr;
}

// The commands that exist so far; the registry shows the others disabled.
void AppDelegate::registerCommands()
{
    CommandRegistry &registry = CommandRegistry::shared();
    registry.bindApplicationCommand(CommandId::newMainWindow).on(&AppDelegate::newMainWindow);
    registry.bindApplicationCommand(CommandId::newMainWindowTab).on(&AppDelegate::newMainWindowTab);
    registry.bindApplicationCommand(CommandId::openAboutWindow).on(&AppDelegate::openAboutWindow);
    registry.bindApplicationCommand(CommandId::openBugReporterWindow).on(&AppDelegate::openBugReporterWindow);
    registry.bindApplicationCommand(CommandId::checkForUpdates)
        .on(&AppDelegate::checkForUpdates, &AppDelegate::canCheckForUpdates);
    registry.bindApplicationCommand(CommandId::goToSite).on(&AppDelegate::goToSite);
    registry.bindApplicationCommand(CommandId::goToReleaseNotes).on(&AppDelegate::goToReleaseNotes);
    registry.bindApplicationCommand(CommandId::terminate).on(&AppDelegate::requestQuit);
    registry.bindApplicationCommand(CommandId::openRenameWindow).on(&AppDelegate::openRenameWindow);
    registry.bindApplicationCommand(CommandId::openActivityWindow).on(&AppDelegate::openActivityWindow);
    registry.bindApplicationCommand(CommandId::undo)
        .on(&AppDelegate::undoFileOperation, &AppDelegate::canUndoFileOperation);
    registry.bindApplicationCommand(CommandId::redo)
        .on(&AppDelegate::redoFileOperation, &AppDelegate::canRedoFileOperation);
    registry.bindApplicationCommand(CommandId::openQuickview)
        .on(&AppDelegate::openQuickview, &AppDelegate::quickviewState);
    registry.bindApplicationCommand(CommandId::startSlideshowWithOpenImageWindows)
        .on(&AppDelegate::startSlideshowWithOpenImageWindows, &AppDelegate::hasImageWindows);
    registry.bindApplicationCommand(CommandId::previousImageWindow)
        .on(&AppDelegate::previousImageWindow, &AppDelegate::hasImageWindows);
    registry.bindApplicationCommand(CommandId::nextImageWindow)
        .on(&AppDelegate::nextImageWindow, &AppDelegate::hasImageWindows);
    registry.bindApplicationCommand(CommandId::openSettings).on(&AppDelegate::openSettings);
    registry.bindApplicationCommand(CommandId::openOpenWithEditor).on(&AppDelegate::openOpenWithEditor);
    registry.bindApplicationCommand(CommandId::openMoveToEditor).on(&AppDelegate::openMoveToEditor);
    registry.setApplication(this);
}

AppDelegate &AppDelegate::shared()
{
    if (!runningDelegate)
        qFatal("Failed to find application delegate, or it was of the wrong type.");
    return *runningDelegate;
}

bool AppDelegate::exists()
{
    return runningDelegate != nullptr;
}

QString AppDelegate::websiteLink()
{
    return BuildConfiguration::websiteLink();
}

QString AppDelegate::releaseNotesLink()
{
    return BuildConfiguration::releaseNotesLink();
}

void AppDelegate::setActivitiesGate(ActivitiesGate *gate)
{
    m_activitiesGate = gate ? gate : m_fileHandlerGate.get();
}

void AppDelegate::applicationWillFinishLaunching()
{
    registerObservers();
    setUpMenus();
}

// Each window's "Open With" and "Move To" submenus read the favourites when they open, so the
// observers here only keep the first-launch bookkeeping and the detailed-logging switch current.
void AppDelegate::registerObservers()
{
    AppSettings *settings = m_settingsManager->settings();
    setDetailedLogging(settings->detailedLogging());
    connect(settings, &AppSettings::detailedLoggingChanged, this, [](bool on) { setDetailedLogging(on); });
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationInactive)
            applicationDidResignActive();
        else if (state == Qt::ApplicationActive)
            unhideWindows();
    });
    // Flags follow the files this program moves, and reach the disk before it ends.
    m_flagManager->watchOperations(&ZQFileController::sharedFileController());
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { m_flagManager->flush(); });
    connect(m_flagManager, &FlagManager::writeFailed, this,
            [this](const QString &text) { showMessage(tr("Flags Could Not Be Kept"), text); });
}

void AppDelegate::setUpMenus()
{ }

void AppDelegate::applicationDidFinishLaunching(const LaunchRequest &request)
{
    m_finishedLaunching = true;
    AppSettings *settings = m_settingsManager->settings();
    if (settings->isFirstLaunch()) {
        settings->setIsFirstLaunch(false);
        settings->setFirstLaunchDate(QDateTime::currentDateTimeUtc());
    }
    // An updater that cannot start costs the user nothing but update notices.
    if (QString updaterError; !m_updateController->start(&updaterError))
        logError(QStringLiteral("Sparkle start error: ") + updaterError);
    if (request.kind == LaunchRequest::Kind::plain) {
        m_mainWindowsManager->newMainWindow();
        // After the main window, whose selection it shows.
        if (m_auxiliaryWindowsManager->opensQuickviewOnLaunch())
            m_auxiliaryWindowsManager->showQuickview();
        return;
    }
    logDebug(QStringLiteral("Launched for special purpose, not opening default windows."));
    handleRequest(request);
    // Files that could not be opened, or a service that opened nothing, leave no window to close.
    quitAfterLastWindow();
}

void AppDelegate::handleRequest(const LaunchRequest &request)
{
    // Whatever a later start asks for, the program comes forward as it was.
    unhideWindows();
    switch (request.kind) {
    case LaunchRequest::Kind::plain: applicationShouldHandleReopen(); break;
    case LaunchRequest::Kind::open: openFiles(request.paths); break;
    case LaunchRequest::Kind::rename:
    case LaunchRequest::Kind::slideshow:
        if (const QString error = performService(request); !error.isEmpty()) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            showMessage(QApplication::applicationDisplayName(), error);
        }
        break;
    }
}

// Starting Pixcove again is how the user brings it forward: the front window comes up, as an
// application comes forward when it is activated.
void AppDelegate::applicationShouldHandleReopen()
{
    unhideWindows();
    if (!m_mainWindowsManager->hasVisibleWindows()) {
        m_mainWindowsManager->newMainWindow();
        return;
    }
    if (MainWindowController *front = m_mainWindowsManager->frontMainWindow(); front && front->tabbedWindow()) {
        front->tabbedWindow()->raise();
        front->tabbedWindow()->activateWindow();
    }
}

// Folders open in a main window of their own. Images and videos are shown in the viewer, exactly
// the ones given being the set it steps through; any other file opens its folder in a main window
// with the file selected. The volumes folder itself is not a place to browse.
void AppDelegate::openFiles(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    const QList<ZQFilePtr> files = ZQStandardFile::arrayOfFilesForURLs(urls, false);
    if (files.isEmpty()) {
        logError(QStringLiteral("Error getting file objects for urls opened in app."));
        return;
    }
    QList<PXFilePtr> media;
    QList<const ZQStandardFile *> openedFolders;
    for (const ZQFilePtr &file : files) {
        const PXFilePtr record = PXFile::from(file);
        if (record->isVolumesDirectory())
            continue;
        if (!record->isDirectory() && (record->isImage() || record->isVideo())) {
            media.append(record);
            continue;
        }
        const ZQStandardFile *folder = record->isDirectory() ? record.get() : record->parentItem().get();
        if (openedFolders.contains(folder))
            continue;
        openedFolders.append(folder);
        m_mainWindowsManager->newMainWindow(record);
    }
    if (!media.isEmpty())
        m_imageWindowsManager->openFile(media.first(), media);
}

QString AppDelegate::performService(const LaunchRequest &request)
{
    if (request.kind == LaunchRequest::Kind::rename)
        return m_servicesProvider->performRenameService(request.paths);
    if (request.kind == LaunchRequest::Kind::slideshow)
        return m_servicesProvider->performSlideshowService(request.paths);
    return {};
}

void AppDelegate::openRenamer(const QList<PXFilePtr> &files)
{
    RenameManager::shared().openWithFiles(files);
}

// The batch renamer on the window's selection; without one, on every file the window shows.
void AppDelegate::openRenameWindow(QWidget *window)
{
    QList<PXFilePtr> files;
    auto *tabbed = qobject_cast<TabbedWindow *>(window ? window->window() : nullptr);
    MainWindowController *controller = tabbed ? tabbed->currentController() : nullptr;
    if (MainWindowViewController *view = controller ? controller->mainViewController() : nullptr) {
        files = view->selectedFiles();
        if (files.isEmpty()) {
            if (ThumbnailsViewController *pane = view->thumbnailsViewController())
                files = pane->files();
        }
    }
    openRenamer(files);
}

void AppDelegate::startSlideshow(const QList<PXFilePtr> &files)
{
    m_slideshowWindowsManager->startSlideshow(files);
}

void AppDelegate::applicationDidResignActive()
{
    if (!m_settingsManager->settings()->hideOnDeactivate())
        return;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible()) {
            window->hide();
            m_hiddenWindows.append(window);
        }
    }
}

// The windows come back as they were, the front main window in front.
void AppDelegate::unhideWindows()
{
    const QList<QPointer<QWidget>> hidden = std::exchange(m_hiddenWindows, {});
    QWidget *front = nullptr;
    for (const QPointer<QWidget> &window : hidden) {
        if (!window)
            continue;
        window->show();
        front = window;
    }
    if (MainWindowController *frontMain = m_mainWindowsManager->frontMainWindow(); frontMain && front)
        front = frontMain->tabbedWindow() ? frontMain->tabbedWindow() : front;
    if (front && !QApplication::activeWindow()) {
        front->raise();
        front->activateWindow();
    }
}

bool AppDelegate::hasOpenWindows() const
{
    return !m_mainWindowsManager->windowControllers().isEmpty() || m_imageWindowsManager->hasImageWindows()
        || !m_slideshowWindowsManager->slideshowWindowControllers().isEmpty()
        || m_auxiliaryWindowsManager->bugReporterWindowController();
}

// Queued: a window that closes is still listed while it says so, and a tab moving to a new window
// leaves the list empty for a moment.
void AppDelegate::quitAfterLastWindow()
{
    if (m_lastWindowCheckQueued)
        return;
    m_lastWindowCheckQueued = true;
    QTimer::singleShot(0, this, [this] {
        m_lastWindowCheckQueued = false;
        if (!m_finishedLaunching || m_terminating || hasOpenWindows())
            return;
        requestQuit();
    });
}

void AppDelegate::requestQuit()
{
    if (m_terminating)
        return;
    QWidget *front = QApplication::activeWindow();
    const bool allowed = m_activitiesGate->shouldQuit(front);
    // The question runs an event loop of its own, in which the system may have ended the program.
    if (m_terminating)
        return;
    if (!allowed) {
        Q_EMIT shutdownStep(QStringLiteral("cancelled"));
        return;
    }
    startShutdown();
}

void AppDelegate::terminateForSystem()
{
    if (!m_terminating)
        startShutdown();
}

void AppDelegate::startShutdown()
{
    m_terminating = true;
    Q_EMIT shutdownStep(QStringLiteral("activities"));
    const QPointer<AppDelegate> self(this);
    m_activitiesGate->finishActivities([self] {
        if (self)
            self->continueShutdown();
    });
}

void AppDelegate::continueShutdown()
{
    if (closeSlideshows)
        closeSlideshows();
    Q_EMIT shutdownStep(QStringLiteral("slideshows"));
    // Viewer windows hand their closing to their controllers, so a quit that asked the windows to
    // close would be refused by them: their controllers close them first.
    m_imageWindowsManager->closeAll();
    m_auxiliaryWindowsManager->closeAll();
    Q_EMIT shutdownStep(QStringLiteral("viewers"));
    if (closeRenamer)
        closeRenamer();
    Q_EMIT shutdownStep(QStringLiteral("renamer"));
    m_mainWindowsManager->closeAll();
    Q_EMIT shutdownStep(QStringLiteral("windows"));
    terminate();
}

void AppDelegate::newMainWindow()
{
    m_mainWindowsManager->newMainWindow();
}

void AppDelegate::newMainWindowTab()
{
    m_mainWindowsManager->newMainWindow({}, true);
}

void AppDelegate::openAboutWindow(QWidget *window)
{
    m_auxiliaryWindowsManager->openAboutWindow(window);
}

void AppDelegate::openBugReporterWindow(QWidget *window)
{
    m_auxiliaryWindowsManager->openBugReporterWindow(window);
}

void AppDelegate::checkForUpdates()
{
    m_updateController->checkForUpdates();
}

bool AppDelegate::canCheckForUpdates() const
{
    return !m_updateController->isChecking();
}

void AppDelegate::openQuickview()
{
    m_auxiliaryWindowsManager->toggleQuickview();
}

CommandState AppDelegate::quickviewState() const
{
    return {true, m_auxiliaryWindowsManager->quickviewWindowController() != nullptr};
}

void AppDelegate::startSlideshowWithOpenImageWindows()
{
    m_slideshowWindowsManager->startSlideshow(m_imageWindowsManager->shownFiles());
}

void AppDelegate::previousImageWindow()
{
    m_imageWindowsManager->previousImageWindow();
}

void AppDelegate::nextImageWindow()
{
    m_imageWindowsManager->nextImageWindow();
}

bool AppDelegate::hasImageWindows() const
{
    return m_imageWindowsManager->hasImageWindows();
}

void AppDelegate::goToSite()
{
    QDesktopServices::openUrl(QUrl(websiteLink()));
}

void AppDelegate::goToReleaseNotes()
{
    QDesktopServices::openUrl(QUrl(releaseNotesLink()));
}

void AppDelegate::openActivityWindow()
{
    m_fileHandler->showWindow();
}

void AppDelegate::undoFileOperation()
{
    FileOperationHistory::shared().undo();
}

void AppDelegate::redoFileOperation()
{
    FileOperationHistory::shared().redo();
}

bool AppDelegate::canUndoFileOperation() const
{
    return FileOperationHistory::shared().canUndo();
}

bool AppDelegate::canRedoFileOperation() const
{
    return FileOperationHistory::shared().canRedo();
}

// MARK: settings window

SettingsWindow *AppDelegate::settingsWindow() const
{
    return m_settingsWindow;
}

void AppDelegate::openSettings()
{
    if (!m_settingsWindow)
        m_settingsWindow = new SettingsWindow(m_settingsManager->settings(), m_hotkeysController.get());
    m_settingsWindow->show();
    m_settingsWindow->raise();
    m_settingsWindow->activateWindow();
}

void AppDelegate::openOpenWithEditor()
{
    openSettings();
    m_settingsWindow->editFavoriteApplications();
}

void AppDelegate::openMoveToEditor()
{
    openSettings();
    m_settingsWindow->editFavoriteFolders();
}
