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
#include "ui/windows/ToolbarCustomizationDialog.h"
#include "ui/windows/ValidatingToolbar.h"

#include "core/model/PXFile.h"
#include "support/LogCapture.h"
#include "ui/ShellFixture.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QSlider>
#include <QSplitter>
#include <QSplitterHandle>
#include <QTimer>
#include <QToolButton>
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

// Drags the divider of a two-pane splitter by `distance` points, as the user does.
void dragDivider(QSplitter *splitter, int distance)
{
    QSplitterHandle *handle = splitter->handle(1);
    const QPoint from = handle->rect().center();
    const QPoint to = from + (splitter->orientation() == Qt::Horizontal ? QPoint(distance, 0) : QPoint(0, distance));
    const auto send = [handle](QEvent::Type type, QPoint position, Qt::MouseButtons buttons) {
        QMouseEvent event(type, position, handle->mapToGlobal(position), Qt::LeftButton, buttons, Qt::NoModifier);
        QApplication::sendEvent(handle, &event);
    };
    send(QEvent::MouseButtonPress, from, Qt::LeftButton);
    send(QEvent::MouseMove, to, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, to, Qt::NoButton);
}

// The toolbar's items as they show, left to right: a button's command (a menu button's first
// entry's; the three layout buttons count once), "field", "separator" or "space" (flexible or not).
QStringList shownToolbarItems(const ValidatingToolbar *toolbar)
{
    QStringList items;
    for (int i = 0; i < toolbar->layout()->count(); ++i) {
        QWidget *widget = toolbar->layout()->itemAt(i)->widget();
        if (!widget->isVisibleTo(toolbar))
            continue;
        const auto *button = qobject_cast<QToolButton *>(widget);
        const QString item = button
            ? (button->defaultAction() ? button->defaultAction() : button->menu()->actions().value(0))->objectName()
            : qobject_cast<QLineEdit *>(widget) ? QStringLiteral("field")
            : qobject_cast<QFrame *>(widget)    ? QStringLiteral("separator")
                                                : QStringLiteral("space");
        if (item != items.value(items.size() - 1))
            items.append(item);
    }
    return items;
}

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

    // Closing a window leaves the saved list to the windows still open; the window closed last
    // writes itself into its settings and is the one saved window.
    second.controller->close();
    EXPECT_EQ(window.tabbedWindow->controllers().size(), 1);
    EXPECT_EQ(shell.settings()->windowSettings(), QList<WindowSettingsPtr>({settings}));
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

TEST(MainWindow, EverySaveHoldsTheOpenWindowsAsTheyAreNow)
{
    ShellFixture shell;
    shell.settingsManager->setSaveInterval(std::chrono::milliseconds(200));
    OpenWindow first(shell.windows->newMainWindow(shell.folder("photos/a")));
    OpenWindow second(shell.windows->newMainWindow(shell.folder("photos/c")));
    const WindowSettingsPtr firstSettings = first.controller->windowSettings();
    const WindowSettingsPtr secondSettings = second.controller->windowSettings();
    // The most recently opened first: it is the one a quit would keep, and the next start opens like it.
    EXPECT_EQ(shell.settings()->windowSettings(), QList<WindowSettingsPtr>({secondSettings, firstSettings}));

    // A change in a window reaches the file with the next save, the window still open: once the
    // saves of the opening are over, at once.
    QSignalSpy saves(shell.settingsManager.get(), &SettingsManager::saved);
    while (saves.wait(400)) { }
    ASSERT_TRUE(first.command("changeThumbnailFileSort", int(FileSortType::exifDate)));
    ASSERT_TRUE(saves.wait());
    const SettingsManager reread(shell.settingsManager->settingsFile());
    const QList<WindowSettingsPtr> saved = reread.settings()->windowSettings();
    ASSERT_EQ(saved.size(), 2);
    EXPECT_EQ(saved[0]->sidebarRootFolder(), shell.folder("photos/c"));
    EXPECT_EQ(saved[1]->sidebarRootFolder(), shell.folder("photos/a"));
    EXPECT_EQ(saved[1]->thumbnailsFileSort(), FileSortType::exifDate);

    // Closing one leaves the other to be saved; closing the last keeps it.
    second.controller->close();
    EXPECT_EQ(shell.settings()->windowSettings(), QList<WindowSettingsPtr>({firstSettings}));
    first.controller->close();
    EXPECT_EQ(shell.settings()->windowSettings(), QList<WindowSettingsPtr>({firstSettings}));
}

