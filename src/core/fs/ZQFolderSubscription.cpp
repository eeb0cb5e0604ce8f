#include "core/fs/ZQFolderSubscription.h"

#include "core/app/Dispatch.h"
#include "core/fs/ZQEventCoalescer.h"
#include "core/fs/ZQFolderLoadOperation.h"
#include "core/fs/ZQInotifyWatcher.h"

#include <QHash>
#include <QSet>

#include <sys/inotify.h>
#include <sys/stat.h>

namespace {

QByteArray joinedPath(const QByteArray &folderPath, QByteArrayView name)
{
    QByteArray path = folderPath;
    if (!path.endsWith('/'))
        path += '/';
    path += name;
    return path;
}

// Splits a clean path into its folder and name; false for "/".
bool splitPath(const QByteArray &path, QByteArray *folderPath, QByteArray *name)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0 || path == "/")
        return false;
    *folderPath = slash == 0 ? QByteArray("/") : path.left(slash);
    *name = path.mid(slash + 1);
    return true;
}

bool folderWentAway(quint32 mask)
{
    return mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED);
}

// Counts emissions in progress, so that a subscription released by one of its own subscribers
// is deleted only once the emission has returned.
class EmitGuard
{
public:
    explicit EmitGuard(int &depth)
        : m_depth(depth)
    {
        ++m_depth;
    }
    ~EmitGuard() { --m_depth; }
    EmitGuard(const EmitGuard &) = delete;
    EmitGuard &operator=(const EmitGuard &) = delete;

private:
    int &m_depth;
};

// A path with its hash worked out once: the index of a folder of 100 000 entries grows step by
// step while the listing arrives, and every step would otherwise read and hash every path again.
struct PathKey
{
    explicit PathKey(const QByteArray &nativePath)
        : path(nativePath)
        , hash(qHash(nativePath))
    { }

    bool operator==(const PathKey &other) const { return hash == other.hash && path == other.path; }

    QByteArray path;
    size_t hash;
};

size_t qHash(const PathKey &key, size_t seed)
{
    return key.hash ^ seed;
}

QHash<QByteArray, std::weak_ptr<ZQFolderSubscription>> &subscriptionsByPath()
{
    static QHash<QByteArray, std::weak_ptr<ZQFolderSubscription>> subscriptions;
    return subscriptions;
}

} // namespace

// ---------------------------------------------------------------------------------------------

struct ZQFolderSubscription::Private final : ZQInotifyWatcher::Client
{
    explicit Private(ZQFolderSubscription *owner)
        : q(owner)
        , folderPath(owner->m_folder->nativePath())
        , coalescer([this] { flush(); })
    { }

    ZQFolderSubscription *q;
    const QByteArray folderPath;

    // The known entries, in no particular order, and where each stands in the list.
    QList<ZQFilePtr> files;
    QHash<PathKey, qsizetype> indexOfPath;

    bool watching = false;
    bool folderGone = false;
    bool loaded = false;
    bool shutDown = false;
    QString error;
    int emitDepth = 0;

    ZQFolderLoadOperation *loader = nullptr; // the first listing
    ZQFolderLoadOperation *rescanner = nullptr; // a listing again after the kernel dropped events
    QList<ZQFilePtr> rescanned;
    bool rescanFailed = false;
    bool rescanWanted = false; // events were dropped while a listing ran: list again after it
    // What events said while a listing ran: whether each file stands. A listing may have read
    // the folder before the event, so the event wins over the listing for these files.
    QHash<QByteArray, bool> changedDuringListing;

    ZQEventCoalescer coalescer;

    bool isListing() const { return loader || rescanner; }

    void addFile(const ZQFilePtr &file) { addFile(file, PathKey(file->nativePath())); }

    void addFile(const ZQFilePtr &file, PathKey &&key)
    {
        indexOfPath.insert(std::move(key), files.size());
        files.append(file);
    }

