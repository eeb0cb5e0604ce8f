#pragma once

#include "core/model/FileModel.h"
#include "core/model/FileSortTypes.h"
#include "core/model/FileSorting.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QThreadPool>

#include <any>
#include <functional>
#include <memory>
#include <optional>

class QTimer;
class ZQStandardFile;
struct ZQFileEvent;
using ZQFilePtr = std::shared_ptr<ZQStandardFile>;

// The files of one or more folders (and their subfolders to a depth) as a main window's grid
// shows them: listed through folder subscriptions, filtered, sorted, and published on the GUI
// thread in three shapes (flat, grouped by folder, tree) with a count.
//
// Phases: setting the roots or the depth lists the folders anew; while any folder is loading,
// changes only arm a 0.2 s loading check; once loading ends the representations are rebuilt
// on the collection's own utility queue. File events update records in place and arm a 0.05 s
// re-sort, so a burst of changes costs one re-sort. A change during a rebuild makes one more
// rebuild follow, so what is published is never older than the last change.
//
// While the folders load, the files found so far are counted on the utility queue as their
// batches arrive, so the status line can count up without a sort of everything found. A root
// stays loading until its subfolders are listed too; a load that lasts past 0.3 s is long
// loading, the only kind worth showing a "loading" notice for.
class FileCollectionModel : public QObject, private FileModelDelegate
{
    Q_OBJECT

public:
    // A folder and its shown files, in the order of the grouped representation.
    struct FolderGroup
    {
        FileModelPtr folder;
        QList<FileModelPtr> files;
    };

    explicit FileCollectionModel(QObject *parent = nullptr);
    ~FileCollectionModel() override;

    // Published state (GUI thread).
    bool isLoading() const { return m_isLoading; }
    const QList<FileModelPtr> &flatRepresentation() const { return m_flatRepresentation; }
    const QList<FileModelPtr> &byFolderFlatRepresentation() const { return m_byFolderFlatRepresentation; }
    const QList<FolderGroup> &folderGroups() const { return m_folderGroups; }
    const QList<FileModelPtr> &treeRepresentation() const { return m_treeRepresentation; }
    int itemCount() const { return m_itemCount; }
    // Files found so far by the current listing that the filter lets through, ahead of their
    // publication; 0 again whenever the folders are listed anew.
    int foundCount() const { return m_foundCount; }
    // Whether some root has been loading (itself or its subfolders) for 0.3 s or more.
    bool isLongLoading() const { return m_isLongLoading; }
    // Whether the representations reflect the current roots and settings (loaded and rebuilt).
    bool isSettled() const;

    // Callbacks (GUI thread).
    std::function<void(const FileModelPtr &)> fileUpdateCallback;
    std::function<void(const FileModelPtr &, const PXFilePtr &previous)> fileSwapCallback;
    std::function<std::any(const PXFilePtr &)> representedItemGenerator;

    // Configuration. Roots and depth re-list the folders; the others only rebuild.
    void setCollectionRoots(const QList<PXFilePtr> &roots);
    const QList<PXFilePtr> &collectionRoots() const { return m_collectionRoots; }
    void setFolderDepth(int depth);
    int folderDepth() const { return m_folderDepth; }
    void setIncludeTopLevelItems(bool include);
    bool includeTopLevelItems() const { return m_includeTopLevelItems; }
    void setExcludeEmptiesFromFolderRepresentation(bool exclude);
    bool excludeEmptiesFromFolderRepresentation() const { return m_excludeEmptiesFromFolderRepresentation; }
    void setFileSort(FileSortType sort);
    FileSortType fileSort() const { return m_fileSort; }
    void setFolderSort(FolderSortType sort);
    FolderSortType folderSort() const { return m_folderSort; }
    void setReverseSort(bool reverse);
    bool reverseSort() const { return m_reverseSort; }
    void setFileFilter(FileFilterType filter);
    FileFilterType fileFilter() const { return m_fileFilter; }
    void setExcludeFolders(bool exclude);
    bool excludeFolders() const { return m_excludeFolders; }
    void setFileAdditionalFilter(std::optional<FilePredicate> predicate);
    // The search field: a non-empty text filters by `type`; an empty one removes the filter.
    void setSearch(ThumbnailsSearchType type, const QString &text);

    const FilePredicate &fileFilterPredicate() const { return m_fileFilterPredicate; }
    const FilePredicate &countFileFilterPredicate() const { return m_countFileFilterPredicate; }
    const FilePredicate &countFolderFilterPredicate() const { return m_countFolderFilterPredicate; }
    const QList<SortDescriptor> &fileSortDescriptors() const { return m_fileSortDescriptors; }
    const QList<FileModelPtr> &rootItems() const { return m_rootItems; }

