#include "core/imaging/ImagePropertiesManager.h"

#include "core/fs/ZQFolderSubscription.h"
#include "core/model/PXFile.h"

#include <QCoreApplication>

ImagePropertiesManager::ImagePropertiesManager(QObject *parent)
    : QObject(parent)
{ }

ImagePropertiesManager::~ImagePropertiesManager() = default;

ImagePropertiesManager &ImagePropertiesManager::shared()
{
    static ImagePropertiesManager *instance = new ImagePropertiesManager(QCoreApplication::instance());
    return *instance;
}

ZQFilesSubscription &ImagePropertiesManager::subscription()
{
    if (!m_subscription) {
        m_subscription = new ZQFilesSubscription(this);
        connect(m_subscription, &ZQFilesSubscription::foundChanges, this,
                &ImagePropertiesManager::subscriptionFoundChanges);
    }
    return *m_subscription;
}

ImagePropertiesItemPtr ImagePropertiesManager::item(const PXFilePtr &file)
{
    const auto found = m_index.find(file.get());
    if (found == m_index.end())
        return {};
    m_order.splice(m_order.begin(), m_order, *found);
    return m_order.front();
}

void ImagePropertiesManager::insert(const ImagePropertiesItemPtr &item)
{
    if (!item || !item->file())
        return;
    const PXFile *key = item->file().get();
    const auto found = m_index.find(key);
    if (found != m_index.end()) {
        // A newer record of a file already held: same file, so the subscription stays as it is.
        **found = item;
        m_order.splice(m_order.begin(), m_order, *found);
        return;
    }
    m_order.push_front(item);
    m_index.insert(key, m_order.begin());
    subscription().addFile(item->file());
    while (int(m_order.size()) > m_maximumCount)
        evict(std::prev(m_order.end()));
}

void ImagePropertiesManager::remove(const PXFilePtr &file)
{
    const auto found = m_index.find(file.get());
    if (found != m_index.end())
        evict(*found);
}

void ImagePropertiesManager::clear()
{
    while (!m_order.empty())
        evict(m_order.begin());
}

void ImagePropertiesManager::setMaximumCount(int count)
{
    m_maximumCount = qMax(0, count);
    while (int(m_order.size()) > m_maximumCount)
        evict(std::prev(m_order.end()));
}

QList<PXFilePtr> ImagePropertiesManager::subscribedFiles() const
{
    QList<PXFilePtr> files;
    if (m_subscription) {
        for (const ZQFilePtr &file : m_subscription->files())
            files.append(PXFile::from(file));
    }
    return files;
}

void ImagePropertiesManager::evict(Order::iterator it)
{
    const ImagePropertiesItemPtr item = *it;
    willEvict(item);
    m_index.remove(item->file().get());
    m_order.erase(it);
}

void ImagePropertiesManager::willEvict(const ImagePropertiesItemPtr &item)
{
    if (m_subscription)
        m_subscription->removeFile(item->file());
}

void ImagePropertiesManager::subscriptionFoundChanges(const QList<ZQFileEvent> &events)
{
    // A record describes the bytes it was read from: when they change, the record goes, and
    // the next selection of the file reads it again.
    for (const ZQFileEvent &event : events) {
        if (!event.changesContentOrIdentity() && event.type != ZQFileEventType::removed)
            continue;
        remove(PXFile::fileForNativePath(event.nativePath));
    }
}
