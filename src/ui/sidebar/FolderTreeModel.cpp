#include "ui/sidebar/FolderTreeModel.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/fs/ZQFolderSubscription.h"
#include "core/fs/ZQInotifyWatcher.h"
#include "core/model/FileSorting.h"
#include "core/model/PXFile.h"
#include "ui/common/ThemeIcons.h"

#include <QFileIconProvider>
#include <QIcon>
#include <QLocale>
#include <QMimeData>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <sys/inotify.h>

namespace {

// Tells when an entry of a counted folder comes or goes, so that its count follows items moved
// in or out while the folder is collapsed (and so has no listing of its own). A burst of changes
// makes one recount.
class CountWatch : public ZQInotifyWatcher::Client
{
public:
    CountWatch(QByteArray folderPath, std::function<void()> changed)
        : m_folderPath(std::move(folderPath))
    {
        m_settle.setSingleShot(true);
        m_settle.setInterval(100);
        QObject::connect(&m_settle, &QTimer::timeout, &m_settle, std::move(changed));
        m_watching = ZQInotifyWatcher::shared().addWatch(m_folderPath, this);
    }
    ~CountWatch()
    {
        if (m_watching)
            ZQInotifyWatcher::shared().removeWatch(m_folderPath, this);
    }

    void folderEvent(const QByteArray &, quint32 mask, QByteArrayView name) override
    {
        if (mask & IN_IGNORED)
            m_watching = false;
        const auto type = ZQInotifyWatcher::entryEventType(mask);
        const bool presence = type && (*type == ZQFileEventType::created || *type == ZQFileEventType::removed);
        if ((!name.isEmpty() && presence) || (mask & IN_Q_OVERFLOW)) {
            if (!m_settle.isActive())
                m_settle.start();
        }
    }

private:
    QByteArray m_folderPath;
    QTimer m_settle;
    bool m_watching = false;
};

} // namespace

struct FolderTreeModel::Node
{
    PXFilePtr file;
    Node *parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;
    std::shared_ptr<ZQFolderSubscription> subscription;
    bool listed = false;
    bool listing = false;
    // Counts: files, images and folders, -1 until counted.
    int files = -1;
    int images = -1;
    int folders = -1;
    mutable bool countRequested = false;
    std::unique_ptr<CountWatch> countWatch; // once counted

    int row() const
    {
        if (!parent)
            return 0;
        for (size_t i = 0; i < parent->children.size(); ++i) {
            if (parent->children[i].get() == this)
                return int(i);
        }
        return 0;
    }
};

namespace {

const QString countPool = QStringLiteral("Sidebar.Counts");

} // namespace

FolderTreeModel::FolderTreeModel(QObject *parent)
    : QAbstractItemModel(parent)
    , m_invisibleRoot(std::make_unique<Node>())
{
    // Counting lists folders: two at a time keep the disk busy without starving the grid's scans.
    namedThreadPool(countPool)->setMaxThreadCount(2);
    m_invisibleRoot->listed = true;
}

FolderTreeModel::~FolderTreeModel() = default;

void FolderTreeModel::setRootFolder(const PXFilePtr &root)
{
    if (!m_invisibleRoot->children.empty() && m_invisibleRoot->children.front()->file == root)
        return;
    beginResetModel();
    ++m_generation;
    m_nodes.clear();
    m_invisibleRoot->children.clear();
    if (root) {
        auto node = std::make_unique<Node>();
        node->file = root;
        node->parent = m_invisibleRoot.get();
        m_nodes.insert(root.get(), node.get());
        m_invisibleRoot->children.push_back(std::move(node));
    }
    endResetModel();
}

const PXFilePtr &FolderTreeModel::rootFolder() const
{
    static const PXFilePtr none;
    return m_invisibleRoot->children.empty() ? none : m_invisibleRoot->children.front()->file;
}

void FolderTreeModel::setSort(FileSortType sort, bool reverse)
{
    if (sort == m_sort && reverse == m_reverse)
        return;
    m_sort = sort;
    m_reverse = reverse;
    rearrangeAll(m_invisibleRoot.get());
}

void FolderTreeModel::setFilter(FileFilterType filter)
{
    if (filter == m_filter)
        return;
    m_filter = filter;
    rearrangeAll(m_invisibleRoot.get());
}

void FolderTreeModel::setInfo(SidebarInfoOptions info)
{
    if (info == m_info)
        return;
    m_info = info;
    if (!m_invisibleRoot->children.empty())
        Q_EMIT dataChanged(index(0, 1), index(0, 1));
    Q_EMIT layoutChanged(); // every visible count text changes
}

void FolderTreeModel::rearrangeAll(Node *node)
{
    for (const auto &child : node->children)
        rearrangeAll(child.get());
    if (node != m_invisibleRoot.get() && node->listed)
        applyListing(node);
}

FolderTreeModel::Node *FolderTreeModel::nodeFor(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<Node *>(index.internalPointer()) : m_invisibleRoot.get();
}

