#pragma once

#include "core/fs/ZQStandardFile.h"

#include <QList>
#include <QObject>

#include <atomic>
#include <functional>

struct ZQFolderLoadOptions
{
    // Levels of subfolders listed below the folder: 0 lists the folder alone.
    int depth = 0;
    // Both filters run on the listing's worker thread.
    // Which entries are handed out; null keeps every entry.
    std::function<bool(const ZQFilePtr &)> fileFilter;
    // Which subfolders are descended into (within `depth`); null descends into every folder.
    std::function<bool(const ZQFilePtr &)> folderFilter;
    // Entries per posted batch: large enough to keep queued calls rare, small enough that the
    // first thumbnails appear while a huge folder is still being read.
    int batchSize = 2000;
};

// The entries of one folder found by a listing (a folder of a deeper level is its own listing).
struct ZQFolderListing
{
    ZQFilePtr folder;
    QList<ZQFilePtr> files;
    QString error; // why the folder could not be read; empty on success
};

// Lists a folder (and subfolders to a depth) on the file system's utility pool and posts the
// entries in batches to the thread that owns the operation. Never stats an entry whose directory
// entry already says what it is. Cancellable at any time; after cancel() nothing more is posted.
class ZQFolderLoadOperation : public QObject
{
    Q_OBJECT

public:
    static constexpr const char *poolName = "ZQFilesystemTools.Utility";

    ZQFolderLoadOperation(ZQFilePtr folder, ZQFolderLoadOptions options, QObject *parent = nullptr);
    ~ZQFolderLoadOperation() override;

    void start();
    void cancel();
    bool isRunning() const;

    // Lists on the calling thread; one listing per folder visited, the folder itself first.
    static QList<ZQFolderListing> listSynchronously(const ZQFilePtr &folder, const ZQFolderLoadOptions &options,
                                                    const std::atomic<bool> *cancelled = nullptr);

Q_SIGNALS:
    // Entries of `folder` (the folder itself or one of its subfolders); several batches per folder.
    void batchLoaded(const ZQFilePtr &folder, const QList<ZQFilePtr> &files);
    // `folder` could not be read (vanished, no permission); its listing is empty.
    void folderFailed(const ZQFilePtr &folder, const QString &reason);
    // Every folder has been listed (not emitted after cancel()).
    void finished();

private:
    struct Shared;
    ZQFilePtr m_folder;
    ZQFolderLoadOptions m_options;
    std::shared_ptr<Shared> m_shared;
};
