#include "core/fs/ZQFolderLoadOperation.h"

#include "core/app/Dispatch.h"

#include <QMutex>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <system_error>
#include <vector>

namespace {

// Receives what the walk finds, folder by folder: any number of batches, then either the end of
// the folder or its failure.
class ListingSink
{
public:
    virtual void batch(const ZQFilePtr &folder, QList<ZQFilePtr> &&files) = 0;
    virtual void failed(const ZQFilePtr &folder, const QString &reason) = 0;

protected:
    ~ListingSink() = default;
};

QString errorText(int error)
{
    return QString::fromStdString(std::generic_category().message(error));
}

ZQEntryKind kindOfMode(mode_t mode)
{
    if (S_ISREG(mode))
        return ZQEntryKind::regular;
    if (S_ISDIR(mode))
        return ZQEntryKind::directory;
    if (S_ISLNK(mode))
        return ZQEntryKind::symlink;
    return ZQEntryKind::other;
}

ZQEntryKind kindOfEntry(int dirFd, const char *name, unsigned char type)
{
    switch (type) {
    case DT_REG: return ZQEntryKind::regular;
    case DT_DIR: return ZQEntryKind::directory;
    case DT_LNK: return ZQEntryKind::symlink;
    case DT_UNKNOWN: {
        // Some file systems (older XFS, some network and FUSE mounts) leave the type out.
        struct stat info
        { };
        if (::fstatat(dirFd, name, &info, AT_SYMLINK_NOFOLLOW) == 0)
            return kindOfMode(info.st_mode);
        return ZQEntryKind::unknown;
    }
    default: return ZQEntryKind::other;
    }
}

// For the pool's threads: glibc grows the heap of a thread's own malloc arena by one system call (mprotect) per page it
// needs, and a listing of 100 000 entries allocates some 70 MB on its worker thread: over ten
// thousand calls, a fifth of the listing's time. Grown once here in large steps and given back,
// the heap keeps its reservation (not its memory), so that later growth costs no calls.
void reserveThreadHeap()
{
    static thread_local bool reserved = false;
    if (reserved)
        return;
    reserved = true;
    // 120 KiB blocks stay below the size that malloc serves with mmap; 500 of them make 60 MB,
    // just under the 64 MB of one arena heap.
    constexpr size_t blockSize = 120 * 1024;
    constexpr int blockCount = 500;
    std::vector<void *> blocks(blockCount);
    for (void *&block : blocks)
        block = std::malloc(blockSize);
    // Lowest first: the blocks merge into one free run, returned to the system in one call.
    for (void *block : blocks)
        std::free(block);
}

class FolderWalker
{
public:
    FolderWalker(const ZQFolderLoadOptions &options, const std::atomic<bool> *cancelled, ListingSink &sink)
        : m_options(options)
        , m_batchSize(qMax(1, options.batchSize))
        , m_cancelled(cancelled)
        , m_sink(sink)
    { }

    // Breadth first, so that the folder's own entries come first and nearer levels before
    // deeper ones. Returns false when cancelled.
    bool walk(const ZQFilePtr &root)
    {
        std::deque<std::pair<ZQFilePtr, int>> pending{{root, 0}};
        while (!pending.empty()) {
            if (isCancelled())
                return false;
            auto [folder, level] = std::move(pending.front());
            pending.pop_front();
            const bool descend = level < m_options.depth;
            m_subfolders.clear();
            if (!listFolder(folder, descend))
                return false;
            for (ZQFilePtr &subfolder : m_subfolders)
                pending.emplace_back(std::move(subfolder), level + 1);
        }
        return !isCancelled();
    }

private:
    bool isCancelled() const { return m_cancelled && m_cancelled->load(std::memory_order_relaxed); }

    // Lists one folder; subfolders to walk next are collected in m_subfolders. False when cancelled.
    bool listFolder(const ZQFilePtr &folder, bool descend)
    {
        const int fd = ::open(folder->nativePath().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0) {
            m_sink.failed(folder, errorText(errno));
            return true;
        }

        QByteArray prefix = folder->nativePath();
        if (!prefix.endsWith('/'))
            prefix += '/';
        const qsizetype prefixLength = prefix.size();

        QList<ZQFilePtr> batch;
        batch.reserve(m_batchSize);
        bool deliveredAny = false;
        int error = 0;

        // 256 KiB: about five thousand entries per system call, few calls even for huge folders.
        alignas(dirent64) static thread_local char buffer[256 * 1024];
        for (;;) {
            const ssize_t length = ::getdents64(fd, buffer, sizeof buffer);
            if (length < 0) {
                if (errno == EINTR)
                    continue;
                error = errno;
                break;
            }
            if (length == 0)
                break;
            if (isCancelled()) {
                ::close(fd);
                return false;
            }
            for (ssize_t offset = 0; offset < length;) {
                const auto *entry = reinterpret_cast<const dirent64 *>(buffer + offset);
                offset += entry->d_reclen;
                const char *name = entry->d_name;
                if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
                    continue;

                const ZQEntryKind kind = kindOfEntry(fd, name, entry->d_type);
                const qsizetype nameLength = qsizetype(std::strlen(name));
                QByteArray path(prefixLength + nameLength, Qt::Uninitialized);
                std::memcpy(path.data(), prefix.constData(), size_t(prefixLength));
                std::memcpy(path.data() + prefixLength, name, size_t(nameLength));
                ZQFilePtr file = ZQStandardFile::newFileForNativePath(path, kind);

                // Links to folders are never followed deeper: they could lead back up the tree.
                if (descend && kind == ZQEntryKind::directory
                    && (!m_options.folderFilter || m_options.folderFilter(file)))
                    m_subfolders.append(file);
                if (m_options.fileFilter && !m_options.fileFilter(file))
                    continue;
                batch.append(std::move(file));
                if (batch.size() >= m_batchSize) {
                    m_sink.batch(folder, std::move(batch));
                    batch = QList<ZQFilePtr>();
                    batch.reserve(m_batchSize);
                    deliveredAny = true;
                }
            }
        }
        ::close(fd);

        if (error != 0) {
            m_sink.failed(folder, errorText(error));
            return true;
        }
        // Every folder listed gets at least one batch, so that an empty one is known as listed.
        if (!batch.isEmpty() || !deliveredAny)
            m_sink.batch(folder, std::move(batch));
        return true;
    }

