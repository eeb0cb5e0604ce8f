#include "ui/app/ActivitiesGate.h"
#include "ui/app/AppDelegate.h"
#include "ui/app/AuxiliaryWindowsManager.h"
#include "ui/app/ImageWindowsManager.h"
#include "ui/app/InstanceChannel.h"
#include "ui/app/ServicesProvider.h"
#include "ui/app/TerminationWatcher.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/LabelChooserAction.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/QuickviewWindowController.h"
#include "ui/windows/TabbedWindow.h"
#include "ui/windows/ValidatingToolbar.h"

#include "core/activities/ActivitiesSupport.h"
#include "core/activities/FileOperationHistory.h"
#include "core/model/PXFile.h"
#include "support/TestImages.h"
#include "ui/ShellFixture.h"

#include <QAction>
#include <QFile>
#include <QLocalSocket>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QSessionManager>
#include <QSignalSpy>
#include <QTimer>
#include <QToolButton>
#include <QUuid>

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <optional>
#include <unistd.h>

namespace {

// Activities that ask the user and answer as told; records what it was asked.
struct ScriptedActivities : ActivitiesGate
{
    bool allowQuit = true;
    QStringList *steps = nullptr;
    bool shouldQuit(QWidget *) override { return allowQuit; }
    void finishActivities(std::function<void()> done) override
    {
        steps->append(QStringLiteral("finish"));
        done();
    }
};

struct Delegate
{
    AppDelegate delegate;
    QStringList steps;
    QStringList messages;
    ScriptedActivities activities;

    Delegate()
    {
        activities.steps = &steps;
        delegate.setActivitiesGate(&activities);
        delegate.closeSlideshows = [this] { steps.append(QStringLiteral("slideshows")); };
        delegate.closeRenamer = [this] { steps.append(QStringLiteral("renamer")); };
        delegate.terminate = [this] { steps.append(QStringLiteral("terminate")); };
        delegate.showMessage = [this](const QString &, const QString &text) { messages.append(text); };
    }
};

// The command items of `menu` and its submenus; anything else but a separator fails the test.
void collectCommandItems(QMenu *menu, QList<CommandAction *> &items)
{
    if (!menu)
        return;
    for (QAction *action : menu->actions()) {
        if (action->isSeparator())
            continue;
        if (action->menu()) {
            collectCommandItems(action->menu(), items);
        } else if (auto *item = qobject_cast<CommandAction *>(action)) {
            items.append(item);
        } else if (auto *chooser = qobject_cast<LabelChooserAction *>(action)) {
            for (QAction *value : chooser->valueActions()) {
                auto *valueItem = qobject_cast<CommandAction *>(value);
                EXPECT_TRUE(valueItem) << value->text().toStdString();
                if (valueItem)
                    items.append(valueItem);
            }
        } else {
            ADD_FAILURE() << "not a command: " << action->text().toStdString();
        }
    }
}

// Runs in a child process: a window whose latest change waits for a save an hour away, an image
// window and the quick view (viewer windows refuse a close they did not ask for), then SIGTERM.
// Exits 0 when the program's event loop ended cleanly with every window closed.
[[noreturn]] void runUntilSignalled(const QString &settingsFile, const QString &folder)
{
    SettingsManager settingsManager(settingsFile);
    SettingsManager::setShared(&settingsManager);
    settingsManager.setSaveInterval(std::chrono::hours(1));
    MainWindowsManager windows(settingsManager.settings());
    MainWindowsManager::setShared(&windows);
    AppDelegate delegate;
    const TerminationWatcher watcher(&settingsManager, [&delegate] { delegate.terminateForSystem(); });

    QSignalSpy saved(&settingsManager, &SettingsManager::saved);
    MainWindowController *window = windows.newMainWindow(PXFile::fileForPath(folder));
    if (!saved.wait()) // the window's first change, written at once
        ::_exit(2);
    window->tabbedWindow()->performCommand(CommandId::changeThumbnailFileSort, int(FileSortType::exifDate));
    const PXFilePtr photo =
        PXFile::fileForPath(TestImages::writeJpeg(folder + QStringLiteral("/1.jpg"), QSize(64, 48)));
    ImageWindowsManager::shared().openFile(photo, {photo});
    AuxiliaryWindowsManager::shared().setRecentlySelectedFiles({photo});
    AuxiliaryWindowsManager::shared().showQuickview();
    if (ImageWindowsManager::shared().imageWindowControllers().isEmpty()
        || !AuxiliaryWindowsManager::shared().quickviewWindowController())
        ::_exit(4);
    // A program that ignores the signal fails here rather than hanging the test.
    QTimer::singleShot(std::chrono::seconds(20), [] { ::_exit(5); });
    ::kill(::getpid(), SIGTERM);
    const int exitCode = QApplication::exec();
    const bool closed =
        windows.windowControllers().isEmpty() && ImageWindowsManager::shared().imageWindowControllers().isEmpty();
    ::_exit(exitCode == 0 && closed ? 0 : 3);
}

// Emits one of the session manager's requests as the platform does; the handlers are given a
// stand-in for the session manager, which they leave alone.
void emitSessionRequest(void (QGuiApplication::*request)(QSessionManager &))
{
    alignas(std::max_align_t) char standIn[256] = {};
    void *arguments[] = {nullptr, standIn};
    const QMetaMethod signal = QMetaMethod::fromSignal(request);
    const QMetaObject *owner = signal.enclosingMetaObject();
    QMetaObject::activate(qApp, owner, signal.methodIndex() - owner->methodOffset(), arguments);
}

} // namespace

