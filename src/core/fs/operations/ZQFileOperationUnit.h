#pragma once

#include "core/fs/ZQStandardFile.h"
#include "core/fs/operations/ZQFileOperationTypes.h"

#include <QString>

// One item of a file operation: its source and, for a rename, the name it is to get. The
// operation fills its errors while preparing, the delegate sets its resolution, and the run
// records what became of it.
class ZQFileOperationUnit
{
public:
    enum class State { pending, skipped, done, failed };

    ZQFileOperationUnit(ZQFilePtr sourceItem, QString renamedFilename);

    const ZQFilePtr &sourceItem() const { return m_sourceItem; }
    const QString &renamedFilename() const { return m_renamedFilename; }
    void setRenamedFilename(const QString &name) { m_renamedFilename = name; }
    // Where the item ends up; set by the operation while preparing.
    const QString &destinationPath() const { return m_destinationPath; }
    void setDestinationPath(const QString &path) { m_destinationPath = path; }

    const ZQFileOperationError &sourceError() const { return m_sourceError; }
    void setSourceError(const ZQFileOperationError &error) { m_sourceError = error; }
    const ZQFileOperationError &destinationError() const { return m_destinationError; }
    void setDestinationError(const ZQFileOperationError &error) { m_destinationError = error; }
    bool hasError() const { return m_sourceError.isError() || m_destinationError.isError(); }
    // The destination error when there is one, else the source error.
    const ZQFileOperationError &error() const
    {
        return m_destinationError.isError() ? m_destinationError : m_sourceError;
    }

    ZQFileOperationResolution resolution() const { return m_resolution; }
    void setResolution(ZQFileOperationResolution resolution) { m_resolution = resolution; }

    State state() const { return m_state; }
    void setState(State state) { m_state = state; }

    // The work the unit stands for, set in preflight: bytes to write and files to make (a move
    // within a volume writes none).
    qint64 byteCount() const { return m_byteCount; }
    qint64 fileCount() const { return m_fileCount; }
    void setWork(qint64 bytes, qint64 files)
    {
        m_byteCount = bytes;
        m_fileCount = files;
    }

private:
    ZQFilePtr m_sourceItem;
    QString m_renamedFilename;
    QString m_destinationPath;
    ZQFileOperationError m_sourceError;
    ZQFileOperationError m_destinationError;
    ZQFileOperationResolution m_resolution = ZQFileOperationResolution::unresolved;
    State m_state = State::pending;
    qint64 m_byteCount = 0;
    qint64 m_fileCount = 1;
};
