#pragma once

#include "core/fs/operations/ZQFileOperationPerformer.h"

#include <QByteArray>

// Moves, copies, duplicates and aliases (symbolic links) items into a folder: the group's
// destination, or for a duplicate the item's own folder.
//
// An item is given its own name, or the unit's name when it has one; a duplicate gets a free name
// ("photo copy.jpg", "photo copy 2.jpg", ...) and an alias beside its original "photo alias.jpg".
// An occupied name is an error for the delegate, who answers skip, keep both (a numbered free
// name) or replace; nothing is replaced without that answer, and the final step itself refuses an
// item that appeared after the checks (RENAME_NOREPLACE, O_EXCL, linkat). A move within a volume
// renames; across volumes it copies (ZQItemCopier), then removes the original, so that a failed or
// cancelled move leaves every original where it was.
class ZQTransferPerformer : public ZQFileOperationPerformer
{
public:
    // move, copy, duplicate or alias.
    explicit ZQTransferPerformer(ZQFileOperationType type);

    void prepare(ZQFileOperationGroup &group) override;
    void preflight(ZQFileOperationGroup &group) override;
    ZQFileOperationError perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) override;

private:
    QByteArray destinationFolder(const ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) const;
    QString wantedName(const ZQFileOperationUnit &unit, const QByteArray &folder) const;

    ZQFileOperationType m_type;
};
