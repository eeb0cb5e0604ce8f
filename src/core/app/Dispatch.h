#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QString>
#include <QThreadPool>

#include <utility>

// Posting work to the GUI thread and running work on named thread pools.
//
// Pools are created on first use and live until exit. A pool's name says whose work it runs
// ("Thumbnail Generator", "FileModel.Utility", ...), so that one busy subsystem cannot starve
// another.

QThreadPool *namedThreadPool(const QString &name);

// Runs `fn` on the GUI thread at the next turn of its event loop.
template<typename F>
void postToGui(F &&fn)
{
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::forward<F>(fn), Qt::QueuedConnection);
}

// Runs `fn` in `context`'s thread; dropped when `context` is gone by then.
template<typename F>
void postTo(QObject *context, F &&fn)
{
    QMetaObject::invokeMethod(context, std::forward<F>(fn), Qt::QueuedConnection);
}

template<typename F>
void runOnPool(const QString &poolName, F &&fn, int priority = 0)
{
    namedThreadPool(poolName)->start(std::forward<F>(fn), priority);
}

// Puts the threads that `pool` starts from now on in the idle scheduling class (SCHED_IDLE; Qt's
// other thread priorities change nothing for ordinary Linux threads): they get a core only when no
// ordinary thread wants it, so that their work never delays the GUI thread. For pools that decode,
// scale and write caches in a process with windows. Threads the pool already has keep their class
// until they expire: call it before the pool's first work, on an ordinary thread (the first call
// also starts the threads of Qt's global pool, which Qt's image operations share work with).
void setBackgroundPriority(QThreadPool *pool);

// Has `pool` drained with the named pools when the application object goes. For pools that live
// as long as the process, such as a shared service's own pool.
void registerThreadPool(QThreadPool *pool);

// Drops queued work and waits for running work on every named or registered pool. Runs by itself
// when the application object is destroyed, so that no worker still loads image plugins or posts
// events while Qt tears them down.
void drainThreadPools();

// Whether the caller runs on the GUI thread (true too when there is no application object).
bool isGuiThread();
