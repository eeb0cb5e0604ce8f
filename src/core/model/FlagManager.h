#pragma once

#include "core/model/PXFileForward.h"

#include <QHash>
#include <QObject>

// The files the user flagged or rejected during this run, process-wide (one shared instance that
// tests may replace). A file is never both: flagging clears its rejection and the other way
// round. Not persisted. GUI thread.
class FlagManager : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    static FlagManager &shared();
    static void setShared(FlagManager *manager); // not owned; null goes back to the process's own

    bool isFlagged(const PXFilePtr &file) const { return m_flaggedFiles.contains(file.get()); }
    bool isRejected(const PXFilePtr &file) const { return m_rejectedFiles.contains(file.get()); }
    QList<PXFilePtr> flaggedFiles() const { return m_flaggedFiles.values(); }
    QList<PXFilePtr> rejectedFiles() const { return m_rejectedFiles.values(); }

    void flag(const QList<PXFilePtr> &files);
    void reject(const QList<PXFilePtr> &files);
    void clear(const QList<PXFilePtr> &files);

Q_SIGNALS:
    void flagsChanged(const QList<PXFilePtr> &files);

private:
    // By identity: one file object stands for one path while anybody holds it.
    using FileSet = QHash<const PXFile *, PXFilePtr>;

    // Takes `files` out of both sets and puts them in `into`, when given.
    void mark(const QList<PXFilePtr> &files, FileSet *into);

    FileSet m_flaggedFiles;
    FileSet m_rejectedFiles;
};
