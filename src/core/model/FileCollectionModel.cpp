#include "core/model/FileCollectionModel.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/fs/ZQFolderSubscription.h"
#include "core/model/PXFile.h"
#include "core/model/TextHelpers.h"

#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <optional>
#include <vector>

namespace {
// Several changes within this time give one re-sort: short enough to feel immediate.
constexpr int resortDelayMs = 50;
// While folders are still loading, look again this often instead of re-sorting half a listing.
constexpr int loadingCheckDelayMs = 200;
// Kernel queue overflows come in bursts; one re-list answers all of them.
constexpr int reloadDelayMs = 200;

bool nameLess(const FileModelPtr &a, const FileModelPtr &b)
{
    const int byKey = a->file()->nameSortKey().compare(b->file()->nameSortKey());
    return byKey != 0 ? byKey < 0 : finderStyleTieBreak(a->file()->displayName(), b->file()->displayName()) < 0;
}
} // namespace

struct FileCollectionModel::BuildInput
{
    QList<FileModelPtr> roots;
    QList<FileModelPtr> folders; // every listed folder, roots first, then depth-first by name
    QList<bool> showsOwnFiles; // per folder: whether its files are part of the flat list
    QList<QList<FileModelPtr>> previousArranged; // per folder: the last published order
    QList<FileModel::ChildCounts> previousCounts; // per folder: the counts of that order
    QList<FileModelPtr> previousFlat;
    // Incremental: only the children in `changed` (per folder) may have moved, appeared or gone;
    // everything else keeps its place. Full: every folder is filtered and sorted again.
    bool full = true;
    QList<QList<FileModelPtr>> changed;
    FilePredicate predicate;
    QList<SortDescriptor> descriptors;
    bool excludeEmpties = true;
};

struct FileCollectionModel::BuildResult
{
    QList<FileModelPtr> folders;
    QList<QList<FileModelPtr>> arranged; // per folder
    QList<FileModel::ChildCounts> counts; // per folder
    QList<bool> folderChanged; // per folder: whether its arranged children changed
    QList<FileModelPtr> flat;
    QList<FileModelPtr> byFolderFlat;
    QList<FolderGroup> groups;
    QList<FileModelPtr> tree;
};

FileCollectionModel::FileCollectionModel(QObject *parent)
    : QObject(parent)
    , m_loadingCheckTimer(new QTimer(this))
    , m_resortTimer(new QTimer(this))
    , m_reloadTimer(new QTimer(this))
{
    // One rebuild at a time, in order: the collection's own serial queue.
    m_utilityQueue.setMaxThreadCount(1);
    m_utilityQueue.setObjectName(QStringLiteral("FileCollectionModel.Utility"));
    for (QTimer *timer : {m_loadingCheckTimer, m_resortTimer, m_reloadTimer})
        timer->setSingleShot(true);
    m_loadingCheckTimer->setInterval(loadingCheckDelayMs);
    m_resortTimer->setInterval(resortDelayMs);
    m_reloadTimer->setInterval(reloadDelayMs);
    connect(m_resortTimer, &QTimer::timeout, this, &FileCollectionModel::rebuildRepresentations);
    connect(m_reloadTimer, &QTimer::timeout, this, &FileCollectionModel::relist);
    connect(m_loadingCheckTimer, &QTimer::timeout, this, [this] {
        if (!m_loadingNodes.isEmpty())
            m_loadingCheckTimer->start();
        else
            rebuildRepresentations();
    });
    rebuildPredicates();
}

FileCollectionModel::~FileCollectionModel()
{
    m_utilityQueue.clear();
    m_utilityQueue.waitForDone();
}

bool FileCollectionModel::isSettled() const
{
    return m_loadingNodes.isEmpty() && !m_isRebuildingRepresentations && !m_needsRebuild && !m_resortTimer->isActive()
        && !m_loadingCheckTimer->isActive() && !m_reloadTimer->isActive();
}

// MARK: configuration

void FileCollectionModel::setCollectionRoots(const QList<PXFilePtr> &roots)
{
    m_collectionRoots = roots;
    relist();
}

