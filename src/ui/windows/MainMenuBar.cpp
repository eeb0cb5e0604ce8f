#include "ui/windows/MainMenuBar.h"

#include "core/activities/FileOperationHistory.h"
#include "core/app/Translate.h"
#include "core/model/FileSortTypes.h"
#include "core/settings/SettingsValueSets.h"
#include "ui/windows/CommandAction.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/FileMenus.h"

#include <QAction>
#include <QActionGroup>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

namespace {

constexpr Translator tr("MainMenuBar");

struct Builder
{
    const CommandRegistry &registry;
    QList<CommandAction *> actions;

    // `title`: the item's own title, when it is not the command's.
    CommandAction *add(QMenu *menu, CommandId id, const QVariant &argument = {}, const QString &title = {})
    {
        const Command &command = registry.command(id);
        auto *action = new CommandAction(command, argument, title, menu);
        action->bindKeys(command);
        action->setEnabled(false);
        menu->addAction(action);
        actions.append(action);
        return action;
    }

    // One item per value, exclusive.
    template<typename Values, typename Title>
    void choice(QMenu *menu, CommandId id, const Values &values, Title title)
    {
        auto *group = new QActionGroup(menu);
        for (const auto &value : values)
            group->addAction(add(menu, id, int(value), title(value)));
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

QList<CommandAction *> build(QMenuBar *menuBar, const CommandRegistry &registry)
{
    Builder b{registry, {}};
    using C = CommandId;

    QMenu *file = menuBar->addMenu(tr("&File"));
    b.add(file, C::newMainWindow);
    b.add(file, C::newMainWindowTab);
    file->addSeparator();
    b.add(file, C::performOpen);
    b.add(file, C::openInApp);
    b.add(file, C::openInCreator);
    QMenu *openWith = file->addMenu(tr("Open With"));
    openWith->setObjectName(QLatin1String(openWithMenuName));
    file->addSeparator();
    b.add(file, C::startSlideshowWithSelected);
    b.add(file, C::openRenameWindow);
    b.add(file, C::renameFile);
    b.add(file, C::makeAlias);
    b.add(file, C::makeSymlink);
    b.add(file, C::duplicate);
    QMenu *moveTo = file->addMenu(tr("Move To"));
    moveTo->setObjectName(QLatin1String(moveToMenuName));
    file->addMenu(tr("Copy To"))->setObjectName(QLatin1String(copyToMenuName));
    file->addMenu(tr("Alias To"))->setObjectName(QLatin1String(aliasToMenuName));
    FileMenus::addLabelChooser(file, tr("Label:"),
                               [&b](QMenu *menu, C id, const QVariant &argument, const QString &title) {
                                   return static_cast<QAction *>(b.add(menu, id, argument, title));
                               });
    b.add(file, C::revealInFileManager);
    b.add(file, C::revealOriginal);
    b.add(file, C::newFolder);
    b.add(file, C::ejectSelected);
    b.add(file, C::moveToTrash);
    file->addSeparator();
    b.add(file, C::performClose);
    b.add(file, C::terminate);

    QMenu *edit = menuBar->addMenu(tr("&Edit"));
    // The items name what they undo and redo: "Undo Move to Trash".
    CommandAction *undo = b.add(edit, C::undo);
    CommandAction *redo = b.add(edit, C::redo);
    const auto nameUndo = [undo, redo] {
        undo->setText(FileOperationHistory::shared().undoTitle());
        redo->setText(FileOperationHistory::shared().redoTitle());
    };
    QObject::connect(&FileOperationHistory::shared(), &FileOperationHistory::changed, undo, nameUndo);
    nameUndo();
    edit->addSeparator();
    b.add(edit, C::selectAll);
    b.add(edit, C::deselectAll);
    edit->addSeparator();
    b.add(edit, C::flagItem);
    b.add(edit, C::rejectItem);
    b.add(edit, C::clearItemFlag);
    b.add(edit, C::selectFlagged);
    b.add(edit, C::selectRejected);
    b.add(edit, C::deleteRejected);
    edit->addSeparator();
    b.add(edit, C::filterThumbnails);
    b.add(edit, C::openSettings);

    QMenu *view = menuBar->addMenu(tr("&View"));
    b.add(view, C::showHideSidebar);
    b.add(view, C::showHideFavorites);
    b.add(view, C::showHideInspector);
    QMenu *layout = view->addMenu(tr("Layout"));
    b.choice(layout, C::changeBrowserLayout, range<BrowserLayout>(valueSetCount<BrowserLayout>()), browserLayoutTitle);
    view->addSeparator();
    b.add(view, C::toggleThumbnailInfo);
    QMenu *info = view->addMenu(tr("Thumbnail Information"));
    const QList<std::pair<ThumbnailInfoOption, QString>> infoLines = {
        {ThumbnailInfoOption::filename, tr("Filename")},
        {ThumbnailInfoOption::dimensions, tr("Dimensions")},
        {ThumbnailInfoOption::fileSize, tr("File Size")},
        {ThumbnailInfoOption::modificationDate, tr("Modification Date")},
        {ThumbnailInfoOption::kind, tr("Kind")},
    };
    for (const auto &[bit, title] : infoLines)
        b.add(info, C::showThumbInfo, int(bit), title);
    QMenu *size = view->addMenu(tr("Thumbnail Size"));
    b.add(size, C::changeThumbnailSize, 1, tr("Larger"));
    b.add(size, C::changeThumbnailSize, -1, tr("Smaller"));
    view->addSeparator();
    QMenu *sort = view->addMenu(tr("Sort By"));
    b.choice(sort, C::changeThumbnailFileSort, range<FileSortType>(valueSetCount<FileSortType>()), fileSortTypeTitle);
    sort->addSeparator();
    b.add(sort, C::changeThumbnailReverseSort);
    sort->addSeparator();
    b.choice(sort, C::changeThumbnailFolderSort, range<FolderSortType>(valueSetCount<FolderSortType>()),
             folderSortTypeTitle);
    QMenu *filter = view->addMenu(tr("Show"));
    b.choice(filter, C::changeThumbnailFileFilter, range<FileFilterType>(valueSetCount<FileFilterType>()),
             fileFilterTypeTitle);
    filter->addSeparator();
    b.add(filter, C::changeThumbnailHideFolders);
    QMenu *subfolders = view->addMenu(tr("Subfolders"));
    b.choice(subfolders, C::changeFolderDepth, QList<int>{0, 1, 2, 3, 4, 5},
             [](int depth) { return depth == 0 ? tr("This Folder Only") : tr("%n Level(s) Deep", nullptr, depth); });
    subfolders->addSeparator();
    b.choice(subfolders, C::changeThumbnailSubfolderGrouping,
             QList<SubfolderInclusionStyle>{SubfolderInclusionStyle::byFolder, SubfolderInclusionStyle::commingled},
             [](SubfolderInclusionStyle style) {
                 return style == SubfolderInclusionStyle::byFolder ? tr("Grouped by Folder") : tr("Commingled");
             });
    view->addSeparator();
    QMenu *sidebar = view->addMenu(tr("Sidebar"));
    QMenu *sidebarSort = sidebar->addMenu(tr("Sort By"));
    b.choice(sidebarSort, C::changeSidebarFileSort, range<FileSortType>(valueSetCount<FileSortType>()),
             fileSortTypeTitle);
    sidebarSort->addSeparator();
    b.add(sidebarSort, C::changeSidebarReverseSort, {}, tr("Reverse Order"));
    QMenu *sidebarFilter = sidebar->addMenu(tr("Show"));
    b.choice(sidebarFilter, C::changeSidebarFileFilter, range<FileFilterType>(valueSetCount<FileFilterType>()),
             fileFilterTypeTitle);
    QMenu *sidebarInfo = sidebar->addMenu(tr("Counts"));
    b.choice(sidebarInfo, C::changeSidebarInfo, range<SidebarInfoOptions>(valueSetCount<SidebarInfoOptions>()),
             sidebarInfoTitle);
    view->addSeparator();
    b.add(view, C::scaleToFit);
    b.add(view, C::fitToScreen);
    b.add(view, C::zoomTo200Percent);
    b.add(view, C::zoomTo100Percent);
    b.add(view, C::zoomTo50Percent);
    b.add(view, C::zoomIn);
    b.add(view, C::zoomOut);
    b.add(view, C::rotate180);
    b.add(view, C::rotateClockwise);
    b.add(view, C::rotateCounterclockwise);
    view->addSeparator();
    b.add(view, C::toggleToolbarShown);
    b.add(view, C::runToolbarCustomizationPalette);
    b.add(view, C::toggleFullScreen);

    QMenu *go = menuBar->addMenu(tr("&Go"));
    b.add(go, C::back);
    b.add(go, C::forward);
    b.add(go, C::changeBaseUpOneLevel);
    b.add(go, C::changeSidebarSourceFromTree);
    b.add(go, C::changeSidebarSource);
    go->addSeparator();
    b.add(go, C::expandSelected);
    b.add(go, C::collapseSelected);
    go->addSeparator();
    b.add(go, C::nextImageInBrowser);
    b.add(go, C::previousImageInBrowser);
    b.add(go, C::scrollSelectionToVisible);

    QMenu *window = menuBar->addMenu(tr("&Window"));
    b.add(window, C::openQuickview);
    b.add(window, C::openActivityWindow);
    b.add(window, C::startSlideshowWithOpenImageWindows);
    b.add(window, C::previousImageWindow);
    b.add(window, C::nextImageWindow);
    window->addSeparator();
    b.add(window, C::selectPreviousTab);
    b.add(window, C::selectNextTab);

    QMenu *help = menuBar->addMenu(tr("&Help"));
    b.add(help, C::goToSite);
    b.add(help, C::goToReleaseNotes);
    b.add(help, C::openBugReporterWindow);
    b.add(help, C::checkForUpdates);
    help->addSeparator();
    b.add(help, C::openAboutWindow);

    return b.actions;
}

} // namespace MainMenuBar
