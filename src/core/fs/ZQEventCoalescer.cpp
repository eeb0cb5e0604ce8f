#include "core/fs/ZQEventCoalescer.h"

#include <sys/stat.h>

namespace {
// 30 ms: long enough to gather a save (create, write, close, rename) or a run of writes into one
// event, short enough that a change appears on screen without a felt delay.
constexpr int coalescingWindowMs = 30;
} // namespace

ZQEventCoalescer::ZQEventCoalescer(std::function<void()> windowClosed)
{
    m_window.setSingleShot(true);
    m_window.setInterval(coalescingWindowMs);
    QObject::connect(&m_window, &QTimer::timeout, &m_window, std::move(windowClosed));
}

void ZQEventCoalescer::add(ZQFileEventType type, const QByteArray &nativePath)
{
    // The window opens with the first event and does not stretch: a file written without pause
    // still reports once per window.
    if (!m_window.isActive())
        m_window.start();

    if (type == ZQFileEventType::rescanNeeded) {
        for (const Pending &pending : std::as_const(m_pending)) {
            if (pending.rescan && pending.nativePath == nativePath)
                return;
        }
        m_pending.append(Pending{nativePath, true});
        return;
    }

    qsizetype index = m_indexOfPath.value(nativePath, -1);
    if (index < 0) {
        index = m_pending.size();
        m_pending.append(Pending{nativePath});
        m_indexOfPath.insert(nativePath, index);
    }
    Pending &pending = m_pending[index];
    switch (type) {
    case ZQFileEventType::created:
    case ZQFileEventType::replaced:
        pending.presenceChanged = true;
        pending.existsAtEnd = true;
        pending.given = true;
        break;
    case ZQFileEventType::removed:
        pending.presenceChanged = true;
        pending.existsAtEnd = false;
        pending.taken = true;
        break;
    case ZQFileEventType::contentModified: pending.written = true; break;
    case ZQFileEventType::attributesChanged: pending.touched = true; break;
    case ZQFileEventType::rescanNeeded: break;
    }
}

QList<ZQFileEvent> ZQEventCoalescer::take(const std::function<bool(const QByteArray &)> &isKnown,
                                          QList<QByteArray> *vanished)
{
    QList<ZQFileEvent> events;
    events.reserve(m_pending.size());
    for (const Pending &pending : std::as_const(m_pending)) {
        if (pending.rescan) {
            events.append(ZQFileEvent{ZQFileEventType::rescanNeeded, pending.nativePath});
            continue;
        }
        const bool known = isKnown(pending.nativePath);
        bool existsAtEnd = pending.existsAtEnd;
        // The disk decides where the events cannot: a name given and taken in one burst (the
        // kernel tells of a name given by an exchange before it tells of it taken), and a name
        // only written to (an item the listing has yet to deliver, or an unnamed "#inode" file,
        // O_TMPFILE, that never had a name).
        if ((pending.given && pending.taken) || (!known && !pending.presenceChanged)) {
            struct stat info
            { };
            existsAtEnd = ::lstat(pending.nativePath.constData(), &info) == 0;
        }
        ZQFileEventType type;
        if (!existsAtEnd) {
            if (!known) {
                if (vanished && pending.presenceChanged)
                    vanished->append(pending.nativePath);
                continue; // came and went within the burst
            }
            type = ZQFileEventType::removed;
        } else if (!known) {
            type = ZQFileEventType::created;
        } else if (pending.presenceChanged) {
            type = ZQFileEventType::replaced;
        } else if (pending.written) {
            type = ZQFileEventType::contentModified;
        } else {
            type = ZQFileEventType::attributesChanged;
        }
        events.append(ZQFileEvent{type, pending.nativePath});
    }
    clear();
    return events;
}

void ZQEventCoalescer::clear()
{
    m_pending.clear();
    m_indexOfPath.clear();
    m_window.stop();
}