TEST(AppShell, QuittingAsksTheActivitiesThenClosesEverythingInOrder)
{
    ShellFixture shell;
    Delegate app;
    MainWindowController *first = shell.windows->newMainWindow(shell.folder("photos/a"));
    MainWindowController *last = shell.windows->newMainWindow(shell.folder("photos/c"));
    const WindowSettingsPtr lastSettings = last->windowSettings();
    const QList<WindowSettingsPtr> savedBefore = shell.settings()->windowSettings();

    // Declined in the activities prompt: every window stays and nothing is written.
    app.activities.allowQuit = false;
    app.delegate.requestQuit();
    EXPECT_TRUE(app.steps.isEmpty());
    EXPECT_EQ(shell.windows->windowControllers().size(), 2);
    EXPECT_EQ(shell.settings()->windowSettings(), savedBefore);
    EXPECT_FALSE(app.delegate.isTerminating());

    // Accepted: activities, slideshows, renamer, windows (list order, the last one's settings
    // are what is kept), then the reply to terminate.
    app.activities.allowQuit = true;
    QStringList windowsOpenAt;
    QObject::connect(shell.windows.get(), &MainWindowsManager::windowControllersChanged,
                     [&] { windowsOpenAt.append(app.steps.join(QLatin1Char(','))); });
    app.delegate.requestQuit();
    EXPECT_EQ(app.steps,
              QStringList({QStringLiteral("finish"), QStringLiteral("slideshows"), QStringLiteral("renamer"),
                           QStringLiteral("terminate")}));
    EXPECT_EQ(windowsOpenAt.size(), 2);
    EXPECT_EQ(windowsOpenAt.last(), QStringLiteral("finish,slideshows,renamer"));
    EXPECT_TRUE(shell.windows->windowControllers().isEmpty());
    EXPECT_EQ(shell.settings()->windowSettings(), QList<WindowSettingsPtr>({lastSettings}));
    EXPECT_EQ(lastSettings->sidebarRootFolder(), shell.folder("photos/c"));
    Q_UNUSED(first);
}

