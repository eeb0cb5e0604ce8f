#pragma once

#include "core/fs/ZQFileEvent.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QObject>

#include <optional>

class QSocketNotifier;

// The process's one inotify instance. Folder and file subscriptions register the folders they
// care about; the watcher reads the kernel's events on the GUI thread and hands each one to every
// client watching that folder, under the path the client asked for.
//
// One kernel watch serves every client of a folder (the kernel answers the same watch descriptor
// for the same folder), and is removed when the last client lets go. The kernel limits watches
// per user (fs.inotify.max_user_watches): when it refuses one, the refusal is logged and the
// client goes on without change events. GUI thread only.
class ZQInotifyWatcher : public QObject
{
    Q_OBJECT

public:
    class Client
    {
    public:
        // One kernel event for `folderPath`. `name` is empty for events about the folder itself
        // (IN_DELETE_SELF, IN_MOVE_SELF, IN_ATTRIB, IN_UNMOUNT, IN_IGNORED) and for IN_Q_OVERFLOW,
        // which every client receives once per folder it watches. After IN_IGNORED the watch is
        // gone: the client need not remove it.
        virtual void folderEvent(const QByteArray &folderPath, quint32 mask, QByteArrayView name) = 0;

    protected:
        ~Client() = default;
    };

    static ZQInotifyWatcher &shared();

    // Starts delivering the events of `folderPath` to `client`; false when the kernel refused.
    bool addWatch(const QByteArray &folderPath, Client *client);
    void removeWatch(const QByteArray &folderPath, Client *client);
    // Folders that currently hold a kernel watch.
    int watchCount() const { return int(m_watches.size()); }

    // What a kernel event about an entry of a watched folder means for that entry; nothing for
    // events that do not concern one entry.
    static std::optional<ZQFileEventType> entryEventType(quint32 mask);

private:
    ZQInotifyWatcher();
    void readEvents();
    void dispatch(int wd, quint32 mask, QByteArrayView name);

    struct Registration
    {
        QByteArray folderPath;
        Client *client;
        bool operator==(const Registration &) const = default;
    };

    int m_fd = -1;
    QSocketNotifier *m_notifier = nullptr;
    QHash<int, QList<Registration>> m_watches;
};
