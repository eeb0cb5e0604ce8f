#pragma once

#include "core/fs/operations/ZQFileOperationPerformer.h"
#include "core/fs/operations/ZQTrash.h"

// Moves items to the trash (ZQTrash), or puts trashed items back where they came from. A trashed
// unit's destination path is where the item went in the trash, so that the group of a finished
// run is what a restore (an undo) needs. A restore asks the delegate when an item has taken the
// original name: skip, keep both or replace.
class ZQTrashPerformer : public ZQFileOperationPerformer
{
public:
    // trash or restoreFromTrash.
    explicit ZQTrashPerformer(ZQFileOperationType type, ZQTrash trash = ZQTrash());

    void prepare(ZQFileOperationGroup &group) override;
    void preflight(ZQFileOperationGroup &group) override;
    ZQFileOperationError perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) override;

private:
    ZQFileOperationType m_type;
    ZQTrash m_trash;
};

// Makes new folders in the group's destination: each unit's name ("untitled folder" when it has
// none), numbered when taken ("untitled folder 2"). mkdir refuses an existing name, so an item
// that appears meanwhile is never touched. The unit's destination path is the folder made.
class ZQNewFolderPerformer : public ZQFileOperationPerformer
{
public:
    void prepare(ZQFileOperationGroup &group) override;
    void preflight(ZQFileOperationGroup &) override { }
    ZQFileOperationError perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) override;
};
