#include "ui/windows/MainMenuBar.h"

#include "core/model/FileSortTypes.h"
#include "core/settings/SettingsValueSets.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

namespace {

QString tr(const char *text, const char *disambiguation = nullptr, int n = -1)
{
    return QCoreApplication::translate("MainMenuBar", text, disambiguation, n);
}

struct Builder
{
    QList<QAction *> actions;

    QAction *add(QMenu *menu, const QString &title, const char *command, const QKeySequence &key = {},
                 const QVariant &argument = {}, bool checkable = false)
    {
        QAction *action = menu->addAction(title);
        action->setProperty("command", QString::fromLatin1(command));
        action->setProperty("argument", argument);
        action->setShortcut(key);
        action->setCheckable(checkable);
        action->setEnabled(false);
        actions.append(action);
        return action;
    }

    QAction *toggle(QMenu *menu, const QString &title, const char *command, const QKeySequence &key = {})
    {
        return add(menu, title, command, key, {}, true);
    }

    // One checkable item per value, exclusive.
    template<typename Values, typename Title>
    void choice(QMenu *menu, const char *command, const Values &values, Title title)
    {
        auto *group = new QActionGroup(menu);
        for (const auto &value : values)
            group->addAction(add(menu, title(value), command, {}, int(value), true));
    }
};

template<typename Enum>
QList<Enum> range(int count)
{
    QList<Enum> values;
    for (int raw = 0; raw < count; ++raw)
        values.append(Enum(raw));
    return values;
}

QString browserLayoutTitle(BrowserLayout layout)
{
    switch (layout) {
    case BrowserLayout::noPreview: return tr("No Preview");
    case BrowserLayout::topPreview: return tr("Preview on Top");
    case BrowserLayout::rightPreview: return tr("Preview on Right");
    }
    return {};
}

QString sidebarInfoTitle(SidebarInfoOptions info)
{
    switch (info) {
    case SidebarInfoOptions::none: return tr("No Counts");
    case SidebarInfoOptions::files: return tr("Files");
    case SidebarInfoOptions::folders: return tr("Folders");
    case SidebarInfoOptions::filesAndFolders: return tr("Files and Folders");
    case SidebarInfoOptions::images: return tr("Images");
    case SidebarInfoOptions::imagesAndFolders: return tr("Images and Folders");
    }
    return {};
}

} // namespace

