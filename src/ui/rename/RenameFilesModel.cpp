#include "ui/rename/RenameFilesModel.h"

#include "core/model/PXFile.h"
#include "core/rename/PXBatchOutlineModel.h"
#include "core/rename/PXFileRenameItem.h"
#include "core/rename/PXFileRenamer.h"

#include <QApplication>
#include <QColor>
#include <QIcon>
#include <QPalette>
#include <QStyle>

namespace {

const QList<PXBatchItemPtr> noChildren;

const PXFileRenameItem *renameItem(const PXBatchItem *item)
{
    return static_cast<const PXFileRenameItem *>(item);
}

QString stateOf(const PXFileRenameItem &item)
{
    if (item.isContainer())
        return QStringLiteral("notApplicable");
    // Not computed yet: shown as it is until its proposal arrives.
    if (!item.hasProposal())
        return QStringLiteral("unchanged");
    if (!item.lastKnownRenamable())
        return QStringLiteral("notRenamable");
    if (item.hasCollision())
        return QStringLiteral("collision");
    if (item.nameTooLong())
        return QStringLiteral("tooLong");
    if (!item.nameHasChanged())
        return QStringLiteral("unchanged");
    return QString();
}

} // namespace

RenameFilesModel::RenameFilesModel(PXFileRenamer *renamer, QObject *parent)
    : QAbstractItemModel(parent)
    , m_renamer(renamer)
{ }

const QList<PXBatchItemPtr> &RenameFilesModel::childrenOf(const PXBatchItem *item) const
{
    if (!item)
        return m_roots;
    const auto children = m_children.constFind(item);
    return children == m_children.constEnd() ? noChildren : *children;
}

void RenameFilesModel::arrangementChanged()
{
    beginResetModel();
    const PXBatchOutlineModel &outline = m_renamer->outline();
    const bool flat = outline.showAsFlatList();
    m_roots = flat ? outline.arrangedItems() : outline.arrangedRootItems();
    m_children.clear();
    m_rows.clear();
    m_parents.clear();
    m_folders.clear();
    m_rows.reserve(outline.arrangedItems().size() + 16);
    // Walk the tree once: a row's parent and position are then a look-up, not a search. The rows
    // hold the arrangement as it is now (the lists are shared, not copied), so that the view reads
    // the same rows until the next reset, whatever the batch does meanwhile.
    QList<const PXBatchItem *> pending{nullptr};
    while (!pending.isEmpty()) {
        const PXBatchItem *parentItem = pending.takeLast();
        // A copy (shared, not duplicated): inserting into m_children may move what it refers to.
        const QList<PXBatchItemPtr> children = childrenOf(parentItem);
        for (int row = 0; row < children.size(); ++row) {
            const PXBatchItem *child = children[row].get();
            m_rows.insert(child, row);
            m_parents.insert(child, parentItem);
            if (!flat && !child->isLeaf()) {
                m_children.insert(child, child->arrangedChildren());
                pending.append(child);
                m_folders.append(child);
            }
        }
    }
    endResetModel();
}

void RenameFilesModel::namesChanged(const QList<QModelIndex> &shownRows)
{
    if (m_roots.isEmpty())
        return;
    if (!shownRows.isEmpty()) {
        for (const QModelIndex &row : shownRows)
            Q_EMIT dataChanged(row.siblingAtColumn(0), row.siblingAtColumn(columnCount(row.parent()) - 1));
        return;
    }
    // Every proposed name may have changed: one signal per level is enough for the view, which
    // repaints what it shows.
    Q_EMIT dataChanged(index(0, proposedNameColumn), index(int(m_roots.size()) - 1, proposedNameColumn));
    for (const PXBatchItem *folder : std::as_const(m_folders)) {
        const int count = int(childrenOf(folder).size());
        if (count > 0) {
            const QModelIndex parentIndex = indexFor(folder);
            Q_EMIT dataChanged(index(0, nameColumn, parentIndex), index(count - 1, proposedNameColumn, parentIndex));
        }
    }
    Q_EMIT dataChanged(index(0, nameColumn), index(int(m_roots.size()) - 1, nameColumn));
}

PXBatchItemPtr RenameFilesModel::itemAt(const QModelIndex &index) const
{
    if (!index.isValid())
        return nullptr;
    const QList<PXBatchItemPtr> &children = childrenOf(static_cast<const PXBatchItem *>(index.internalPointer()));
    return index.row() < children.size() ? children[index.row()] : nullptr;
}

