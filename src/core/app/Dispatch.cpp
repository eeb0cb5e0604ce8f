#include "Dispatch.h"

#include <QHash>
#include <QMutex>
#include <QThread>

QThreadPool *namedThreadPool(const QString &name)
{
    static QMutex mutex;
    static QHash<QString, QThreadPool *> pools;
    QMutexLocker locker(&mutex);
    QThreadPool *&pool = pools[name];
    if (!pool) {
        // Never deleted: workers may still be running while static destructors run.
        pool = new QThreadPool;
        pool->setObjectName(name);
        pool->setMaxThreadCount(QThread::idealThreadCount());
    }
    return pool;
}

bool isGuiThread()
{
    auto *app = QCoreApplication::instance();
    return !app || QThread::currentThread() == app->thread();
}
