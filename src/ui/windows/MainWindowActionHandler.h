#pragma once

#include "core/model/FileSortTypes.h"
#include "core/settings/SettingsValueSets.h"
#include "ui/common/Command.h"

#include <QObject>

class MainWindowHost;
class MainWindowViewController;
class QLineEdit;
class QToolButton;
class WindowSettings;

// The commands of one main window's content: showing and hiding its parts, navigating, and the
// thumbnails' and the sidebar's settings, each of which changes the matching window setting.
// Each command is a member function with a validator beside it (the command registry binds
// them); the window runs them for its menu bar and toolbar.
class MainWindowActionHandler : public QObject
{
    Q_OBJECT
public:
    static constexpr CommandOwner commandOwner = CommandOwner::window;

    // `host`: may be null (no folder-depth warning).
    MainWindowActionHandler(MainWindowViewController *window, MainWindowHost *host);

    // The toolbar's search field and category chooser, which the search commands drive.
    void setSearchWidgets(QLineEdit *field, QToolButton *categoryButton);

    // Showing and hiding parts.
    void showHideSidebar();
    CommandState showHideSidebarState() const;
    void showHideInspector();
    CommandState showHideInspectorState() const;
    void showHideFavorites();
    CommandState showHideFavoritesState() const;
    void toggleToolbarShown();
    CommandState toggleToolbarShownState() const;
    // Opens the toolbar's customization sheet.
    void runToolbarCustomizationPalette();
    void changeBrowserLayout(BrowserLayout layout);
    CommandState changeBrowserLayoutState(BrowserLayout layout) const;
    void toggleThumbnailInfo();
    CommandState toggleThumbnailInfoState() const;
    void showThumbInfo(ThumbnailInfoOption line);
    CommandState showThumbInfoState(ThumbnailInfoOption line) const;
    void inspectorDoubleClicked();

    // Navigation.
    void back();
    bool canGoBack() const;
    void forward();
    bool canGoForward() const;
    // `step` < 0: back, else forward.
    void backForward(int step);
    bool canGoBackOrForward(int step) const;
    // Asks for a folder and makes it the root.
    void changeSidebarSource();
    void changeSidebarSourceFromTree();
    void changeBaseUpOneLevel();
    bool rootHasParent() const;
    void expandSelected();
    void collapseSelected();
    bool hasFolderSelection() const;

    // The thumbnails' settings. `step` is +1 (larger) or -1 (smaller).
    void changeThumbnailSize(int step);
    bool changeThumbnailSizeState(int step) const;
    // Warns (through the host) when the depth grows.
    void changeFolderDepth(int depth);
    CommandState changeFolderDepthState(int depth) const;
    void changeThumbnailFileSort(FileSortType sort);
    CommandState changeThumbnailFileSortState(FileSortType sort) const;
    void changeThumbnailReverseSort();
    CommandState changeThumbnailReverseSortState() const;
    void changeThumbnailFolderSort(FolderSortType sort);
    CommandState changeThumbnailFolderSortState(FolderSortType sort) const;
    void changeThumbnailSubfolderGrouping(SubfolderInclusionStyle style);
    CommandState changeThumbnailSubfolderGroupingState(SubfolderInclusionStyle style) const;
    void changeThumbnailFileFilter(FileFilterType filter);
    CommandState changeThumbnailFileFilterState(FileFilterType filter) const;
    void changeThumbnailHideFolders();
    CommandState changeThumbnailHideFoldersState() const;
    // Puts the focus in the search field.
    void filterThumbnails();
    void setThumbnailViewSearchCategory(ThumbnailsSearchType type);
    CommandState setThumbnailViewSearchCategoryState(ThumbnailsSearchType type) const;
    void thumbnailViewSearch(const QString &text);

    // The sidebar's settings.
    void changeSidebarFileSort(FileSortType sort);
    CommandState changeSidebarFileSortState(FileSortType sort) const;
    void changeSidebarReverseSort();
    CommandState changeSidebarReverseSortState() const;
    void changeSidebarFileFilter(FileFilterType filter);
    CommandState changeSidebarFileFilterState(FileFilterType filter) const;
    void changeSidebarInfo(SidebarInfoOptions info);
    CommandState changeSidebarInfoState(SidebarInfoOptions info) const;

    // The thumbnail edge in points: 48 still shows a recognisable picture, 512 is above the
    // 400-point thumbnails the generator makes, so the largest setting never upscales much.
    static constexpr int minimumThumbnailSize = 48;
    static constexpr int maximumThumbnailSize = 512;
    static constexpr int thumbnailSizeStep = 16;

private:
    WindowSettings &settings() const;

    MainWindowViewController *m_window;
    MainWindowHost *m_host;
    QLineEdit *m_searchField = nullptr;
    QToolButton *m_searchCategoryButton = nullptr;
    ThumbnailsSearchType m_searchType = ThumbnailsSearchType::filename;
};
