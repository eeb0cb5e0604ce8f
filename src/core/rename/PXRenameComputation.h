#pragma once

#include "core/rename/PXFileRenameItem.h"
#include "core/rename/PXRenameRules.h"

#include <QList>

#include <atomic>
#include <memory>

// One recomputation of a batch's proposed names and collisions, made to run off the GUI thread.
//
// The GUI thread takes a snapshot of the arranged items (their files and numbers) and the rules;
// a worker computes every item's proposal and then the collision marks in display order (which
// reads the folders on disk); the GUI thread applies the result to the items it listed. A newer
// snapshot makes an older computation pointless: `cancel` stops it between items, and its result
// is never applied. The snapshot holds its own copies of the items, so the listed items may
// change meanwhile.
class PXRenameComputation
{
public:
    struct Result
    {
        QList<PXFileRenameItem::Proposal> proposals; // parallel to the snapshot's items
        QList<bool> collisions;
        bool hasCollisions = false;
        bool cancelled = false;
    };

    // Snapshot of `items` (in display order) under `rules`.
    PXRenameComputation(const QList<PXFileRenameItemPtr> &items, const PXRenameRules &rules, bool perFolder);
    ~PXRenameComputation();
    PXRenameComputation(const PXRenameComputation &) = delete;
    PXRenameComputation &operator=(const PXRenameComputation &) = delete;

    // Computes on the calling thread (any thread).
    Result run() const;
    // Asks a running `run` to stop; safe from any thread.
    void cancel() { m_cancelled->store(true, std::memory_order_relaxed); }
    bool isCancelled() const { return m_cancelled->load(std::memory_order_relaxed); }

    // The items the snapshot was taken of, to apply the result to.
    const QList<PXFileRenameItemPtr> &items() const { return m_items; }
    // Applies a result (on the GUI thread) to the items of the snapshot.
    void apply(const Result &result) const;

    // The collision scan over proposals in display order: a proposed path already claimed
    // collides; so does a changed name (not a change of case alone) that exists on disk.
    static QList<bool> collisionsFor(const QList<PXFilePtr> &files, const QList<PXFileRenameItem::Proposal> &proposals,
                                     bool *hasCollisions, const std::atomic<bool> *cancelled = nullptr);

private:
    // What the worker reads of an item: the listed items' numbers may change meanwhile.
    struct Input
    {
        PXFilePtr file;
        bool isContainer = false;
        quint64 itemIndex = PXBatchItem::notFound;
        quint64 itemOverallIndex = PXBatchItem::notFound;
    };

    QList<PXFileRenameItemPtr> m_items;
    QList<Input> m_inputs;
    PXRenameRules m_rules;
    bool m_perFolder = false;
    std::shared_ptr<std::atomic<bool>> m_cancelled;
};
