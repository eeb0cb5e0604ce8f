#pragma once

#include "core/app/LaunchRequest.h"
#include "core/model/PXFileForward.h"
#include "ui/common/Command.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>

class ActivitiesGate;
class ActivitiesWindowController;
class AppSettings;
class AuxiliaryWindowsManager;
class FlagManager;
class HotkeysController;
class SettingsWindow;
class ImageWindowsManager;
class SlideshowWindowsManager;
class MainWindowsManager;
class ServicesProvider;
class SettingsManager;
class UpdateController;
class QWidget;

// The root object of the running program. It takes the process-wide managers in a fixed order,
// decides at launch whether a main window opens, routes files and folders handed over on the
// command line or by a second start, runs the two services, and quits in order: the activities
// first (which may ask the user), then slideshows, the batch renamer and every main window, then
// the settings are saved.
//
// The application's commands (new window, about, quit, ...) are bound into the command registry
// while the delegate lives; every window's menu bar runs them here.
//
// Closing the program's last window (main, image or slideshow window, or the bug reporter with
// its unsent text) quits it, through the same orderly shutdown as Quit. Windows hidden when the
// program lost the focus (`hideOnDeactivate`) keep it running, and come back at the next start or
// activation.
class AppDelegate : public QObject
{
    Q_OBJECT
public:
    static constexpr CommandOwner commandOwner = CommandOwner::application;

    explicit AppDelegate(QObject *parent = nullptr);
    ~AppDelegate() override;

    // The running program's delegate; stops the program when there is none.
    static AppDelegate &shared();
    static bool exists();

    static QString websiteLink();
    static QString releaseNotesLink();

    // Launch phases.
    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching(const LaunchRequest &request);
    // A second start handed over its request.
    void handleRequest(const LaunchRequest &request);
    // Starting Pixcove again with nothing to open: a new main window unless one is visible.
    void applicationShouldHandleReopen();
    void openFiles(const QStringList &paths);
    // Answers the error text of a service, empty when it ran.
    QString performService(const LaunchRequest &request);
    // Hides every window when `hideOnDeactivate` is set.
    void applicationDidResignActive();
    // Shows again the windows that losing the focus hid.
    void unhideWindows();

    // Starts the orderly shutdown; the program stays as it was when the activities say no.
    void requestQuit();
    // The system ends the program (a signal, the session's end): nobody is there to answer the
    // activities' question, so it is not asked; the rest of the shutdown runs as for a quit.
    void terminateForSystem();
    bool isTerminating() const { return m_terminating; }

    // Application commands; `window` is the window whose menu sent the command.
    void newMainWindow();
    void newMainWindowTab();
    void openAboutWindow(QWidget *window);
    // Opens the batch renamer on the selection of `window`.
    void openRenameWindow(QWidget *window);
    void openBugReporterWindow(QWidget *window);
    void checkForUpdates();
    bool canCheckForUpdates() const;
    UpdateController *updateController() const { return m_updateController.get(); }
    void goToSite();
    void goToReleaseNotes();
    // Toggles the quick view; checked while it is open.
    void openQuickview();
    CommandState quickviewState() const;
    void startSlideshowWithOpenImageWindows();
    void previousImageWindow();
    void nextImageWindow();
    bool hasImageWindows() const;
    void openActivityWindow();
    // Undo and redo of file operations, whichever window asks.
    void undoFileOperation();
    void redoFileOperation();
    bool canUndoFileOperation() const;
    bool canRedoFileOperation() const;
    // The activities' window and questions (the shell's file handler).
    ActivitiesWindowController *fileHandler() const { return m_fileHandler; }

    bool finishedLaunching() const { return m_finishedLaunching; }

    // The settings window, made on first use and shown in front; the favourites commands show its
    // Favorites section with their list focused.
    void openSettings();
    void openOpenWithEditor();
    void openMoveToEditor();
    SettingsWindow *settingsWindow() const;
    HotkeysController *hotkeysController() const { return m_hotkeysController.get(); }

    // Hooks that other windows and tests install.
    void setActivitiesGate(ActivitiesGate *gate); // not owned; null: no activities
    std::function<void()> closeSlideshows;
    std::function<void()> closeRenamer;
    std::function<void()> terminate; // default: quit the event loop
    // Shows a service's error or notice to the user (default: a message box).
    std::function<void(const QString &title, const QString &text)> showMessage;

Q_SIGNALS:
    void shutdownStep(const QString &step);

private:
    void registerObservers();
    void registerCommands();
    void setUpMenus();
    void openRenamer(const QList<PXFilePtr> &files);
    void startSlideshow(const QList<PXFilePtr> &files);
    void startShutdown();
    void continueShutdown();
    // Quits when no window of the program is left open (checked once the current event is done).
    void quitAfterLastWindow();
    bool hasOpenWindows() const;

    SettingsManager *m_settingsManager;
    AuxiliaryWindowsManager *m_auxiliaryWindowsManager;
    SlideshowWindowsManager *m_slideshowWindowsManager;
    ImageWindowsManager *m_imageWindowsManager;
    MainWindowsManager *m_mainWindowsManager;
    FlagManager *m_flagManager;
    std::unique_ptr<ServicesProvider> m_servicesProvider;
    ActivitiesWindowController *m_fileHandler;
    std::unique_ptr<ActivitiesGate> m_fileHandlerGate;
    ActivitiesGate *m_activitiesGate = nullptr;
    std::unique_ptr<UpdateController> m_updateController;
    QList<QPointer<QWidget>> m_hiddenWindows;
    bool m_lastWindowCheckQueued = false;
    std::unique_ptr<HotkeysController> m_hotkeysController;
    QPointer<SettingsWindow> m_settingsWindow;

    bool m_finishedLaunching = false;
    bool m_openedInitialWindow = false;
    bool m_terminateWhenComplete = false;
    bool m_terminating = false;
};
