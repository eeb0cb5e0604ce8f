#include "ui/windows/CommandRegistry.h"

#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/viewer/MediaViewActionHandler.h"
#include "ui/windows/MainWindowActionHandler.h"
#include "ui/windows/TabbedWindow.h"

#include <QMetaEnum>

// Titles are translated in the context "Commands" when they are shown.
#define TITLE(text) QT_TRANSLATE_NOOP("Commands", text)

namespace {
CommandRegistry *installedRegistry = nullptr;
}

CommandRegistry::CommandRegistry()
{
    const QMetaEnum ids = QMetaEnum::fromType<CommandId>();
    m_commands.resize(size_t(ids.keyCount()));
    declareApplicationCommands();
    declareFrameCommands();
    declareWindowCommands();
    declareViewerCommands();
    declarePaneCommands();
    // A command left out of the table, or declared twice, is a programming error.
    for (int i = 0; i < ids.keyCount(); ++i) {
        if (m_commands[size_t(i)].id() != CommandId(i) || m_commands[size_t(i)].identifier().isEmpty())
            qFatal("The command %s is not declared in the command registry.", ids.valueToKey(i));
    }
}

CommandRegistry &CommandRegistry::shared()
{
    if (installedRegistry)
        return *installedRegistry;
    static auto *own = new CommandRegistry;
    return *own;
}

void CommandRegistry::setShared(CommandRegistry *registry)
{
    installedRegistry = registry;
}

const Command *CommandRegistry::find(const QString &identifier) const
{
    bool ok = false;
    const int id = QMetaEnum::fromType<CommandId>().keyToValue(identifier.toLatin1().constData(), &ok);
    return ok ? &m_commands[size_t(id)] : nullptr;
}

Command &CommandRegistry::bindApplicationCommand(CommandId id)
{
    Command &command = m_commands[size_t(id)];
    if (command.owner() != CommandOwner::application || !command.isAvailable())
        qFatal("%s is not an available application command.", qPrintable(command.identifier()));
    return command;
}

Command &CommandRegistry::add(CommandId id, const char *title)
{
    Command &command = m_commands[size_t(id)];
    if (!command.identifier().isEmpty())
        qFatal("The command %s is declared twice.", qPrintable(command.identifier()));
    command = Command(id, title);
    return command;
}

