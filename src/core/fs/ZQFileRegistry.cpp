#include "core/fs/ZQFileRegistry.h"

#include <QByteArrayView>

namespace {
// 1024 slots: a few folders' worth before the first growth, 16 KiB when idle.
constexpr size_t minimumCapacity = 1024;

size_t hashOf(const QByteArray &path)
{
    return qHash(QByteArrayView(path), 0);
}
} // namespace

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
    const size_t hash = hashOf(cleanNativePath);
    QMutexLocker locker(&m_mutex);
    // At most half full, so that probe runs stay short.
    if ((m_count + 1) * 2 > m_slots.size())
        resize(std::max(minimumCapacity, m_slots.size() * 2));

    const size_t mask = m_slots.size() - 1;
    size_t index = hash & mask;
    for (; m_slots[index].file; index = (index + 1) & mask) {
        Slot &slot = m_slots[index];
        if (slot.hash != hash || slot.file->nativePath() != cleanNativePath)
            continue;
        if (ZQFilePtr existing = slot.file->weak_from_this().lock())
            return existing;
        // Its last holder let go and it waits for forget(): a new object takes the slot.
        break;
    }

    ZQStandardFile *raw = m_factory ? m_factory(cleanNativePath, kind) : new ZQStandardFile(cleanNativePath, kind);
    ZQFilePtr file(raw, [this](ZQStandardFile *dying) {
        forget(dying->nativePath(), dying);
        delete dying;
    });
    if (!m_slots[index].file)
        ++m_count;
    m_slots[index] = Slot{hash, raw};
    return file;
}

int ZQFileRegistry::liveCount() const
{
    QMutexLocker locker(&m_mutex);
    int count = 0;
    for (const Slot &slot : m_slots)
        count += slot.file && !slot.file->weak_from_this().expired() ? 1 : 0;
    return count;
}

void ZQFileRegistry::forget(const QByteArray &nativePath, const ZQStandardFile *file)
{
    const size_t hash = hashOf(nativePath);
    QMutexLocker locker(&m_mutex);
    if (m_slots.empty())
        return;
    const size_t mask = m_slots.size() - 1;
    // A newer object may already stand for the path in this slot: only the dying one's goes.
    for (size_t index = hash & mask; m_slots[index].file; index = (index + 1) & mask) {
        if (m_slots[index].file != file)
            continue;
        eraseAt(index);
        --m_count;
        // Give memory back once a big listing is gone.
        if (m_slots.size() > minimumCapacity && m_count * 8 < m_slots.size())
            resize(m_slots.size() / 2);
        return;
    }
}

void ZQFileRegistry::resize(size_t capacity)
{
    std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(capacity));
    const size_t mask = capacity - 1;
    for (const Slot &slot : old) {
        if (!slot.file)
            continue;
        size_t index = slot.hash & mask;
        while (m_slots[index].file)
            index = (index + 1) & mask;
        m_slots[index] = slot;
    }
}

// Removes a slot and moves later members of its probe run back, so that no run has a hole.
void ZQFileRegistry::eraseAt(size_t index)
{
    const size_t mask = m_slots.size() - 1;
    size_t hole = index;
    for (size_t next = (hole + 1) & mask; m_slots[next].file; next = (next + 1) & mask) {
        const size_t home = m_slots[next].hash & mask;
        // The entry may move into the hole unless its home lies cyclically in (hole, next].
        const bool homeBetween = hole <= next ? (hole < home && home <= next) : (hole < home || home <= next);
        if (homeBetween)
            continue;
        m_slots[hole] = m_slots[next];
        hole = next;
    }
    m_slots[hole] = Slot{};
}
