#include "core/fs/ZQInotifyWatcher.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"

#include <QFile>
#include <QSocketNotifier>

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

// Entries created, removed, renamed, written and touched, and the folder itself going away.
// IN_EXCL_UNLINK: a file that is already deleted but still open does not report its writes.
constexpr quint32 watchMask = IN_CREATE | IN_DELETE | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO
    | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_EXCL_UNLINK;

QString errorText(int error)
{
    return QString::fromStdString(std::generic_category().message(error));
}

} // namespace

ZQInotifyWatcher &ZQInotifyWatcher::shared()
{
    // Never deleted: subscriptions held by other long-lived objects may let go during exit.
    static ZQInotifyWatcher *watcher = new ZQInotifyWatcher;
    Q_ASSERT_X(isGuiThread(), "ZQInotifyWatcher", "file-system watching runs on the GUI thread");
    return *watcher;
}

ZQInotifyWatcher::ZQInotifyWatcher()
{
    m_fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_fd < 0) {
        logError(QStringLiteral("Cannot watch folders for changes: inotify_init1 failed: %1").arg(errorText(errno)));
        return;
    }
    m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &ZQInotifyWatcher::readEvents);
}

bool ZQInotifyWatcher::addWatch(const QByteArray &folderPath, Client *client)
{
    if (m_fd < 0)
        return false;
    const int wd = ::inotify_add_watch(m_fd, folderPath.constData(), watchMask);
    if (wd < 0) {
        const int error = errno;
        // Nothing to watch: the listing reports the missing folder.
        if (error == ENOENT || error == ENOTDIR)
            return false;
        QString message =
            QStringLiteral("Cannot watch %1 for changes: %2").arg(QFile::decodeName(folderPath), errorText(error));
        if (error == ENOSPC)
            message +=
                QStringLiteral(" (the per-user limit of inotify watches, fs.inotify.max_user_watches, is reached)");
        logError(message);
        return false;
    }
    m_watches[wd].append(Registration{folderPath, client});
    return true;
}

void ZQInotifyWatcher::removeWatch(const QByteArray &folderPath, Client *client)
{
    const Registration wanted{folderPath, client};
    for (auto it = m_watches.begin(); it != m_watches.end(); ++it) {
        const qsizetype index = it->indexOf(wanted);
        if (index < 0)
            continue;
        it->removeAt(index);
        if (it->isEmpty()) {
            ::inotify_rm_watch(m_fd, it.key());
            m_watches.erase(it);
        }
        return;
    }
}

std::optional<ZQFileEventType> ZQInotifyWatcher::entryEventType(quint32 mask)
{
    if (mask & (IN_CREATE | IN_MOVED_TO))
        return ZQFileEventType::created;
    if (mask & (IN_DELETE | IN_MOVED_FROM))
        return ZQFileEventType::removed;
    if (mask & (IN_MODIFY | IN_CLOSE_WRITE))
        return ZQFileEventType::contentModified;
    if (mask & IN_ATTRIB)
        return ZQFileEventType::attributesChanged;
    return std::nullopt;
}

void ZQInotifyWatcher::readEvents()
{
    // 64 KiB: about a thousand events with short names per read.
    alignas(inotify_event) static char buffer[64 * 1024];
    for (;;) {
        const ssize_t length = ::read(m_fd, buffer, sizeof buffer);
        if (length < 0) {
            if (errno == EINTR)
                continue;
            if (errno != EAGAIN)
                logError(QStringLiteral("Reading file-system events failed: %1").arg(errorText(errno)));
            return;
        }
        if (length == 0)
            return;
        for (ssize_t offset = 0; offset < length;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + offset);
            const QByteArrayView name(event->name, event->len ? qstrnlen(event->name, event->len) : 0);
            dispatch(event->wd, event->mask, name);
            offset += ssize_t(sizeof(inotify_event)) + event->len;
        }
    }
}

void ZQInotifyWatcher::dispatch(int wd, quint32 mask, QByteArrayView name)
{
    if (mask & IN_Q_OVERFLOW) {
        // Every folder may have missed something.
        QList<std::pair<int, Registration>> everyone;
        for (auto it = m_watches.cbegin(); it != m_watches.cend(); ++it) {
            for (const Registration &registration : *it)
                everyone.append({it.key(), registration});
        }
        for (const auto &[watch, registration] : everyone) {
            if (m_watches.value(watch).contains(registration))
                registration.client->folderEvent(registration.folderPath, IN_Q_OVERFLOW, {});
        }
        return;
    }
    if (mask & IN_IGNORED) {
        // The kernel dropped the watch (folder deleted, file system unmounted).
        const QList<Registration> gone = m_watches.take(wd);
        for (const Registration &registration : gone)
            registration.client->folderEvent(registration.folderPath, mask, {});
        return;
    }
    const QList<Registration> registrations = m_watches.value(wd);
    for (const Registration &registration : registrations) {
        // A client may have let go while an earlier one was told.
        if (m_watches.value(wd).contains(registration))
            registration.client->folderEvent(registration.folderPath, mask, name);
    }
}
