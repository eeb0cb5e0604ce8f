#pragma once

#include <QMetaType>
#include <QString>

// Shared vocabulary of the file operations: their types, the stages a run goes through, the
// answers a delegate gives to a unit's error, and the errors themselves. Raw values of the type
// are shared with the activities and the renamer: never renumber.

enum class ZQFileOperationType : int {
    move = 1,
    copy = 2,
    alias = 3, // a symbolic link to each item
    trash = 4,
    duplicate = 5, // a copy beside the item under a free name ("photo copy.jpg")
    newFolder = 6,
    rename = 8,
    restoreFromTrash = 9, // trashed items back to where they were
};

// A run goes preparing → (awaiting initial resolution) → preflight → (awaiting preflight
// resolution) → performing → completed; cancelling leads straight to completed.
enum class ZQFileOperationStage : int {
    notStarted = 0,
    preparing = 1,
    awaitingInitialResolution = 2,
    preflight = 3,
    awaitingPreflightResolution = 4,
    performing = 5,
    cancelling = 6,
    completed = 7,
};

// What to do about a unit whose source or destination has an error.
enum class ZQFileOperationResolution : int {
    unresolved = 0, // treated as skip: nothing is lost by leaving a file alone
    cancel = 1, // stop the whole operation before anything more is done
    skip = 2, // leave this unit out
    keepBoth = 3, // give the unit's result a free name beside the existing item
    replace = 4, // the existing item gives way; only for "destination exists"
};

// Errors of a unit. Negative codes are the framework's own; positive ones are errno values.
namespace ZQFileOperationErrorCode {
enum : int {
    none = 0,
    unknown = -1,
    sourceMissing = -2, // the item is gone (moved or deleted since it was listed)
    invalidName = -3, // empty, ".", "..", or with "/" or NUL
    destinationFolderMissing = -4,
    destinationExists = -8, // another item already has the name
    cancelled = -9, // the user stopped the run in the middle of this unit; nothing of it is left
    intoItself = -10, // a folder moved or copied into itself or one of its subfolders
    replaceItself = -11, // an item asked to replace itself
    sizeMismatch = -12, // the copy's size differs from the original's: the original is kept
    sourceNotRemoved = -13, // a move copied the item but could not remove the original
    unsupportedType = -14, // a socket, device or pipe: not copied
    noTrash = -15, // the item's volume has no trash and none can be made
    notInTrash = -16, // a restore of an item without its trash information
};
}

struct ZQFileOperationError
{
    int code = ZQFileOperationErrorCode::none;
    QString path; // the item the error is about
    QString description; // one sentence for the alert's message
    QString failureReason; // why, for the alert's text

    bool isError() const { return code != ZQFileOperationErrorCode::none; }

    // `name`: the name the message speaks of, when it is not the last part of `path` (a name
    // with a "/" in it).
    static ZQFileOperationError forCode(int code, const QString &path, const QString &name = {});
};

Q_DECLARE_METATYPE(ZQFileOperationError)
