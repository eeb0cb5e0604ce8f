#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QtGlobal>

#include <algorithm>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

// What the calling thread has had from the scheduler: time on a core, and time runnable but
// waiting for one (the machine busy with other threads or processes). Whatever else passes while
// the GUI thread does not come back is time it slept, blocked on a lock or a page of a file.
struct ThreadTimes
{
    qint64 runningUs = 0;
    qint64 waitingUs = 0;
};

inline ThreadTimes threadTimes()
{
    // Opened once: a turn of a 1 ms probe costs one read.
    static const int fd = ::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC);
    char text[128] = {};
    if (fd < 0 || ::pread(fd, text, sizeof text - 1, 0) <= 0)
        return {};
    unsigned long long running = 0;
    unsigned long long waiting = 0;
    std::sscanf(text, "%llu %llu", &running, &waiting);
    return {qint64(running / 1000), qint64(waiting / 1000)};
}

// Turns a 1 ms precise timer on the calling thread's event loop and keeps the gaps between its
// turns: the longest is the longest time the thread did not come back to its loop (a stall the
// user feels as a frozen window), reported with what the thread did meanwhile.
class StallMeter
{
public:
    StallMeter()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
        m_clock.start();
        m_timer.start();
    }
    void stop() { m_timer.stop(); }

    qint64 longestUs() const { return m_longestUs; }
    // What the thread had from the scheduler during the longest gap.
    ThreadTimes longest() const { return m_longest; }
    // The most time on a core in any one gap.
    qint64 mostWorkUs() const { return m_mostWorkUs; }
    int overOneFrame() const { return m_overOneFrame; }
    int turns() const { return m_turns; }

private:
    void tick()
    {
        const qint64 wallUs = m_clock.nsecsElapsed() / 1000;
        m_clock.restart();
        const ThreadTimes now = threadTimes();
        const ThreadTimes spent{now.runningUs - m_last.runningUs, now.waitingUs - m_last.waitingUs};
        m_last = now;
        if (wallUs > m_longestUs) {
            m_longestUs = wallUs;
            m_longest = spent;
        }
        m_mostWorkUs = std::max(m_mostWorkUs, spent.runningUs);
        m_overOneFrame += wallUs > 16000 ? 1 : 0;
        ++m_turns;
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    ThreadTimes m_last = threadTimes();
    qint64 m_longestUs = 0;
    ThreadTimes m_longest;
    qint64 m_mostWorkUs = 0;
    int m_overOneFrame = 0;
    int m_turns = 0;
};