void FileCollectionModel::setFolderDepth(int depth)
{
    if (depth == m_folderDepth)
        return;
    m_folderDepth = std::max(0, depth);
    relist();
}

void FileCollectionModel::setIncludeTopLevelItems(bool include)
{
    if (include == m_includeTopLevelItems)
        return;
    m_includeTopLevelItems = include;
    setNeedsResort();
}

void FileCollectionModel::setExcludeEmptiesFromFolderRepresentation(bool exclude)
{
    if (exclude == m_excludeEmptiesFromFolderRepresentation)
        return;
    m_excludeEmptiesFromFolderRepresentation = exclude;
    setNeedsResort();
}

void FileCollectionModel::setFileSort(FileSortType sort)
{
    if (sort == m_fileSort && sort != FileSortType::shuffle)
        return;
    m_fileSort = sort;
    rebuildPredicates();
    setNeedsResort();
}

void FileCollectionModel::setFolderSort(FolderSortType sort)
{
    if (sort == m_folderSort)
        return;
    m_folderSort = sort;
    rebuildPredicates();
    setNeedsResort();
}

void FileCollectionModel::setReverseSort(bool reverse)
{
    if (reverse == m_reverseSort)
        return;
    m_reverseSort = reverse;
    rebuildPredicates();
    setNeedsResort();
}

void FileCollectionModel::setFileFilter(FileFilterType filter)
{
    if (filter == m_fileFilter)
        return;
    // Invisible subfolders are walked only when invisible items are shown.
    const bool walkChanges = (filter == FileFilterType::all) != (m_fileFilter == FileFilterType::all);
    m_fileFilter = filter;
    rebuildPredicates();
    if (walkChanges && m_folderDepth > 0)
        relist();
    else
        setNeedsResort();
}

void FileCollectionModel::setExcludeFolders(bool exclude)
{
    if (exclude == m_excludeFolders)
        return;
    m_excludeFolders = exclude;
    rebuildPredicates();
    setNeedsResort();
}

void FileCollectionModel::setFileAdditionalFilter(std::optional<FilePredicate> predicate)
{
    m_fileAdditionalFilter = std::move(predicate);
    rebuildPredicates();
    setNeedsResort();
}

void FileCollectionModel::setSearch(ThumbnailsSearchType type, const QString &text)
{
    if (text.isEmpty())
        setFileAdditionalFilter(std::nullopt);
    else
        setFileAdditionalFilter(searchPredicate(type, text));
}

void FileCollectionModel::rebuildPredicates()
{
    FilePredicate filter = filterPredicateForFilterType(m_fileFilter, m_excludeFolders);
    if (m_fileAdditionalFilter)
        filter = andPredicate(filter, *m_fileAdditionalFilter);
    m_fileFilterPredicate = filter;
    m_countFileFilterPredicate =
        andPredicate(filter,
                     FilePredicate{QStringLiteral("%K == NO"), {QStringLiteral("isDirectory")}, [](const PXFile &f) {
                                       return !f.isDirectory();
                                   }});
    m_countFolderFilterPredicate =
        filterPredicateForFilterType(m_fileFilter == FileFilterType::all ? FileFilterType::folders
                                                                         : FileFilterType::visibleFolders,
                                     false);
    m_fileSortDescriptors = sortDescriptorsForSortType(m_fileSort, m_folderSort, !m_reverseSort);
}

// MARK: listing

void FileCollectionModel::reload()
{
    relist();
}

