#pragma once

#include "core/fs/operations/ZQFileOperationTypes.h"

class ZQFileOperationGroup;
class ZQFileOperationUnit;

// What one type of operation does to its units (rename; move, copy, link and trash to come). The
// handler runs the stages and calls these on its worker thread, never two at once for one run.
class ZQFileOperationPerformer
{
public:
    virtual ~ZQFileOperationPerformer() = default;

    // Before anything is done: each unit's destination and its source and destination errors.
    virtual void prepare(ZQFileOperationGroup &group) = 0;
    // After the initial resolutions, on the units still to do: applies what it can (a free name
    // for "keep both") and checks again; errors found here go to the preflight resolution.
    virtual void preflight(ZQFileOperationGroup &group) = 0;
    // One unit's work; an error stops the operation, units done before stay done.
    virtual ZQFileOperationError perform(ZQFileOperationUnit &unit, const ZQFileOperationGroup &group) = 0;
};