    void removeFile(const QByteArray &path)
    {
        const auto it = indexOfPath.constFind(PathKey(path));
        if (it == indexOfPath.cend())
            return;
        const qsizetype index = *it;
        indexOfPath.erase(it);
        const qsizetype last = files.size() - 1;
        if (index != last) {
            files[index] = std::move(files[last]);
            indexOfPath[PathKey(files[index]->nativePath())] = index;
        }
        files.removeLast();
    }

    void startWatching()
    {
        if (watching || folderGone)
            return;
        watching = ZQInotifyWatcher::shared().addWatch(folderPath, this);
    }

    void stopWatching()
    {
        if (!watching)
            return;
        watching = false;
        ZQInotifyWatcher::shared().removeWatch(folderPath, this);
    }

    void folderEvent(const QByteArray &watchedPath, quint32 mask, QByteArrayView name) override
    {
        if (mask & IN_Q_OVERFLOW) {
            coalescer.add(ZQFileEventType::rescanNeeded, folderPath);
            return;
        }
        if (name.isEmpty()) {
            if (folderWentAway(mask)) {
                if (!watching)
                    return;
                // After IN_IGNORED the kernel has already dropped the watch.
                if (mask & IN_IGNORED)
                    watching = false;
                else
                    stopWatching();
                folderGone = true;
                coalescer.add(ZQFileEventType::removed, folderPath);
            } else if (mask & IN_ATTRIB) {
                coalescer.add(ZQFileEventType::attributesChanged, folderPath);
            }
            return;
        }
        if (const auto type = ZQInotifyWatcher::entryEventType(mask))
            coalescer.add(*type, joinedPath(watchedPath, name));
    }

    void flush()
    {
        QList<QByteArray> vanished;
        const QList<ZQFileEvent> events = coalescer.take(
            [this](const QByteArray &path) { return path == folderPath || indexOfPath.contains(PathKey(path)); },
            &vanished);
        // A file removed before the listing delivered it may still be in the listing: it is gone.
        if (isListing()) {
            for (const QByteArray &path : std::as_const(vanished))
                changedDuringListing.insert(path, false);
        }
        bool rescan = false;
        for (const ZQFileEvent &event : events) {
            if (event.type == ZQFileEventType::rescanNeeded) {
                rescan = true;
                continue;
            }
            if (event.nativePath == folderPath) {
                if (event.type == ZQFileEventType::removed)
                    folderRemoved();
                continue;
            }
            switch (event.type) {
            case ZQFileEventType::created: addFile(ZQStandardFile::newFileForNativePath(event.nativePath)); break;
            case ZQFileEventType::removed: removeFile(event.nativePath); break;
            default: break;
            }
            if (isListing() && event.type != ZQFileEventType::contentModified
                && event.type != ZQFileEventType::attributesChanged)
                changedDuringListing.insert(event.nativePath, event.type != ZQFileEventType::removed);
        }
        if (!events.isEmpty()) {
            EmitGuard guard(emitDepth);
            Q_EMIT q->eventsReceived(events);
        }
        if (rescan && !shutDown)
            requestRescan();
    }

    void folderRemoved()
    {
        files.clear();
        indexOfPath.clear();
        cancelListings();
    }

    void cancelListings()
    {
        for (ZQFolderLoadOperation **operation : {&loader, &rescanner}) {
            if (*operation) {
                (*operation)->cancel();
                (*operation)->deleteLater();
                *operation = nullptr;
            }
        }
        changedDuringListing.clear();
        rescanWanted = false;
    }

    // Takes the listed files that are new to the subscription; answers them.
    QList<ZQFilePtr> acceptListed(const QList<ZQFilePtr> &listed)
    {
        QList<ZQFilePtr> fresh;
        fresh.reserve(listed.size());
        for (const ZQFilePtr &file : listed) {
            const QByteArray &path = file->nativePath();
            PathKey key(path);
            if (indexOfPath.contains(key) || !changedDuringListing.value(path, true))
                continue;
            addFile(file, std::move(key));
            fresh.append(file);
        }
        return fresh;
    }

