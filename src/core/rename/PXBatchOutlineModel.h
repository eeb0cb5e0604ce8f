#pragma once

#include "core/model/FileSorting.h"
#include "core/rename/PXBatchItem.h"

#include <QHash>
#include <QList>
#include <QObject>

#include <functional>
#include <optional>

// The batch renamer's list of files as a model: turns the flat set of items (the files and folders
// the user added and what scanning their folders found) into a sorted tree, or into one flat
// sorted list, and numbers the items in display order.
//
// Items are keyed by path. An item whose folder is listed becomes that folder's child; one whose
// folder is not listed but lies inside a listed folder gets container items for the folders in
// between; any other item is a root. Changes are collected and applied by commitChanges, which
// rebuilds, sorts and renumbers once and emits `updated`. Lives on the GUI thread.
class PXBatchOutlineModel : public QObject
{
    Q_OBJECT

public:
    // Makes the items of the batch's own class (file rename items) for folders it creates.
    using ItemFactory = std::function<PXBatchItemPtr(const PXFilePtr &file, bool isContainer)>;

    explicit PXBatchOutlineModel(ItemFactory itemClass, QObject *parent = nullptr);
    ~PXBatchOutlineModel() override;

    void setItems(const QList<PXBatchItemPtr> &items);
    void addItems(const QList<PXBatchItemPtr> &items);
    // With `removeChildren`, items inside a removed folder go too.
    void removeItems(const QList<PXBatchItemPtr> &items, bool removeChildren);
    // The items as given, in the order they were added.
    const QList<PXBatchItemPtr> &items() const { return m_items; }
    PXBatchItemPtr itemForIdentifier(const QString &identifier) const { return m_itemsById.value(identifier); }
    // After a rename: the item is now known by its new path.
    void reindexItem(const PXBatchItemPtr &item, const QString &previousIdentifier);

    // Which files show: folders (containers) always do.
    void setFilterPredicate(const std::optional<FilePredicate> &predicate);
    void setSortDescriptors(const QList<SortDescriptor> &descriptors);
    const QList<SortDescriptor> &sortDescriptors() const { return m_sortDescriptors; }
    void setFlattenedItemsSortDescriptors(const QList<SortDescriptor> &descriptors);
    void setSortFlattenedItemsSeparately(bool separately);
    void setShowAsFlatList(bool flat);
    bool showAsFlatList() const { return m_showAsFlatList; }

    // Marks the arrangement stale; commitChanges rebuilds it.
    void setNeedsUpdate();
    bool needsUpdate() const { return m_needsUpdate; }
    // Applies pending changes: builds the tree, sorts, numbers, and emits `updated`.
    void commitChanges();
    void buildTreeFromItems();
    void resortData();
    void recalculateIndexes();

    // The roots of the tree as built (folders created for the tree included), and sorted.
    const QList<PXBatchItemPtr> &rootItems() const { return m_rootItems; }
    const QList<PXBatchItemPtr> &arrangedRootItems() const { return m_arrangedRootItems; }
    // Every shown item in display order: the order of numbering, collision checks and renaming.
    // In a flat list, the files alone.
    const QList<PXBatchItemPtr> &arrangedItems() const { return m_arrangedItems; }
    // Every item of the tree, the created folders included.
    QList<PXBatchItemPtr> allItems() const;

Q_SIGNALS:
    void updated();

private:
    bool passesFilter(const PXBatchItemPtr &item) const;
    bool liesInsideListedFolder(const QString &folderPath, QHash<QString, bool> &known) const;
    void recursiveCreateContainerForItem(const PXBatchItemPtr &item, QHash<QString, PXBatchItemPtr> &tree);
    void appendInDisplayOrder(const PXBatchItemPtr &item, QList<PXBatchItemPtr> &into) const;
    void sortList(QList<PXBatchItemPtr> &list, const QList<SortDescriptor> &descriptors) const;

    ItemFactory m_itemClass;
    QList<PXBatchItemPtr> m_items;
    QHash<QString, PXBatchItemPtr> m_itemsById;
    QHash<QString, PXBatchItemPtr> m_containers; // folders created for the tree, kept across rebuilds
    QList<PXBatchItemPtr> m_rootItems;
    QList<PXBatchItemPtr> m_arrangedRootItems;
    QList<PXBatchItemPtr> m_arrangedItems;
    QList<PXBatchItemPtr> m_flatItems;
    std::optional<FilePredicate> m_filterPredicate;
    QList<SortDescriptor> m_sortDescriptors;
    QList<SortDescriptor> m_flattenedItemsSortDescriptors;
    bool m_sortFlattenedItemsSeparately = false;
    bool m_showAsFlatList = false;
    bool m_needsUpdate = true;
};
