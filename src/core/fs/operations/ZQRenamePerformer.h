#pragma once

#include "core/fs/operations/ZQFileOperationPerformer.h"

// Renames each unit's item within its folder. Never replaces an existing item: the rename itself
// refuses an occupied name (RENAME_NOREPLACE), so a file that appears between the checks and the
// rename is not lost. A change of case alone works on case-insensitive volumes too. The file
// objects of both names are told of the change.
class ZQRenamePerformer : public ZQFileOperationPerformer
{
public:
    void prepare(ZQFileOperationGroup &group) override;
    void preflight(ZQFileOperationGroup &group) override;
    ZQFileOperationError perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) override;
};
