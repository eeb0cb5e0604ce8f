#include "fs/ZQFileRegistry.h"

ZQFileRegistry &ZQFileRegistry::shared()
{
    static ZQFileRegistry registry;
    return registry;
}

void ZQFileRegistry::setFactory(Factory factory)
{
    QMutexLocker locker(&m_mutex);
    m_factory = std::move(factory);
}

ZQFilePtr ZQFileRegistry::fileForNativePath(const QByteArray &cleanNativePath, ZQEntryKind kind)
{
    QMutexLocker locker(&m_mutex);
    auto it = m_files.find(cleanNativePath);
    if (it != m_files.end()) {
        if (ZQFilePtr existing = it->lock())
            return existing;
    }
    ZQStandardFile *raw = m_factory ? m_factory(cleanNativePath, kind) : new ZQStandardFile(cleanNativePath, kind);
    ZQFilePtr file(raw, [this](ZQStandardFile *dying) {
        forget(dying->nativePath(), dying);
        delete dying;
    });
    m_files.insert(cleanNativePath, file);
    return file;
}

int ZQFileRegistry::liveCount() const
{
    QMutexLocker locker(&m_mutex);
    int count = 0;
    for (const auto &weak : m_files)
        count += weak.expired() ? 0 : 1;
    return count;
}

void ZQFileRegistry::forget(const QByteArray &nativePath, const ZQStandardFile *file)
{
    ZQFilePtr current; // released after the lock: it may be the last reference to a newer object
    QMutexLocker locker(&m_mutex);
    auto it = m_files.find(nativePath);
    // A newer object may already stand for the path; only the dying one's entry goes.
    if (it != m_files.end()) {
        current = it->lock();
        if (!current || current.get() == file)
            m_files.erase(it);
    }
    locker.unlock();
}