QModelIndex FolderTreeModel::indexForNode(const Node *node, int column) const
{
    if (!node || node == m_invisibleRoot.get())
        return {};
    return createIndex(node->row(), column, const_cast<Node *>(node));
}

QModelIndex FolderTreeModel::indexForFile(const PXFilePtr &file) const
{
    return file ? indexForNode(m_nodes.value(file.get())) : QModelIndex();
}

PXFilePtr FolderTreeModel::fileForIndex(const QModelIndex &index) const
{
    return index.isValid() ? nodeFor(index)->file : nullptr;
}

bool FolderTreeModel::isListed(const QModelIndex &index) const
{
    return nodeFor(index)->listed;
}

QModelIndex FolderTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    const Node *node = nodeFor(parent);
    if (row < 0 || row >= int(node->children.size()) || column < 0 || column > 1)
        return {};
    return createIndex(row, column, node->children[size_t(row)].get());
}

QModelIndex FolderTreeModel::parent(const QModelIndex &child) const
{
    if (!child.isValid())
        return {};
    return indexForNode(nodeFor(child)->parent);
}

int FolderTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    return int(nodeFor(parent)->children.size());
}

int FolderTreeModel::columnCount(const QModelIndex &) const
{
    return 2;
}

bool FolderTreeModel::hasChildren(const QModelIndex &parent) const
{
    const Node *node = nodeFor(parent);
    if (parent.column() > 0)
        return false;
    if (node->listed)
        return !node->children.empty();
    return node->file && node->file->isDirectory();
}

bool FolderTreeModel::canFetchMore(const QModelIndex &parent) const
{
    const Node *node = nodeFor(parent);
    return parent.isValid() && !node->listed && !node->listing && node->file->isDirectory();
}

void FolderTreeModel::fetchMore(const QModelIndex &parent)
{
    if (canFetchMore(parent))
        startListing(nodeFor(parent));
}

void FolderTreeModel::startListing(Node *node)
{
    node->listing = true;
    node->subscription =
        ZQFolderSubscription::forFolder(ZQStandardFile::newFileForNativePath(node->file->resolvedNativePath()));
    const QPointer<FolderTreeModel> self(this);
    const PXFilePtr folder = node->file;
    const auto settle = [self, folder] {
        if (!self)
            return;
        Node *current = self->m_nodes.value(folder.get());
        if (!current || !current->subscription)
            return;
        if (const QString error = current->subscription->errorString(); !error.isEmpty())
            logError(QStringLiteral("Cannot list %1 in the sidebar: %2").arg(folder->path(), error));
        const bool first = !current->listed;
        current->listing = false;
        current->listed = true;
        self->applyListing(current);
        if (first)
            Q_EMIT self->folderListed(self->indexForNode(current));
    };
    connect(node->subscription.get(), &ZQFolderSubscription::loadFinished, this, settle);
    connect(node->subscription.get(), &ZQFolderSubscription::eventsReceived, this,
            [self, folder](const QList<ZQFileEvent> &events) {
                if (!self)
                    return;
                Node *current = self->m_nodes.value(folder.get());
                if (!current)
                    return;
                for (const ZQFileEvent &event : events) {
                    if (event.nativePath == folder->resolvedNativePath() && event.type == ZQFileEventType::removed) {
                        Q_EMIT self->folderVanished(folder);
                        return;
                    }
                    ZQStandardFile::newFileForNativePath(event.nativePath)->updateForEvent(event);
                }
                current->countRequested = false;
                current->files = current->images = current->folders = -1;
                if (current->listed)
                    self->applyListing(current);
            });
    // Always after returning, also when another view listed the folder already: callers may be
    // walking their own lists when they ask.
    if (node->subscription->isLoaded())
        QMetaObject::invokeMethod(this, settle, Qt::QueuedConnection);
    else
        node->subscription->load();
}

QList<PXFilePtr> FolderTreeModel::arrangedChildren(const Node *node) const
{
    QList<PXFilePtr> files;
    if (!node->subscription)
        return files;
    const FilePredicate filter = filterPredicateForFilterType(m_filter, false);
    for (const ZQFilePtr &entry : node->subscription->files()) {
        PXFilePtr file = PXFile::from(entry);
        if (filter(*file))
            files.append(std::move(file));
    }
    sortFiles(files, sortDescriptorsForSortType(m_sort, FolderSortType::foldersFirst, !m_reverse));
    return files;
}

