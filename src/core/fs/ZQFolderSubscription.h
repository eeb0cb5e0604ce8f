#pragma once

#include "core/fs/ZQFileEvent.h"
#include "core/fs/ZQStandardFile.h"

#include <QList>
#include <QObject>

#include <memory>

// The live contents of one folder: lists it once in the background, then keeps the list in step
// with the file system through inotify and reports the changes as file events.
//
// Subscribers of the same folder share one subscription (forFolder), so a folder is listed and
// watched once however many views show it. Watching starts before the listing, so a file that
// appears meanwhile is not missed. Bursts of kernel events are coalesced: one event per file
// and burst, the strongest type winning. Lives on the GUI thread.
class ZQFolderSubscription : public QObject
{
    Q_OBJECT

public:
    static std::shared_ptr<ZQFolderSubscription> forFolder(const ZQFilePtr &folder);
    // The subscription somebody holds for `folder`, or null: never creates one. Null too when
    // asked off the GUI thread, where a subscription may not be touched (list the folder instead).
    static std::shared_ptr<ZQFolderSubscription> existingForFolder(const ZQFilePtr &folder);
    ~ZQFolderSubscription() override;

    const ZQFilePtr &folder() const { return m_folder; }

    // Starts listing in the background unless loaded or loading; batchLoaded and loadFinished follow.
    void load();
    // Lists now on the calling thread unless already loaded (for counting).
    void loadSynchronously();
    bool isLoading() const;
    bool isLoaded() const;
    QString errorString() const; // why the folder could not be listed; empty otherwise

    // The folder's entries as known now, in no particular order.
    QList<ZQFilePtr> files() const;

Q_SIGNALS:
    void batchLoaded(const QList<ZQFilePtr> &files);
    void loadFinished();
    // Changes after (and during) the listing; the files list is already updated. The file objects'
    // caches are not touched: each subscriber calls updateForEvent itself.
    // rescanNeeded (for the folder's path): the kernel dropped events; the folder is listed again
    // and what differs is reported as created and removed events when that listing is done.
    // removed for the folder's own path: the folder was deleted or moved away; files() is empty
    // and the subscription no longer watches.
    void eventsReceived(const QList<ZQFileEvent> &events);

private:
    explicit ZQFolderSubscription(ZQFilePtr folder);
    struct Private;
    ZQFilePtr m_folder;
    std::unique_ptr<Private> m_d;
};

// Watches a set of files, wherever they are, and reports their changes.
class ZQFilesSubscription : public QObject
{
    Q_OBJECT

public:
    explicit ZQFilesSubscription(QObject *parent = nullptr);
    ~ZQFilesSubscription() override;

    void addFile(const ZQFilePtr &file);
    void removeFile(const ZQFilePtr &file);
    QList<ZQFilePtr> files() const;

Q_SIGNALS:
    void foundChanges(const QList<ZQFileEvent> &events);

private:
    struct Private;
    std::unique_ptr<Private> m_d;
};
