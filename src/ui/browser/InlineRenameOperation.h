#pragma once

#include "core/fs/operations/ZQFileOperationDelegate.h"
#include "core/model/PXFileForward.h"

#include <QObject>
#include <QPointer>

#include <functional>

// Renames one file from the grid's name editor through the file layer's rename operation. Any
// problem (an invalid name, a name already taken, the file gone) stops it and is handed to
// `done` as a message; success hands an empty one. Deletes itself when the operation ends.
class InlineRenameOperation : public QObject, public ZQFileOperationDelegate
{
    Q_OBJECT

public:
    using Done = std::function<void(const QString &newPath, const QString &error)>;
    static void start(const PXFilePtr &file, const QString &newName, QObject *context, Done done);

    void fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                    ZQFileOperationGroup &group) override;
    void fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler,
                                                      ZQFileOperationGroup &group) override;
    void fileOperationHandlerReportingTransaction(ZQFileOperationHandler *handler,
                                                  const ZQFileOperationTransaction &transaction) override;
    void fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler) override;

private:
    InlineRenameOperation(QObject *context, Done done);
    void takeError(ZQFileOperationHandler *handler, ZQFileOperationGroup &group);

    QPointer<QObject> m_context;
    Done m_done;
    QString m_error;
    QString m_newPath;
};
