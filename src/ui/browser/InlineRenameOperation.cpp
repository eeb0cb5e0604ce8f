#include "ui/browser/InlineRenameOperation.h"

#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationGroup.h"
#include "core/fs/operations/ZQFileOperationHandler.h"
#include "core/model/PXFile.h"

InlineRenameOperation::InlineRenameOperation(QObject *context, Done done)
    : m_context(context)
    , m_done(std::move(done))
{ }

void InlineRenameOperation::start(const PXFilePtr &file, const QString &newName, QObject *context, Done done)
{
    auto *operation = new InlineRenameOperation(context, std::move(done));
    ZQFileOperationGroup group({ZQFileOperationUnit(file, newName)});
    ZQFileOperationHandler *handler =
        ZQFileController::sharedFileController().performOperation(ZQFileOperationType::rename, std::move(group),
                                                                  operation);
    if (!handler) {
        if (operation->m_context && operation->m_done)
            operation->m_done({}, tr("The file could not be renamed."));
        delete operation;
    }
}

void InlineRenameOperation::takeError(ZQFileOperationHandler *handler, ZQFileOperationGroup &group)
{
    for (ZQFileOperationUnit &unit : group.units()) {
        if (unit.hasError() && m_error.isEmpty()) {
            const ZQFileOperationError &error = unit.error();
            m_error = error.failureReason.isEmpty() ? error.description
                                                    : error.description + QLatin1Char(' ') + error.failureReason;
        }
        unit.setResolution(ZQFileOperationResolution::cancel);
    }
    handler->cancel();
}

void InlineRenameOperation::fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                                       ZQFileOperationGroup &group)
{
    takeError(handler, group);
}

void InlineRenameOperation::fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler,
                                                                         ZQFileOperationGroup &group)
{
    takeError(handler, group);
}

void InlineRenameOperation::fileOperationHandlerReportingTransaction(ZQFileOperationHandler *,
                                                                     const ZQFileOperationTransaction &transaction)
{
    if (transaction.isError() && m_error.isEmpty())
        m_error = transaction.error.description;
}

void InlineRenameOperation::fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler)
{
    const ZQFileOperationGroup &group = handler->group();
    for (const ZQFileOperationUnit &unit : group.units()) {
        if (unit.state() == ZQFileOperationUnit::State::done)
            m_newPath = unit.destinationPath();
        else if (m_error.isEmpty() && unit.hasError())
            m_error = unit.error().description;
    }
    if (m_newPath.isEmpty() && m_error.isEmpty())
        m_error = tr("The file could not be renamed.");
    if (m_context && m_done)
        m_done(m_newPath, m_newPath.isEmpty() ? m_error : QString());
    deleteLater();
}
