#pragma once

#include "fs/ZQStandardFile.h"

#include <QHash>
#include <QMutex>

#include <functional>

// Keeps one file object per path while it is in use, and makes new ones through a factory so
// that the program's own file record type (a subclass) is what every listing hands out.
class ZQFileRegistry
{
public:
    using Factory = std::function<ZQStandardFile *(const QByteArray &nativePath, ZQEntryKind kind)>;

    static ZQFileRegistry &shared();

    void setFactory(Factory factory);
    ZQFilePtr fileForNativePath(const QByteArray &cleanNativePath, ZQEntryKind kind);
    int liveCount() const;

private:
    void forget(const QByteArray &nativePath, const ZQStandardFile *file);

    mutable QMutex m_mutex;
    QHash<QByteArray, std::weak_ptr<ZQStandardFile>> m_files;
    Factory m_factory;
};
