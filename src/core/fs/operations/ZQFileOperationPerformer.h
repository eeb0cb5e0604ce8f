#pragma once

#include "core/fs/operations/ZQFileOperationTypes.h"

#include <QtGlobal>

class ZQFileOperationGroup;
class ZQFileOperationUnit;

// What a performer tells the run while it works on one unit, and how it learns that the run was
// cancelled. Called on the worker thread.
class ZQFileOperationProgress
{
public:
    virtual ~ZQFileOperationProgress() = default;
    virtual bool isCancelled() const = 0;
    // Bytes written and files finished since the last call.
    virtual void advance(qint64 bytes, qint64 files) = 0;
};

// What one type of operation does to its units (rename, move, copy, alias, trash, ...). The
// handler runs the stages and calls these on its worker thread, never two at once for one run.
class ZQFileOperationPerformer
{
public:
    virtual ~ZQFileOperationPerformer() = default;

    // Before anything is done: each unit's destination and its source and destination errors.
    virtual void prepare(ZQFileOperationGroup &group) = 0;
    // After the initial resolutions, on the units still to do: applies what it can (a free name
    // for "keep both") and checks again; errors found here go to the preflight resolution. Sets
    // each unit's byte and file counts for the progress.
    virtual void preflight(ZQFileOperationGroup &group) = 0;
    // One unit's work; an error stops the operation, units done before stay done. A unit that
    // sees the run cancelled undoes what it did and answers the error `cancelled`.
    virtual ZQFileOperationError perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) = 0;
    // After the last unit performed, also when the run stopped at an error or a cancel: work the
    // performer put off for the units done (a move across volumes removes its originals here).
    virtual ZQFileOperationError finishPerforming() { return {}; }

    // Set by the handler before performing; tests that call a performer directly set their own.
    void setProgress(ZQFileOperationProgress *progress) { m_progress = progress; }

protected:
    bool isCancelled() const { return m_progress && m_progress->isCancelled(); }
    void advance(qint64 bytes, qint64 files)
    {
        if (m_progress)
            m_progress->advance(bytes, files);
    }
    ZQFileOperationProgress *progress() const { return m_progress; }

private:
    ZQFileOperationProgress *m_progress = nullptr;
};
