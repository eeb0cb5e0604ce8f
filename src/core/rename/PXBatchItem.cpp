#include "core/rename/PXBatchItem.h"

#include "core/app/Log.h"
#include "core/model/PXFile.h"

PXBatchItem::PXBatchItem(PXFilePtr representedObject, bool isContainer)
    : m_representedObject(std::move(representedObject))
    , m_isContainer(isContainer)
{
    if (!m_representedObject)
        logError(QStringLiteral("Error, tried to initialize batch item with nil object"));
}

PXBatchItem::~PXBatchItem() = default;

void PXBatchItem::setRepresentedObject(PXFilePtr file)
{
    if (file)
        m_representedObject = std::move(file);
}

QString PXBatchItem::identifier() const
{
    return m_representedObject ? m_representedObject->path() : QString();
}

QString PXBatchItem::parentIdentifier() const
{
    return m_representedObject ? m_representedObject->parentPath() : QString();
}

void PXBatchItem::addChild(const PXBatchItemPtr &child)
{
    m_hasChildren = true;
    child->m_parent = weak_from_this();
    m_children.append(child);
    m_arrangedChildren.append(child);
    m_arrangementStale = !m_sortDescriptors.isEmpty();
}

const QList<PXBatchItemPtr> &PXBatchItem::arrangedChildren() const
{
    if (m_arrangementStale) {
        m_arrangementStale = false;
        sortItems<PXBatchItemPtr>(m_arrangedChildren, m_sortDescriptors,
                                  [](const PXBatchItemPtr &item) -> const PXFile & {
                                      return *item->representedObject();
                                  });
    }
    return m_arrangedChildren;
}

void PXBatchItem::updateSortDescriptors(const QList<SortDescriptor> &descriptors)
{
    if (m_children.isEmpty())
        return;
    m_sortDescriptors = descriptors;
    m_arrangedChildren = m_children;
    m_arrangementStale = !descriptors.isEmpty();
    for (const PXBatchItemPtr &child : std::as_const(m_children))
        child->updateSortDescriptors(descriptors);
}

void PXBatchItem::setOverallIndex(quint64 &overallIndex, quint64 &index)
{
    if (m_isContainer) {
        m_itemIndex = notFound;
        m_itemOverallIndex = notFound;
    } else {
        m_itemIndex = index++;
        m_itemOverallIndex = overallIndex++;
    }
    if (isLeaf())
        return;
    quint64 folderIndex = 0;
    for (const PXBatchItemPtr &child : arrangedChildren())
        child->setOverallIndex(overallIndex, folderIndex);
}

void PXBatchItem::clearIndexes()
{
    m_itemIndex = notFound;
    m_itemOverallIndex = notFound;
}

void PXBatchItem::clearChildren()
{
    for (const PXBatchItemPtr &child : std::as_const(m_children)) {
        if (child->parent().get() == this)
            child->m_parent.reset();
    }
    m_children.clear();
    m_arrangedChildren.clear();
    m_arrangementStale = false;
    m_hasChildren = false;
}

void PXBatchItem::allChildrenRecursive(QList<PXBatchItemPtr> &into) const
{
    into.append(m_children);
    for (const PXBatchItemPtr &child : m_children)
        child->allChildrenRecursive(into);
}

QString PXBatchItem::description() const
{
    return QStringLiteral("PXBatchItem %1, is container: (%2)").arg(identifier()).arg(int(m_isContainer));
}
