#include "ui/windows/MainWindowActionHandler.h"

#include "core/settings/WindowSettings.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/sidebar/FolderTreeModel.h"
#include "ui/sidebar/SidebarViewController.h"
#include "ui/windows/MainToolbarBuilder.h"
#include "ui/windows/MainWindowHost.h"
#include "ui/windows/MainWindowViewController.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QToolButton>

MainWindowActionHandler::MainWindowActionHandler(MainWindowViewController *window, MainWindowHost *host)
    : QObject(window)
    , m_window(window)
    , m_host(host)
{ }

void MainWindowActionHandler::setSearchWidgets(QLineEdit *field, QToolButton *categoryButton)
{
    m_searchField = field;
    m_searchCategoryButton = categoryButton;
}

WindowSettings &MainWindowActionHandler::settings() const
{
    return *m_window->windowSettings();
}

void MainWindowActionHandler::showHideSidebar()
{
    settings().setSidebarCollapsed(!settings().sidebarCollapsed());
}

CommandState MainWindowActionHandler::showHideSidebarState() const
{
    return {true, !settings().sidebarCollapsed()};
}

void MainWindowActionHandler::showHideInspector()
{
    settings().setInspectorCollapsed(!settings().inspectorCollapsed());
}

CommandState MainWindowActionHandler::showHideInspectorState() const
{
    return {true, !settings().inspectorCollapsed()};
}

void MainWindowActionHandler::showHideFavorites()
{
    settings().setFavoritesCollapsed(!settings().favoritesCollapsed());
}

CommandState MainWindowActionHandler::showHideFavoritesState() const
{
    return {!settings().sidebarCollapsed(), !settings().favoritesCollapsed()};
}

void MainWindowActionHandler::toggleToolbarShown()
{
    MainToolbarBuilder::toggleShown(m_window);
}

CommandState MainWindowActionHandler::toggleToolbarShownState() const
{
    return {true, MainToolbarBuilder::isShown(m_window)};
}

void MainWindowActionHandler::runToolbarCustomizationPalette()
{
    MainToolbarBuilder::runCustomizationPalette(m_window);
}

void MainWindowActionHandler::changeBrowserLayout(BrowserLayout layout)
{
    settings().setBrowserLayout(layout);
}

CommandState MainWindowActionHandler::changeBrowserLayoutState(BrowserLayout layout) const
{
    return {true, settings().browserLayout() == layout};
}

void MainWindowActionHandler::toggleThumbnailInfo()
{
    settings().setThumbnailShowInformation(!settings().thumbnailShowInformation());
}

CommandState MainWindowActionHandler::toggleThumbnailInfoState() const
{
    return {true, settings().thumbnailShowInformation()};
}

void MainWindowActionHandler::showThumbInfo(ThumbnailInfoOption line)
{
    settings().setThumbnailInformation(settings().thumbnailInformation() ^ line);
}

CommandState MainWindowActionHandler::showThumbInfoState(ThumbnailInfoOption line) const
{
    return {settings().thumbnailShowInformation(), settings().thumbnailInformation().testFlag(line)};
}

void MainWindowActionHandler::inspectorDoubleClicked()
{
    settings().setInspectorCollapsed(false);
}

void MainWindowActionHandler::back()
{
    m_window->goBackOrForward(-1);
}

bool MainWindowActionHandler::canGoBack() const
{
    return m_window->navigationHistory().canGoBack();
}

void MainWindowActionHandler::forward()
{
    m_window->goBackOrForward(1);
}

bool MainWindowActionHandler::canGoForward() const
{
    return m_window->navigationHistory().canGoForward();
}

void MainWindowActionHandler::backForward(int step)
{
    m_window->goBackOrForward(step);
}

bool MainWindowActionHandler::canGoBackOrForward(int step) const
{
    return step < 0 ? canGoBack() : canGoForward();
}

void MainWindowActionHandler::changeSidebarSource()
{
    SidebarViewController *sidebar = m_window->sidebarViewController();
    const PXFilePtr root = sidebar->model()->rootFolder();
    auto *dialog = new QFileDialog(m_window, tr("Choose a Folder"), root ? root->path() : QString());
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, sidebar, [sidebar](const QString &path) {
        const PXFilePtr folder = PXFile::fileForPath(path);
        sidebar->showPlace({{folder}, {}, folder});
    });
    dialog->open();
}

void MainWindowActionHandler::changeSidebarSourceFromTree()
{
    SidebarViewController *sidebar = m_window->sidebarViewController();
    const PXFilePtr folder = sidebar->sources().value(0);
    sidebar->showPlace({{folder}, {}, folder});
}

void MainWindowActionHandler::changeBaseUpOneLevel()
{
    SidebarViewController *sidebar = m_window->sidebarViewController();
    const PXFilePtr root = sidebar->model()->rootFolder();
    const PXFilePtr parent = PXFile::from(root->parentItem());
    sidebar->showPlace({{root}, {parent}, parent});
}

bool MainWindowActionHandler::rootHasParent() const
{
    const PXFilePtr root = m_window->sidebarViewController()->model()->rootFolder();
    return root && root->parentItem() != nullptr;
}

void MainWindowActionHandler::expandSelected()
{
    m_window->sidebarViewController()->expandSelected();
}

void MainWindowActionHandler::collapseSelected()
{
    m_window->sidebarViewController()->collapseSelected();
}