void CommandRegistry::declareApplicationCommands()
{
    const CommandOwner app = CommandOwner::application;
    add(CommandId::newMainWindow, TITLE("New Window")).key(QKeySequence::New).ownedBy(app);
    add(CommandId::newMainWindowTab, TITLE("New Tab")).key(QKeySequence::AddTab).ownedBy(app);
    add(CommandId::openAboutWindow, TITLE("About Pixcove")).ownedBy(app);
    add(CommandId::goToSite, TITLE("Pixcove Website")).ownedBy(app);
    add(CommandId::goToReleaseNotes, TITLE("Release Notes")).ownedBy(app);
    add(CommandId::terminate, TITLE("Quit")).key(QKeySequence::Quit).ownedBy(app);
    // The space bar, as in file managers; a text field still takes its spaces.
    add(CommandId::openQuickview, TITLE("Quick View")).key(Qt::Key_Space).checkable().ownedBy(app);
    add(CommandId::startSlideshowWithOpenImageWindows, TITLE("Slideshow With Open Image Windows")).ownedBy(app);
    add(CommandId::previousImageWindow, TITLE("Previous Image Window"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_BracketLeft)
        .ownedBy(app);
    add(CommandId::nextImageWindow, TITLE("Next Image Window"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_BracketRight)
        .ownedBy(app);
    add(CommandId::openRenameWindow, TITLE("Batch Rename…")).key(Qt::CTRL | Qt::SHIFT | Qt::Key_R).ownedBy(app);
    add(CommandId::openBugReporterWindow, TITLE("Report a Bug…")).ownedBy(app);
    add(CommandId::openActivityWindow, TITLE("Activity")).ownedBy(app);
    // Undo and redo of file operations, whichever window is in front.
    add(CommandId::undo, TITLE("Undo")).key(QKeySequence::Undo).ownedBy(app);
    add(CommandId::redo, TITLE("Redo")).key(Qt::CTRL | Qt::SHIFT | Qt::Key_Z).ownedBy(app);
    add(CommandId::openSettings, TITLE("Settings…")).key(Qt::CTRL | Qt::Key_Comma).ownedBy(app);
    add(CommandId::openOpenWithEditor, TITLE("Edit Favorite Applications…")).ownedBy(app);
    add(CommandId::openMoveToEditor, TITLE("Edit Favorite Folders…")).ownedBy(app);
    add(CommandId::checkForUpdates, TITLE("Check for Updates…")).ownedBy(app);
}

void CommandRegistry::declareFrameCommands()
{
    using F = TabbedWindow;
    add(CommandId::performClose, TITLE("Close")).key(QKeySequence::Close).on(&F::performClose, &F::hasCurrentWindow);
    add(CommandId::toggleFullScreen, TITLE("Full Screen"))
        .key(QKeySequence::FullScreen)
        .checkable()
        .on(&F::toggleFullScreen, &F::toggleFullScreenState);
    add(CommandId::selectNextTab, TITLE("Next Tab"))
        .key(QKeySequence::NextChild)
        .on(&F::selectNextTab, &F::hasSeveralTabs);
    add(CommandId::selectPreviousTab, TITLE("Previous Tab"))
        .key(QKeySequence::PreviousChild)
        .on(&F::selectPreviousTab, &F::hasSeveralTabs);
    add(CommandId::openWithApplication, TITLE("Open With")).on(&F::openWithApplication, &F::hasSelection);
}

void CommandRegistry::declareWindowCommands()
{
    using W = MainWindowActionHandler;
    // Showing and hiding parts.
    add(CommandId::showHideSidebar, TITLE("Show Sidebar"))
        .key(Qt::CTRL | Qt::ALT | Qt::Key_B)
        .checkable()
        .on(&W::showHideSidebar, &W::showHideSidebarState);
    add(CommandId::showHideInspector, TITLE("Show Inspector"))
        .key(Qt::CTRL | Qt::Key_I)
        .checkable()
        .on(&W::showHideInspector, &W::showHideInspectorState);
    add(CommandId::showHideFavorites, TITLE("Show Favorites"))
        .checkable()
        .on(&W::showHideFavorites, &W::showHideFavoritesState);
    add(CommandId::toggleToolbarShown, TITLE("Show Toolbar"))
        .checkable()
        .on(&W::toggleToolbarShown, &W::toggleToolbarShownState);
    add(CommandId::runToolbarCustomizationPalette, TITLE("Customize Toolbar…")).on(&W::runToolbarCustomizationPalette);
    add(CommandId::changeBrowserLayout, TITLE("Layout"))
        .checkable()
        .on(&W::changeBrowserLayout, &W::changeBrowserLayoutState);
    add(CommandId::toggleThumbnailInfo, TITLE("Show Thumbnail Information"))
        .key(Qt::CTRL | Qt::Key_J)
        .checkable()
        .on(&W::toggleThumbnailInfo, &W::toggleThumbnailInfoState);
    add(CommandId::showThumbInfo, TITLE("Thumbnail Information"))
        .checkable()
        .on(&W::showThumbInfo, &W::showThumbInfoState);
    add(CommandId::inspectorDoubleClicked, TITLE("Open Inspector")).on(&W::inspectorDoubleClicked);

    // Navigation.
    add(CommandId::back, TITLE("Back")).key(QKeySequence::Back).on(&W::back, &W::canGoBack);
    add(CommandId::forward, TITLE("Forward")).key(QKeySequence::Forward).on(&W::forward, &W::canGoForward);
    add(CommandId::backForward, TITLE("Back or Forward")).on(&W::backForward, &W::canGoBackOrForward);
    add(CommandId::changeBaseUpOneLevel, TITLE("Enclosing Folder"))
        .key(Qt::ALT | Qt::Key_Up)
        .on(&W::changeBaseUpOneLevel, &W::rootHasParent);
    add(CommandId::changeSidebarSourceFromTree, TITLE("Make Selected Folder the Root"))
        .key(Qt::ALT | Qt::Key_Down)
        .on(&W::changeSidebarSourceFromTree, &W::hasFolderSelection);
    add(CommandId::changeSidebarSource, TITLE("Go to Folder…"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_G)
        .on(&W::changeSidebarSource);
    add(CommandId::expandSelected, TITLE("Expand Selected Folders"))
        .key(Qt::CTRL | Qt::Key_Right)
        .on(&W::expandSelected, &W::hasFolderSelection);
    add(CommandId::collapseSelected, TITLE("Collapse Selected Folders"))
        .key(Qt::CTRL | Qt::Key_Left)
        .on(&W::collapseSelected, &W::hasFolderSelection);

    // The thumbnails' settings.
    add(CommandId::changeThumbnailSize, TITLE("Thumbnail Size"))
        .key(QKeySequence::ZoomIn, 1)
        .key(QKeySequence::ZoomOut, -1)
        .on(&W::changeThumbnailSize, &W::changeThumbnailSizeState);
    add(CommandId::changeFolderDepth, TITLE("Subfolders"))
        .checkable()
        .on(&W::changeFolderDepth, &W::changeFolderDepthState);
    add(CommandId::changeThumbnailFileSort, TITLE("Sort By"))
        .checkable()
        .on(&W::changeThumbnailFileSort, &W::changeThumbnailFileSortState);
    add(CommandId::changeThumbnailReverseSort, TITLE("Reverse Order"))
        .checkable()
        .on(&W::changeThumbnailReverseSort, &W::changeThumbnailReverseSortState);
    add(CommandId::changeThumbnailFolderSort, TITLE("Folder Order"))
        .checkable()
        .on(&W::changeThumbnailFolderSort, &W::changeThumbnailFolderSortState);
    add(CommandId::changeThumbnailSubfolderGrouping, TITLE("Subfolder Grouping"))
        .checkable()
        .on(&W::changeThumbnailSubfolderGrouping, &W::changeThumbnailSubfolderGroupingState);
    add(CommandId::changeThumbnailFileFilter, TITLE("Show"))
        .checkable()
        .on(&W::changeThumbnailFileFilter, &W::changeThumbnailFileFilterState);
    add(CommandId::changeThumbnailHideFolders, TITLE("Hide Folders"))
        .checkable()
        .on(&W::changeThumbnailHideFolders, &W::changeThumbnailHideFoldersState);
    add(CommandId::filterThumbnails, TITLE("Find")).key(QKeySequence::Find).on(&W::filterThumbnails);
    add(CommandId::setThumbnailViewSearchCategory, TITLE("Search By"))
        .checkable()
        .on(&W::setThumbnailViewSearchCategory, &W::setThumbnailViewSearchCategoryState);
    add(CommandId::thumbnailViewSearch, TITLE("Search")).on(&W::thumbnailViewSearch);

    // The sidebar's settings.
    add(CommandId::changeSidebarFileSort, TITLE("Sidebar Sort By"))
        .checkable()
        .on(&W::changeSidebarFileSort, &W::changeSidebarFileSortState);
    add(CommandId::changeSidebarReverseSort, TITLE("Reverse Sidebar Order"))
        .checkable()
        .on(&W::changeSidebarReverseSort, &W::changeSidebarReverseSortState);
    add(CommandId::changeSidebarFileFilter, TITLE("Sidebar Shows"))
        .checkable()
        .on(&W::changeSidebarFileFilter, &W::changeSidebarFileFilterState);
    add(CommandId::changeSidebarInfo, TITLE("Sidebar Counts"))
        .checkable()
        .on(&W::changeSidebarInfo, &W::changeSidebarInfoState);
}

// The media viewer's: the main window's embedded viewer, the quick view, image windows and
// slideshows run them on their own viewer.
void CommandRegistry::declareViewerCommands()
{
    using V = MediaViewActionHandler;
    add(CommandId::scaleToFit, TITLE("Scale to Fit"))
        .key(Qt::CTRL | Qt::Key_0)
        .checkable()
        .on(&V::scaleToFit, &V::scaleToFitState);
    add(CommandId::fitToScreen, TITLE("Fit Window to Image")).on(&V::fitToScreen, &V::canFitToScreen);
    add(CommandId::zoomTo200Percent, TITLE("Zoom to 200%"))
        .key(Qt::CTRL | Qt::Key_2)
        .on(&V::zoomTo200Percent, &V::canChangeImage);
    add(CommandId::zoomTo100Percent, TITLE("Zoom to 100%"))
        .key(Qt::CTRL | Qt::Key_1)
        .on(&V::zoomTo100Percent, &V::canChangeImage);
    add(CommandId::zoomTo50Percent, TITLE("Zoom to 50%"))
        .key(Qt::CTRL | Qt::Key_5)
        .on(&V::zoomTo50Percent, &V::canChangeImage);
    // With Shift: Ctrl++ and Ctrl+- make the grid's thumbnails larger and smaller.
    add(CommandId::zoomIn, TITLE("Zoom In"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_Plus)
        .on(&V::zoomIn, &V::canChangeImage);
    add(CommandId::zoomOut, TITLE("Zoom Out"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_Minus)
        .on(&V::zoomOut, &V::canChangeImage);
    add(CommandId::rotate180, TITLE("Rotate 180°")).on(&V::rotate180, &V::canChangeImage);
    add(CommandId::rotateClockwise, TITLE("Rotate Clockwise"))
        .key(Qt::CTRL | Qt::Key_R)
        .on(&V::rotateClockwise, &V::canChangeImage);
    add(CommandId::rotateCounterclockwise, TITLE("Rotate Counterclockwise"))
        .key(Qt::CTRL | Qt::Key_L)
        .on(&V::rotateCounterclockwise, &V::canChangeImage);

    // Keyboard image scrolling: with Alt and Shift, so that the arrows stay the grid's.
    const auto scroll = Qt::ALT | Qt::SHIFT;
    add(CommandId::moveImageLeft, TITLE("Scroll Image Left"))
        .key(scroll | Qt::Key_Left)
        .on(&V::moveImageLeft, &V::canChangeImage);
    add(CommandId::moveImageRight, TITLE("Scroll Image Right"))
        .key(scroll | Qt::Key_Right)
        .on(&V::moveImageRight, &V::canChangeImage);
    add(CommandId::moveImageUp, TITLE("Scroll Image Up"))
        .key(scroll | Qt::Key_Up)
        .on(&V::moveImageUp, &V::canChangeImage);
    add(CommandId::moveImageDown, TITLE("Scroll Image Down"))
        .key(scroll | Qt::Key_Down)
        .on(&V::moveImageDown, &V::canChangeImage);
    add(CommandId::moveImageUpLeft, TITLE("Scroll Image Up and Left")).on(&V::moveImageUpLeft, &V::canChangeImage);
    add(CommandId::moveImageUpRight, TITLE("Scroll Image Up and Right")).on(&V::moveImageUpRight, &V::canChangeImage);
    add(CommandId::moveImageDownLeft, TITLE("Scroll Image Down and Left"))
        .on(&V::moveImageDownLeft, &V::canChangeImage);
    add(CommandId::moveImageDownRight, TITLE("Scroll Image Down and Right"))
        .on(&V::moveImageDownRight, &V::canChangeImage);
    add(CommandId::recenterImage, TITLE("Center Image"))
        .key(scroll | Qt::Key_Home)
        .on(&V::recenterImage, &V::canChangeImage);
    // Stepping through a viewer window's files; the main window steps through its grid instead.
    add(CommandId::nextImageInFolder, TITLE("Next Image in Folder"))
        .key(Qt::Key_Right)
        .key(Qt::Key_PageDown)
        .on(&V::nextImageInFolder, &V::canStepForward);
    add(CommandId::previousImageInFolder, TITLE("Previous Image in Folder"))
        .key(Qt::Key_Left)
        .key(Qt::Key_PageUp)
        .on(&V::previousImageInFolder, &V::canStepBackward);

    // The video player.
    add(CommandId::videoPlayPause, TITLE("Play or Pause Video")).key(Qt::Key_K).on(&V::videoPlayPause, &V::hasVideo);
    add(CommandId::videoFastBackward, TITLE("Fast Backward"))
        .key(Qt::SHIFT | Qt::Key_J)
        .on(&V::videoFastBackward, &V::hasVideo);
    add(CommandId::videoFastForward, TITLE("Fast Forward"))
        .key(Qt::SHIFT | Qt::Key_L)
        .on(&V::videoFastForward, &V::hasVideo);
    add(CommandId::videoSlow, TITLE("Slow Down")).key(Qt::SHIFT | Qt::Key_K).on(&V::videoSlow, &V::hasVideo);
    add(CommandId::videoJumpBackward15, TITLE("Jump Back 15 Seconds"))
        .key(Qt::Key_J)
        .on(&V::videoJumpBackward15, &V::hasVideo);
    add(CommandId::videoJumpForward15, TITLE("Jump Forward 15 Seconds"))
        .key(Qt::Key_L)
        .on(&V::videoJumpForward15, &V::hasVideo);
    add(CommandId::videoNextFrame, TITLE("Next Frame")).key(Qt::Key_Period).on(&V::videoNextFrame, &V::hasVideo);
    add(CommandId::videoPreviousFrame, TITLE("Previous Frame"))
        .key(Qt::Key_Comma)
        .on(&V::videoPreviousFrame, &V::hasVideo);
    add(CommandId::videoMute, TITLE("Mute")).key(Qt::Key_M).on(&V::videoMute, &V::hasVideo);
    add(CommandId::videoVolumeDown, TITLE("Volume Down")).key(Qt::Key_9).on(&V::videoVolumeDown, &V::hasVideo);
    add(CommandId::videoVolumeUp, TITLE("Volume Up")).key(Qt::Key_0).on(&V::videoVolumeUp, &V::hasVideo);
}

void CommandRegistry::declarePaneCommands()
{
    using P = ThumbnailsActionHandler;
    add(CommandId::performOpen, TITLE("Open")).key(QKeySequence::Open).on(&P::performOpen, &P::hasSelection);
    add(CommandId::openInApp, TITLE("Open in Default App"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_O)
        .on(&P::openInApp, &P::hasSelection);
    add(CommandId::openWithMenuAction, TITLE("Open With")).on(&P::openWithMenuAction, &P::hasSelection);
    add(CommandId::openInCreator, TITLE("Open in Creator App")).on(&P::openInCreator, &P::hasSelectionOnDisk);
    add(CommandId::selectAll, TITLE("Select All")).key(QKeySequence::SelectAll).on(&P::selectAll, &P::hasFiles);
    add(CommandId::deselectAll, TITLE("Deselect All"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_A)
        .on(&P::deselectAll, &P::hasSelection);
    add(CommandId::renameFile, TITLE("Edit Filename")).key(Qt::Key_F2).on(&P::renameFile, &P::canRename);
    add(CommandId::makeAlias, TITLE("Make Alias")).on(&P::makeAlias, &P::canMakeAlias);
    add(CommandId::makeSymlink, TITLE("Make Symbolic Link")).on(&P::makeSymlink, &P::canMakeAlias);
    add(CommandId::duplicate, TITLE("Duplicate")).key(Qt::CTRL | Qt::Key_D).on(&P::duplicate, &P::canDuplicate);
    add(CommandId::moveToTrash, TITLE("Move to Trash")).key(Qt::Key_Delete).on(&P::moveToTrash, &P::canMoveToTrash);
    add(CommandId::deleteRejected, TITLE("Delete Rejected…")).on(&P::deleteRejected, &P::canDeleteRejected);
    add(CommandId::revealInFileManager, TITLE("Show in File Manager"))
        .key(Qt::CTRL | Qt::ALT | Qt::Key_R)
        .on(&P::revealInFileManager, &P::hasSelection);
    add(CommandId::newFolder, TITLE("New Folder"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_N)
        .on(&P::newFolder, &P::canMakeFolder);
    add(CommandId::flagItem, TITLE("Flag")).key(Qt::Key_P).on(&P::flagItem, &P::canChangeFlags);
    add(CommandId::rejectItem, TITLE("Reject")).key(Qt::Key_X).on(&P::rejectItem, &P::canChangeFlags);
    add(CommandId::clearItemFlag, TITLE("Clear Flag")).key(Qt::Key_U).on(&P::clearItemFlag, &P::canChangeFlags);
    add(CommandId::selectFlagged, TITLE("Select Flagged")).on(&P::selectFlagged, &P::canSelectByFlag);
    add(CommandId::selectRejected, TITLE("Select Rejected")).on(&P::selectRejected, &P::canSelectByFlag);
    add(CommandId::nextImageInBrowser, TITLE("Next Image"))
        .key(Qt::CTRL | Qt::Key_BracketRight)
        .on(&P::nextImageInBrowser, &P::hasFiles);
    add(CommandId::previousImageInBrowser, TITLE("Previous Image"))
        .key(Qt::CTRL | Qt::Key_BracketLeft)
        .on(&P::previousImageInBrowser, &P::hasFiles);
    add(CommandId::scrollSelectionToVisible, TITLE("Show Selection"))
        .key(Qt::CTRL | Qt::SHIFT | Qt::Key_L)
        .on(&P::scrollSelectionToVisible, &P::hasSelection);
    add(CommandId::moveToMenuAction, TITLE("Move To")).on(&P::moveToMenuAction, &P::canTransferTo);
    add(CommandId::copyToMenuAction, TITLE("Copy To")).on(&P::copyToMenuAction, &P::canTransferTo);
    add(CommandId::aliasToMenuAction, TITLE("Alias To")).on(&P::aliasToMenuAction, &P::canTransferTo);
    add(CommandId::revealOriginal, TITLE("Reveal Original")).on(&P::revealOriginal, &P::canRevealOriginal);
    add(CommandId::ejectSelected, TITLE("Eject")).on(&P::ejectSelected, &P::canEject);
    add(CommandId::changeFinderLabel, TITLE("Label:")).on(&P::changeFinderLabel, &P::hasSelectionOnDisk);
    add(CommandId::startSlideshow, TITLE("Slideshow With Selected")).on(&P::startSlideshow, &P::canStartSlideshow);
    add(CommandId::startSlideshowWithSelected, TITLE("Slideshow With Selected"))
        .key(Qt::CTRL | Qt::ALT | Qt::Key_S)
        .on(&P::startSlideshowWithSelected, &P::hasSelection);
    add(CommandId::startSlideshowInFolder, TITLE("Slideshow With Contents"))
        .on(&P::startSlideshowInFolder, &P::canStartSlideshowInFolder);
    add(CommandId::rotateClockwisePermanent, TITLE("Rotate Clockwise"))
        .on(&P::rotateClockwisePermanent, &P::canRotatePermanent);
    add(CommandId::rotateCounterclockwisePermanent, TITLE("Rotate Counterclockwise"))
        .on(&P::rotateCounterclockwisePermanent, &P::canRotatePermanent);
}
