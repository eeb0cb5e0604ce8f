#pragma once

#include "core/model/FileFlag.h"
#include "core/model/FileModel.h"
#include "core/model/FileSortTypes.h"
#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"
#include "core/thumbnails/ThumbnailItem.h"
#include "ui/browser/FileDropValidator.h"
#include "ui/browser/ThumbnailGridView.h"
#include "ui/browser/ThumbnailsSavedState.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class FileCollectionModel;
class QLabel;
class QMenu;
class QTimer;
class RenamedFileFollower;
class ThumbnailGridDataSource;
class ThumbnailVisibilityUpdater;
class ThumbnailsActionHandler;

// The thumbnail pane of a main window: the grid of the files of the window's sources, their
// selection, drops onto the grid and the status line. Its commands are its action handler's.
//
// It owns the folder collection of its sources and one ThumbnailItem per file shown (made when a
// file first appears, dropped when it leaves the collection). The visible range of the grid,
// settled once per frame while scrolling, goes to a ThumbnailVisibilityUpdater, which decides
// which items ask for thumbnails; the grid draws through a ThumbnailGridDataSource. Leaving a set
// of sources remembers its selection and scroll position, which come back when the same sources
// are shown again in this pane.
class ThumbnailsViewController : public QWidget, public ThumbnailItemDelegate
{
    Q_OBJECT

public:
    explicit ThumbnailsViewController(WindowSettingsPtr settings, QWidget *parent = nullptr);
    ~ThumbnailsViewController() override;

    void setSources(const QList<PXFilePtr> &folders);
    const QList<PXFilePtr> &sources() const { return m_currentSources; }

    ThumbnailsActionHandler *actionHandler() const { return m_actionHandler; }
    QList<PXFilePtr> selectedFiles() const { return m_selectedFiles; }
    QString statusText() const;
    // Files in display order.
    QList<PXFilePtr> files() const;
    int fileCount() const { return int(m_allItemsFlat.size()); }
    // The grid position of `file`, -1 when it is not shown.
    int indexOfFile(const PXFilePtr &file) const { return m_indexByFile.value(file.get(), -1); }
    bool isLoading() const;

    // The window plugs its flag manager in; without it the flag commands are disabled.
    void setFlagLookup(std::function<FileFlag(const PXFilePtr &)> lookup);
    bool tracksFlags() const { return bool(m_flagLookup); }
    // The mark of `file` (none without a flag manager).
    FileFlag flagOf(const PXFilePtr &file) const { return m_flagLookup ? m_flagLookup(file) : FileFlag::none; }
    // Selects those of `files` that are shown and, with `scroll`, brings them into view.
    void selectFiles(const QList<PXFilePtr> &files, bool scroll = true);
    // Selects `file` and opens its name for editing, now or as soon as it is listed (a new folder).
    void editNameWhenShown(const PXFilePtr &file);
    // Selects `file` and brings it into view, now or as soon as it is listed (a file handed to
    // a new window); forgotten when the pane moves to sources that do not hold its folder.
    void selectWhenShown(const PXFilePtr &file) { selectWhenShown(QList<PXFilePtr>{file}); }
    // The same for several files (the copies an operation made), selected together once the last
    // of them is listed.
    void selectWhenShown(const QList<PXFilePtr> &files);

    ThumbnailGridView *gridView() const { return m_grid; }
    ThumbnailItemPtr itemAt(int index) const { return m_allItemsFlat.value(index); }
    FileCollectionModel *collection() const { return m_collection; }
    // The folder shown in `section` when the grid is sectioned by folder.
    FileModelPtr sectionFolder(int section) const { return m_sectionFolders.value(section); }
    // The drop decision for `urls` onto item `index` (-1: the background of `section`).
    FileDropOperation dropOperation(const QList<QUrl> &urls, int index, int section, Qt::KeyboardModifiers modifiers);
    // Drops `urls` there; false when nothing can be done with them.
    bool acceptDrop(const QList<QUrl> &urls, int index, int section, Qt::KeyboardModifiers modifiers);

public Q_SLOTS:
    void thumbnailViewSearch(const QString &text);
    void setThumbnailViewSearchCategory(ThumbnailsSearchType type);

Q_SIGNALS:
    void selectionChanged(const QList<PXFilePtr> &files);
    void statusTextChanged(const QString &text);
    void openRequested(const QList<PXFilePtr> &files);
    void sourceVanished(const PXFilePtr &folder, const QString &reason);
    void flagChangeRequested(const QList<PXFilePtr> &files, FileFlag flag);
    // A user-facing failure (a rename refused, a drop that could not be done).
    void errorOccurred(const QString &title, const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    // ThumbnailItemDelegate
    void thumbnailItemThumbnailChanged(ThumbnailItem &item) override;

private:
    void publish();
    void updateItemSize();
    void updateVisibility();
    void gridSelectionChanged();
    void updateStatus();
    void saveState();
    void restoreStateIfSettled();
    // Tells the window of sources deleted or unmounted while shown.
    void checkSourcesExist();
    void selectRenamedFiles(const QList<PXFilePtr> &renamed);
    ThumbnailItemPtr itemForNode(const FileModelPtr &node);
    PXFilePtr fileAt(int index) const;
    PXFilePtr dropDestination(int index, int section) const;
    void commitNameEdit(int index, const QString &text);

    WindowSettingsPtr m_windowSettings;
    FileCollectionModel *m_collection;
    ThumbnailVisibilityUpdater *m_visibility;
    std::unique_ptr<ThumbnailGridDataSource> m_dataSource;
    ThumbnailGridView *m_grid;
    QLabel *m_loadingLabel;

    QList<PXFilePtr> m_currentSources;
    QHash<const PXFile *, ThumbnailItemPtr> m_allItemsByFile;
    QList<ThumbnailItemPtr> m_allItemsFlat;
    QHash<const PXFile *, int> m_indexByFile;
    QHash<const PXFile *, int> m_indexByFileBefore; // during a publication
    PXFilePtr m_autoselectedFile; // selected because the selection before it left
    QList<FileModelPtr> m_sectionFolders;
    QList<PXFilePtr> m_selectedFiles;
    QHash<QString, ThumbnailsSavedState> m_savedStates;
    bool m_needsRestore = false;
    PXFilePtr m_newFile;
    QList<PXFilePtr> m_filesToSelect;
    ThumbnailsSearchType m_searchType = ThumbnailsSearchType::filename;
    QString m_searchString;
    FileDropValidator m_dropValidator;
    std::function<FileFlag(const PXFilePtr &)> m_flagLookup;

    QTimer *m_selectionChangeTimer;
    RenamedFileFollower *m_renameFollower; // keeps the selection across renames from outside
    ThumbnailsActionHandler *m_actionHandler;
    QString m_statusText;
    QString m_failureText; // why a source could not be listed
};
