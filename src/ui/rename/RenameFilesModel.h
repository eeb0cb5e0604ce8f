#pragma once

#include "core/rename/PXBatchItem.h"

#include <QAbstractItemModel>
#include <QHash>

class PXFileRenamer;

// The files list of the batch renamer as a model over its arranged items: a tree of folders and
// files, or one flat list. Columns: name, proposed name, and file properties that cost no disk
// read on the GUI thread (kind, size, modification date). A folder's proposed name is "Not Applicable", a file that
// cannot be renamed "Not Renamable", both grey; an unchanged name is grey; a collision is red
// with a mark, as is a name too long for the file system. Reset when the arrangement changes, and
// holds that arrangement until the next reset; only the names are redrawn when they are recomputed.
class RenameFilesModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Column { nameColumn, proposedNameColumn, kindColumn, sizeColumn, modificationDateColumn, columnCount_ };
    // The item of a row, for tests and the window's Delete key.
    static constexpr int batchItemRole = Qt::UserRole + 1;
    // "collision", "tooLong", "unchanged", "notApplicable", "notRenamable" or "" (renamed).
    static constexpr int stateRole = Qt::UserRole + 2;

    explicit RenameFilesModel(PXFileRenamer *renamer, QObject *parent = nullptr);

    // The arrangement changed (files, sort, tree or flat): rebuilds the rows.
    void arrangementChanged();
    // The proposed names were recomputed: redraws them. With `shownRows` (the rows a view shows),
    // only those are announced: a view asks for the others when it shows them, and announcing
    // ten thousand rows costs the view a walk over all of them on every keystroke.
    void namesChanged(const QList<QModelIndex> &shownRows = {});
    PXBatchItemPtr itemAt(const QModelIndex &index) const;
    QModelIndex indexFor(const PXBatchItem *item) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    const QList<PXBatchItemPtr> &childrenOf(const PXBatchItem *item) const;
    const PXBatchItem *itemPointerAt(const QModelIndex &index) const;

    PXFileRenamer *m_renamer;
    QList<PXBatchItemPtr> m_roots;
    QHash<const PXBatchItem *, QList<PXBatchItemPtr>> m_children; // of the shown folders
    // Row of each shown item within its parent, and its parent (null for a root).
    QHash<const PXBatchItem *, int> m_rows;
    QHash<const PXBatchItem *, const PXBatchItem *> m_parents;
    QList<const PXBatchItem *> m_folders; // the shown items that hold rows
};
