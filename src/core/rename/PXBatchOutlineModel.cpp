#include "core/rename/PXBatchOutlineModel.h"

#include "core/model/PXFile.h"

#include <QSet>

PXBatchOutlineModel::PXBatchOutlineModel(ItemFactory itemClass, QObject *parent)
    : QObject(parent)
    , m_itemClass(std::move(itemClass))
{ }

PXBatchOutlineModel::~PXBatchOutlineModel() = default;

void PXBatchOutlineModel::setItems(const QList<PXBatchItemPtr> &items)
{
    m_items.clear();
    m_itemsById.clear();
    addItems(items);
    setNeedsUpdate();
}

void PXBatchOutlineModel::addItems(const QList<PXBatchItemPtr> &items)
{
    for (const PXBatchItemPtr &item : items) {
        const QString identifier = item->identifier();
        if (identifier.isEmpty() || m_itemsById.contains(identifier))
            continue;
        m_items.append(item);
        m_itemsById.insert(identifier, item);
    }
    setNeedsUpdate();
}

void PXBatchOutlineModel::removeItems(const QList<PXBatchItemPtr> &items, bool removeChildren)
{
    QSet<PXBatchItem *> removed;
    QStringList removedFolders;
    for (const PXBatchItemPtr &item : items) {
        removed.insert(item.get());
        if (removeChildren && item->representedObject() && item->representedObject()->isDirectory())
            removedFolders.append(item->identifier() + QLatin1Char('/'));
    }
    const auto goes = [&](const PXBatchItemPtr &item) {
        if (removed.contains(item.get()))
            return true;
        const QString identifier = item->identifier();
        for (const QString &folder : std::as_const(removedFolders)) {
            if (identifier.startsWith(folder))
                return true;
        }
        return false;
    };
    for (qsizetype i = m_items.size() - 1; i >= 0; --i) {
        if (goes(m_items[i])) {
            m_itemsById.remove(m_items[i]->identifier());
            m_items.removeAt(i);
        }
    }
    setNeedsUpdate();
}

void PXBatchOutlineModel::reindexItem(const PXBatchItemPtr &item, const QString &previousIdentifier)
{
    if (m_itemsById.value(previousIdentifier) == item)
        m_itemsById.remove(previousIdentifier);
    m_itemsById.insert(item->identifier(), item);
    setNeedsUpdate();
}

void PXBatchOutlineModel::setFilterPredicate(const std::optional<FilePredicate> &predicate)
{
    m_filterPredicate = predicate;
    setNeedsUpdate();
}

void PXBatchOutlineModel::setSortDescriptors(const QList<SortDescriptor> &descriptors)
{
    m_sortDescriptors = descriptors;
    setNeedsUpdate();
}

void PXBatchOutlineModel::setFlattenedItemsSortDescriptors(const QList<SortDescriptor> &descriptors)
{
    m_flattenedItemsSortDescriptors = descriptors;
    setNeedsUpdate();
}

void PXBatchOutlineModel::setSortFlattenedItemsSeparately(bool separately)
{
    m_sortFlattenedItemsSeparately = separately;
    setNeedsUpdate();
}

void PXBatchOutlineModel::setShowAsFlatList(bool flat)
{
    m_showAsFlatList = flat;
    setNeedsUpdate();
}

void PXBatchOutlineModel::setNeedsUpdate()
{
    m_needsUpdate = true;
}

void PXBatchOutlineModel::commitChanges()
{
    if (!m_needsUpdate)
        return;
    m_needsUpdate = false;
    buildTreeFromItems();
    resortData();
    recalculateIndexes();
    Q_EMIT updated();
}

bool PXBatchOutlineModel::passesFilter(const PXBatchItemPtr &item) const
{
    if (!m_filterPredicate || item->isContainer() || !item->representedObject())
        return true;
    return (*m_filterPredicate)(*item->representedObject());
}

bool PXBatchOutlineModel::liesInsideListedFolder(const QString &folderPath, QHash<QString, bool> &known) const
{
    QStringList walked;
    bool inside = false;
    for (QString path = folderPath; !path.isEmpty();) {
        if (const auto found = known.constFind(path); found != known.constEnd()) {
            inside = *found;
            break;
        }
        walked.append(path);
        const PXBatchItemPtr listed = m_itemsById.value(path);
        if (listed && listed->isContainer()) {
            inside = true;
            break;
        }
        if (path == QLatin1String("/"))
            break;
        const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
        path = slash <= 0 ? QStringLiteral("/") : path.left(slash);
    }
    for (const QString &path : std::as_const(walked))
        known.insert(path, inside);
    return inside;
}

