#include "core/viewer/DecodedImageCache.h"

#include <QMutexLocker>

#include <algorithm>
#include <limits>

namespace {

// QCache costs are ints: KiB, rounded up so that no picture is free.
int kibibytes(qint64 bytes)
{
    return int(std::min<qint64>((bytes + 1023) / 1024, std::numeric_limits<int>::max()));
}

} // namespace

DecodedImageCache::DecodedImageCache(qint64 capacityBytes)
    : m_entries(kibibytes(capacityBytes))
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
    // A better picture stays; of two of one quality, the larger.
    if (const Entry *held = m_entries.object(nativePath); held
        && (held->quality > entry.quality
            || (held->quality == entry.quality && held->image.width() > entry.image.width())))
        return;
    // QCache refuses (and deletes) what costs more than its whole capacity.
    m_entries.insert(nativePath, new Entry(entry), kibibytes(costOf(entry.image)));
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
    return qint64(m_entries.maxCost()) * 1024;
}

void DecodedImageCache::setCapacity(qint64 bytes)
{
    QMutexLocker lock(&m_mutex);
    m_entries.setMaxCost(kibibytes(bytes));
}

qint64 DecodedImageCache::totalCost() const
{
    QMutexLocker lock(&m_mutex);
    return qint64(m_entries.totalCost()) * 1024;
}
