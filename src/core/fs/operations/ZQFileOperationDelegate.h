#pragma once

#include "core/fs/operations/ZQFileOperationTypes.h"

#include <QString>

class ZQFileOperationGroup;
class ZQFileOperationHandler;

// One progress report of a running operation, handed to the delegate on the GUI thread.
struct ZQFileOperationTransaction
{
    ZQFileOperationStage stage = ZQFileOperationStage::notStarted;
    qsizetype completedUnitCount = 0;
    qsizetype totalUnitCount = 0;
    qint64 completedByteCount = 0;
    qint64 totalByteCount = 0; // 0 when nothing is written (moves within a volume, trash)
    qint64 completedFileCount = 0; // files inside folders count one by one
    qint64 totalFileCount = 0;
    double percentComplete = 0; // 0 to 100; by bytes when bytes are written, else by units
    QString currentPath; // the item being worked on
    ZQFileOperationError error; // set when a unit failed: the operation stops

    bool isError() const { return error.isError(); }
};

// The owner of a running operation (the batch renamer, the activities): asked to resolve unit
// errors, told of progress and of the end. Every call comes on the GUI thread.
class ZQFileOperationDelegate
{
public:
    virtual ~ZQFileOperationDelegate() = default;

    // Units have errors after preparing: set their resolutions, then call the handler's
    // continueToPreflight (or cancel). May answer later, after asking the user.
    virtual void fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                            ZQFileOperationGroup &group) = 0;
    // The last checks found errors: set resolutions, then call continueToPerform (or cancel).
    virtual void fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler,
                                                              ZQFileOperationGroup &group) = 0;
    virtual void fileOperationHandlerReportingTransaction(ZQFileOperationHandler *handler,
                                                          const ZQFileOperationTransaction &transaction) = 0;
    // The last call for this handler, which is deleted afterwards.
    virtual void fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler) = 0;
};
