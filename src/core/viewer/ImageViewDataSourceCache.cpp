#include "core/viewer/ImageViewDataSourceCache.h"

#include "core/model/PXFile.h"

#include <algorithm>

namespace {

QByteArray keyOf(const PXFilePtr &file)
{
    return file ? file->nativePath() : QByteArray();
}

} // namespace

ImageViewDataSourcePtr ImageViewDataSourceCache::dataSourceForShowing(const PXFilePtr &file,
                                                                      const ImageViewDefaults &defaults)
{
    if (!file)
        return {};
    const QByteArray key = keyOf(file);
    ImageViewDataSourcePtr dataSource = m_byPath.value(key);
    const ImageViewDataSourcePtr outdated = dataSource && dataSource->isOutdated() ? dataSource : nullptr;
    if (!dataSource || outdated) {
        dataSource = ImageViewDataSource::create(file);
        if (m_imageCacheSet)
            dataSource->setImageCache(m_imageCache);
        dataSource->seed(defaults.scalingMode, defaults.percentage);
        // A file written anew since it was shown (turned, say): its picture is decoded again,
        // its zoom and fit stay; a position and turn of the old picture would not fit the new one.
        if (outdated)
            dataSource->copyScaling(*outdated);
        m_byPath.insert(key, dataSource);
    }
    if (defaults.retainScalingFromPreviousFile && m_previous && m_previous != dataSource)
        dataSource->copyScaling(*m_previous);
    m_previous = dataSource;
    dataSource->markDisplayed();
    trim();
    return dataSource;
}

ImageViewDataSourcePtr ImageViewDataSourceCache::find(const PXFilePtr &file) const
{
    return m_byPath.value(keyOf(file));
}

void ImageViewDataSourceCache::trim()
{
    if (m_byPath.size() <= decodedImagesKept)
        return;
    QList<ImageViewDataSourcePtr> byRecency = m_byPath.values();
    // Most recently shown first; the display sequence breaks ties of the clock.
    std::sort(byRecency.begin(), byRecency.end(), [](const auto &a, const auto &b) {
        if (a->lastDisplayDate() != b->lastDisplayDate())
            return a->lastDisplayDate() > b->lastDisplayDate();
        return a->displaySequence() > b->displaySequence();
    });
    const ImageViewDataSourcePtr &fading = byRecency.at(decodedImagesKept);
    if (fading->imageQuality() != ImageViewDataSource::Quality::none || fading->imageLoaded() || fading->imageLoading())
        fading->dropImage();
    if (byRecency.size() > entriesKept) {
        const ImageViewDataSourcePtr &forgotten = byRecency.at(entriesKept);
        if (forgotten == m_previous)
            m_previous.reset();
        m_byPath.remove(keyOf(forgotten->file()));
    }
}

void ImageViewDataSourceCache::remove(const PXFilePtr &file)
{
    const ImageViewDataSourcePtr dataSource = m_byPath.take(keyOf(file));
    if (dataSource && dataSource == m_previous)
        m_previous.reset();
}

void ImageViewDataSourceCache::clear()
{
    m_byPath.clear();
    m_previous.reset();
}

void ImageViewDataSourceCache::setImageCache(DecodedImageCache *cache)
{
    m_imageCache = cache;
    m_imageCacheSet = true;
    for (const ImageViewDataSourcePtr &dataSource : std::as_const(m_byPath))
        dataSource->setImageCache(cache);
}