void FileCollectionModel::relist()
{
    m_reloadTimer->stop();
    // A re-sort asked for before the listing would publish half of it: the end of the loading
    // rebuilds instead.
    m_resortTimer->stop();
    delete m_loadContext; // drops every connection of the previous listing
    m_loadContext = new QObject(this);
    for (const FileModelPtr &node : std::as_const(m_rootItems)) {
        node->setDelegate(nullptr, nullptr);
        node->setLoading(false);
    }
    m_loadingNodes.clear();
    m_loadingUnderRoot.clear();
    m_rootItems.clear();
    m_changedChildren.clear();
    m_foldersChanged = true;
    m_needsFullRebuild = true;
    ++m_listing;
    if (m_foundCount != 0) {
        m_foundCount = 0;
        Q_EMIT foundCountChanged(0);
    }
    for (const PXFilePtr &root : std::as_const(m_collectionRoots)) {
        FileModelPtr node = FileModel::create(root);
        node->setDelegate(this, this);
        m_rootItems.append(node);
        startLoading(node, m_folderDepth);
    }
    m_needsRebuild = true;
    updateIsLoading();
    updateLongLoading();
    if (m_loadingNodes.isEmpty())
        setNeedsResort();
}

bool FileCollectionModel::descendsInto(const PXFile &folder) const
{
    // Links to folders are not walked: they may lead back up the tree.
    return folder.isDirectory() && folder.isRealFile()
        && (m_fileFilter == FileFilterType::all || !folder.isInvisible());
}

void FileCollectionModel::startLoading(const FileModelPtr &node, int remainingDepth)
{
    auto subscription = ZQFolderSubscription::forFolder(node->file());
    node->directorySubscription = subscription;
    m_foldersChanged = true;
    m_needsFullRebuild = true;
    node->currentAutoloadDepth = remainingDepth;

    const std::weak_ptr<FileModel> weakNode = node;
    ZQFolderSubscription *source = subscription.get();
    connect(source, &ZQFolderSubscription::batchLoaded, m_loadContext, [this, weakNode](const QList<ZQFilePtr> &files) {
        if (const FileModelPtr node = weakNode.lock())
            addChildren(node, files);
    });
    connect(source, &ZQFolderSubscription::loadFinished, m_loadContext, [this, weakNode] {
        if (const FileModelPtr node = weakNode.lock())
            loadingEnded(node);
    });
    connect(source, &ZQFolderSubscription::eventsReceived, m_loadContext,
            [this, weakNode](const QList<ZQFileEvent> &events) {
                if (const FileModelPtr node = weakNode.lock())
                    handleEvents(node, events);
            });

    if (subscription->isLoaded()) {
        addChildren(node, subscription->files());
        if (!subscription->errorString().isEmpty())
            Q_EMIT folderFailed(node->file()->path(), subscription->errorString());
        return;
    }
    // A root's own state spans its subfolders' listings: it is the one the notice follows.
    FileModelPtr root = node;
    while (FileModelPtr parent = root->parent())
        root = parent;
    m_loadingNodes.insert(node.get(), root.get());
    if (node != root)
        node->setLoading(true);
    if (m_loadingUnderRoot[root.get()]++ == 0)
        root->setLoading(true);
    subscription->load();
}

void FileCollectionModel::addChildren(const FileModelPtr &node, const QList<ZQFilePtr> &files, bool fromEvent)
{
    const int remaining = node->currentAutoloadDepth.value_or(0);
    if (!fromEvent)
        m_needsFullRebuild = true;
    if (files.size() > 1)
        node->reserveChildren(files.size());
    QList<PXFilePtr> found;
    if (!fromEvent)
        found.reserve(files.size());
    for (const ZQFilePtr &entry : files) {
        const PXFilePtr file = PXFile::from(entry);
        if (!fromEvent)
            found.append(file);
        FileModelPtr child = node->childForFile(file);
        if (fromEvent)
            noteChildChanged(node.get(), child);
        if (representedItemGenerator && !child->representedItem.has_value())
            child->representedItem = representedItemGenerator(file);
        if (remaining > 0 && !child->directorySubscription && descendsInto(*file))
            startLoading(child, remaining - 1);
    }
    m_needsRebuild = true;
    if (!found.isEmpty())
        countFound(node, std::move(found));
}

