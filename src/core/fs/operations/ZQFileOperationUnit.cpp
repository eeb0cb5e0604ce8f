#include "core/fs/operations/ZQFileOperationUnit.h"

#include "core/app/Translate.h"

#include <QFileInfo>

#include <cstring>

ZQFileOperationUnit::ZQFileOperationUnit(ZQFilePtr sourceItem, QString renamedFilename)
    : m_sourceItem(std::move(sourceItem))
    , m_renamedFilename(std::move(renamedFilename))
{ }

ZQFileOperationError ZQFileOperationError::forCode(int code, const QString &path)
{
    ZQFileOperationError error;
    error.code = code;
    error.path = path;
    const QString name = QFileInfo(path).fileName();
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
