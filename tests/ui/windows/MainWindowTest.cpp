#include "core/model/FlagManager.h"
#include "ui/browser/BrowserViewController.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/inspector/InspectorViewController.h"
#include "ui/sidebar/FolderTreeModel.h"
#include "ui/sidebar/PathBar.h"
#include "ui/sidebar/SidebarViewController.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/TabbedWindow.h"

#include "core/model/PXFile.h"
#include "ui/ShellFixture.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QSignalSpy>
#include <QSlider>
#include <QSplitter>
#include <QTimer>
#include <QTreeView>

#include <gtest/gtest.h>

namespace {

struct OpenWindow
{
    MainWindowController *controller;
    MainWindowViewController *view;
    SidebarViewController *sidebar;
    TabbedWindow *tabbedWindow;

    explicit OpenWindow(MainWindowController *window)
        : controller(window)
        , view(window->mainViewController())
        , sidebar(view->sidebarViewController())
        , tabbedWindow(window->tabbedWindow())
    {
        EXPECT_TRUE(waitUntil([this] { return !sidebar->isRestoring(); }));
    }

    bool command(const char *name, const QVariant &argument = {}) const
    {
        return tabbedWindow->performCommand(CommandRegistry::shared().find(QLatin1String(name))->id(), argument);
    }
    void select(const QList<PXFilePtr> &folders) const
    {
        // One click's worth of change, as the user makes it.
        QItemSelection selection;
        for (const PXFilePtr &folder : folders) {
            ASSERT_TRUE(waitUntil([&] { return sidebar->model()->indexForFile(folder).isValid(); }));
            const QModelIndex index = sidebar->model()->indexForFile(folder);
            selection.select(index, index);
        }
        sidebar->treeView()->selectionModel()->select(selection,
                                                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    QStringList selectedNames() const
    {
        QStringList names;
        for (const PXFilePtr &file : sidebar->selectedFiles())
            names.append(file->name());
        names.sort();
        return names;
    }
};

} // namespace

TEST(MainWindow, BackAndForwardShowThePlacesTheSidebarVisited)
{
    ShellFixture shell;
    OpenWindow window(shell.windows->newMainWindow(shell.photos));
    EXPECT_EQ(window.selectedNames(), QStringList({QStringLiteral("photos")}));
    EXPECT_FALSE(window.command("back"));

    window.select({shell.folder("photos/a")});
    window.select({shell.folder("photos/b"), shell.folder("photos/c")});
    EXPECT_EQ(window.view->title(), QStringLiteral("b and 1 more"));
    // Expanding is not a new place.
    window.sidebar->treeView()->expand(window.sidebar->model()->indexForFile(shell.folder("photos/b")));
    EXPECT_EQ(window.view->navigationHistory().backHistory().size(), 2);

    ASSERT_TRUE(window.command("back"));
    ASSERT_TRUE(waitUntil([&] { return !window.sidebar->isRestoring(); }));
    EXPECT_EQ(window.selectedNames(), QStringList({QStringLiteral("a")}));
    EXPECT_EQ(window.view->navigationHistory().backHistory().size(), 1);
    EXPECT_EQ(window.view->pathBar()->folder(), shell.folder("photos/a"));

    ASSERT_TRUE(window.command("forward"));
    ASSERT_TRUE(waitUntil([&] { return !window.sidebar->isRestoring(); }));
    EXPECT_EQ(window.selectedNames(), QStringList({QStringLiteral("b"), QStringLiteral("c")}));
    EXPECT_FALSE(window.tabbedWindow->commandState(CommandId::forward).enabled);

    // A place deeper than what is listed: the folders on the way are listed to reach it.
    window.command("back");
    ASSERT_TRUE(waitUntil([&] { return !window.sidebar->isRestoring(); }));
    window.sidebar->showPlace({{shell.folder("photos/b/inner")}, {}, shell.photos});
    ASSERT_TRUE(waitUntil([&] { return !window.sidebar->isRestoring(); }));
    EXPECT_EQ(window.selectedNames(), QStringList({QStringLiteral("inner")}));
    EXPECT_FALSE(window.tabbedWindow->commandState(CommandId::forward).enabled);

    // Up one level makes the parent the root and keeps the old root selected.
    ASSERT_TRUE(window.command("changeBaseUpOneLevel"));
    ASSERT_TRUE(waitUntil([&] { return !window.sidebar->isRestoring(); }));
    EXPECT_EQ(window.sidebar->model()->rootFolder(), PXFile::fileForPath(shell.dir.path()));
    EXPECT_EQ(window.selectedNames(), QStringList({QStringLiteral("photos")}));
}

TEST(MainWindow, AFolderDeletedWhileShownGivesWayToItsNearestParent)
{
    ShellFixture shell;
    OpenWindow window(shell.windows->newMainWindow(shell.photos));
    window.select({shell.folder("photos/b")});
    window.sidebar->treeView()->expand(window.sidebar->model()->indexForFile(shell.folder("photos/b")));
    ASSERT_TRUE(
        waitUntil([&] { return window.sidebar->model()->indexForFile(shell.folder("photos/b/inner")).isValid(); }));
    window.select({shell.folder("photos/b/inner")});

    ASSERT_TRUE(QDir(shell.dir.filePath(QStringLiteral("photos/b"))).removeRecursively());
    ASSERT_TRUE(waitUntil([&] {
        return window.selectedNames() == QStringList({QStringLiteral("photos")})
            && !window.sidebar->model()->indexForFile(shell.folder("photos/b")).isValid();
    }));
    EXPECT_TRUE(window.view->statusBarText()->text().contains(QStringLiteral("no longer available")));

    // The root itself going away moves the root up.
    ASSERT_TRUE(QDir(shell.photos->path()).removeRecursively());
    ASSERT_TRUE(
        waitUntil([&] { return window.sidebar->model()->rootFolder() == PXFile::fileForPath(shell.dir.path()); }));
}

TEST(MainWindow, SettingsAreAppliedFollowedAndWrittenOnClose)
{
    ShellFixture shell;
    const WindowSettingsPtr saved = std::make_shared<WindowSettings>();
    saved->setSidebarRootFolder(shell.photos);
    saved->setSidebarSelection({shell.folder("photos/c")});
    saved->setSidebarWidth(210);
    saved->setInspectorCollapsed(false);
    saved->setInspectorWidth(260);
    saved->setThumbnailSize(144);
    saved->setThumbnailsFolderSearchDepth(2);
    saved->setBrowserLayout(BrowserLayout::topPreview);
    shell.settings()->setWindowSettings({saved});

    OpenWindow window(shell.windows->newMainWindow());
    const WindowSettingsPtr settings = window.controller->windowSettings();
    EXPECT_NE(settings, saved); // a duplicate: two windows never share one object
    window.tabbedWindow->resize(1200, 700);
    window.view->resize(1200, 700);
    EXPECT_EQ(window.selectedNames(), QStringList({QStringLiteral("c")}));
    EXPECT_EQ(window.view->thumbnailSizeSlider()->value(), 144);
    EXPECT_EQ(window.view->folderDepthSlider()->value(), 2);
    EXPECT_FALSE(window.view->inspectorViewController()->isHidden());
    EXPECT_TRUE(
        window.tabbedWindow->commandState(CommandId::changeBrowserLayout, int(BrowserLayout::topPreview)).checked);

    // Commands change the settings; changed settings show at once.
    window.command("showHideInspector");
    EXPECT_TRUE(settings->inspectorCollapsed());
    EXPECT_TRUE(window.view->inspectorViewController()->isHidden());
    window.command("changeThumbnailSize", 1);
    EXPECT_EQ(window.view->thumbnailSizeSlider()->value(), 176);
    window.view->thumbnailSizeSlider()->setValue(96);
    EXPECT_EQ(settings->thumbnailSize(), 96);
    settings->setSidebarCollapsed(true);
    EXPECT_TRUE(window.view->sidebarViewController()->isHidden());
    window.command("changeThumbnailFileSort", int(FileSortType::exifDate));
    window.tabbedWindow->validateActions();
    EXPECT_TRUE(window.tabbedWindow->action(QStringLiteral("changeThumbnailFileSort"), int(FileSortType::exifDate))
                    ->isChecked());
    EXPECT_FALSE(
        window.tabbedWindow->action(QStringLiteral("changeThumbnailFileSort"), int(FileSortType::name))->isChecked());
    // Commands that are not available yet are shown disabled.
    EXPECT_FALSE(window.tabbedWindow->action(QStringLiteral("zoomIn"))->isEnabled());

    // A second window starts as a copy of the front one and goes its own way.
    OpenWindow second(shell.windows->newMainWindow({}, true));
    EXPECT_EQ(second.tabbedWindow, window.tabbedWindow);
    EXPECT_EQ(second.controller->windowSettings()->thumbnailSize(), 96);
    second.command("changeThumbnailSize", -1);
    EXPECT_EQ(settings->thumbnailSize(), 96);

    // Closing writes the window into its settings and makes it the one saved window.
    window.controller->close();
    ASSERT_EQ(shell.settings()->windowSettings().size(), 1);
    const WindowSettingsPtr kept = shell.settings()->windowSettings().first();
    EXPECT_EQ(kept, settings);
    QString error;
    const std::optional<QJsonObject> json = kept->toJson(&error);
    ASSERT_TRUE(json) << qPrintable(error);
    const WindowSettingsPtr reread = WindowSettings::fromJson(*json, &error);
    ASSERT_TRUE(reread) << qPrintable(error);
    EXPECT_EQ(reread->sidebarSelection(), QList<PXFilePtr>({shell.folder("photos/c")}));
    EXPECT_EQ(reread->thumbnailSize(), 96);
    EXPECT_EQ(reread->thumbnailsFileSort(), FileSortType::exifDate);
    EXPECT_TRUE(reread->sidebarCollapsed());
    EXPECT_EQ(second.tabbedWindow->controllers().size(), 1);
}

TEST(MainWindow, FlagsGoToTheSharedStoreAndPaneErrorsReachTheUser)
{
    ShellFixture shell;
    FlagManager flags;
    FlagManager::setShared(&flags);
    OpenWindow window(shell.windows->newMainWindow(shell.photos));
    window.select({shell.photos});
    ThumbnailsViewController *pane = window.view->thumbnailsViewController();
    ASSERT_TRUE(waitUntil([&] { return !pane->isLoading() && !pane->files().isEmpty(); }));

    const PXFilePtr first = pane->files().constFirst();
    pane->selectFiles({first});
    ASSERT_TRUE(pane->actionHandler()->canChangeFlags());
    pane->actionHandler()->flagItem();
    EXPECT_TRUE(flags.isFlagged(first));
    pane->actionHandler()->rejectItem();
    EXPECT_TRUE(flags.isRejected(first));
    EXPECT_FALSE(flags.isFlagged(first));
    pane->actionHandler()->clearItemFlag();
    EXPECT_FALSE(flags.isRejected(first));

    // A pane error opens a warning over the window; close it as soon as it shows.
    bool warned = false;
    QTimer::singleShot(0, [&] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            warned = box->text() == QStringLiteral("the reason");
            box->close();
        }
    });
    Q_EMIT pane->errorOccurred(QStringLiteral("Cannot Rename"), QStringLiteral("the reason"));
    EXPECT_TRUE(warned);
    FlagManager::setShared(nullptr);
}
