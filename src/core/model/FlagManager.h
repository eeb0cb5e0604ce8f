#pragma once

#include "core/model/FileFlag.h"
#include "core/model/PXFileForward.h"

#include <QHash>
#include <QObject>
#include <QThreadPool>

class FlagStore;
class ZQFileController;

// The files the user flagged or rejected, process-wide (one shared instance that tests may
// replace). A file is never both: flagging clears its rejection and the other way round.
//
// Marks last beyond the run: each one is written through the flag store (the file's extended
// attribute, else the per-user store) on a worker queue that keeps their order, and a file shown
// later answers the mark read from the disk with its record (PXFile::storedFlag, read off the GUI
// thread for the cells the grid shows). Files this program moves or renames keep their marks.
// GUI thread.
class FlagManager : public QObject
{
    Q_OBJECT
public:
    // `store`: where marks are kept; null for the shared store.
    explicit FlagManager(FlagStore *store = nullptr, QObject *parent = nullptr);
    ~FlagManager() override; // waits for the writes it queued

    static FlagManager &shared();
    static void setShared(FlagManager *manager); // not owned; null goes back to the process's own

    FlagStore &store() const { return *m_store; }

    // Reads the disk for a file whose mark is not cached yet.
    FileFlag flagOf(const PXFilePtr &file) const;
    // Never reads the disk: none until the file's mark is cached (for painting).
    FileFlag cachedFlagOf(const PXFilePtr &file) const;
    bool isFlagged(const PXFilePtr &file) const { return flagOf(file) == FileFlag::flagged; }
    bool isRejected(const PXFilePtr &file) const { return flagOf(file) == FileFlag::rejected; }
    // The files marked so during this run (files marked in earlier runs answer flagOf).
    QList<PXFilePtr> flaggedFiles() const { return m_flaggedFiles.values(); }
    QList<PXFilePtr> rejectedFiles() const { return m_rejectedFiles.values(); }

    void flag(const QList<PXFilePtr> &files);
    void reject(const QList<PXFilePtr> &files);
    void clear(const QList<PXFilePtr> &files);
    void setFlag(const QList<PXFilePtr> &files, FileFlag flag);

    // Follows the moves and renames that `controller`'s operations complete.
    void watchOperations(ZQFileController *controller);
    // A file this program moved or renamed: its mark goes with it (store entry and this run's sets).
    void noteMoved(const QString &fromPath, const QString &toPath);

    // Waits for queued writes, then writes the store file (at quit).
    void flush();

Q_SIGNALS:
    void flagsChanged(const QList<PXFilePtr> &files);
    // A mark could not be kept on disk (the message names the file).
    void writeFailed(const QString &message);

private:
    // By identity: one file object stands for one path while anybody holds it.
    using FileSet = QHash<const PXFile *, PXFilePtr>;

    struct Pending
    {
        PXFilePtr file;
        FileFlag flag = FileFlag::none;
        int writes = 0; // queued writes of this file not done yet
    };

    FlagStore *m_store;
    FileSet m_flaggedFiles;
    FileSet m_rejectedFiles;
    // Marks on their way to the disk: they answer flagOf until written, whatever the file's
    // record read back from the disk meanwhile.
    QHash<const PXFile *, Pending> m_pending;
    QThreadPool m_writer; // one thread: marks reach the disk in the order they were made
};