// The view asks for every row's index and children when it lays out the list: these look-ups
// take no reference and allocate nothing.
const PXBatchItem *RenameFilesModel::itemPointerAt(const QModelIndex &index) const
{
    if (!index.isValid())
        return nullptr;
    const QList<PXBatchItemPtr> &children = childrenOf(static_cast<const PXBatchItem *>(index.internalPointer()));
    return index.row() < children.size() ? children[index.row()].get() : nullptr;
}

QModelIndex RenameFilesModel::indexFor(const PXBatchItem *item) const
{
    const auto row = m_rows.constFind(item);
    if (row == m_rows.constEnd())
        return {};
    return createIndex(*row, 0, const_cast<PXBatchItem *>(m_parents.value(item)));
}

QModelIndex RenameFilesModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column < 0 || column >= columnCount_ || row < 0)
        return {};
    const PXBatchItem *parentItem = itemPointerAt(parent);
    if (parent.isValid() && !parentItem)
        return {};
    if (row >= childrenOf(parentItem).size())
        return {};
    // An index points at its parent item: the row is looked up in the parent's children.
    return createIndex(row, column, const_cast<PXBatchItem *>(parentItem));
}

QModelIndex RenameFilesModel::parent(const QModelIndex &child) const
{
    if (!child.isValid() || !child.internalPointer())
        return {};
    return indexFor(static_cast<const PXBatchItem *>(child.internalPointer()));
}

int RenameFilesModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    if (!parent.isValid())
        return int(m_roots.size());
    const PXBatchItem *item = itemPointerAt(parent);
    return item ? int(childrenOf(item).size()) : 0;
}

bool RenameFilesModel::hasChildren(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return !m_roots.isEmpty();
    if (parent.column() > 0)
        return false;
    const PXBatchItem *item = itemPointerAt(parent);
    return item && !childrenOf(item).isEmpty();
}

int RenameFilesModel::columnCount(const QModelIndex &) const
{
    return columnCount_;
}

QVariant RenameFilesModel::data(const QModelIndex &index, int role) const
{
    const PXBatchItem *batchItem = itemPointerAt(index);
    if (!batchItem || !batchItem->representedObject())
        return {};
    const PXFileRenameItem &item = *renameItem(batchItem);
    const PXFile &file = *item.representedObject();
    const QString state = stateOf(item);
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case nameColumn: return file.name();
        case proposedNameColumn:
            if (state == QLatin1String("notApplicable"))
                return tr("Not Applicable");
            if (state == QLatin1String("notRenamable"))
                return tr("Not Renamable");
            return item.potentialName();
        case kindColumn: return item.isContainer() ? tr("Folder") : file.kindString();
        case sizeColumn: return item.isContainer() ? QString() : file.fileSizeString();
        case modificationDateColumn: return file.modificationDateString();
        default: return {};
        }
    case Qt::ForegroundRole: {
        if (state == QLatin1String("collision") || state == QLatin1String("tooLong"))
            return QColor(Qt::red);
        const bool grey = state == QLatin1String("notApplicable") || state == QLatin1String("notRenamable")
            || (state == QLatin1String("unchanged") && index.column() == proposedNameColumn);
        if (grey)
            return QApplication::palette().color(QPalette::Disabled, QPalette::Text);
        return {};
    }
    case Qt::DecorationRole:
        if (index.column() == proposedNameColumn
            && (state == QLatin1String("collision") || state == QLatin1String("tooLong")))
            return QApplication::style()->standardIcon(QStyle::SP_MessageBoxCritical);
        if (index.column() == nameColumn && item.isContainer())
            return QApplication::style()->standardIcon(QStyle::SP_DirIcon);
        return {};
    case Qt::ToolTipRole:
        if (state == QLatin1String("collision"))
            return tr("Another file has this name, or another file of the list would get it.");
        if (state == QLatin1String("tooLong"))
            return tr("The new name would be longer than the file system allows (255 bytes); the file keeps "
                      "its name.");
        return index.column() == nameColumn ? file.path() : QVariant();
    case batchItemRole: return QVariant::fromValue(static_cast<void *>(const_cast<PXBatchItem *>(batchItem)));
    case stateRole: return state;
    default: return {};
    }
}

QVariant RenameFilesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case nameColumn: return tr("Name");
    case proposedNameColumn: return tr("New Name");
    case kindColumn: return tr("Kind");
    case sizeColumn: return tr("Size");
    case modificationDateColumn: return tr("Date Modified");
    default: return {};
    }
}

Qt::ItemFlags RenameFilesModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}
