#pragma once

#include <QtGlobal>

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
