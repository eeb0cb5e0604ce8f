#include "core/app/Dispatch.h"

#include <QHash>
#include <QMutex>
#include <QThread>

#include <latch>
#include <memory>
#include <mutex>

namespace {

struct PoolRegistry
{
    QMutex mutex;
    QHash<QString, QThreadPool *> named;
    QList<QThreadPool *> all;
    bool drainsAtExit = false;
};

PoolRegistry &registry()
{
    // Never deleted: workers may still be running while static destructors run.
    static auto *pools = new PoolRegistry;
    return *pools;
}

// Called with the registry locked.
void addPool(PoolRegistry &pools, QThreadPool *pool)
{
    pools.all.append(pool);
    if (!pools.drainsAtExit) {
        pools.drainsAtExit = true;
        qAddPostRoutine(drainThreadPools);
    }
}

// Qt's image operations (smooth scaling, format conversions, the raster engine's fills) share
// their work out to Qt's global pool from whichever thread calls them. A pool thread that an
// idle-class worker happened to start would be idle-class for life (threads inherit the class, and
// an ordinary user cannot raise it back), and the GUI thread's painting would then wait on it
// behind the decoders. So the global pool's threads are all started once by an ordinary thread,
// and kept.
void keepGlobalPoolOrdinary()
{
    static std::once_flag once;
    std::call_once(once, [] {
        QThreadPool *global = QThreadPool::globalInstance();
        global->setExpiryTimeout(-1);
        const int count = global->maxThreadCount();
        // Each waits for the others, so that none is free to take the next and every one needs a
        // thread of its own. The caller does not wait: the threads are made here, run later.
        auto allStarted = std::make_shared<std::latch>(count);
        for (int i = 0; i < count; ++i)
            global->start([allStarted] { allStarted->arrive_and_wait(); });
    });
}

} // namespace

QThreadPool *namedThreadPool(const QString &name)
{
    PoolRegistry &pools = registry();
    QMutexLocker locker(&pools.mutex);
    QThreadPool *&pool = pools.named[name];
    if (!pool) {
        // Never deleted, like the registry.
        pool = new QThreadPool;
        pool->setObjectName(name);
        pool->setMaxThreadCount(QThread::idealThreadCount());
        addPool(pools, pool);
    }
    return pool;
}

void setBackgroundPriority(QThreadPool *pool)
{
    keepGlobalPoolOrdinary();
    pool->setThreadPriority(QThread::IdlePriority);
}

void registerThreadPool(QThreadPool *pool)
{
    PoolRegistry &pools = registry();
    QMutexLocker locker(&pools.mutex);
    if (!pools.all.contains(pool))
        addPool(pools, pool);
}

void drainThreadPools()
{
    PoolRegistry &pools = registry();
    QList<QThreadPool *> all;
    {
        QMutexLocker locker(&pools.mutex);
        all = pools.all;
    }
    // Clear every queue before waiting on any, so that one pool's remaining work cannot feed another.
    for (QThreadPool *pool : all)
        pool->clear();
    for (QThreadPool *pool : all)
        pool->waitForDone();
}

bool isGuiThread()
{
    auto *app = QCoreApplication::instance();
    return !app || QThread::currentThread() == app->thread();
}