    void startLoading()
    {
        loader = new ZQFolderLoadOperation(q->m_folder, {}, q);
        QObject::connect(loader, &ZQFolderLoadOperation::batchLoaded, q,
                         [this](const ZQFilePtr &, const QList<ZQFilePtr> &listed) {
                             const QList<ZQFilePtr> fresh = acceptListed(listed);
                             if (fresh.isEmpty())
                                 return;
                             EmitGuard guard(emitDepth);
                             Q_EMIT q->batchLoaded(fresh);
                         });
        QObject::connect(loader, &ZQFolderLoadOperation::folderFailed, q,
                         [this](const ZQFilePtr &, const QString &reason) { error = reason; });
        QObject::connect(loader, &ZQFolderLoadOperation::finished, q, [this] {
            loader->deleteLater();
            loader = nullptr;
            finishLoading();
        });
        loader->start();
    }

    void finishLoading()
    {
        loaded = true;
        if (!isListing())
            changedDuringListing.clear();
        {
            EmitGuard guard(emitDepth);
            Q_EMIT q->loadFinished();
        }
        if (rescanWanted && !shutDown) {
            rescanWanted = false;
            requestRescan();
        }
    }

    void requestRescan()
    {
        if (folderGone)
            return;
        if (isListing() || !loaded) {
            rescanWanted = true;
            return;
        }
        rescanned.clear();
        rescanFailed = false;
        rescanner = new ZQFolderLoadOperation(q->m_folder, {}, q);
        QObject::connect(rescanner, &ZQFolderLoadOperation::batchLoaded, q,
                         [this](const ZQFilePtr &, const QList<ZQFilePtr> &listed) { rescanned.append(listed); });
        QObject::connect(rescanner, &ZQFolderLoadOperation::folderFailed, q,
                         [this](const ZQFilePtr &, const QString &) { rescanFailed = true; });
        QObject::connect(rescanner, &ZQFolderLoadOperation::finished, q, [this] { finishRescan(); });
        rescanner->start();
    }

    // Reports what the listing again found different, as created and removed events.
    void finishRescan()
    {
        rescanner->deleteLater();
        rescanner = nullptr;
        QList<ZQFileEvent> differences;
        if (!rescanFailed) {
            QSet<QByteArray> listedPaths;
            listedPaths.reserve(rescanned.size());
            for (const ZQFilePtr &file : std::as_const(rescanned)) {
                const QByteArray &path = file->nativePath();
                listedPaths.insert(path);
                if (indexOfPath.contains(PathKey(path)) || changedDuringListing.contains(path))
                    continue;
                addFile(file);
                differences.append(ZQFileEvent{ZQFileEventType::created, path});
            }
            const QList<ZQFilePtr> known = files;
            for (const ZQFilePtr &file : known) {
                const QByteArray &path = file->nativePath();
                if (listedPaths.contains(path) || changedDuringListing.contains(path))
                    continue;
                removeFile(path);
                differences.append(ZQFileEvent{ZQFileEventType::removed, path});
            }
        }
        rescanned.clear();
        changedDuringListing.clear();
        if (!differences.isEmpty()) {
            EmitGuard guard(emitDepth);
            Q_EMIT q->eventsReceived(differences);
        }
        if (rescanWanted && !shutDown) {
            rescanWanted = false;
            requestRescan();
        }
    }

    // Stops watching and listing; the object only waits to be deleted after this.
    void shutdown()
    {
        if (shutDown)
            return;
        shutDown = true;
        stopWatching();
        coalescer.clear();
        cancelListings();
        auto &subscriptions = subscriptionsByPath();
        const auto it = subscriptions.constFind(folderPath);
        if (it != subscriptions.cend() && it->expired())
            subscriptions.erase(it);
    }
};