TEST(AppShell, LaunchOpensAWindowForAPlainStartAndTheQuickViewWhenTheSettingSaysSo)
{
    ShellFixture shell;
    {
        // The preference opens the quick view beside the main window, and stays set.
        Delegate app;
        shell.settings()->setQuickviewOpensOnLaunch(true);
        app.delegate.applicationDidFinishLaunching({});
        EXPECT_EQ(shell.windows->windowControllers().size(), 1);
        ASSERT_TRUE(shell.auxiliary->quickviewWindowController());
        EXPECT_TRUE(shell.auxiliary->quickviewWindowController()->window()->isVisible());
        EXPECT_TRUE(shell.settings()->quickviewOpensOnLaunch());
        shell.auxiliary->toggleQuickview();
        EXPECT_FALSE(shell.auxiliary->quickviewWindowController());
        shell.settings()->setQuickviewOpensOnLaunch(false);
    }
    shell.windows->closeAll();
    {
        Delegate app;
        app.delegate.applicationDidFinishLaunching({});
        EXPECT_FALSE(shell.auxiliary->quickviewWindowController());
        ASSERT_EQ(shell.windows->windowControllers().size(), 1);
        // Starting again with a visible window opens none; with the window closed, one.
        app.delegate.applicationShouldHandleReopen();
        EXPECT_EQ(shell.windows->windowControllers().size(), 1);
        shell.windows->windowControllers().first()->close();
        app.delegate.applicationShouldHandleReopen();
        EXPECT_EQ(shell.windows->windowControllers().size(), 1);
    }
    shell.windows->closeAll();
    {
        // Opening a file shows its folder and nothing else; a missing file opens nothing.
        Delegate app;
        const QString photo = shell.dir.write(QStringLiteral("photos/b/one.jpg"), "x");
        app.delegate.applicationDidFinishLaunching(
            {LaunchRequest::Kind::open,
             {photo, shell.dir.filePath(QStringLiteral("photos/b")), shell.dir.filePath(QStringLiteral("gone"))}});
        ASSERT_EQ(shell.windows->windowControllers().size(), 1);
        EXPECT_EQ(shell.windows->windowControllers().first()->windowSettings()->sidebarRootFolder(),
                  shell.folder("photos/b"));
        app.delegate.openFiles({shell.dir.filePath(QStringLiteral("gone"))});
        EXPECT_EQ(shell.windows->windowControllers().size(), 1);
    }
}

TEST(AppShell, ServicesReportTheirErrorTexts)
{
    ShellFixture shell;
    QList<PXFilePtr> renamed;
    QList<PXFilePtr> shown;
    const ServicesProvider services([&](const QList<PXFilePtr> &files) { renamed = files; },
                                    [&](const QList<PXFilePtr> &files) { shown = files; });
    const QString notes = shell.dir.write(QStringLiteral("notes.txt"), "text");
    const QString photo = shell.dir.write(QStringLiteral("photo.jpg"), "x");
    const QString gone = shell.dir.filePath(QStringLiteral("gone.jpg"));

    EXPECT_EQ(services.performRenameService({gone}), QStringLiteral("Failed to find files for rename service."));
    EXPECT_EQ(services.performSlideshowService({}), QStringLiteral("Failed to find files for rename service."));
    EXPECT_EQ(services.performSlideshowService({notes}), QStringLiteral("No images or folders were selected."));
    EXPECT_TRUE(shown.isEmpty());

    EXPECT_TRUE(services.performSlideshowService({notes, photo, shell.photos->path()}).isEmpty());
    EXPECT_EQ(shown, QList<PXFilePtr>({PXFile::fileForPath(photo), shell.photos}));
    EXPECT_TRUE(services.performRenameService({notes, gone}).isEmpty());
    EXPECT_EQ(renamed, QList<PXFilePtr>({PXFile::fileForPath(notes)}));
}

TEST(AppShell, FolderDepthWarningStaysAwayOnceDismissedTicked)
{
    ShellFixture shell;
    int shown = 0;
    bool ticked = false;
    shell.warnings->setPresenter([&](QWidget *, const QString &title, const QString &) {
        EXPECT_EQ(title, QStringLiteral("Increased Folder Scan Depth"));
        ++shown;
        return ticked;
    });
    MainWindowController *window = shell.windows->newMainWindow(shell.photos);
    TabbedWindow *tabbedWindow = window->tabbedWindow();

    EXPECT_TRUE(tabbedWindow->performCommand(CommandId::changeFolderDepth, 1));
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(window->windowSettings()->thumbnailsFolderSearchDepth(), 1);
    tabbedWindow->performCommand(CommandId::changeFolderDepth, 0); // lowering never warns
    tabbedWindow->performCommand(CommandId::changeFolderDepth, 2); // unticked before: warns again
    EXPECT_EQ(shown, 2);
    ticked = true;
    tabbedWindow->performCommand(CommandId::changeFolderDepth, 3);
    EXPECT_TRUE(shell.settings()->alertsAndWarnings().testFlag(AlertsAndWarning::folderDepthWarning));
    tabbedWindow->performCommand(CommandId::changeFolderDepth, 4);
    EXPECT_EQ(shown, 3);
}

