#pragma once

#include "core/fs/ZQFileEvent.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QTimer>

#include <functional>

// Coalesces bursts of kernel events into one event per file. The first event opens a short
// window; when it closes the owner is called back and takes the events, which are then judged
// against what the owner's subscribers know:
//
// - a file that was not known and stands at the end: created (a write or rename on top of that
//   changes nothing); one that was not known and is gone again: no event at all;
// - a known file that is gone at the end: removed;
// - a known file that was removed, created or renamed onto in between: replaced;
// - a name both given and taken in the burst stands at the end if the disk says so: for two
//   names exchanged, the kernel tells of one name given before it tells of it taken;
// - otherwise contentModified if it was written, attributesChanged if only touched.
//
// rescanNeeded events are kept apart, one per folder. Events come out in the order in which
// their files first appeared in the burst.
class ZQEventCoalescer
{
public:
    explicit ZQEventCoalescer(std::function<void()> windowClosed);

    void add(ZQFileEventType type, const QByteArray &nativePath);
    // The burst's events; `isKnown` tells whether the subscribers know a file (before this burst).
    // Files that came and went unknown give no event; `vanished`, when given, receives them.
    QList<ZQFileEvent> take(const std::function<bool(const QByteArray &)> &isKnown,
                            QList<QByteArray> *vanished = nullptr);
    void clear();
    bool isEmpty() const { return m_pending.isEmpty(); }

private:
    struct Pending
    {
        QByteArray nativePath;
        bool rescan = false;
        bool presenceChanged = false; // created, removed or renamed in the burst
        bool existsAtEnd = true;
        bool given = false; // created or renamed onto
        bool taken = false; // removed or renamed away
        bool written = false;
        bool touched = false;
    };

    QList<Pending> m_pending;
    QHash<QByteArray, qsizetype> m_indexOfPath; // into m_pending, rescans excluded
    QTimer m_window;
};