void FileCollectionModel::countFound(const FileModelPtr &folder, QList<PXFilePtr> files)
{
    if (folder->depth() == 0 && !m_includeTopLevelItems)
        return;
    // On the utility queue, ahead of the rebuild that follows the listing: the filter fills the
    // records' kind flags there, which the rebuild then finds ready.
    const QPointer<FileCollectionModel> guard(this);
    m_utilityQueue.start([guard, listing = m_listing, predicate = m_fileFilterPredicate, files = std::move(files)] {
        const int count = int(std::count_if(files.cbegin(), files.cend(),
                                            [&predicate](const PXFilePtr &file) { return predicate(*file); }));
        // The destructor waits for this queue, so the model outlives the job.
        postTo(guard.data(), [guard, listing, count] {
            if (!guard || guard->m_listing != listing || count == 0)
                return;
            guard->m_foundCount += count;
            Q_EMIT guard->foundCountChanged(guard->m_foundCount);
        });
    });
}

void FileCollectionModel::noteChildChanged(const FileModel *folder, const FileModelPtr &child)
{
    m_changedChildren[folder].append(child);
}

void FileCollectionModel::loadingEnded(const FileModelPtr &node)
{
    if (node->depth() > 0)
        node->setLoading(false);
    if (node->directorySubscription && !node->directorySubscription->errorString().isEmpty()) {
        logError(QStringLiteral("Cannot read folder %1: %2")
                     .arg(node->file()->path(), node->directorySubscription->errorString()));
        Q_EMIT folderFailed(node->file()->path(), node->directorySubscription->errorString());
    }
    loadingStopped(node.get());
    updateIsLoading();
    if (m_loadingNodes.isEmpty()) {
        m_loadingCheckTimer->stop();
        m_resortTimer->stop();
        rebuildRepresentations();
    }
}

void FileCollectionModel::handleEvents(const FileModelPtr &node, const QList<ZQFileEvent> &events)
{
    bool changed = false;
    for (const ZQFileEvent &event : events) {
        const PXFilePtr file = PXFile::fileForNativePath(event.nativePath);
        if (file.get() == node->file().get()) {
            if (event.type == ZQFileEventType::removed) {
                // The folder itself went away: it shows nothing any more.
                for (const FileModelPtr &child : node->allChildrenList())
                    node->removeChildForFile(child->file().get());
                m_needsFullRebuild = true;
                m_foldersChanged = true;
                changed = true;
            } else if (event.type == ZQFileEventType::rescanNeeded) {
                m_reloadTimer->start();
            }
            continue;
        }
        switch (event.type) {
        case ZQFileEventType::created:
        case ZQFileEventType::replaced: {
            file->changedKeysForEvent(event);
            addChildren(node, {file}, true);
            if (fileUpdateCallback && event.type == ZQFileEventType::replaced)
                fileUpdateCallback(node->childForFile(file));
            changed = true;
            break;
        }
        case ZQFileEventType::removed:
            file->changedKeysForEvent(event);
            if (const FileModelPtr gone = node->removeChildForFile(file.get())) {
                if (gone->directorySubscription) {
                    loadingStopped(gone.get());
                    gone->directorySubscription.reset();
                    m_foldersChanged = true;
                    m_needsFullRebuild = true;
                }
                noteChildChanged(node.get(), gone);
                changed = true;
            }
            break;
        case ZQFileEventType::contentModified:
        case ZQFileEventType::attributesChanged: {
            file->changedKeysForEvent(event);
            FileModelPtr child;
            {
                QMutexLocker locker(&node->content().recursiveLock);
                const auto &all = node->content().allChildren;
                if (all)
                    child = all->value(file.get());
            }
            if (child) {
                if (fileUpdateCallback)
                    fileUpdateCallback(child);
                noteChildChanged(node.get(), child);
                changed = true;
            }
            break;
        }
        case ZQFileEventType::rescanNeeded: m_reloadTimer->start(); break;
        }
    }
    if (changed) {
        m_needsRebuild = true;
        updateIsLoading();
        scheduleRebuild();
    }
}

void FileCollectionModel::loadingStopped(FileModel *node)
{
    FileModel *root = m_loadingNodes.take(node);
    if (!root)
        return;
    auto pending = m_loadingUnderRoot.find(root);
    if (pending != m_loadingUnderRoot.end() && --*pending == 0) {
        m_loadingUnderRoot.erase(pending);
        root->setLoading(false);
    }
}

