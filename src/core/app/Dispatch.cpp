#include "core/app/Dispatch.h"

#include <QHash>
#include <QMutex>
#include <QThread>

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
