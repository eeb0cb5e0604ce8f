#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"
#include "core/windows/NavigationHistory.h"
#include "ui/browser/FileDropValidator.h"

#include <QList>
#include <QWidget>

class AppSettings;
class FavoritesView;
class FolderTreeModel;
class QItemSelection;
class QSplitter;
class QTreeView;

// The sidebar of a main window: the folder tree of the window's root folder above the favourites
// list. The folders selected in the tree are the window's sources (the root itself when nothing
// is selected). It keeps the window settings' root, expanded folders and selection in step with
// the tree, and it can show a place of the navigation history again: root, expanded folders and
// selection, listing the folders on the way to a selected one that is not listed yet.
class SidebarViewController : public QWidget
{
    Q_OBJECT
public:
    SidebarViewController(WindowSettingsPtr settings, AppSettings *appSettings, QWidget *parent = nullptr);
    ~SidebarViewController() override;

    QTreeView *treeView() const { return m_tree; }
    FolderTreeModel *model() const { return m_model; }
    FavoritesView *favoritesView() const { return m_favorites; }

    // The folders the window shows: the selected folders, else the root.
    QList<PXFilePtr> sources() const;
    QList<PXFilePtr> selectedFiles() const;
    NavigationHistory::Item currentPlace() const;
    // Shows `place`; one placeChanged follows once it is shown (what could not be found is left out).
    void showPlace(const NavigationHistory::Item &place);
    // Shows `folder` selected: within the current root when it lies there, else as the new root.
    void revealFolder(const PXFilePtr &folder);
    void setRootFolder(const PXFilePtr &root);
    // Whether a restore is still waiting for folders to be listed.
    bool isRestoring() const { return m_restoring; }

    void expandSelected();
    void collapseSelected();
    void setFavoritesShown(bool shown);
    void writeLayoutToSettings();
    // Files dropped onto the tree's folder under `position` (viewport coordinates): what the drop
    // does, and doing it (as an activity). The modifiers decide as on the grid.
    FileDropOperation dropOperation(const QList<QUrl> &urls, const QPoint &position, Qt::KeyboardModifiers modifiers);
    bool acceptDrop(const QList<QUrl> &urls, const QPoint &position, Qt::KeyboardModifiers modifiers);

Q_SIGNALS:
    void sourcesChanged(const QList<PXFilePtr> &sources);
    // The root or the selection changed: a new place for the history.
    void placeChanged();
    void favoriteApplicationActivated(const PXFilePtr &application);
    // A folder the window shows has gone from the disk.
    void folderVanished(const PXFilePtr &folder);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void beginRestore(const QList<PXFilePtr> &expanded, const QList<PXFilePtr> &selection);
    void continueRestore();
    void finishRestore();
    void treeSelectionChanged();
    void expansionChanged();
    bool selectionLiesUnder(const PXFilePtr &file, const PXFilePtr &folder) const;

    WindowSettingsPtr m_settings;
    AppSettings *m_appSettings;
    QSplitter *m_splitter;
    QTreeView *m_tree;
    FolderTreeModel *m_model;
    FavoritesView *m_favorites;

    FileDropValidator m_dropValidator;
    bool m_restoring = false;
    QList<PXFilePtr> m_pendingExpanded;
    QList<PXFilePtr> m_pendingSelection;
    QList<PXFilePtr> m_restoredSelection;
    QList<PXFilePtr> m_lastSources;
};