void FileCollectionModel::fileModelLoadingStateChanged(FileModel &)
{
    updateLongLoading();
}

void FileCollectionModel::updateLongLoading()
{
    const bool longLoading = std::any_of(m_rootItems.cbegin(), m_rootItems.cend(), [](const FileModelPtr &root) {
        return root->loadingState() == LoadingState::longLoading;
    });
    if (longLoading == m_isLongLoading)
        return;
    m_isLongLoading = longLoading;
    Q_EMIT longLoadingChanged(longLoading);
}

void FileCollectionModel::updateIsLoading()
{
    const bool loading = !m_loadingNodes.isEmpty();
    if (loading == m_isLoading)
        return;
    m_isLoading = loading;
    Q_EMIT isLoadingChanged(loading);
}

// MARK: coalescing

void FileCollectionModel::setNeedsResort()
{
    m_needsFullRebuild = true;
    scheduleRebuild();
}

void FileCollectionModel::scheduleRebuild()
{
    m_needsRebuild = true;
    if (m_isRebuildingRepresentations) {
        m_hasDirtiedSinceBuildStarted = true;
        m_needsAdditionalRebuild = true;
        return;
    }
    if (!m_loadingNodes.isEmpty()) {
        scheduleLoadingCheck();
        return;
    }
    if (m_resortTimer->isActive() || m_reloadTimer->isActive() || m_loadingCheckTimer->isActive())
        return;
    m_resortTimer->start();
}

void FileCollectionModel::scheduleLoadingCheck()
{
    if (!m_loadingCheckTimer->isActive())
        m_loadingCheckTimer->start();
}

void FileCollectionModel::rebuildRepresentations()
{
    if (m_isRebuildingRepresentations) {
        m_hasDirtiedSinceBuildStarted = true;
        m_needsAdditionalRebuild = true;
        return;
    }
    m_isRebuildingRepresentations = true;
    m_hasDirtiedSinceBuildStarted = false;
    m_needsRebuild = false;

    // The folders to show, gathered here where the tree is changed: roots first, then their
    // listed subfolders depth-first in name order. Kept until a folder is listed or goes away.
    if (m_foldersChanged) {
        m_foldersChanged = false;
        m_gatheredFolders.clear();
        m_gatheredIsRoot.clear();
        std::function<void(const FileModelPtr &, bool)> gather = [&](const FileModelPtr &folder, bool isRoot) {
            m_gatheredFolders.append(folder);
            m_gatheredIsRoot.append(isRoot);
            QList<FileModelPtr> subfolders = folder->subscribedChildren();
            std::sort(subfolders.begin(), subfolders.end(), nameLess);
            for (const FileModelPtr &subfolder : std::as_const(subfolders))
                gather(subfolder, false);
        };
        for (const FileModelPtr &root : std::as_const(m_rootItems))
            gather(root, true);
    }

    BuildInput input;
    input.roots = m_rootItems;
    input.predicate = m_fileFilterPredicate;
    input.descriptors = m_fileSortDescriptors;
    input.excludeEmpties = m_excludeEmptiesFromFolderRepresentation;
    input.full = m_needsFullRebuild || !isDeterministicSort(m_fileSortDescriptors);
    m_needsFullRebuild = false;
    input.folders = m_gatheredFolders;
    input.previousFlat = m_flatRepresentation;
    for (qsizetype i = 0; i < m_gatheredFolders.size(); ++i) {
        input.showsOwnFiles.append(!m_gatheredIsRoot[i] || m_includeTopLevelItems);
        input.previousArranged.append(m_gatheredFolders[i]->arrangedChildren());
        input.previousCounts.append(m_gatheredFolders[i]->childCounts());
        input.changed.append(input.full ? QList<FileModelPtr>() : m_changedChildren.value(m_gatheredFolders[i].get()));
    }
    m_changedChildren.clear();

    const QPointer<FileCollectionModel> guard(this);
    m_utilityQueue.start([guard, input = std::move(input)] {
        BuildResult result = build(input);
        // The destructor waits for this queue, so the model outlives the job.
        postTo(guard.data(), [guard, result = std::move(result)]() mutable {
            if (guard)
                guard->publish(std::move(result));
        });
    });
}