    const ZQFolderLoadOptions &m_options;
    const qsizetype m_batchSize;
    const std::atomic<bool> *m_cancelled;
    ListingSink &m_sink;
    QList<ZQFilePtr> m_subfolders;
};

class CollectingSink final : public ListingSink
{
public:
    void batch(const ZQFilePtr &folder, QList<ZQFilePtr> &&files) override
    {
        listingFor(folder).files.append(std::move(files));
    }
    void failed(const ZQFilePtr &folder, const QString &reason) override
    {
        ZQFolderListing &listing = listingFor(folder);
        listing.files.clear();
        listing.error = reason;
    }

    QList<ZQFolderListing> listings;

private:
    ZQFolderListing &listingFor(const ZQFilePtr &folder)
    {
        // Folders arrive one after the other: only the last can be the current one.
        if (listings.isEmpty() || listings.last().folder != folder)
            listings.append(ZQFolderListing{folder, {}, {}});
        return listings.last();
    }
};

} // namespace

// What the operation and its worker share. The worker posts to the operation only while holding
// `mutex` and only while `receiver` is set, so the operation cannot be destroyed halfway through a
// post; anything posted before cancel() or destruction is dropped on arrival (cancelled) or by
// Qt together with the destroyed receiver.
struct ZQFolderLoadOperation::Shared
{
    std::atomic<bool> cancelled{false};
    std::atomic<bool> running{true};
    QMutex mutex;
    ZQFolderLoadOperation *receiver = nullptr;

    template<typename F>
    static void post(const std::shared_ptr<Shared> &shared, F &&deliver)
    {
        QMutexLocker locker(&shared->mutex);
        if (!shared->receiver)
            return;
        QMetaObject::invokeMethod(
            shared->receiver,
            [shared, deliver = std::forward<F>(deliver), operation = shared->receiver] {
                if (!shared->cancelled.load(std::memory_order_relaxed))
                    deliver(operation);
            },
            Qt::QueuedConnection);
    }
};

ZQFolderLoadOperation::ZQFolderLoadOperation(ZQFilePtr folder, ZQFolderLoadOptions options, QObject *parent)
    : QObject(parent)
    , m_folder(std::move(folder))
    , m_options(std::move(options))
{ }

ZQFolderLoadOperation::~ZQFolderLoadOperation()
{
    cancel();
}

void ZQFolderLoadOperation::start()
{
    if (isRunning() || !m_folder)
        return;
    // Posts what the walk finds to the operation's thread.
    class PostingSink final : public ListingSink
    {
    public:
        explicit PostingSink(std::shared_ptr<Shared> shared)
            : m_shared(std::move(shared))
        { }
        void batch(const ZQFilePtr &folder, QList<ZQFilePtr> &&files) override
        {
            Shared::post(m_shared, [folder, files = std::move(files)](ZQFolderLoadOperation *operation) {
                Q_EMIT operation->batchLoaded(folder, files);
            });
        }
        void failed(const ZQFilePtr &folder, const QString &reason) override
        {
            Shared::post(m_shared, [folder, reason](ZQFolderLoadOperation *operation) {
                Q_EMIT operation->folderFailed(folder, reason);
            });
        }

    private:
        std::shared_ptr<Shared> m_shared;
    };

    auto shared = std::make_shared<Shared>();
    shared->receiver = this;
    m_shared = shared;
    runOnPool(QString::fromLatin1(poolName), [shared, folder = m_folder, options = m_options] {
        reserveThreadHeap();
        PostingSink sink(shared);
        FolderWalker walker(options, &shared->cancelled, sink);
        if (!walker.walk(folder))
            return;
        Shared::post(shared, [shared](ZQFolderLoadOperation *operation) {
            shared->running.store(false);
            Q_EMIT operation->finished();
        });
    });
}

void ZQFolderLoadOperation::cancel()
{
    if (!m_shared)
        return;
    m_shared->cancelled.store(true);
    m_shared->running.store(false);
    QMutexLocker locker(&m_shared->mutex);
    m_shared->receiver = nullptr;
}

bool ZQFolderLoadOperation::isRunning() const
{
    return m_shared && m_shared->running.load();
}

QList<ZQFolderListing> ZQFolderLoadOperation::listSynchronously(const ZQFilePtr &folder,
                                                                const ZQFolderLoadOptions &options,
                                                                const std::atomic<bool> *cancelled)
{
    CollectingSink sink;
    if (folder) {
        FolderWalker walker(options, cancelled, sink);
        walker.walk(folder);
    }
    return sink.listings;
}
