#pragma once

#include <QMutex>
#include <QWaitCondition>

// Caps how many thumbnail workers decode, scale and write the cache at the same time. While no
// view scrolls, `limit` of them may (as many as requests run); while one scrolls, at most
// `busyLimit`, one fewer than the cores, so that the GUI thread finds a core free for its next
// frame even when every worker is runnable. The requests themselves keep running: only their
// heavy steps wait for a slot.
//
// A worker holds a `Slot` around each heavy step. Lowering the cap never interrupts a step that
// holds a slot; the next workers wait until enough slots are returned. Any thread.
class ThumbnailThrottle
{
public:
    // The cores but one, and at least one.
    static int defaultBusyLimit();

    explicit ThumbnailThrottle(int limit, int busyLimit = defaultBusyLimit());
    ThumbnailThrottle(const ThumbnailThrottle &) = delete;
    ThumbnailThrottle &operator=(const ThumbnailThrottle &) = delete;

    // Returned when destroyed.
    class [[nodiscard]] Slot
    {
    public:
        Slot(Slot &&other) noexcept;
        Slot &operator=(Slot &&) = delete;
        ~Slot();

    private:
        friend class ThumbnailThrottle;
        explicit Slot(ThumbnailThrottle *throttle)
            : m_throttle(throttle)
        { }
        ThumbnailThrottle *m_throttle;
    };

    // Waits until fewer slots than the cap are held, then takes one.
    Slot acquire();

    // Whether a view is scrolling: the cap is then `busyLimit`.
    void setBusy(bool busy);
    bool isBusy() const;
    // The cap while no view scrolls.
    void setLimit(int limit);
    // The cap now.
    int currentLimit() const;
    // Slots held, and workers waiting for one.
    int running() const;
    int waiting() const;

private:
    void release();
    int currentLimitLocked() const { return m_busy ? qMin(m_busyLimit, m_limit) : m_limit; }

    mutable QMutex m_mutex;
    QWaitCondition m_slotFreed;
    int m_limit;
    int m_busyLimit;
    bool m_busy = false;
    int m_running = 0;
    int m_waiting = 0;
};
