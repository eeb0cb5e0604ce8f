#include "ui/browser/FileTransfer.h"

#include "core/app/Log.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationDelegate.h"
#include "core/fs/operations/ZQFileOperationHandler.h"
#include "core/model/PXFile.h"

#include <QObject>
#include <QPointer>

namespace {

QString messageOf(const ZQFileOperationError &error)
{
    const QString text =
        error.failureReason.isEmpty() ? error.description : error.description + QLatin1Char(' ') + error.failureReason;
    return error.path.isEmpty() ? text : QStringLiteral("%1: %2").arg(error.path, text);
}

// Answers the operation's questions without asking: an item that cannot go (its name is taken
// in the folder, it is gone) is skipped and reported, so nothing is ever overwritten. Lives until
// the operation completes.
class SkippingDelegate : public QObject, public ZQFileOperationDelegate
{
public:
    SkippingDelegate(QObject *context, std::function<void(const QStringList &)> done)
        : m_context(context)
        , m_done(std::move(done))
    { }

    void fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                    ZQFileOperationGroup &group) override
    {
        skipFailed(group);
        handler->continueToPreflight();
    }
    void fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler,
                                                      ZQFileOperationGroup &group) override
    {
        skipFailed(group);
        handler->continueToPerform();
    }
    void fileOperationHandlerReportingTransaction(ZQFileOperationHandler *,
                                                  const ZQFileOperationTransaction &transaction) override
    {
        if (transaction.isError())
            m_errors.append(messageOf(transaction.error));
    }
    void fileOperationHandlerCompletedOperation(ZQFileOperationHandler *) override { finish(); }

    void finish()
    {
        for (const QString &error : std::as_const(m_errors))
            logError(error);
        if (m_context && m_done)
            m_done(m_errors);
        deleteLater();
    }

private:
    void skipFailed(ZQFileOperationGroup &group)
    {
        for (ZQFileOperationUnit &unit : group.units()) {
            if (unit.hasError() && unit.resolution() == ZQFileOperationResolution::unresolved) {
                unit.setResolution(ZQFileOperationResolution::skip);
                m_errors.append(messageOf(unit.error()));
            }
        }
    }

    QPointer<QObject> m_context;
    std::function<void(const QStringList &)> m_done;
    QStringList m_errors;
};

ZQFileOperationType operationType(FileTransfer::Kind kind)
{
    switch (kind) {
    case FileTransfer::Kind::move: return ZQFileOperationType::move;
    case FileTransfer::Kind::copy: return ZQFileOperationType::copy;
    case FileTransfer::Kind::alias: return ZQFileOperationType::alias;
    }
    return ZQFileOperationType::copy;
}

} // namespace

namespace FileTransfer {

void start(Kind kind, const QList<PXFilePtr> &files, const PXFilePtr &folder, QObject *context,
           std::function<void(const QStringList &errors)> done)
{
    QList<ZQFileOperationUnit> units;
    for (const PXFilePtr &file : files)
        units.append(ZQFileOperationUnit(file, QString())); // keeps its name
    auto *delegate = new SkippingDelegate(context, std::move(done));
    ZQFileOperationHandler *handler =
        ZQFileController::sharedFileController().performOperation(operationType(kind),
                                                                  ZQFileOperationGroup(std::move(units), folder),
                                                                  delegate);
    if (!handler)
        delegate->finish(); // nothing to do
}

} // namespace FileTransfer
