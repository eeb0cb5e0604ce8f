#include "core/activities/FileOperationHistory.h"

#include "core/activities/ActivitiesManager.h"
#include "core/app/Dispatch.h"
#include "core/app/Translate.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationHandler.h"

#include <QFileInfo>
#include <QMap>
#include <QPointer>

#include <algorithm>

namespace {

constexpr Translator tr("FileOperationHistory");
FileOperationHistory *installedHistory = nullptr;

using Completion = ActivitiesManager::Completion;

ZQFilePtr fileAt(const QString &path)
{
    return ZQStandardFile::newFileForPath(path);
}

// Runs the groups one after another as activities of `type`, and calls `done` with what all of
// them did together.
ActivityItem *runChain(ActivitiesManager *manager, ZQFileOperationType type, QList<ZQFileOperationGroup> groups,
                       FileOperationOutcome sum, Completion done)
{
    if (groups.isEmpty()) {
        done(sum);
        return nullptr;
    }
    ZQFileOperationGroup first = groups.takeFirst();
    QPointer<ActivitiesManager> alive(manager);
    ActivityItem *item = manager->performOperation(
        type, std::move(first),
        [alive, type, groups, sum, done](const FileOperationOutcome &outcome) mutable {
            sum.items += outcome.items;
            sum.cancelled = sum.cancelled || outcome.cancelled;
            if (!sum.error.isError())
                sum.error = outcome.error;
            // A cancel or an error stops what was to follow.
            if (!alive || outcome.cancelled || outcome.error.isError())
                groups.clear();
            if (alive && !groups.isEmpty())
                runChain(alive, type, groups, sum, done);
            else
                done(sum);
        },
        false);
    if (!item)
        done(sum);
    return item;
}

} // namespace

FileOperationHistory::FileOperationHistory(ActivitiesManager *manager, QObject *parent)
    : QObject(parent)
    , m_manager(manager ? manager : &ActivitiesManager::shared())
{
    connect(m_manager.data(), &ActivitiesManager::operationFinished, this, &FileOperationHistory::record);
    watchController();
}

FileOperationHistory::~FileOperationHistory()
{
    if (installedHistory == this)
        installedHistory = nullptr;
}

FileOperationHistory &FileOperationHistory::shared()
{
    if (installedHistory)
        return *installedHistory;
    static auto *own = new FileOperationHistory(&ActivitiesManager::shared());
    return *own;
}

void FileOperationHistory::setShared(FileOperationHistory *history)
{
    installedHistory = history;
}

void FileOperationHistory::watchController()
{
    // Renames that the batch renamer and the grid's name editor run on the file controller
    // themselves can be undone too.
    connect(m_manager->fileController(), &ZQFileController::operationStarted, this,
            [this](ZQFileOperationHandler *handler) {
                if (handler->type() != ZQFileOperationType::rename)
                    return;
                QPointer<ZQFileOperationHandler> started(handler);
                // The manager lists its own handlers as soon as performOperation returns.
                postTo(this, [this, started] {
                    if (!started || !m_manager || m_manager->isManaging(started))
                        return;
                    connect(started, &ZQFileOperationHandler::completed, this, [this, started] {
                        if (!started)
                            return;
                        FileOperationOutcome outcome;
                        outcome.type = ZQFileOperationType::rename;
                        outcome.title = ActivitiesManager::actionTitle(ZQFileOperationType::rename);
                        for (const ZQFileOperationUnit &unit : started->group().units()) {
                            if (unit.state() == ZQFileOperationUnit::State::done && unit.sourceItem())
                                outcome.items.append({unit.sourceItem()->path(), unit.destinationPath()});
                        }
                        record(outcome);
                    });
                });
            });
}

bool FileOperationHistory::canUndo() const
{
    return !m_busy && !m_undo.isEmpty();
}

bool FileOperationHistory::canRedo() const
{
    return !m_busy && !m_redo.isEmpty();
}

QString FileOperationHistory::undoTitle() const
{
    return m_undo.isEmpty() ? tr("Undo") : tr("Undo %1").arg(m_undo.last().title);
}

