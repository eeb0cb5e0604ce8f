#include "core/model/FlagManager.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationHandler.h"
#include "core/model/FlagStore.h"
#include "core/model/PXFile.h"

#include <QFile>
#include <QPointer>

namespace {

constexpr Translator tr("FlagManager");

FlagManager *installedManager = nullptr;

} // namespace

FlagManager::FlagManager(FlagStore *store, QObject *parent)
    : QObject(parent)
    , m_store(store ? store : &FlagStore::shared())
{
    m_writer.setMaxThreadCount(1);
    m_writer.setObjectName(QStringLiteral("Flag Writer"));
    connect(m_store, &FlagStore::saveFailed, this, [this](const QString &message) {
        Q_EMIT writeFailed(
            tr("Flags and rejects of files that keep no extended attributes could not be saved: %1").arg(message));
    });
}

FlagManager::~FlagManager()
{
    m_writer.waitForDone();
}

FlagManager &FlagManager::shared()
{
    if (installedManager)
        return *installedManager;
    static FlagManager *own = new FlagManager;
    return *own;
}

void FlagManager::setShared(FlagManager *manager)
{
    installedManager = manager;
}

FileFlag FlagManager::flagOf(const PXFilePtr &file) const
{
    if (!file)
        return FileFlag::none;
    if (const auto found = m_pending.constFind(file.get()); found != m_pending.cend())
        return found->flag;
    return file->storedFlag();
}

FileFlag FlagManager::cachedFlagOf(const PXFilePtr &file) const
{
    if (!file)
        return FileFlag::none;
    if (const auto found = m_pending.constFind(file.get()); found != m_pending.cend())
        return found->flag;
    return file->cachedStoredFlag().value_or(FileFlag::none);
}

void FlagManager::flag(const QList<PXFilePtr> &files)
{
    setFlag(files, FileFlag::flagged);
}

void FlagManager::reject(const QList<PXFilePtr> &files)
{
    setFlag(files, FileFlag::rejected);
}

void FlagManager::clear(const QList<PXFilePtr> &files)
{
    setFlag(files, FileFlag::none);
}

void FlagManager::setFlag(const QList<PXFilePtr> &files, FileFlag flag)
{
    QList<std::pair<PXFilePtr, QByteArray>> writes;
    for (const PXFilePtr &file : files) {
        if (!file)
            continue;
        m_flaggedFiles.remove(file.get());
        m_rejectedFiles.remove(file.get());
        if (flag == FileFlag::flagged)
            m_flaggedFiles.insert(file.get(), file);
        else if (flag == FileFlag::rejected)
            m_rejectedFiles.insert(file.get(), file);
        file->setCachedStoredFlag(flag);
        if (file->isPlaceholder())
            continue;
        Pending &pending = m_pending[file.get()];
        pending.file = file;
        pending.flag = flag;
        ++pending.writes;
        writes.append({file, file->nativePath()});
    }
    if (files.isEmpty())
        return;
    Q_EMIT flagsChanged(files);
    if (writes.isEmpty())
        return;
    FlagStore *store = m_store;
    const QPointer<FlagManager> self(this);
    // The destructor waits for this queue, and the store outlives the manager.
    m_writer.start([self, store, writes, flag] {
        QStringList failures;
        for (const auto &[file, path] : writes) {
            QString error;
            if (!store->write(path, flag, &error))
                failures.append(QStringLiteral("%1: %2").arg(file->path(), error));
        }
        postTo(self.data(), [self, writes, failures] {
            if (!self)
                return;
            for (const auto &write : writes) {
                const auto found = self->m_pending.find(write.first.get());
                if (found != self->m_pending.end() && --found->writes <= 0)
                    self->m_pending.erase(found);
            }
            if (failures.isEmpty())
                return;
            for (const QString &failure : failures)
                logError(QStringLiteral("Cannot keep the flag of ") + failure);
            // The marks stay for this run; the disk could not keep them.
            Q_EMIT self->writeFailed(
                tr("The flags of some files could not be kept:\n%1").arg(failures.join(QLatin1Char('\n'))));
        });
    });
}

void FlagManager::watchOperations(ZQFileController *controller)
{
    connect(controller, &ZQFileController::operationStarted, this, [this](ZQFileOperationHandler *handler) {
        if (handler->type() != ZQFileOperationType::move && handler->type() != ZQFileOperationType::rename)
            return;
        const QPointer<ZQFileOperationHandler> watched(handler);
        connect(handler, &ZQFileOperationHandler::completed, this, [this, watched] {
            if (!watched)
                return;
            for (const ZQFileOperationUnit &unit : watched->group().units()) {
                if (unit.state() == ZQFileOperationUnit::State::done && unit.sourceItem())
                    noteMoved(unit.sourceItem()->path(), unit.destinationPath());
            }
        });
    });
}

void FlagManager::noteMoved(const QString &fromPath, const QString &toPath)
{
    if (fromPath.isEmpty() || toPath.isEmpty() || fromPath == toPath)
        return;
    // This run's marks: the records at the old paths hand them to the records at the new ones.
    const QString inside = fromPath + QLatin1Char('/');
    const auto carry = [&](FileSet &set, FileFlag flag) {
        QList<PXFilePtr> moved;
        for (const PXFilePtr &file : std::as_const(set)) {
            if (file->path() == fromPath || file->path().startsWith(inside))
                moved.append(file);
        }
        for (const PXFilePtr &file : std::as_const(moved)) {
            set.remove(file.get());
            const PXFilePtr target = PXFile::fileForPath(toPath + file->path().mid(fromPath.size()));
            target->setCachedStoredFlag(flag);
            set.insert(target.get(), target);
        }
    };
    carry(m_flaggedFiles, FileFlag::flagged);
    carry(m_rejectedFiles, FileFlag::rejected);
    FlagStore *store = m_store;
    const QByteArray from = QFile::encodeName(fromPath);
    const QByteArray to = QFile::encodeName(toPath);
    // After the writes queued before it, which still name the old path.
    m_writer.start([store, from, to] { store->noteMoved(from, to); });
}

void FlagManager::flush()
{
    m_writer.waitForDone();
    m_store->flush();
}