void PXBatchOutlineModel::recursiveCreateContainerForItem(const PXBatchItemPtr &item,
                                                          QHash<QString, PXBatchItemPtr> &tree)
{
    const QString folderPath = item->parentIdentifier();
    PXBatchItemPtr container = tree.value(folderPath);
    if (!container) {
        container = m_containers.value(folderPath);
        if (!container)
            container = m_itemClass(PXFile::fileForPath(folderPath), true);
        tree.insert(folderPath, container);
        if (const PXBatchItemPtr above = tree.value(container->parentIdentifier()))
            above->addChild(container);
        else
            recursiveCreateContainerForItem(container, tree);
    }
    container->addChild(item);
}

void PXBatchOutlineModel::buildTreeFromItems()
{
    for (const PXBatchItemPtr &item : std::as_const(m_items))
        item->clearChildren();
    for (const PXBatchItemPtr &container : std::as_const(m_containers))
        container->clearChildren();

    QHash<QString, PXBatchItemPtr> tree;
    tree.reserve(m_items.size());
    QList<PXBatchItemPtr> shown;
    shown.reserve(m_items.size());
    for (const PXBatchItemPtr &item : std::as_const(m_items)) {
        if (passesFilter(item)) {
            tree.insert(item->identifier(), item);
            shown.append(item);
        }
    }
    const QHash<QString, PXBatchItemPtr> listed = tree;

    m_rootItems.clear();
    QHash<QString, bool> insideListedFolder;
    for (const PXBatchItemPtr &item : std::as_const(shown)) {
        const QString folderPath = item->parentIdentifier();
        if (const PXBatchItemPtr folder = listed.value(folderPath); folder && folder->isContainer())
            folder->addChild(item);
        else if (!folderPath.isEmpty() && liesInsideListedFolder(folderPath, insideListedFolder))
            recursiveCreateContainerForItem(item, tree);
        else
            m_rootItems.append(item);
    }

    // Keep the folders made for this tree (and their expansion) until the next build.
    QHash<QString, PXBatchItemPtr> containers;
    for (auto it = tree.cbegin(); it != tree.cend(); ++it) {
        if (!listed.contains(it.key()))
            containers.insert(it.key(), it.value());
    }
    m_containers = std::move(containers);

    m_flatItems.clear();
    for (const PXBatchItemPtr &item : std::as_const(shown)) {
        if (!item->isContainer())
            m_flatItems.append(item);
    }
}

void PXBatchOutlineModel::sortList(QList<PXBatchItemPtr> &list, const QList<SortDescriptor> &descriptors) const
{
    if (descriptors.isEmpty() || list.size() < 2)
        return;
    sortItems<PXBatchItemPtr>(list, descriptors,
                              [](const PXBatchItemPtr &item) -> const PXFile & { return *item->representedObject(); });
}

void PXBatchOutlineModel::resortData()
{
    for (const PXBatchItemPtr &root : std::as_const(m_rootItems))
        root->updateSortDescriptors(m_sortDescriptors);
    m_arrangedRootItems = m_rootItems;
    sortList(m_arrangedRootItems, m_sortDescriptors);
    if (m_showAsFlatList)
        sortList(m_flatItems, m_sortFlattenedItemsSeparately ? m_flattenedItemsSortDescriptors : m_sortDescriptors);
}

void PXBatchOutlineModel::appendInDisplayOrder(const PXBatchItemPtr &item, QList<PXBatchItemPtr> &into) const
{
    into.append(item);
    if (item->isLeaf())
        return;
    for (const PXBatchItemPtr &child : item->arrangedChildren())
        appendInDisplayOrder(child, into);
}

void PXBatchOutlineModel::recalculateIndexes()
{
    const QList<PXBatchItemPtr> everything = allItems();
    for (const PXBatchItemPtr &item : everything)
        item->clearIndexes();
    quint64 overallIndex = 0;
    quint64 folderIndex = 0;
    for (const PXBatchItemPtr &root : std::as_const(m_arrangedRootItems))
        root->setOverallIndex(overallIndex, folderIndex);

    m_arrangedItems.clear();
    if (m_showAsFlatList) {
        quint64 flatIndex = 0;
        for (const PXBatchItemPtr &item : std::as_const(m_flatItems))
            item->setItemOverallIndex(flatIndex++);
        m_arrangedItems = m_flatItems;
    } else {
        m_arrangedItems.reserve(everything.size());
        for (const PXBatchItemPtr &root : std::as_const(m_arrangedRootItems))
            appendInDisplayOrder(root, m_arrangedItems);
    }
}

QList<PXBatchItemPtr> PXBatchOutlineModel::allItems() const
{
    QList<PXBatchItemPtr> all = m_rootItems;
    for (const PXBatchItemPtr &root : m_rootItems)
        root->allChildrenRecursive(all);
    return all;
}