std::shared_ptr<ZQFolderSubscription> ZQFolderSubscription::forFolder(const ZQFilePtr &folder)
{
    Q_ASSERT_X(isGuiThread(), "ZQFolderSubscription", "folder subscriptions live on the GUI thread");
    if (!folder)
        return nullptr;
    auto &subscriptions = subscriptionsByPath();
    if (const auto existing = subscriptions.value(folder->nativePath()).lock())
        return existing;

    // The last holder may let go anywhere, even inside one of the subscription's own signals:
    // watching stops at once, the object goes when it is safe to delete.
    std::shared_ptr<ZQFolderSubscription> subscription(new ZQFolderSubscription(folder),
                                                       [](ZQFolderSubscription *dying) {
                                                           auto finish = [dying] {
                                                               dying->m_d->shutdown();
                                                               if (dying->m_d->emitDepth > 0)
                                                                   dying->deleteLater();
                                                               else
                                                                   delete dying;
                                                           };
                                                           if (isGuiThread())
                                                               finish();
                                                           else
                                                               postToGui(finish);
                                                       });
    subscriptions.insert(folder->nativePath(), subscription);
    return subscription;
}

std::shared_ptr<ZQFolderSubscription> ZQFolderSubscription::existingForFolder(const ZQFilePtr &folder)
{
    if (!folder || !isGuiThread())
        return nullptr;
    return subscriptionsByPath().value(folder->nativePath()).lock();
}

ZQFolderSubscription::ZQFolderSubscription(ZQFilePtr folder)
    : m_folder(std::move(folder))
    , m_d(std::make_unique<Private>(this))
{ }

ZQFolderSubscription::~ZQFolderSubscription()
{
    m_d->shutdown();
}

void ZQFolderSubscription::load()
{
    if (m_d->loaded || m_d->loader || m_d->shutDown)
        return;
    // Watching first: whatever changes while the listing runs is reported.
    m_d->startWatching();
    m_d->startLoading();
}

void ZQFolderSubscription::loadSynchronously()
{
    if (m_d->loaded || m_d->shutDown)
        return;
    m_d->startWatching();
    if (m_d->loader) {
        // What it has not delivered yet, the listing below finds.
        m_d->loader->cancel();
        m_d->loader->deleteLater();
        m_d->loader = nullptr;
    }
    const QList<ZQFolderListing> listings = ZQFolderLoadOperation::listSynchronously(m_folder, {});
    if (!listings.isEmpty()) {
        m_d->error = listings.first().error;
        const QList<ZQFilePtr> fresh = m_d->acceptListed(listings.first().files);
        if (!fresh.isEmpty()) {
            EmitGuard guard(m_d->emitDepth);
            Q_EMIT batchLoaded(fresh);
        }
    }
    m_d->finishLoading();
}

bool ZQFolderSubscription::isLoading() const
{
    return m_d->loader != nullptr;
}

bool ZQFolderSubscription::isLoaded() const
{
    return m_d->loaded;
}

QString ZQFolderSubscription::errorString() const
{
    return m_d->error;
}

QList<ZQFilePtr> ZQFolderSubscription::files() const
{
    return m_d->files;
}

// ---------------------------------------------------------------------------------------------

struct ZQFilesSubscription::Private final : ZQInotifyWatcher::Client
{
    explicit Private(ZQFilesSubscription *owner)
        : q(owner)
        , coalescer([this] { flush(); })
    { }

    ~Private()
    {
        for (auto it = folders.cbegin(); it != folders.cend(); ++it) {
            if (it->watching)
                ZQInotifyWatcher::shared().removeWatch(it.key(), this);
        }
    }

    struct Folder
    {
        QSet<QByteArray> names; // of the watched files in it
        bool watching = false;
    };

