#include "core/imaging/ImagePropertiesLoader.h"

#include "core/app/Dispatch.h"
#include "core/imaging/ImagePropertiesManager.h"

#include <QPointer>
#include <QThreadPool>

#include <utility>

// One load: its stop flag and the count of results still to arrive. The count goes down on the
// GUI thread as each result is taken in, so the completion follows the last of them whichever
// order the workers post in.
struct ImagePropertiesLoader::Batch
{
    std::atomic<bool> cancelled = false;
    qsizetype remaining = 0; // GUI thread
};

ImagePropertiesLoader::ImagePropertiesLoader(QThreadPool *pool, QObject *parent)
    : QObject(parent)
    , m_pool(pool ? pool : namedThreadPool(QStringLiteral("ImagePropertiesLoader")))
{ }

ImagePropertiesLoader::~ImagePropertiesLoader()
{
    if (m_batch)
        m_batch->cancelled = true;
}

void ImagePropertiesLoader::setCache(ImagePropertiesManager *cache)
{
    m_cache = cache;
}

ImagePropertiesManager *ImagePropertiesLoader::cache() const
{
    return m_cache;
}

void ImagePropertiesLoader::load(const QList<PXFilePtr> &files, Completion completion)
{
    cancel();
    m_completion = nullptr;
    m_results.clear();
    m_errors.clear();
    m_completion = std::move(completion);
    m_isLoading = true;

    auto batch = std::make_shared<Batch>();
    if (m_batch)
        m_batch->cancelled = true;
    m_batch = batch;
    const QPointer<ImagePropertiesLoader> self(this);

    if (files.isEmpty()) {
        postToGui([self, batch] {
            if (self && !batch->cancelled)
                self->finishBatch(batch);
        });
        return;
    }

    batch->remaining = files.size();
    for (const PXFilePtr &file : files) {
        ImagePropertiesItemPtr cached = m_cache ? m_cache->item(file) : nullptr;
        m_pool->start([self, cache = m_cache, batch, file, cached] {
            std::optional<ImagePropertiesError> failure;
            ImagePropertiesItemPtr item;
            if (!batch->cancelled) {
                // Asking the file system whether the bytes changed costs a stat, not a read.
                if (cached && cached->isCurrent()) {
                    item = cached;
                } else {
                    LoadingError error = LoadingError::cannotLoadData;
                    QString reason;
                    item = ImagePropertiesItem::load(file, &error, &reason);
                    if (!item)
                        failure = ImagePropertiesError{file, error, reason};
                }
            }
            postToGui([self, cache, batch, file, cached, item, failure] {
                // What a replaced load read is still worth keeping for the next selection.
                if (cache && item != cached) {
                    if (item)
                        cache->insert(item);
                    else if (failure)
                        cache->remove(file);
                }
                if (!self || batch->cancelled)
                    return;
                if (item)
                    self->m_results.append(item);
                else if (failure)
                    self->m_errors.append(*failure);
                if (--batch->remaining == 0)
                    self->finishBatch(batch);
            });
        });
    }
}

void ImagePropertiesLoader::finishBatch(const std::shared_ptr<Batch> &batch)
{
    if (batch != m_batch)
        return;
    m_batch.reset();
    m_isLoading = false;
    const Completion completion = std::exchange(m_completion, nullptr);
    if (completion)
        completion(CompletionState{CompletionState::Kind::completed, m_results, m_errors});
}

void ImagePropertiesLoader::cancel()
{
    if (!m_isLoading)
        return;
    // The completion goes first, so that the call below finds none: a cancelled load is silent.
    m_completion = nullptr;
    m_results.clear();
    m_errors.clear();
    if (m_batch) {
        m_batch->cancelled = true;
        m_batch.reset();
    }
    m_isLoading = false;
    if (const Completion completion = std::exchange(m_completion, nullptr))
        completion(CompletionState{CompletionState::Kind::cancelled, {}, {}});
}
