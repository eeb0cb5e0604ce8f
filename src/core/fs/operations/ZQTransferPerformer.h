#pragma once

#include "core/fs/operations/ZQFileOperationPerformer.h"

#include "core/fs/ZQStandardFile.h"

#include <QByteArray>

#include <functional>
#include <vector>

// Moves, copies, duplicates and aliases (symbolic links) items into a folder: the group's
// destination, or for a duplicate the item's own folder.
//
// An item is given its own name, or the unit's name when it has one; a duplicate gets a free name
// ("photo copy.jpg", "photo copy 2.jpg", ...) and an alias beside its original "photo alias.jpg".
// An occupied name is an error for the delegate, who answers skip, keep both (a numbered free
// name) or replace; nothing is replaced without that answer, and the final step itself refuses an
// item that appeared after the checks (RENAME_NOREPLACE, O_EXCL, linkat). A move within a volume
// renames; across volumes it copies (ZQItemCopier) and removes the originals only once their
// copies are checked and on the disk: the copies of a batch (up to a gigabyte or a few thousand
// items, and whatever is done when the run ends) are synced in one step, then their originals
// go. A failed or cancelled move leaves every original whose copy is not safe where it was.
class ZQTransferPerformer : public ZQFileOperationPerformer
{
public:
    // Writes a volume's data to its disk; 0 or an errno (ZQItemCopier::syncVolume).
    using VolumeSync = std::function<int(const QByteArray &folder)>;

    // move, copy, duplicate or alias.
    explicit ZQTransferPerformer(ZQFileOperationType type);
    ~ZQTransferPerformer() override;

    void prepare(ZQFileOperationGroup &group) override;
    void preflight(ZQFileOperationGroup &group) override;
    ZQFileOperationError perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) override;
    ZQFileOperationError finishPerforming() override;

    // For tests: what syncs a destination before originals are removed.
    void setVolumeSync(VolumeSync sync) { m_sync = std::move(sync); }

private:
    struct Moved
    {
        QByteArray source;
        QByteArray destination;
        ZQFilePtr item;
    };

    QByteArray destinationFolder(const ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) const;
    QString wantedName(const ZQFileOperationUnit &unit, const QByteArray &folder) const;
    // Syncs the copies waiting in m_moved, then removes their originals.
    ZQFileOperationError removeMovedOriginals();

    ZQFileOperationType m_type;
    VolumeSync m_sync;
    std::vector<Moved> m_moved; // copied across volumes, originals still in place
    qint64 m_movedBytes = 0;
};
