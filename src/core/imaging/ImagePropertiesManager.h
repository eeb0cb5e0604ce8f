#pragma once

#include "core/imaging/ImagePropertiesItem.h"

#include <QHash>
#include <QObject>

#include <list>

class ZQFilesSubscription;
struct ZQFileEvent;

// The records read so far, by file, so that reselecting a file does not read it again. Like any
// cache it may drop a record at any time (here: the least recently used beyond `maximumCount`);
// the files it holds are the files its subscription watches, always. GUI thread only.
class ImagePropertiesManager : public QObject
{
    Q_OBJECT

public:
    explicit ImagePropertiesManager(QObject *parent = nullptr);
    ~ImagePropertiesManager() override;

    // The process's instance; tests make their own.
    static ImagePropertiesManager &shared();

    ImagePropertiesItemPtr item(const PXFilePtr &file);
    void insert(const ImagePropertiesItemPtr &item);
    void remove(const PXFilePtr &file);
    void clear();

    int count() const { return int(m_order.size()); }
    int maximumCount() const { return m_maximumCount; }
    void setMaximumCount(int count);

    // The files the subscription watches (the files of the cached records).
    QList<PXFilePtr> subscribedFiles() const;

private:
    using Order = std::list<ImagePropertiesItemPtr>; // most recently used first
    void evict(Order::iterator it);
    void willEvict(const ImagePropertiesItemPtr &item);
    void subscriptionFoundChanges(const QList<ZQFileEvent> &events);
    ZQFilesSubscription &subscription();

    Order m_order;
    QHash<const PXFile *, Order::iterator> m_index;
    // 2 000 records of a few kilobytes each: a few folders of selections.
    int m_maximumCount = 2000;
    ZQFilesSubscription *m_subscription = nullptr;
};