// Brings the rows of `node` in line with its listing: rows of entries that are gone are
// removed, new entries are inserted where the order puts them, and the rest keep their nodes
// (with their own listed children) even when the order moved them.
void FolderTreeModel::applyListing(Node *node)
{
    const QList<PXFilePtr> wanted = arrangedChildren(node);
    const QModelIndex parentIndex = indexForNode(node);
    QHash<const PXFile *, int> wantedIndex;
    for (int i = 0; i < wanted.size(); ++i)
        wantedIndex.insert(wanted[i].get(), i);

    for (int row = int(node->children.size()) - 1; row >= 0; --row) {
        if (!wantedIndex.contains(node->children[size_t(row)]->file.get())) {
            beginRemoveRows(parentIndex, row, row);
            forget(node->children[size_t(row)].get());
            node->children.erase(node->children.begin() + row);
            endRemoveRows();
        }
    }
    for (int i = 0; i < wanted.size(); ++i) {
        const PXFile *file = wanted[i].get();
        int found = -1;
        for (int row = i; row < int(node->children.size()); ++row) {
            if (node->children[size_t(row)]->file.get() == file) {
                found = row;
                break;
            }
        }
        if (found == i)
            continue;
        if (found > i) {
            beginMoveRows(parentIndex, found, found, parentIndex, i);
            auto moved = std::move(node->children[size_t(found)]);
            node->children.erase(node->children.begin() + found);
            node->children.insert(node->children.begin() + i, std::move(moved));
            endMoveRows();
            continue;
        }
        auto child = std::make_unique<Node>();
        child->file = wanted[i];
        child->parent = node;
        beginInsertRows(parentIndex, i, i);
        m_nodes.insert(file, child.get());
        node->children.insert(node->children.begin() + i, std::move(child));
        endInsertRows();
    }
    if (node->parent) {
        const QModelIndex counts = indexForNode(node, 1);
        Q_EMIT dataChanged(counts, counts);
    }
}

void FolderTreeModel::forget(Node *node)
{
    for (const auto &child : node->children)
        forget(child.get());
    m_nodes.remove(node->file.get());
}

QString FolderTreeModel::countText(const Node *node) const
{
    if (m_info == SidebarInfoOptions::none || !node->file->isDirectory())
        return {};
    if (node->files < 0) {
        requestCount(const_cast<Node *>(node));
        return {};
    }
    const QLocale locale;
    switch (m_info) {
    case SidebarInfoOptions::none: return {};
    case SidebarInfoOptions::files: return locale.toString(node->files);
    case SidebarInfoOptions::folders: return locale.toString(node->folders);
    case SidebarInfoOptions::filesAndFolders:
        return tr("%1 · %2").arg(locale.toString(node->files), locale.toString(node->folders));
    case SidebarInfoOptions::images: return locale.toString(node->images);
    case SidebarInfoOptions::imagesAndFolders:
        return tr("%1 · %2").arg(locale.toString(node->images), locale.toString(node->folders));
    }
    return {};
}

// Counting lists the folder (and reads each file's type) off the GUI thread.
void FolderTreeModel::requestCount(Node *node) const
{
    if (node->countRequested)
        return;
    node->countRequested = true;
    const QPointer<FolderTreeModel> self(const_cast<FolderTreeModel *>(this));
    const PXFilePtr folder = node->file;
    if (!node->countWatch) {
        // The numbers shown stay until the recount brings new ones.
        node->countWatch = std::make_unique<CountWatch>(folder->resolvedNativePath(), [self, folder] {
            if (!self)
                return;
            if (Node *current = self->m_nodes.value(folder.get())) {
                current->countRequested = false;
                self->requestCount(current);
            }
        });
    }
    const quint64 generation = m_generation;
    runOnPool(countPool, [self, folder, generation] {
        int files = 0;
        int folders = 0;
        int images = 0;
        const auto visibleFile = [](const PXFile &file) { return !file.isInvisible(); };
        folder->countOfFiles(&files, &folders, nullptr, visibleFile, visibleFile);
        folder->countOfFiles(&images, nullptr, nullptr,
                             [](const PXFile &file) { return !file.isInvisible() && file.isImage(); });
        postToGui([self, folder, generation, files, folders, images] {
            if (!self || self->m_generation != generation)
                return;
            Node *node = self->m_nodes.value(folder.get());
            if (!node)
                return;
            node->files = files;
            node->folders = folders;
            node->images = images;
            const QModelIndex counts = self->indexForNode(node, 1);
            Q_EMIT self->dataChanged(counts, counts);
        });
    });
}

QVariant FolderTreeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Node *node = nodeFor(index);
    if (role == FileRole)
        return QVariant::fromValue(node->file);
    if (index.column() == 1) {
        if (role == Qt::DisplayRole)
            return countText(node);
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        if (role == Qt::ForegroundRole)
            return QVariant(); // the view dims it
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole: return node->file->displayName();
    case Qt::ToolTipRole: return node->file->path();
    case Qt::DecorationRole:
        return node->file->isDirectory() ? ThemeIcons::folder()
                                         : QFileIconProvider().icon(QFileInfo(node->file->path()));
    default: return {};
    }
}

Qt::ItemFlags FolderTreeModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}

QStringList FolderTreeModel::mimeTypes() const
{
    return {QStringLiteral("text/uri-list")};
}

QMimeData *FolderTreeModel::mimeData(const QModelIndexList &indexes) const
{
    QList<QUrl> urls;
    for (const QModelIndex &index : indexes) {
        if (index.column() == 0)
            urls.append(QUrl::fromLocalFile(nodeFor(index)->file->path()));
    }
    auto *data = new QMimeData;
    data->setUrls(urls);
    return data;
}
