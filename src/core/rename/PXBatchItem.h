#pragma once

#include "core/model/FileSorting.h"
#include "core/model/PXFileForward.h"

#include <QList>
#include <QString>

#include <limits>
#include <memory>

class PXBatchItem;
using PXBatchItemPtr = std::shared_ptr<PXBatchItem>;

// One row of the batch renamer's tree: a file, or a folder that holds rows.
//
// Folders are containers: they are shown but never renamed and take no number. Every other item
// is numbered twice by setOverallIndex: its position among the items of its own folder and its
// position in the whole batch, both in display order, so that sequences can count either way.
// Children are kept as added and, separately, sorted by the batch's sort descriptors.
class PXBatchItem : public std::enable_shared_from_this<PXBatchItem>
{
public:
    // "Not found": the index of a container and of an item not yet numbered.
    static constexpr quint64 notFound = quint64(std::numeric_limits<qint64>::max());

    explicit PXBatchItem(PXFilePtr representedObject, bool isContainer = false);
    virtual ~PXBatchItem();
    PXBatchItem(const PXBatchItem &) = delete;
    PXBatchItem &operator=(const PXBatchItem &) = delete;

    const PXFilePtr &representedObject() const { return m_representedObject; }
    // The record after the file was renamed: the item stays, its path changes.
    void setRepresentedObject(PXFilePtr file);

    bool isContainer() const { return m_isContainer; }
    bool isExpanded() const { return m_isExpanded; }
    void setExpanded(bool expanded) { m_isExpanded = expanded; }
    PXBatchItemPtr parent() const { return m_parent.lock(); }

    // The represented file's path and its parent folder's path: the keys of the batch.
    QString identifier() const;
    QString parentIdentifier() const;

    quint64 itemIndex() const { return m_itemIndex; }
    quint64 itemOverallIndex() const { return m_itemOverallIndex; }
    void setItemOverallIndex(quint64 index) { m_itemOverallIndex = index; }

    // A leaf has no child list at all; a folder whose children were all removed is no leaf.
    bool isLeaf() const { return !m_hasChildren; }
    const QList<PXBatchItemPtr> &children() const { return m_children; }
    void addChild(const PXBatchItemPtr &child);
    // The children in the order of the last sort descriptors.
    const QList<PXBatchItemPtr> &arrangedChildren() const;
    // Sorts the children by `descriptors` and passes the call down the tree.
    void updateSortDescriptors(const QList<SortDescriptor> &descriptors);

    // Takes the current values of both counters (unless a container) and advances them, then numbers
    // the arranged children with the same overall counter and a folder counter of their own.
    void setOverallIndex(quint64 &overallIndex, quint64 &index);
    void clearIndexes();
    void clearChildren();
    // Appends the children, then each child's descendants in turn.
    void allChildrenRecursive(QList<PXBatchItemPtr> &into) const;

    QString description() const;

private:
    PXFilePtr m_representedObject;
    bool m_isContainer = false;
    bool m_isExpanded = false;
    std::weak_ptr<PXBatchItem> m_parent;
    bool m_hasChildren = false;
    QList<PXBatchItemPtr> m_children;
    mutable QList<PXBatchItemPtr> m_arrangedChildren;
    mutable bool m_arrangementStale = false;
    QList<SortDescriptor> m_sortDescriptors;
    quint64 m_itemIndex = notFound;
    quint64 m_itemOverallIndex = notFound;
};
