#pragma once

#include "core/model/FileSortTypes.h"
#include "core/model/PXFileForward.h"
#include "core/settings/SettingsValueSets.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QList>

#include <memory>
#include <vector>

class ZQFolderSubscription;
struct ZQFileEvent;

// The sidebar's folder tree: the root folder as the one top-level row, and below it the entries
// that pass the sidebar filter (folders only, by default), sorted by the sidebar sort.
//
// Lazy: a folder is listed the first time its children are wanted (fetchMore, when the view
// expands it) through the file layer's folder subscription, which then keeps the rows in step
// with the disk. Column 1 holds the counts chosen by `sidebarInfo`; a folder is counted on a
// worker the first time its count is shown, and counted again when its listing changes.
class FolderTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    explicit FolderTreeModel(QObject *parent = nullptr);
    ~FolderTreeModel() override;

    enum Roles { FileRole = Qt::UserRole + 1 };

    void setRootFolder(const PXFilePtr &root);
    const PXFilePtr &rootFolder() const;
    void setSort(FileSortType sort, bool reverse);
    void setFilter(FileFilterType filter);
    void setInfo(SidebarInfoOptions info);

    QModelIndex indexForFile(const PXFilePtr &file) const;
    PXFilePtr fileForIndex(const QModelIndex &index) const;
    // Whether the folder's children have been listed.
    bool isListed(const QModelIndex &index) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;

Q_SIGNALS:
    // A folder's children were listed for the first time.
    void folderListed(const QModelIndex &folder);
    // A shown folder disappeared from the disk.
    void folderVanished(const PXFilePtr &folder);

private:
    struct Node;

    Node *nodeFor(const QModelIndex &index) const;
    QModelIndex indexForNode(const Node *node, int column = 0) const;
    void startListing(Node *node);
    void applyListing(Node *node);
    QList<PXFilePtr> arrangedChildren(const Node *node) const;
    void forget(Node *node);
    void requestCount(Node *node) const;
    QString countText(const Node *node) const;
    void rearrangeAll(Node *node);

    std::unique_ptr<Node> m_invisibleRoot;
    QHash<const PXFile *, Node *> m_nodes;
    FileSortType m_sort = FileSortType::name;
    bool m_reverse = false;
    FileFilterType m_filter = FileFilterType::visibleFolders;
    SidebarInfoOptions m_info = SidebarInfoOptions::filesAndFolders;
    quint64 m_generation = 0; // counts started before a root or filter change are dropped
};
