#include "core/thumbnails/ThumbnailThrottle.h"

#include <QThread>

#include <utility>

int ThumbnailThrottle::defaultBusyLimit()
{
    return qMax(1, QThread::idealThreadCount() - 1);
}

ThumbnailThrottle::ThumbnailThrottle(int limit, int busyLimit)
    : m_limit(qMax(1, limit))
    , m_busyLimit(qMax(1, busyLimit))
{ }

ThumbnailThrottle::Slot::Slot(Slot &&other) noexcept
    : m_throttle(std::exchange(other.m_throttle, nullptr))
{ }

ThumbnailThrottle::Slot::~Slot()
{
    if (m_throttle)
        m_throttle->release();
}

ThumbnailThrottle::Slot ThumbnailThrottle::acquire()
{
    QMutexLocker locker(&m_mutex);
    ++m_waiting;
    while (m_running >= currentLimitLocked())
        m_slotFreed.wait(&m_mutex);
    --m_waiting;
    ++m_running;
    return Slot(this);
}

void ThumbnailThrottle::release()
{
    QMutexLocker locker(&m_mutex);
    --m_running;
    m_slotFreed.wakeOne();
}

void ThumbnailThrottle::setBusy(bool busy)
{
    QMutexLocker locker(&m_mutex);
    if (m_busy == busy)
        return;
    m_busy = busy;
    // A raised cap lets several waiting workers go at once.
    m_slotFreed.wakeAll();
}

bool ThumbnailThrottle::isBusy() const
{
    QMutexLocker locker(&m_mutex);
    return m_busy;
}

void ThumbnailThrottle::setLimit(int limit)
{
    QMutexLocker locker(&m_mutex);
    m_limit = qMax(1, limit);
    m_slotFreed.wakeAll();
}

int ThumbnailThrottle::currentLimit() const
{
    QMutexLocker locker(&m_mutex);
    return currentLimitLocked();
}

int ThumbnailThrottle::running() const
{
    QMutexLocker locker(&m_mutex);
    return m_running;
}

int ThumbnailThrottle::waiting() const
{
    QMutexLocker locker(&m_mutex);
    return m_waiting;
}
