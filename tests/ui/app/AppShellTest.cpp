#include "ui/app/ActivitiesGate.h"
#include "ui/app/AppDelegate.h"
#include "ui/app/InstanceChannel.h"
#include "ui/app/ServicesProvider.h"
#include "ui/windows/MainWindowFrame.h"
#include "ui/windows/MainWindowViewController.h"

#include "core/model/PXFile.h"
#include "ui/ShellFixture.h"

#include <QAction>
#include <QFile>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QUuid>

#include <gtest/gtest.h>

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

TEST(AppShell, LaunchOpensAWindowOnlyForAPlainStartNotTakenByTheLaunchFlag)
{
    ShellFixture shell;
    {
        Delegate app;
        shell.settings()->setQuickviewOpensOnLaunch(true);
        app.delegate.applicationDidFinishLaunching({});
        EXPECT_TRUE(shell.windows->windowControllers().isEmpty());
        EXPECT_FALSE(shell.settings()->quickviewOpensOnLaunch());
    }
    {
        Delegate app;
        app.delegate.applicationDidFinishLaunching({});
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
    MainWindowFrame *frame = window->frame();

    EXPECT_TRUE(frame->performCommand({QStringLiteral("changeFolderDepth"), 1}));
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(window->windowSettings()->thumbnailsFolderSearchDepth(), 1);
    frame->performCommand({QStringLiteral("changeFolderDepth"), 0}); // lowering never warns
    frame->performCommand({QStringLiteral("changeFolderDepth"), 2}); // unticked before: warns again
    EXPECT_EQ(shown, 2);
    ticked = true;
    frame->performCommand({QStringLiteral("changeFolderDepth"), 3});
    EXPECT_TRUE(shell.settings()->alertsAndWarnings().testFlag(AlertsAndWarning::folderDepthWarning));
    frame->performCommand({QStringLiteral("changeFolderDepth"), 4});
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

TEST(AppShell, EveryMenuCommandIsHandledOrShownUnavailable)
{
    ShellFixture shell;
    Delegate app;
    MainWindowController *window = shell.windows->newMainWindow(shell.photos);
    ASSERT_TRUE(waitUntil([&] { return window->mainViewController()->navigationHistory().currentItem().has_value(); }));
    MainWindowFrame *frame = window->frame();
    frame->validateActions();
    // The commands that are not available yet, shown disabled; any other disabled command is a
    // misspelt or unhandled name.
    const QSet<QString> unavailable = {
        QStringLiteral("startSlideshowWithSelected"),
        QStringLiteral("openRenameWindow"),
        QStringLiteral("changeFinderLabel"),
        QStringLiteral("openSettings"),
        QStringLiteral("scaleToFit"),
        QStringLiteral("fitToScreen"),
        QStringLiteral("zoomTo200Percent"),
        QStringLiteral("zoomTo100Percent"),
        QStringLiteral("zoomTo50Percent"),
        QStringLiteral("zoomIn"),
        QStringLiteral("zoomOut"),
        QStringLiteral("rotate180"),
        QStringLiteral("rotateClockwise"),
        QStringLiteral("rotateCounterclockwise"),
        QStringLiteral("openQuickview"),
        QStringLiteral("openActivityWindow"),
        QStringLiteral("startSlideshowWithOpenImageWindows"),
        QStringLiteral("previousImageWindow"),
        QStringLiteral("nextImageWindow"),
        QStringLiteral("openBugReporterWindow"),
        QStringLiteral("checkForUpdates"),
    };
    // Enabled only in some states: a selection, a history, a second tab.
    const QSet<QString> stateful = {
        QStringLiteral("back"),
        QStringLiteral("forward"),
        QStringLiteral("selectNextTab"),
        QStringLiteral("selectPreviousTab"),
        QStringLiteral("changeThumbnailSubfolderGrouping"),
    };
    QSet<QString> disabled;
    for (QAction *action : frame->findChildren<QAction *>()) {
        const QString command = action->property("command").toString();
        if (!command.isEmpty() && !action->isEnabled() && !stateful.contains(command))
            disabled.insert(command);
    }
    // With nothing selected in the grid, its commands on a selection wait for one.
    ASSERT_TRUE(window->mainViewController()->selectedFiles().isEmpty());
    for (const char *command :
         {"performOpen", "openInApp", "renameFile", "makeAlias", "makeSymlink", "duplicate", "moveToTrash",
          "revealInFinder", "flagItem", "rejectItem", "clearItemFlag", "deselectAll", "selectFlagged", "selectRejected",
          "nextImageInBrowser", "previousImageInBrowser", "scrollSelectionToVisible", "selectAll", "newFolder"})
        disabled.remove(QLatin1String(command));
    EXPECT_EQ(disabled, unavailable);
}

TEST(AppShell, HidingOnDeactivationFollowsTheSetting)
{
    ShellFixture shell;
    Delegate app;
    MainWindowController *window = shell.windows->newMainWindow(shell.photos);
    ASSERT_TRUE(window->frame()->isVisible());
    app.delegate.applicationDidResignActive();
    EXPECT_TRUE(window->frame()->isVisible());
    shell.settings()->setHideOnDeactivate(true);
    app.delegate.applicationDidResignActive();
    EXPECT_FALSE(window->frame()->isVisible());
    EXPECT_FALSE(shell.windows->hasVisibleWindows());
    // Starting again brings a window back: a new one, since none is visible.
    app.delegate.applicationShouldHandleReopen();
    EXPECT_TRUE(shell.windows->hasVisibleWindows());
}