TEST(AppShell, ASecondStartHandsItsRequestToTheFirst)
{
    const QString name =
        QDir::tempPath() + QStringLiteral("/pixcove-test-%1").arg(QUuid::createUuid().toString(QUuid::Id128));
    InstanceChannel first(name);
    ASSERT_TRUE(first.listen());
    QList<LaunchRequest> received;
    QObject::connect(&first, &InstanceChannel::requestReceived,
                     [&](const LaunchRequest &request) { received.append(request); });

    InstanceChannel second(name);
    EXPECT_FALSE(second.listen());
    const LaunchRequest request{LaunchRequest::Kind::slideshow,
                                {QStringLiteral("/tmp/a b.jpg"), QStringLiteral("/tmp/ü")}};
    ASSERT_TRUE(second.forward(request));
    ASSERT_TRUE(second.forward({}));
    // A stranger's bytes are logged and dropped, and the channel keeps listening.
    QLocalSocket stranger;
    stranger.connectToServer(name);
    ASSERT_TRUE(stranger.waitForConnected(1000));
    stranger.write("{\"kind\": \"format-disk\"}\nnot json\n");
    stranger.waitForBytesWritten(1000);
    ASSERT_TRUE(waitUntil([&] { return received.size() >= 2; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(received, QList<LaunchRequest>({request, LaunchRequest{}}));
}

TEST(AppShell, AStaleSocketFromACrashedInstanceDoesNotStopTheNextStart)
{
    const QString name =
        QDir::tempPath() + QStringLiteral("/pixcove-test-%1").arg(QUuid::createUuid().toString(QUuid::Id128));
    QFile stale(name);
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.close();
    InstanceChannel channel(name);
    EXPECT_TRUE(channel.listen());
    InstanceChannel later(name);
    EXPECT_FALSE(later.listen());
}

TEST(AppShell, EveryMenuItemIsARegisteredCommandHandledOrShownUnavailable)
{
    ShellFixture shell;
    Delegate app;
    const CommandRegistry &registry = CommandRegistry::shared();
    // The table: unique identifiers, each command titled and run by something or shown unavailable.
    QSet<QString> identifiers;
    for (const Command &command : registry.commands()) {
        const std::string name = command.identifier().toStdString();
        EXPECT_FALSE(command.title().isEmpty()) << name;
        EXPECT_NE(command.hasHandler(), !command.isAvailable()) << name;
        EXPECT_FALSE(identifiers.contains(command.identifier())) << name;
        identifiers.insert(command.identifier());
        EXPECT_EQ(registry.find(command.identifier()), &command) << name;
    }

    shell.dir.write(QStringLiteral("photos/one.txt"), "x");
    MainWindowController *window = shell.windows->newMainWindow(shell.photos);
    ASSERT_TRUE(waitUntil([&] { return window->mainViewController()->navigationHistory().currentItem().has_value(); }));
    TabbedWindow *tabbedWindow = window->tabbedWindow();
    tabbedWindow->validateActions();

    // Every item of the menu bar, the toolbar and the pane's context menus stands for a command.
    QList<CommandAction *> menuBarItems;
    for (QAction *action : tabbedWindow->menuBar()->actions())
        collectCommandItems(action->menu(), menuBarItems);
    EXPECT_GT(menuBarItems.size(), 100);
    QList<CommandAction *> toolbarItems;
    const auto buttons =
        window->mainViewController()->toolbar()->findChildren<QToolButton *>(QString(), Qt::FindDirectChildrenOnly);
    for (QToolButton *button : buttons) {
        if (QAction *action = button->defaultAction()) {
            auto *item = qobject_cast<CommandAction *>(action);
            EXPECT_TRUE(item) << action->text().toStdString();
            toolbarItems.append(item);
        }
        collectCommandItems(button->menu(), toolbarItems);
    }
    EXPECT_GT(toolbarItems.size(), 20);

    // With nothing selected, exactly the commands that are not available yet are disabled, besides
    // those that wait for a selection, a history, a second tab or a subfolder depth.
    const auto identifiersOf = [&](std::initializer_list<CommandId> ids) {
        QSet<QString> names;
        for (CommandId id : ids)
            names.insert(registry.command(id).identifier());
        return names;
    };
    const QSet<QString> dependOnState = identifiersOf({
        CommandId::back,
        CommandId::forward,
        CommandId::selectNextTab,
        CommandId::selectPreviousTab,
        CommandId::changeThumbnailSubfolderGrouping,
        CommandId::performOpen,
        CommandId::openInApp,
        CommandId::openInCreator,
        CommandId::revealOriginal,
        CommandId::ejectSelected,
        CommandId::changeFinderLabel,
        CommandId::renameFile,
        CommandId::makeAlias,
        CommandId::makeSymlink,
        CommandId::duplicate,
        CommandId::moveToTrash,
        CommandId::revealInFileManager,
        CommandId::flagItem,
        CommandId::rejectItem,
        CommandId::clearItemFlag,
        CommandId::deselectAll,
        CommandId::selectFlagged,
        CommandId::selectRejected,
        CommandId::nextImageInBrowser,
        CommandId::previousImageInBrowser,
        CommandId::scrollSelectionToVisible,
        CommandId::selectAll,
        CommandId::newFolder,
        CommandId::deleteRejected,
        CommandId::undo,
        CommandId::redo,
        // The viewer's, with nothing shown, and the image windows', with none open.
        CommandId::scaleToFit,
        CommandId::fitToScreen,
        CommandId::zoomTo200Percent,
        CommandId::zoomTo100Percent,
        CommandId::zoomTo50Percent,
        CommandId::zoomIn,
        CommandId::zoomOut,
        CommandId::rotate180,
        CommandId::rotateClockwise,
        CommandId::rotateCounterclockwise,
        CommandId::startSlideshowWithSelected,
        CommandId::startSlideshowWithOpenImageWindows,
        CommandId::previousImageWindow,
        CommandId::nextImageWindow,
    });
    ASSERT_TRUE(window->mainViewController()->selectedFiles().isEmpty());
    QSet<QString> disabled;
    QSet<QString> unavailable;
    for (const CommandAction *item : std::as_const(menuBarItems)) {
        const Command &command = registry.command(item->commandId());
        if (!item->isEnabled() && !dependOnState.contains(command.identifier()))
            disabled.insert(command.identifier());
        if (!command.isAvailable())
            unavailable.insert(command.identifier());
    }
    EXPECT_EQ(disabled, unavailable);
    EXPECT_FALSE(unavailable.contains(QStringLiteral("zoomIn")));

    ThumbnailsViewController *pane = window->mainViewController()->thumbnailsViewController();
    ASSERT_TRUE(waitUntil([&] { return !pane->isLoading() && pane->fileCount() > 0; }));
    for (int index : {-1, 0}) {
        std::unique_ptr<QMenu> menu(pane->actionHandler()->makeContextMenu(index));
        ASSERT_TRUE(menu);
        QList<CommandAction *> items;
        collectCommandItems(menu.get(), items);
        EXPECT_GE(items.size(), 4) << index;
    }
}

TEST(AppShell, HidingOnDeactivationFollowsTheSetting)
{
    ShellFixture shell;
    Delegate app;
    MainWindowController *window = shell.windows->newMainWindow(shell.photos);
    ASSERT_TRUE(window->tabbedWindow()->isVisible());
    app.delegate.applicationDidResignActive();
    EXPECT_TRUE(window->tabbedWindow()->isVisible());
    shell.settings()->setHideOnDeactivate(true);
    app.delegate.applicationDidResignActive();
    EXPECT_FALSE(window->tabbedWindow()->isVisible());
    EXPECT_FALSE(shell.windows->hasVisibleWindows());
    // Starting again brings a window back: a new one, since none is visible.
    app.delegate.applicationShouldHandleReopen();
    EXPECT_TRUE(shell.windows->hasVisibleWindows());
}

TEST(AppShell, ASignalToEndQuitsCleanlyAndTheLatestChangeReachesTheFile)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // The child process runs this test again up to EXPECT_EXIT; it finds the folder in its
    // environment instead of making one of its own.
    const char *const folderVariable = "PIXCOVE_TEST_SIGNAL_FOLDER";
    std::optional<TestDir> dir;
    if (!qEnvironmentVariableIsSet(folderVariable)) {
        dir.emplace();
        dir->mkdir(QStringLiteral("photos"));
        qputenv(folderVariable, QFile::encodeName(dir->path()));
    }
    const QString folder = qEnvironmentVariable(folderVariable);
    const QString settingsFile = folder + QStringLiteral("/settings.json");
    EXPECT_EXIT(runUntilSignalled(settingsFile, folder + QStringLiteral("/photos")), testing::ExitedWithCode(0), "");
    qunsetenv(folderVariable);

    const SettingsManager reread(settingsFile);
    ASSERT_EQ(reread.loadOutcome(), SettingsManager::LoadOutcome::loaded);
    ASSERT_EQ(reread.settings()->windowSettings().size(), 1);
    const WindowSettingsPtr window = reread.settings()->windowSettings().first();
    EXPECT_EQ(window->sidebarRootFolder(), PXFile::fileForPath(folder + QStringLiteral("/photos")));
    EXPECT_EQ(window->thumbnailsFileSort(), FileSortType::exifDate);
}

TEST(AppShell, TheSessionsRequestsWriteTheSettingsAtOnce)
{
    ShellFixture shell;
    shell.settingsManager->setSaveInterval(std::chrono::hours(1));
    QSignalSpy saved(shell.settingsManager.get(), &SettingsManager::saved);
    shell.settings()->setThumbnailOutlineThickness(3);
    ASSERT_TRUE(saved.wait()); // the first change of a quiet hour is written at once, the next ones wait
    const TerminationWatcher watcher(shell.settingsManager.get(), [] {});
    int thickness = 4;
    for (auto request : {&QGuiApplication::commitDataRequest, &QGuiApplication::saveStateRequest}) {
        shell.settings()->setThumbnailOutlineThickness(thickness);
        emitSessionRequest(request);
        const SettingsManager reread(shell.settingsManager->settingsFile());
        EXPECT_EQ(reread.settings()->thumbnailOutlineThickness(), thickness);
        ++thickness;
    }
}

TEST(AppShell, UndoAndRedoKeysFollowTheHistoryWithoutTheMenuBeingOpened)
{
    ActivitiesFixture f;
    FileOperationHistory::setShared(f.history.get());
    {
        ShellFixture shell;
        Delegate app;
        MainWindowController *window = shell.windows->newMainWindow(shell.photos);
        TabbedWindow *tabbedWindow = window->tabbedWindow();
        tabbedWindow->validateActions();
        QAction *undo = tabbedWindow->action(QStringLiteral("undo"));
        QAction *redo = tabbedWindow->action(QStringLiteral("redo"));
        ASSERT_TRUE(undo && redo);
        EXPECT_FALSE(undo->isEnabled());

        // The keys are the menu items' own: disabled items would swallow them until the Edit menu
        // is next opened.
        f.dir.write(QStringLiteral("a.jpg"), "x");
        f.run(ZQFileOperationType::duplicate, {QStringLiteral("a.jpg")});
        EXPECT_TRUE(waitUntil([&] { return undo->isEnabled(); }));
        EXPECT_FALSE(redo->isEnabled());
        f.history->undo();
        EXPECT_TRUE(waitUntil([&] { return redo->isEnabled() && !undo->isEnabled(); }));
    }
    FileOperationHistory::setShared(nullptr);
}
