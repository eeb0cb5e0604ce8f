#pragma once

#include "core/imaging/ImagePropertiesItem.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <functional>
#include <memory>

class ImagePropertiesManager;
class QThreadPool;

// How a load ended: every record and every failure, or cancelled.
struct ImagePropertiesCompletionState
{
    enum class Kind { completed, cancelled };
    Kind kind = Kind::completed;
    QList<ImagePropertiesItemPtr> results;
    QList<ImagePropertiesError> errors;
};

// Reads the records of a selection in the background, one job per file on a pool, and hands
// them back on the GUI thread: each record or failure is appended as its read finishes (so
// `results` is in completion order, not request order), and the completion runs once, after the
// last of them. A new load or cancel() silences the one before: a cancelled load never calls
// its completion. Used on the GUI thread only; a loader destroyed mid-load delivers nothing.
//
// With a cache, a file whose record is held there and whose size and modification time are
// still those the record was read from is not read again: the held record is handed back.
// Fresh records go into the cache; a file that can no longer be read leaves it.
class ImagePropertiesLoader : public QObject
{
    Q_OBJECT

public:
    using CompletionState = ImagePropertiesCompletionState;
    using Completion = std::function<void(const CompletionState &state)>;

    // `pool` runs the reads; by default the shared "ImagePropertiesLoader" pool.
    explicit ImagePropertiesLoader(QThreadPool *pool = nullptr, QObject *parent = nullptr);
    ~ImagePropertiesLoader() override;

    void load(const QList<PXFilePtr> &files, Completion completion);
    void cancel();

    // Where records are taken from and put; none by default.
    void setCache(ImagePropertiesManager *cache);
    ImagePropertiesManager *cache() const;

    QThreadPool *pool() const { return m_pool; }
    bool isLoading() const { return m_isLoading; }
    const QList<ImagePropertiesItemPtr> &results() const { return m_results; }
    const QList<ImagePropertiesError> &errors() const { return m_errors; }

private:
    struct Batch;
    void finishBatch(const std::shared_ptr<Batch> &batch);

    QThreadPool *m_pool;
    QPointer<ImagePropertiesManager> m_cache;
    Completion m_completion;
    QList<ImagePropertiesItemPtr> m_results;
    QList<ImagePropertiesError> m_errors;
    bool m_isLoading = false;
    // The running batch; its flag tells its jobs and queued deliveries to stop.
    std::shared_ptr<Batch> m_batch;
};