TEST(MainWindow, TheBrowserSplitKeepsTheSavedPositionsAndWritesTheUsersDrags)
{
    ShellFixture shell;
    const WindowSettingsPtr saved = std::make_shared<WindowSettings>();
    saved->setSidebarRootFolder(shell.photos);
    saved->setBrowserVerticalSplitPosition(420);
    saved->setBrowserHorizontalSplitPosition(250);
    shell.settings()->setWindowSettings({saved});

    OpenWindow window(shell.windows->newMainWindow());
    const WindowSettingsPtr settings = window.controller->windowSettings();
    QSplitter *split = window.view->browserSplitView();
    ASSERT_TRUE(split);
    window.tabbedWindow->resize(1300, 800);
    ASSERT_TRUE(waitUntil([&] { return split->sizes().value(0) == 420; }));
    // Growing the window grows the preview; the grid keeps its width.
    window.tabbedWindow->resize(1500, 800);
    ASSERT_TRUE(waitUntil([&] { return split->width() > 1000; }));
    EXPECT_EQ(split->sizes().value(0), 420);

    dragDivider(split, 60);
    EXPECT_EQ(split->sizes().value(0), 480);
    EXPECT_EQ(settings->browserVerticalSplitPosition(), 480);

    // The preview on top: the other position, from the top, and a drag writes that one only.
    ASSERT_TRUE(window.command("changeBrowserLayout", int(BrowserLayout::topPreview)));
    ASSERT_TRUE(waitUntil([&] { return split->orientation() == Qt::Vertical && split->sizes().value(0) == 250; }));
    dragDivider(split, -50);
    EXPECT_EQ(settings->browserHorizontalSplitPosition(), 200);
    EXPECT_EQ(settings->browserVerticalSplitPosition(), 480);
    ASSERT_TRUE(window.command("changeBrowserLayout", int(BrowserLayout::rightPreview)));

    // A window opened after this one closed takes its split.
    window.controller->close();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    OpenWindow reopened(shell.windows->newMainWindow());
    reopened.tabbedWindow->resize(1300, 800);
    QSplitter *reopenedSplit = reopened.view->browserSplitView();
    ASSERT_TRUE(waitUntil([&] { return reopenedSplit->sizes().value(0) == 480; }));
    ASSERT_TRUE(reopened.command("changeBrowserLayout", int(BrowserLayout::topPreview)));
    EXPECT_EQ(reopenedSplit->sizes().value(0), 200);
}

TEST(MainWindow, TheToolbarFollowsItsConfigurationAndWritesItsChangesBack)
{
    ShellFixture shell;
    const WindowSettingsPtr saved = std::make_shared<WindowSettings>();
    saved->setSidebarRootFolder(shell.photos);
    saved->setToolbarConfiguration(
        QVariantMap{{"TB Item Identifiers", QStringList{"thumbnailViewSearch", "separator", "back"}}});
    shell.settings()->setWindowSettings({saved});

    OpenWindow window(shell.windows->newMainWindow());
    const WindowSettingsPtr settings = window.controller->windowSettings();
    ValidatingToolbar *toolbar = window.view->toolbar();
    EXPECT_EQ(shownToolbarItems(toolbar),
              (QStringList{"setThumbnailViewSearchCategory", "field", "separator", "back"}));

    // Hiding it from the menu is written, and so is what the customization sheet chooses.
    ASSERT_TRUE(window.command("toggleToolbarShown"));
    EXPECT_FALSE(toolbar->isVisibleTo(window.view));
    EXPECT_EQ(settings->toolbarConfiguration()->value("TB Is Shown"), QVariant(false));
    ASSERT_TRUE(window.command("runToolbarCustomizationPalette"));
    auto *sheet = window.view->findChild<ToolbarCustomizationDialog *>();
    ASSERT_TRUE(sheet);
    QListWidget *list = sheet->list();
    ASSERT_EQ(list->item(3)->text(), "Forward"); // the items shown first, in their order, then the others
    list->item(3)->setCheckState(Qt::Checked);
    list->item(1)->setCheckState(Qt::Unchecked); // the separator
    list->insertItem(0, list->takeItem(3));
    sheet->addSpacer("flexibleSpace");
    sheet->accept();
    window.command("toggleToolbarShown");
    const QStringList chosen{"forward", "setThumbnailViewSearchCategory", "field", "back", "space"};
    EXPECT_EQ(shownToolbarItems(toolbar), chosen);

    // It survives closing and reopening the window.
    window.controller->close();
    OpenWindow reopened(shell.windows->newMainWindow());
    EXPECT_EQ(shownToolbarItems(reopened.view->toolbar()), chosen);

    // One that cannot be read is logged, and the default toolbar shows.
    LogCapture log;
    reopened.controller->windowSettings()->setToolbarConfiguration(
        QVariantMap{{"TB Item Identifiers", QStringList{"back", "ejectSelected"}}, {"TB Is Shown", false}});
    EXPECT_TRUE(reopened.view->toolbar()->isVisibleTo(reopened.view));
    EXPECT_EQ(shownToolbarItems(reopened.view->toolbar()).size(), 11);
    EXPECT_EQ(log.lines,
              QStringList("ERROR: The toolbar's configuration cannot be used, showing the default toolbar: "
                          "“TB Item Identifiers” names the unknown item “ejectSelected”"));
}