bool MainWindowActionHandler::hasFolderSelection() const
{
    return !m_window->sidebarViewController()->selectedFiles().isEmpty();
}

void MainWindowActionHandler::changeThumbnailSize(int step)
{
    settings().setThumbnailSize(
        qBound(minimumThumbnailSize, settings().thumbnailSize() + step * thumbnailSizeStep * 2, maximumThumbnailSize));
}

bool MainWindowActionHandler::changeThumbnailSizeState(int step) const
{
    return step > 0 ? settings().thumbnailSize() < maximumThumbnailSize
                    : settings().thumbnailSize() > minimumThumbnailSize;
}

void MainWindowActionHandler::changeFolderDepth(int depth)
{
    const int previous = settings().thumbnailsFolderSearchDepth();
    if (depth == previous)
        return;
    settings().setThumbnailsFolderSearchDepth(depth);
    if (depth > previous && m_host)
        m_host->folderDepthIncreased(m_window->window());
}

CommandState MainWindowActionHandler::changeFolderDepthState(int depth) const
{
    return {true, settings().thumbnailsFolderSearchDepth() == depth};
}

void MainWindowActionHandler::changeThumbnailFileSort(FileSortType sort)
{
    settings().setThumbnailsFileSort(sort);
}

CommandState MainWindowActionHandler::changeThumbnailFileSortState(FileSortType sort) const
{
    return {true, settings().thumbnailsFileSort() == sort};
}

void MainWindowActionHandler::changeThumbnailReverseSort()
{
    settings().setThumbnailsReverseSort(!settings().thumbnailsReverseSort());
}

CommandState MainWindowActionHandler::changeThumbnailReverseSortState() const
{
    return {true, settings().thumbnailsReverseSort()};
}

void MainWindowActionHandler::changeThumbnailFolderSort(FolderSortType sort)
{
    settings().setThumbnailsFolderSort(sort);
}

CommandState MainWindowActionHandler::changeThumbnailFolderSortState(FolderSortType sort) const
{
    return {true, settings().thumbnailsFolderSort() == sort};
}

void MainWindowActionHandler::changeThumbnailSubfolderGrouping(SubfolderInclusionStyle style)
{
    settings().setThumbnailsSubfolderInclusionStyle(style);
}

CommandState MainWindowActionHandler::changeThumbnailSubfolderGroupingState(SubfolderInclusionStyle style) const
{
    return {settings().thumbnailsFolderSearchDepth() > 0, settings().thumbnailsSubfolderInclusionStyle() == style};
}

void MainWindowActionHandler::changeThumbnailFileFilter(FileFilterType filter)
{
    settings().setThumbnailsFileFilter(filter);
}

CommandState MainWindowActionHandler::changeThumbnailFileFilterState(FileFilterType filter) const
{
    return {true, settings().thumbnailsFileFilter() == filter};
}

void MainWindowActionHandler::changeThumbnailHideFolders()
{
    settings().setThumbnailsHideFolders(!settings().thumbnailsHideFolders());
}

CommandState MainWindowActionHandler::changeThumbnailHideFoldersState() const
{
    return {true, settings().thumbnailsHideFolders()};
}

void MainWindowActionHandler::filterThumbnails()
{
    if (!m_searchField)
        return;
    m_searchField->setFocus(Qt::ShortcutFocusReason);
    m_searchField->selectAll();
}

void MainWindowActionHandler::setThumbnailViewSearchCategory(ThumbnailsSearchType type)
{
    m_searchType = type;
    if (m_searchCategoryButton)
        m_searchCategoryButton->setText(thumbnailsSearchTypeTitle(type));
    m_window->thumbnailsViewController()->setThumbnailViewSearchCategory(type);
}

CommandState MainWindowActionHandler::setThumbnailViewSearchCategoryState(ThumbnailsSearchType type) const
{
    return {true, m_searchType == type};
}

void MainWindowActionHandler::thumbnailViewSearch(const QString &text)
{
    if (m_searchField && m_searchField->text() != text)
        m_searchField->setText(text); // comes back here through textChanged
    else
        m_window->thumbnailsViewController()->thumbnailViewSearch(text);
}

void MainWindowActionHandler::changeSidebarFileSort(FileSortType sort)
{
    settings().setSidebarSortType(sort);
}

CommandState MainWindowActionHandler::changeSidebarFileSortState(FileSortType sort) const
{
    return {true, settings().sidebarSortType() == sort};
}

void MainWindowActionHandler::changeSidebarReverseSort()
{
    settings().setSidebarReverseSort(!settings().sidebarReverseSort());
}

CommandState MainWindowActionHandler::changeSidebarReverseSortState() const
{
    return {true, settings().sidebarReverseSort()};
}

void MainWindowActionHandler::changeSidebarFileFilter(FileFilterType filter)
{
    settings().setSidebarFileFilter(filter);
}

CommandState MainWindowActionHandler::changeSidebarFileFilterState(FileFilterType filter) const
{
    return {true, settings().sidebarFileFilter() == filter};
}

void MainWindowActionHandler::changeSidebarInfo(SidebarInfoOptions info)
{
    settings().setSidebarInfo(info);
}

CommandState MainWindowActionHandler::changeSidebarInfoState(SidebarInfoOptions info) const
{
    return {true, settings().sidebarInfo() == info};
}
