#pragma once

#include "core/model/FileFlag.h"

#include <QByteArray>
#include <QHash>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <chrono>

// Keeps the flags and rejects of files across runs, so that a cull survives quitting.
//
// A flag lives with its file, in the "user.pixcove.flag" extended attribute ("flagged" or
// "rejected"): it follows the file through renames and moves by any program, and copies made by
// this program. Where the file cannot carry the attribute (a memory card's FAT, a read-only file
// or volume) the flag goes to a small per-user store instead, a JSON file keyed by path. Entries
// there remember the file's size and modification time, so that another file given the same name
// later (a reformatted card numbers its pictures from the start again) does not inherit the flag;
// moves and renames made by this program carry their entries along (noteMoved).
//
// The store file is written atomically (a failed write leaves the previous file whole) and at
// most once per interval (3 s: a cull of thousands of files marks several a second), on a worker
// thread. An unreadable store file is set aside, never overwritten. Reads and writes of flags may
// come from any thread; the object itself (its timer) lives on the GUI thread.
class FlagStore : public QObject
{
    Q_OBJECT
public:
    static constexpr const char *flagAttribute = "user.pixcove.flag";
    static constexpr std::chrono::milliseconds defaultSaveInterval{3000};

    // `storeFile`: the per-user store; the default is "flags.json" in the application's data
    // folder ($XDG_DATA_HOME/Pixcove).
    explicit FlagStore(const QString &storeFile = {}, QObject *parent = nullptr);
    ~FlagStore() override; // writes what is pending, synchronously

    static FlagStore &shared();
    static void setShared(FlagStore *store); // not owned; null goes back to the process's own

    QString storeFile() const { return m_storeFile; }

    // The file's flag: its attribute, else its entry in the store when that still matches it.
    FileFlag read(const QByteArray &nativePath) const;
    // Marks the file; false with a message when neither the attribute nor the store can take it.
    bool write(const QByteArray &nativePath, FileFlag flag, QString *error);
    // A file this program moved or renamed keeps its entry in the store under its new path.
    void noteMoved(const QByteArray &from, const QByteArray &to);

    // Writes pending changes now, on the calling thread (at quit). False with a message on failure.
    bool flush(QString *error = nullptr);

    // For tests.
    void setSaveInterval(std::chrono::milliseconds interval) { m_throttle.setInterval(interval); }
    int fileWriteCount() const { return m_fileWriteCount; }
    int entryCount() const;

Q_SIGNALS:
    // The store file could not be written (shown once per run by whoever listens).
    void saveFailed(const QString &message);

private:
    struct Entry
    {
        FileFlag flag = FileFlag::none;
        qint64 size = -1;
        qint64 modified = 0; // seconds since the epoch
    };

    void ensureLoaded() const; // under m_mutex
    void changed(); // under m_mutex: marks the store dirty and asks for a save
    void saveNow(); // GUI thread: hands a snapshot to the writer
    bool writeSnapshot(const QByteArray &json, QString *error);
    QByteArray snapshotJson() const; // under m_mutex
    void reportFailure(const QString &message);

    QString m_storeFile;
    mutable QMutex m_mutex;
    mutable QHash<QByteArray, Entry> m_entries;
    mutable bool m_loaded = false;
    // The store file could not be read and could not be set aside: it is never written over.
    mutable bool m_keepFile = false;
    bool m_dirty = false;
    std::atomic<bool> m_saveRequested = false;
    bool m_reportedFailure = false;
    QTimer m_throttle{this};
    QThreadPool m_writer; // one thread: snapshots reach the disk in order
    std::atomic<int> m_fileWriteCount = 0;
};