QString FileOperationHistory::redoTitle() const
{
    return m_redo.isEmpty() ? tr("Redo") : tr("Redo %1").arg(m_redo.last().title);
}

void FileOperationHistory::record(const FileOperationOutcome &outcome)
{
    if (!outcome.undoable || outcome.items.isEmpty())
        return;
    m_undo.append({outcome, outcome.title, m_nextStepId++});
    while (m_undo.size() > maximumSteps)
        m_undo.removeFirst();
    m_redo.clear();
    Q_EMIT changed();
}

ActivityItem *FileOperationHistory::undo()
{
    return canUndo() ? runOpposite(m_undo.last(), true) : nullptr;
}

ActivityItem *FileOperationHistory::redo()
{
    return canRedo() ? runOpposite(m_redo.last(), false) : nullptr;
}

ActivityItem *FileOperationHistory::runOpposite(const Step &step, bool undoing)
{
    const FileOperationOutcome &done = step.outcome;
    ZQFileOperationType type = ZQFileOperationType::trash;
    QList<ZQFileOperationGroup> groups;
    switch (done.type) {
    case ZQFileOperationType::move: {
        // Back to each item's folder under its former name: one move per folder.
        type = ZQFileOperationType::move;
        QMap<QString, QList<ZQFileOperationUnit>> byFolder;
        for (const FileOperationOutcome::Item &item : done.items) {
            const QFileInfo source(item.source);
            byFolder[source.path()].append(ZQFileOperationUnit(fileAt(item.destination), source.fileName()));
        }
        for (auto it = byFolder.cbegin(); it != byFolder.cend(); ++it)
            groups.append(ZQFileOperationGroup(it.value(), fileAt(it.key())));
        break;
    }
    case ZQFileOperationType::rename: {
        type = ZQFileOperationType::rename;
        QList<ZQFileOperationUnit> units;
        for (const FileOperationOutcome::Item &item : done.items)
            units.append(ZQFileOperationUnit(fileAt(item.destination), QFileInfo(item.source).fileName()));
        groups.append(ZQFileOperationGroup(units));
        break;
    }
    case ZQFileOperationType::trash: {
        // Out of the trash, to where each item was.
        type = ZQFileOperationType::restoreFromTrash;
        QList<ZQFileOperationUnit> units;
        for (const FileOperationOutcome::Item &item : done.items)
            units.append(ZQFileOperationUnit(fileAt(item.destination), QString()));
        groups.append(ZQFileOperationGroup(units));
        break;
    }
    case ZQFileOperationType::copy:
    case ZQFileOperationType::duplicate:
    case ZQFileOperationType::alias:
    case ZQFileOperationType::newFolder:
    case ZQFileOperationType::restoreFromTrash: {
        // What was made, or put back, goes to the trash: never deleted.
        type = ZQFileOperationType::trash;
        QList<ZQFileOperationUnit> units;
        for (const FileOperationOutcome::Item &item : done.items)
            units.append(ZQFileOperationUnit(fileAt(item.destination), QString()));
        groups.append(ZQFileOperationGroup(units));
        break;
    }
    }

    if (!m_manager)
        return nullptr;
    m_busy = true;
    Q_EMIT changed();
    FileOperationOutcome sum;
    sum.type = type;
    sum.title = step.title;
    QPointer<FileOperationHistory> self(this);
    const QString title = step.title;
    const int id = step.id;
    const auto finished = [self, undoing, title, id](const FileOperationOutcome &outcome) {
        if (!self)
            return;
        self->m_busy = false;
        QList<Step> &from = undoing ? self->m_undo : self->m_redo;
        QList<Step> &to = undoing ? self->m_redo : self->m_undo;
        // Nothing came back: the step stays, to be tried again. A step dropped meanwhile (a new
        // operation cleared the redo list) is not brought back.
        const auto found = std::find_if(from.begin(), from.end(), [id](const Step &s) { return s.id == id; });
        if (!outcome.items.isEmpty() && found != from.end()) {
            from.erase(found);
            to.append({outcome, title, id});
        }
        Q_EMIT self->changed();
    };
    ActivityItem *item = runChain(m_manager, type, groups, sum, finished);
    return item;
}
