#include "core/viewer/DecodedImageCache.h"

#include <QMutexLocker>

DecodedImageCache::DecodedImageCache(qint64 capacityBytes)
    : m_entries(capacityBytes)
{ }

DecodedImageCache &DecodedImageCache::shared()
{
    static DecodedImageCache instance;
    return instance;
}

void DecodedImageCache::insert(const QByteArray &nativePath, const Entry &entry)
{
    if (entry.image.isNull() || nativePath.isEmpty())
        return;
    QMutexLocker lock(&m_mutex);
    // A better picture of the same file stays; of two of one quality, the larger.
    if (const Entry *held = m_entries.object(nativePath); held && held->version == entry.version
        && (held->quality > entry.quality
            || (held->quality == entry.quality && held->image.width() > entry.image.width())))
        return;
    // QCache refuses (and deletes) what costs more than its whole capacity.
    m_entries.insert(nativePath, new Entry(entry), costOf(entry.image));
}

DecodedImageCache::Entry DecodedImageCache::find(const QByteArray &nativePath) const
{
    QMutexLocker lock(&m_mutex);
    if (const Entry *held = m_entries.object(nativePath))
        return *held;
    return {};
}

void DecodedImageCache::remove(const QByteArray &nativePath)
{
    QMutexLocker lock(&m_mutex);
    m_entries.remove(nativePath);
}

void DecodedImageCache::clear()
{
    QMutexLocker lock(&m_mutex);
    m_entries.clear();
}

qint64 DecodedImageCache::capacity() const
{
    QMutexLocker lock(&m_mutex);
    return m_entries.maxCost();
}

void DecodedImageCache::setCapacity(qint64 bytes)
{
    QMutexLocker lock(&m_mutex);
    m_entries.setMaxCost(bytes);
}

qint64 DecodedImageCache::totalCost() const
{
    QMutexLocker lock(&m_mutex);
    return m_entries.totalCost();
}
