#pragma once

#include "core/fs/ZQStandardFile.h"
#include "core/fs/operations/ZQFileOperationGroup.h"
#include "core/fs/operations/ZQFileOperationTypes.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QThreadPool;
class ZQFileOperationDelegate;
class ZQFileOperationHandler;
class ZQFileOperationPerformer;

// Starts file operations and keeps the running ones. One shared instance serves the program;
// tests may make their own. Each operation type has a performer (what it does to one unit): rename,
// move, copy, duplicate, alias, trash, restore and new folder are built in, and a test may register
// its own (a trash of its own, for one). Use from the GUI thread.
class ZQFileController : public QObject
{
    Q_OBJECT

public:
    static constexpr const char *poolName = "ZQFilesystemTools.FileOperations";
    using PerformerFactory = std::function<std::unique_ptr<ZQFileOperationPerformer>()>;

    explicit ZQFileController(QObject *parent = nullptr);
    ~ZQFileController() override;
    static ZQFileController &sharedFileController();

    // The pool that folder scans run on.
    QThreadPool *utilityQueue() const;

    void setPerformerFactory(ZQFileOperationType type, PerformerFactory factory);
    // Starts `group` as an operation of `type`; null when the type has no performer or there is
    // nothing to do. The handler reports to `delegate` and deletes itself when it completes.
    ZQFileOperationHandler *performOperation(ZQFileOperationType type, ZQFileOperationGroup group,
                                             ZQFileOperationDelegate *delegate);
    QList<ZQFileOperationHandler *> operationHandlers() const;

    // An operation changed the entries of `folder`: its cached facts are dropped and watchers told.
    void changeHappenedInDirectory(const ZQFilePtr &folder);
    // Asks watchers to compare what they show with the disk after an operation.
    void checkFilesystem();

Q_SIGNALS:
    void operationStarted(ZQFileOperationHandler *handler);
    void directoryChanged(const ZQFilePtr &folder);
    void filesystemCheckRequested();

private:
    QHash<int, PerformerFactory> m_performers;
    QList<QPointer<ZQFileOperationHandler>> m_handlers;
};
