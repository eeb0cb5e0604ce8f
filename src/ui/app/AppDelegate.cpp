#include "ui/app/AppDelegate.h"

#include "core/app/Log.h"
#include "core/model/FlagManager.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "ui/app/ActivitiesGate.h"
#include "ui/app/AuxiliaryWindowsManager.h"
#include "ui/app/ImageWindowsManager.h"
#include "ui/app/MainWindowsManager.h"
#include "ui/app/ServicesProvider.h"
#include "ui/app/SlideshowWindowsManager.h"
#include "ui/hotkeys/HotkeysController.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/windows/CommandKeys.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/MainWindowController.h"
#include "ui/windows/TabbedWindow.h"

#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <cstdio>
#include <cstdlib>

namespace {

AppDelegate *runningDelegate = nullptr;
ActivitiesGate noActivities;

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
    , m_activitiesGate(&noActivities)
{
    runningDelegate = this;
    m_servicesProvider =
        std::make_unique<ServicesProvider>([this](const QList<PXFilePtr> &files) { openRenamer(files); },
                                           [this](const QList<PXFilePtr> &files) { startSlideshow(files); });
    closeSlideshows = [this] { m_slideshowWindowsManager->closeAll(); };
    terminate = [] { QCoreApplication::quit(); };
    showMessage = [](const QString &title, const QString &text) { QMessageBox::information(nullptr, title, text); };
    m_hotkeysController = std::make_unique<HotkeysController>(m_settingsManager->settings(), CommandRegistry::shared(),
                                                              CommandKeys::shared());
    registerCommands();
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
    registry.bindApplicationCommand(CommandId::goToSite).on(&AppDelegate::goToSite);
    registry.bindApplicationCommand(CommandId::goToReleaseNotes).on(&AppDelegate::goToReleaseNotes);
    registry.bindApplicationCommand(CommandId::terminate).on(&AppDelegate::requestQuit);
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
    return QStringLiteral("https://pixcove.tallowmere.org/");
}

QString AppDelegate::releaseNotesLink()
{
    return QStringLiteral("https://pixcove.tallowmere.org/releases/");
}

void AppDelegate::setActivitiesGate(ActivitiesGate *gate)
{
    m_activitiesGate = gate ? gate : &noActivities;
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
    });
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
    if (request.kind == LaunchRequest::Kind::plain) {
        m_mainWindowsManager->newMainWindow();
        // After the main window, whose selection it shows.
        if (m_auxiliaryWindowsManager->opensQuickviewOnLaunch())
            m_auxiliaryWindowsManager->showQuickview();
        return;
    }
    logDebug(QStringLiteral("Launched for special purpose, not opening default windows."));
    handleRequest(request);
}

void AppDelegate::handleRequest(const LaunchRequest &request)
{
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
    showMessage(tr("Batch Rename"),
                tr("The batch renamer is not available in this version of Pixcove yet (%n file(s) given).", nullptr,
                   int(files.size())));
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
        if (window->isVisible())
            window->hide();
    }
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
