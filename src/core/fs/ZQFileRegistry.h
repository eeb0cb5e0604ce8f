#pragma once

#include "core/fs/ZQStandardFile.h"

#include <QHash>
#include <QMutex>

#include <functional>
#include <vector>

// Keeps one file object per path while it is in use, and makes new ones through a factory so
// that the program's own file record type (a subclass) is what every listing hands out.
//
// A listing asks once per entry, nearly always for a path that is not known yet, so the table is
// built for that: open addressing over (hash, object) pairs, where an unknown path costs one
// probe run that compares hashes only, and the path bytes are compared only when the hashes
// match. The objects themselves hold the keys (their native paths); nothing is copied.
class ZQFileRegistry
{
public:
    using Factory = std::function<ZQStandardFile *(const QByteArray &nativePath, ZQEntryKind kind)>;

    static ZQFileRegistry &shared();

    void setFactory(Factory factory);
    ZQFilePtr fileForNativePath(const QByteArray &cleanNativePath, ZQEntryKind kind);
    int liveCount() const;

private:
    struct Slot
    {
        size_t hash = 0;
        ZQStandardFile *file = nullptr; // null: empty
    };

    void forget(const QByteArray &nativePath, const ZQStandardFile *file);
    void resize(size_t capacity);
    void eraseAt(size_t index);

    mutable QMutex m_mutex;
    std::vector<Slot> m_slots;
    size_t m_count = 0;
    Factory m_factory;
};
