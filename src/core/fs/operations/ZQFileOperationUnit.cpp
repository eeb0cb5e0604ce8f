#include "core/fs/operations/ZQFileOperationUnit.h"

#include "core/app/Translate.h"

#include <QFileInfo>

#include <cerrno>
#include <cstring>

ZQFileOperationUnit::ZQFileOperationUnit(ZQFilePtr sourceItem, QString renamedFilename)
    : m_sourceItem(std::move(sourceItem))
    , m_renamedFilename(std::move(renamedFilename))
{ }

ZQFileOperationError ZQFileOperationError::forCode(int code, const QString &path, const QString &itemName)
{
    ZQFileOperationError error;
    error.code = code;
    error.path = path;
    const QString name = itemName.isEmpty() ? QFileInfo(path).fileName() : itemName;
    const Translator tr("ZQFileOperation");
    switch (code) {
    case ZQFileOperationErrorCode::none: break;
    case ZQFileOperationErrorCode::sourceMissing:
        error.description = tr("The item “%1” can’t be found.").arg(name);
        error.failureReason = tr("It may have been moved or deleted.");
        break;
    case ZQFileOperationErrorCode::invalidName:
        error.description = tr("“%1” can’t be used as a name.").arg(name);
        error.failureReason = tr("A name can’t be empty, “.” or “..”, or contain “/”.");
        break;
    case ZQFileOperationErrorCode::destinationFolderMissing:
        error.description = tr("The folder of “%1” can’t be found.").arg(name);
        error.failureReason = tr("It may have been moved or deleted.");
        break;
    case ZQFileOperationErrorCode::destinationExists:
        error.description = tr("An item named “%1” already exists in this location.").arg(name);
        error.failureReason = tr("Skip this item, or keep both under another name.");
        break;
    case ZQFileOperationErrorCode::cancelled:
        error.description = tr("The operation was stopped while working on “%1”.").arg(name);
        error.failureReason = tr("What it had begun for this item was undone.");
        break;
    case ZQFileOperationErrorCode::intoItself:
        error.description = tr("“%1” can’t be moved or copied into itself.").arg(name);
        error.failureReason = tr("The destination is inside this folder.");
        break;
    case ZQFileOperationErrorCode::replaceItself:
        error.description = tr("“%1” can’t replace itself.").arg(name);
        error.failureReason = tr("Skip this item, or keep both under another name.");
        break;
    case ZQFileOperationErrorCode::sizeMismatch:
        error.description = tr("The copy of “%1” isn’t complete: its size differs from the original’s.").arg(name);
        error.failureReason = tr("The original was kept. It may have changed while it was copied.");
        break;
    case ZQFileOperationErrorCode::sourceNotRemoved:
        error.description = tr("“%1” was copied, but the original couldn’t be removed.").arg(name);
        error.failureReason = tr("Both the copy and the original are there.");
        break;
    case ZQFileOperationErrorCode::unsupportedType:
        error.description = tr("“%1” is a special file that can’t be copied.").arg(name);
        error.failureReason = tr("Only files, folders and symbolic links can be copied.");
        break;
    case ZQFileOperationErrorCode::noTrash:
        error.description = tr("“%1” can’t be moved to the trash.").arg(name);
        error.failureReason =
            tr("Its volume has no trash, and none could be made there. The item was left where it is.");
        break;
    case ZQFileOperationErrorCode::notInTrash:
        error.description = tr("“%1” can’t be put back.").arg(name);
        error.failureReason = tr("The trash no longer knows where it came from.");
        break;
    case ENOSPC:
    case EDQUOT:
        error.description = tr("“%1” couldn’t be written: the destination is full.").arg(name);
        error.failureReason = tr("Nothing was left half-written, and the originals are where they were.");
        break;
    case EFBIG:
        error.description = tr("“%1” is too large for the destination.").arg(name);
        error.failureReason = tr("Nothing was left half-written, and the originals are where they were.");
        break;
    case EACCES:
    case EPERM:
        error.description = tr("You don’t have permission to change “%1”.").arg(name);
        error.failureReason = tr("Ask for permission, or choose another place.");
        break;
    case EROFS:
        error.description = tr("“%1” is on a volume that can only be read.").arg(name);
        error.failureReason = tr("Choose a place on another volume.");
        break;
    case ELOOP:
        error.description = tr("“%1” leads back to itself through symbolic links.").arg(name);
        error.failureReason = tr("Symbolic links in its path point in a circle.");
        break;
    case ZQFileOperationErrorCode::unknown:
        error.description = tr("The operation couldn’t be completed for “%1”.").arg(name);
        error.failureReason = tr("An unknown error occurred.");
        break;
    default:
        error.description = tr("The operation couldn’t be completed for “%1”.").arg(name);
        error.failureReason = code > 0 ? QString::fromLocal8Bit(std::strerror(code)) : tr("An unknown error occurred.");
        break;
    }
    return error;
}
