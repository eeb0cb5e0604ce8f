#include "core/fs/operations/ZQFileController.h"

#include "core/app/Dispatch.h"
#include "core/fs/ZQFolderLoadOperation.h"
#include "core/fs/operations/ZQFileOperationHandler.h"
#include "core/fs/operations/ZQRenamePerformer.h"
#include "core/fs/operations/ZQTransferPerformer.h"
#include "core/fs/operations/ZQTrashPerformer.h"

ZQFileController::ZQFileController(QObject *parent)
    : QObject(parent)
{
    setPerformerFactory(ZQFileOperationType::rename, [] { return std::make_unique<ZQRenamePerformer>(); });
    for (ZQFileOperationType type : {ZQFileOperationType::move, ZQFileOperationType::copy,
                                     ZQFileOperationType::duplicate, ZQFileOperationType::alias})
        setPerformerFactory(type, [type] { return std::make_unique<ZQTransferPerformer>(type); });
    for (ZQFileOperationType type : {ZQFileOperationType::trash, ZQFileOperationType::restoreFromTrash})
        setPerformerFactory(type, [type] { return std::make_unique<ZQTrashPerformer>(type); });
    setPerformerFactory(ZQFileOperationType::newFolder, [] { return std::make_unique<ZQNewFolderPerformer>(); });
}

ZQFileController::~ZQFileController() = default;

ZQFileController &ZQFileController::sharedFileController()
{
    // Never deleted: handlers may still report while static destructors run.
    static ZQFileController *shared = new ZQFileController;
    return *shared;
}

QThreadPool *ZQFileController::utilityQueue() const
{
    return namedThreadPool(QString::fromLatin1(ZQFolderLoadOperation::poolName));
}

void ZQFileController::setPerformerFactory(ZQFileOperationType type, PerformerFactory factory)
{
    m_performers.insert(int(type), std::move(factory));
}

ZQFileOperationHandler *ZQFileController::performOperation(ZQFileOperationType type, ZQFileOperationGroup group,
                                                           ZQFileOperationDelegate *delegate)
{
    const PerformerFactory factory = m_performers.value(int(type));
    if (!factory || group.units().isEmpty())
        return nullptr;
    auto *handler = new ZQFileOperationHandler(type, std::move(group), factory(), delegate, this);
    m_handlers.removeAll(nullptr);
    m_handlers.append(handler);
    Q_EMIT operationStarted(handler);
    // Started at the next turn of the event loop: the caller keeps the handler before any callback.
    QPointer<ZQFileOperationHandler> started(handler);
    postTo(handler, [started] {
        if (started)
            started->start();
    });
    return handler;
}

QList<ZQFileOperationHandler *> ZQFileController::operationHandlers() const
{
    QList<ZQFileOperationHandler *> running;
    for (const QPointer<ZQFileOperationHandler> &handler : m_handlers) {
        if (handler)
            running.append(handler);
    }
    return running;
}

void ZQFileController::changeHappenedInDirectory(const ZQFilePtr &folder)
{
    if (!folder)
        return;
    folder->updateForEvent({ZQFileEventType::contentModified, folder->nativePath()});
    Q_EMIT directoryChanged(folder);
}

void ZQFileController::checkFilesystem()
{
    Q_EMIT filesystemCheckRequested();
}