namespace {

const PXFile &fileOf(const FileModelPtr &node)
{
    return *node->file();
}

// The children of `folder` that pass `predicate`, sorted, starting from the last published
// order so that a change which moves nothing finds the list already sorted.
QList<FileModelPtr> arrangeFolder(const FileModelPtr &folder, const QList<FileModelPtr> &previous,
                                  const FilePredicate &predicate, const QList<SortDescriptor> &descriptors)
{
    const QList<FileModelPtr> children = folder->allChildrenList();
    QList<FileModelPtr> arranged;
    arranged.reserve(children.size());
    if (previous.isEmpty()) {
        // The folder's first arrangement: nothing to keep the place of.
        for (const FileModelPtr &child : children) {
            if (predicate(*child->file()))
                arranged.append(child);
        }
        sortItems<FileModelPtr>(arranged, descriptors, fileOf);
        return arranged;
    }
    QSet<const FileModel *> present;
    present.reserve(children.size());
    for (const FileModelPtr &child : children)
        present.insert(child.get());
    QSet<const FileModel *> placed;
    for (const FileModelPtr &child : previous) {
        if (present.contains(child.get()) && predicate(*child->file())) {
            arranged.append(child);
            placed.insert(child.get());
        }
    }
    for (const FileModelPtr &child : children) {
        if (!placed.contains(child.get()) && predicate(*child->file()))
            arranged.append(child);
    }
    sortItems<FileModelPtr>(arranged, descriptors, fileOf);
    return arranged;
}

// `sorted` without the `changed` items, then each changed item that is still wanted put back
// where the order puts it: a few comparisons per changed item instead of a sort. Only the list
// itself is walked, so the items of a large folder are not touched. `counted(item, sign)` hears
// of each item taken out (-1) and put in (+1).
template<typename Wanted, typename Less, typename Counted>
QList<FileModelPtr> applyChanges(const QList<FileModelPtr> &sorted, const QList<FileModelPtr> &changed, Wanted wanted,
                                 Less less, Counted counted)
{
    std::vector<const FileModel *> changedSet;
    QList<FileModelPtr> distinct;
    for (const FileModelPtr &item : changed) {
        if (std::find(changedSet.begin(), changedSet.end(), item.get()) == changedSet.end()) {
            changedSet.push_back(item.get());
            distinct.append(item);
        }
    }
    std::sort(changedSet.begin(), changedSet.end());
    QList<FileModelPtr> result;
    result.reserve(sorted.size() + distinct.size());
    for (const FileModelPtr &item : sorted) {
        if (std::binary_search(changedSet.begin(), changedSet.end(), item.get()))
            counted(*item, -1);
        else
            result.append(item);
    }
    for (const FileModelPtr &item : std::as_const(distinct)) {
        if (wanted(item)) {
            result.insert(std::upper_bound(result.begin(), result.end(), item, less) - result.begin(), item);
            counted(*item, 1);
        }
    }
    return result;
}

// Items of several folders that sort as equal keep the order of their folders.
void appendShared(QList<FileModelPtr> &to, const QList<FileModelPtr> &items)
{
    if (to.isEmpty())
        to = items; // shares the list: one folder costs no copy
    else
        to += items;
}

} // namespace