namespace MainMenuBar {

QList<QAction *> build(QMenuBar *menuBar)
{
    Builder b;

    QMenu *file = menuBar->addMenu(tr("&File"));
    b.add(file, tr("New Window"), "newMainWindow", QKeySequence::New);
    b.add(file, tr("New Tab"), "newMainWindowTab", QKeySequence::AddTab);
    file->addSeparator();
    b.add(file, tr("Open"), "performOpen", QKeySequence::Open);
    b.add(file, tr("Open in Default App"), "openInApp", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    QMenu *openWith = file->addMenu(tr("Open With"));
    openWith->setObjectName(QLatin1String(openWithMenuName));
    file->addSeparator();
    b.add(file, tr("Slideshow With Selected"), "startSlideshowWithSelected",
          QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_S));
    b.add(file, tr("Batch Rename…"), "openRenameWindow", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    b.add(file, tr("Edit Filename"), "renameFile", QKeySequence(Qt::Key_F2));
    b.add(file, tr("Make Alias"), "makeAlias");
    b.add(file, tr("Make Symbolic Link"), "makeSymlink");
    b.add(file, tr("Duplicate"), "duplicate", QKeySequence(Qt::CTRL | Qt::Key_D));
    QMenu *moveTo = file->addMenu(tr("Move To"));
    moveTo->setObjectName(QLatin1String(moveToMenuName));
    b.add(file, tr("Label:"), "changeFinderLabel");
    b.add(file, tr("Show in File Manager"), "revealInFinder", QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_R));
    b.add(file, tr("New Folder"), "newFolder", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    b.add(file, tr("Move to Trash"), "moveToTrash", QKeySequence(Qt::Key_Delete));
    file->addSeparator();
    b.add(file, tr("Close"), "performClose", QKeySequence::Close);
    b.add(file, tr("Quit"), "terminate", QKeySequence::Quit);

    QMenu *edit = menuBar->addMenu(tr("&Edit"));
    b.add(edit, tr("Select All"), "selectAll", QKeySequence::SelectAll);
    b.add(edit, tr("Deselect All"), "deselectAll", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A));
    edit->addSeparator();
    b.add(edit, tr("Flag"), "flagItem", QKeySequence(Qt::Key_P));
    b.add(edit, tr("Reject"), "rejectItem", QKeySequence(Qt::Key_X));
    b.add(edit, tr("Clear Flag"), "clearItemFlag", QKeySequence(Qt::Key_U));
    b.add(edit, tr("Select Flagged"), "selectFlagged");
    b.add(edit, tr("Select Rejected"), "selectRejected");
    edit->addSeparator();
    b.add(edit, tr("Find"), "filterThumbnails", QKeySequence::Find);
    b.add(edit, tr("Settings…"), "openSettings", QKeySequence::Preferences);

    QMenu *view = menuBar->addMenu(tr("&View"));
    b.toggle(view, tr("Show Sidebar"), "showHideSidebar", QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_B));
    b.toggle(view, tr("Show Favorites"), "showHideFavorites");
    b.toggle(view, tr("Show Inspector"), "showHideInspector", QKeySequence(Qt::CTRL | Qt::Key_I));
    QMenu *layout = view->addMenu(tr("Layout"));
    b.choice(layout, "changeBrowserLayout", range<BrowserLayout>(valueSetCount<BrowserLayout>()), browserLayoutTitle);
    view->addSeparator();
    b.toggle(view, tr("Show Thumbnail Information"), "toggleThumbnailInfo", QKeySequence(Qt::CTRL | Qt::Key_J));
    QMenu *info = view->addMenu(tr("Thumbnail Information"));
    const QList<std::pair<ThumbnailInfoOption, QString>> infoLines = {
        {ThumbnailInfoOption::filename, tr("Filename")},
        {ThumbnailInfoOption::dimensions, tr("Dimensions")},
        {ThumbnailInfoOption::fileSize, tr("File Size")},
        {ThumbnailInfoOption::modificationDate, tr("Modification Date")},
        {ThumbnailInfoOption::kind, tr("Kind")},
    };
    for (const auto &[bit, title] : infoLines)
        b.add(info, title, "showThumbInfo", {}, int(bit), true);
    QMenu *size = view->addMenu(tr("Thumbnail Size"));
    b.add(size, tr("Larger"), "changeThumbnailSize", QKeySequence::ZoomIn, 1);
    b.add(size, tr("Smaller"), "changeThumbnailSize", QKeySequence::ZoomOut, -1);
    view->addSeparator();
    QMenu *sort = view->addMenu(tr("Sort By"));
    b.choice(sort, "changeThumbnailFileSort", range<FileSortType>(valueSetCount<FileSortType>()), fileSortTypeTitle);
    sort->addSeparator();
    b.toggle(sort, tr("Reverse Order"), "changeThumbnailReverseSort");
    sort->addSeparator();
    b.choice(sort, "changeThumbnailFolderSort", range<FolderSortType>(valueSetCount<FolderSortType>()),
             folderSortTypeTitle);
    QMenu *filter = view->addMenu(tr("Show"));
    b.choice(filter, "changeThumbnailFileFilter", range<FileFilterType>(valueSetCount<FileFilterType>()),
             fileFilterTypeTitle);
    filter->addSeparator();
    b.toggle(filter, tr("Hide Folders"), "changeThumbnailHideFolders");
    QMenu *subfolders = view->addMenu(tr("Subfolders"));
    b.choice(subfolders, "changeFolderDepth", QList<int>{0, 1, 2, 3, 4, 5},
             [](int depth) { return depth == 0 ? tr("This Folder Only") : tr("%n Level(s) Deep", nullptr, depth); });
    subfolders->addSeparator();
    b.choice(subfolders, "changeThumbnailSubfolderGrouping",
             QList<SubfolderInclusionStyle>{SubfolderInclusionStyle::byFolder, SubfolderInclusionStyle::commingled},
             [](SubfolderInclusionStyle style) {
                 return style == SubfolderInclusionStyle::byFolder ? tr("Grouped by Folder") : tr("Commingled");
             });
    view->addSeparator();
    QMenu *sidebar = view->addMenu(tr("Sidebar"));
    QMenu *sidebarSort = sidebar->addMenu(tr("Sort By"));
    b.choice(sidebarSort, "changeSidebarFileSort", range<FileSortType>(valueSetCount<FileSortType>()),
             fileSortTypeTitle);
    sidebarSort->addSeparator();
    b.toggle(sidebarSort, tr("Reverse Order"), "changeSidebarReverseSort");
    QMenu *sidebarFilter = sidebar->addMenu(tr("Show"));
    b.choice(sidebarFilter, "changeSidebarFileFilter", range<FileFilterType>(valueSetCount<FileFilterType>()),
             fileFilterTypeTitle);
    QMenu *sidebarInfo = sidebar->addMenu(tr("Counts"));
    b.choice(sidebarInfo, "changeSidebarInfo", range<SidebarInfoOptions>(valueSetCount<SidebarInfoOptions>()),
             sidebarInfoTitle);
    view->addSeparator();
    b.add(view, tr("Scale to Fit"), "scaleToFit", QKeySequence(Qt::CTRL | Qt::Key_0));
    b.add(view, tr("Fit to Screen"), "fitToScreen");
    b.add(view, tr("Zoom to 200%"), "zoomTo200Percent");
    b.add(view, tr("Zoom to 100%"), "zoomTo100Percent", QKeySequence(Qt::CTRL | Qt::Key_1));
    b.add(view, tr("Zoom to 50%"), "zoomTo50Percent");
    b.add(view, tr("Zoom In"), "zoomIn", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Plus));
    b.add(view, tr("Zoom Out"), "zoomOut", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Minus));
    b.add(view, tr("Rotate 180°"), "rotate180");
    b.add(view, tr("Rotate Clockwise"), "rotateClockwise", QKeySequence(Qt::CTRL | Qt::Key_R));
    b.add(view, tr("Rotate Counterclockwise"), "rotateCounterclockwise", QKeySequence(Qt::CTRL | Qt::Key_L));
    view->addSeparator();
    b.toggle(view, tr("Full Screen"), "toggleFullScreen", QKeySequence::FullScreen);

    QMenu *go = menuBar->addMenu(tr("&Go"));
    b.add(go, tr("Back"), "back", QKeySequence::Back);
    b.add(go, tr("Forward"), "forward", QKeySequence::Forward);
    b.add(go, tr("Enclosing Folder"), "changeBaseUpOneLevel", QKeySequence(Qt::ALT | Qt::Key_Up));
    b.add(go, tr("Make Selected Folder the Root"), "changeSidebarSourceFromTree", QKeySequence(Qt::ALT | Qt::Key_Down));
    b.add(go, tr("Go to Folder…"), "changeSidebarSource", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_G));
    go->addSeparator();
    b.add(go, tr("Expand Selected Folders"), "expandSelected", QKeySequence(Qt::CTRL | Qt::Key_Right));
    b.add(go, tr("Collapse Selected Folders"), "collapseSelected", QKeySequence(Qt::CTRL | Qt::Key_Left));
    go->addSeparator();
    b.add(go, tr("Next Image"), "nextImageInBrowser", QKeySequence(Qt::CTRL | Qt::Key_BracketRight));
    b.add(go, tr("Previous Image"), "previousImageInBrowser", QKeySequence(Qt::CTRL | Qt::Key_BracketLeft));
    b.add(go, tr("Show Selection"), "scrollSelectionToVisible", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L));

    QMenu *window = menuBar->addMenu(tr("&Window"));
    b.add(window, tr("Quick View"), "openQuickview", QKeySequence(Qt::CTRL | Qt::Key_Y));
    b.add(window, tr("Activity"), "openActivityWindow");
    b.add(window, tr("Slideshow With Open Image Windows"), "startSlideshowWithOpenImageWindows");
    b.add(window, tr("Previous Image Window"), "previousImageWindow");
    b.add(window, tr("Next Image Window"), "nextImageWindow");
    window->addSeparator();
    b.add(window, tr("Previous Tab"), "selectPreviousTab", QKeySequence::PreviousChild);
    b.add(window, tr("Next Tab"), "selectNextTab", QKeySequence::NextChild);

    QMenu *help = menuBar->addMenu(tr("&Help"));
    b.add(help, tr("Pixcove Website"), "goToSite");
    b.add(help, tr("Release Notes"), "goToReleaseNotes");
    b.add(help, tr("Report a Bug…"), "openBugReporterWindow");
    b.add(help, tr("Check for Updates…"), "checkForUpdates");
    help->addSeparator();
    b.add(help, tr("About Pixcove"), "openAboutWindow");

    return b.actions;
}

} // namespace MainMenuBar