    ZQFilesSubscription *q;
    QList<ZQFilePtr> files;
    QHash<QByteArray, bool> exists; // by path: whether the file stands, as subscribers were told
    QHash<QByteArray, Folder> folders;
    ZQEventCoalescer coalescer;

    void folderEvent(const QByteArray &folderPath, quint32 mask, QByteArrayView name) override
    {
        const auto folder = folders.find(folderPath);
        if (folder == folders.end())
            return;
        if (mask & IN_Q_OVERFLOW) {
            coalescer.add(ZQFileEventType::rescanNeeded, folderPath);
            return;
        }
        if (name.isEmpty()) {
            if (!folderWentAway(mask) || !folder->watching)
                return;
            folder->watching = false;
            if (!(mask & IN_IGNORED))
                ZQInotifyWatcher::shared().removeWatch(folderPath, this);
            for (const QByteArray &watchedName : std::as_const(folder->names))
                coalescer.add(ZQFileEventType::removed, joinedPath(folderPath, watchedName));
            return;
        }
        if (!folder->names.contains(name.toByteArray()))
            return;
        if (const auto type = ZQInotifyWatcher::entryEventType(mask))
            coalescer.add(*type, joinedPath(folderPath, name));
    }

    void flush()
    {
        QList<ZQFileEvent> events = coalescer.take([this](const QByteArray &path) { return exists.value(path); });
        events.removeIf([this](const ZQFileEvent &event) {
            return event.type != ZQFileEventType::rescanNeeded && !exists.contains(event.nativePath);
        });
        for (const ZQFileEvent &event : std::as_const(events)) {
            if (event.type == ZQFileEventType::rescanNeeded)
                recheckFolder(event.nativePath);
            else
                exists[event.nativePath] = event.type != ZQFileEventType::removed;
        }
        if (!events.isEmpty())
            Q_EMIT q->foundChanges(events);
    }

    // After dropped events: what stands now, without events (rescanNeeded told the subscribers).
    void recheckFolder(const QByteArray &folderPath)
    {
        for (const QByteArray &name : folders.value(folderPath).names) {
            const QByteArray path = joinedPath(folderPath, name);
            struct stat info
            { };
            exists[path] = ::lstat(path.constData(), &info) == 0;
        }
    }
};

ZQFilesSubscription::ZQFilesSubscription(QObject *parent)
    : QObject(parent)
    , m_d(std::make_unique<Private>(this))
{ }

ZQFilesSubscription::~ZQFilesSubscription() = default;

void ZQFilesSubscription::addFile(const ZQFilePtr &file)
{
    Q_ASSERT_X(isGuiThread(), "ZQFilesSubscription", "file subscriptions live on the GUI thread");
    if (!file || m_d->exists.contains(file->nativePath()))
        return;
    m_d->files.append(file);
    m_d->exists.insert(file->nativePath(), !file->isPlaceholder());
    QByteArray folderPath, name;
    if (!splitPath(file->nativePath(), &folderPath, &name))
        return; // "/" has no folder to watch it from
    Private::Folder &folder = m_d->folders[folderPath];
    folder.names.insert(name);
    if (!folder.watching)
        folder.watching = ZQInotifyWatcher::shared().addWatch(folderPath, m_d.get());
}

void ZQFilesSubscription::removeFile(const ZQFilePtr &file)
{
    if (!file || !m_d->exists.remove(file->nativePath()))
        return;
    m_d->files.removeOne(file);
    QByteArray folderPath, name;
    if (!splitPath(file->nativePath(), &folderPath, &name))
        return;
    const auto folder = m_d->folders.find(folderPath);
    if (folder == m_d->folders.end())
        return;
    folder->names.remove(name);
    if (folder->names.isEmpty()) {
        if (folder->watching)
            ZQInotifyWatcher::shared().removeWatch(folderPath, m_d.get());
        m_d->folders.erase(folder);
    }
}

QList<ZQFilePtr> ZQFilesSubscription::files() const
{
    return m_d->files;
}
