#pragma once

#include "core/fs/operations/ZQFileOperationTypes.h"

#include <QList>
#include <QMetaType>
#include <QString>

// What a finished file operation did: each item done, where it was and where it is now (a new
// folder has no source; a trashed item's destination is its place in the trash). Undo and redo
// are built from this, and the panes select what arrived.
struct FileOperationOutcome
{
    struct Item
    {
        QString source;
        QString destination;
    };

    ZQFileOperationType type = ZQFileOperationType::move;
    QString title; // the action as the Edit menu names it: "Move to Trash", "Copy", ...
    QList<Item> items;
    bool cancelled = false;
    ZQFileOperationError error; // the error that stopped the operation, if one did
    bool undoable = true; // false for the operations that undo and redo themselves run

    QStringList destinations() const
    {
        QStringList paths;
        for (const Item &item : items)
            paths.append(item.destination);
        return paths;
    }
};

Q_DECLARE_METATYPE(FileOperationOutcome)