FileCollectionModel::BuildResult FileCollectionModel::build(const BuildInput &input)
{
    BuildResult result;
    result.folders = input.folders;
    result.tree = input.roots;
    const qsizetype folderCount = input.folders.size();
    const auto byFiles = [&input](const FileModelPtr &a, const FileModelPtr &b) {
        return compareFiles(*a->file(), *b->file(), input.descriptors) < 0;
    };
    // Changing many children of a folder is cheaper as a sort than as insertions.
    const auto incrementalFits = [](const QList<FileModelPtr> &previous, const QList<FileModelPtr> &changed) {
        return changed.size() <= std::max<qsizetype>(32, previous.size() / 16);
    };

    qsizetype shownFolders = 0;
    bool flatNeedsSort = input.full;
    QList<FileModelPtr> changedShown;
    QHash<const FileModel *, qsizetype> folderIndex;
    for (qsizetype i = 0; i < folderCount; ++i) {
        const FileModelPtr &folder = input.folders[i];
        folderIndex.insert(folder.get(), i);
        const QList<FileModelPtr> &changed = input.full ? QList<FileModelPtr>() : input.changed[i];
        QList<FileModelPtr> arranged;
        std::optional<FileModel::ChildCounts> counts;
        bool folderChanged = true;
        if (input.full || !incrementalFits(input.previousArranged[i], changed)) {
            arranged = arrangeFolder(folder, input.previousArranged[i], input.predicate, input.descriptors);
            flatNeedsSort = true;
        } else if (changed.isEmpty()) {
            arranged = input.previousArranged[i];
            folderChanged = false;
        } else {
            counts = input.previousCounts[i];
            arranged = applyChanges(
                input.previousArranged[i], changed,
                [&](const FileModelPtr &item) {
                    return folder->hasChild(item.get()) && input.predicate(*item->file());
                },
                byFiles, [&counts](FileModel &item, int sign) { FileModel::countChild(*counts, item, sign); });
            if (input.showsOwnFiles[i])
                changedShown += changed;
        }
        if (input.showsOwnFiles[i]) {
            ++shownFolders;
            appendShared(result.flat, arranged);
            if (!arranged.isEmpty() || !input.excludeEmpties) {
                appendShared(result.byFolderFlat, arranged);
                result.groups.append({folder, arranged});
            }
        }
        if (!counts)
            counts = folderChanged ? FileModel::countChildren(arranged) : input.previousCounts[i];
        result.counts.append(*counts);
        result.folderChanged.append(folderChanged);
        result.arranged.append(std::move(arranged));
    }
    if (shownFolders <= 1)
        return result;

    // Files of several folders sort together in the flat list.
    if (flatNeedsSort) {
        sortItems<FileModelPtr>(result.flat, input.descriptors, fileOf);
        return result;
    }
    const auto folderOf = [&folderIndex](const FileModelPtr &item) {
        return folderIndex.value(item->parent().get(), -1);
    };
    result.flat = applyChanges(
        input.previousFlat, changedShown,
        [&](const FileModelPtr &item) {
            const FileModelPtr parent = item->parent();
            return parent && folderIndex.contains(parent.get()) && parent->hasChild(item.get())
                && input.predicate(*item->file());
        },
        [&](const FileModelPtr &a, const FileModelPtr &b) {
            const int order = compareFiles(*a->file(), *b->file(), input.descriptors);
            return order != 0 ? order < 0 : folderOf(a) < folderOf(b);
        },
        [](FileModel &, int) {});
    return result;
}

void FileCollectionModel::publish(BuildResult result)
{
    for (qsizetype i = 0; i < result.folders.size(); ++i) {
        if (result.folderChanged[i])
            result.folders[i]->setArrangedChildren(std::move(result.arranged[i]), result.counts[i]);
    }
    m_flatRepresentation = std::move(result.flat);
    m_byFolderFlatRepresentation = std::move(result.byFolderFlat);
    m_folderGroups = std::move(result.groups);
    m_treeRepresentation = std::move(result.tree);
    const int count = int(m_flatRepresentation.size());
    const bool countChanged = count != m_itemCount;
    m_itemCount = count;
    m_isRebuildingRepresentations = false;

    Q_EMIT treeRepresentationChanged();
    Q_EMIT flatRepresentationChanged();
    Q_EMIT byFolderFlatRepresentationChanged();
    if (countChanged)
        Q_EMIT itemCountChanged(count);

    if (m_needsAdditionalRebuild) {
        m_needsAdditionalRebuild = false;
        scheduleRebuild();
        return;
    }
    Q_EMIT representationsPublished();
}