    // Lists every folder again.
    void reload();

Q_SIGNALS:
    void isLoadingChanged(bool loading);
    void flatRepresentationChanged();
    void byFolderFlatRepresentationChanged();
    void treeRepresentationChanged();
    void itemCountChanged(int count);
    void foundCountChanged(int count);
    void longLoadingChanged(bool longLoading);
    // After every publication, when all representations are in step.
    void representationsPublished();
    void folderFailed(const QString &path, const QString &reason);

private:
    struct BuildInput;
    struct BuildResult;

    void rebuildPredicates();
    void relist();
    void startLoading(const FileModelPtr &node, int remainingDepth);
    // Adds the listed `files`; from a file event only the added or replaced children are marked
    // changed, otherwise the next rebuild is a full one.
    void addChildren(const FileModelPtr &node, const QList<ZQFilePtr> &files, bool fromEvent = false);
    void noteChildChanged(const FileModel *folder, const FileModelPtr &child);
    void handleEvents(const FileModelPtr &node, const QList<ZQFileEvent> &events);
    void loadingEnded(const FileModelPtr &node);
    // `node` no longer loads: its root stops loading once nothing under it does.
    void loadingStopped(FileModel *node);
    void updateIsLoading();
    // Counts those of `files` (found in `folder`) that would be shown, off the GUI thread.
    void countFound(const FileModelPtr &folder, QList<PXFilePtr> files);
    // FileModelDelegate: the roots tell their loading state.
    void fileModelLoadingStateChanged(FileModel &model) override;
    void updateLongLoading();
    void fileModelChildrenChanged(FileModel &) override { }
    bool descendsInto(const PXFile &folder) const;

    // Asks for a rebuild that sorts every folder again (roots, filters or sort changed).
    void setNeedsResort();
    // Asks for a rebuild; what it covers follows from what was marked changed.
    void scheduleRebuild();
    void scheduleLoadingCheck();
    void rebuildRepresentations();
    static BuildResult build(const BuildInput &input);
    void publish(BuildResult result);

    // Configuration.
    QList<PXFilePtr> m_collectionRoots;
    int m_folderDepth = 0;
    bool m_includeTopLevelItems = true;
    bool m_excludeEmptiesFromFolderRepresentation = true;
    FileSortType m_fileSort = FileSortType::name;
    FolderSortType m_folderSort = FolderSortType::mixed;
    bool m_reverseSort = false;
    FileFilterType m_fileFilter = FileFilterType::visible;
    bool m_excludeFolders = false;
    std::optional<FilePredicate> m_fileAdditionalFilter;
    FilePredicate m_fileFilterPredicate;
    FilePredicate m_countFileFilterPredicate;
    FilePredicate m_countFolderFilterPredicate;
    QList<SortDescriptor> m_fileSortDescriptors;

    // Published.
    bool m_isLoading = false;
    QList<FileModelPtr> m_flatRepresentation;
    QList<FileModelPtr> m_byFolderFlatRepresentation;
    QList<FolderGroup> m_folderGroups;
    QList<FileModelPtr> m_treeRepresentation;
    int m_itemCount = 0;
    int m_foundCount = 0;
    bool m_isLongLoading = false;

    // Loading.
    QList<FileModelPtr> m_rootItems;
    QHash<FileModel *, FileModel *> m_loadingNodes; // each folder being listed, with its root
    QHash<FileModel *, int> m_loadingUnderRoot; // folders being listed, by root
    quint64 m_listing = 0; // which listing the found files are counted for
    QObject *m_loadContext = nullptr; // connections of the current listing; replaced on re-list

    // Coalescing.
    QTimer *m_loadingCheckTimer;
    QTimer *m_resortTimer;
    QTimer *m_reloadTimer;
    bool m_hasDirtiedSinceBuildStarted = false;
    bool m_isRebuildingRepresentations = false;
    bool m_needsAdditionalRebuild = false;
    bool m_needsRebuild = false; // settled state: something changed since the last publication
    // What changed since the last rebuild started. File events mark single children, so that
    // one written file in a folder of 100 000 costs a few comparisons instead of a full sort.
    bool m_needsFullRebuild = true;
    bool m_foldersChanged = true; // the set of listed folders changed: gather them again
    QHash<const FileModel *, QList<FileModelPtr>> m_changedChildren; // by folder node
    QList<FileModelPtr> m_gatheredFolders;
    QList<bool> m_gatheredIsRoot;
    QThreadPool m_utilityQueue;
};
