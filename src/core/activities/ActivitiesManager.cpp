#include "core/activities/ActivitiesManager.h"

#include "core/activities/ActivitiesModel.h"
#include "core/activities/ImageRotationActivity.h"
#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/fs/operations/ZQFileController.h"
#include "core/fs/operations/ZQFileOperationHandler.h"
#include "core/model/PXFile.h"
#include "core/thumbnails/ThumbnailCache.h"

#include <QFileInfo>
#include <QLocale>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr Translator tr("ActivitiesManager");
ActivitiesManager *installedManager = nullptr;

// 1 s and 1 %: before that, a remaining time would jump about too much to be of use.
constexpr qint64 minimumElapsedForEstimateMs = 1000;
constexpr double minimumFractionForEstimate = 0.01;

QString quoted(const QString &name)
{
    return QStringLiteral("“%1”").arg(name);
}

QString fileName(const QString &path)
{
    return QFileInfo(path).fileName();
}

QString timeLeftText(qint64 seconds)
{
    if (seconds < 60)
        return tr("About %n seconds left", nullptr, int(std::max<qint64>(seconds, 1)));
    if (seconds < 3600)
        return tr("About %n minutes left", nullptr, int((seconds + 30) / 60));
    return tr("About %n hours left", nullptr, int((seconds + 1800) / 3600));
}

} // namespace

ActivitiesManager::ActivitiesManager(ZQFileController *controller, QObject *parent)
    : QObject(parent)
    , m_controller(controller ? controller : &ZQFileController::sharedFileController())
    , m_model(new ActivitiesModel(this))
{
    qRegisterMetaType<FileOperationOutcome>();
    connect(m_model, &ActivitiesModel::allFinished, this, &ActivitiesManager::checkStopped);
}

ActivitiesManager::~ActivitiesManager()
{
    if (installedManager == this)
        installedManager = nullptr;
    // Handlers still running report to nobody from now on.
    for (auto it = m_running.cbegin(); it != m_running.cend(); ++it)
        it.key()->setDelegate(nullptr);
}

ActivitiesManager &ActivitiesManager::shared()
{
    if (installedManager)
        return *installedManager;
    // Never deleted: handlers may still report while static destructors run.
    static auto *own = new ActivitiesManager;
    return *own;
}

void ActivitiesManager::setShared(ActivitiesManager *manager)
{
    installedManager = manager;
}

QString ActivitiesManager::actionTitle(ZQFileOperationType type)
{
    switch (type) {
    case ZQFileOperationType::move: return tr("Move");
    case ZQFileOperationType::copy: return tr("Copy");
    case ZQFileOperationType::alias: return tr("Make Alias");
    case ZQFileOperationType::trash: return tr("Move to Trash");
    case ZQFileOperationType::duplicate: return tr("Duplicate");
    case ZQFileOperationType::newFolder: return tr("New Folder");
    case ZQFileOperationType::rename: return tr("Rename");
    case ZQFileOperationType::restoreFromTrash: return tr("Put Back");
    }
    return {};
}

QString ActivitiesManager::activityTitle(ZQFileOperationType type, const ZQFileOperationGroup &group)
{
    const QList<ZQFileOperationUnit> &units = group.units();
    const int count = int(units.size());
    const QString first =
        count > 0 && units.first().sourceItem() ? quoted(units.first().sourceItem()->displayName()) : QString();
    const QString folder = group.destinationItem() ? quoted(group.destinationItem()->displayName()) : QString();
    const bool one = count == 1 && !first.isEmpty();
    switch (type) {
    case ZQFileOperationType::move:
        return one ? tr("Moving %1 to %2").arg(first, folder) : tr("Moving %n items to %1", nullptr, count).arg(folder);
    case ZQFileOperationType::copy:
        return one ? tr("Copying %1 to %2").arg(first, folder)
                   : tr("Copying %n items to %1", nullptr, count).arg(folder);
    case ZQFileOperationType::alias:
        return one ? tr("Making an alias of %1").arg(first) : tr("Making aliases of %n items", nullptr, count);
    case ZQFileOperationType::trash:
        return one ? tr("Moving %1 to the Trash").arg(first) : tr("Moving %n items to the Trash", nullptr, count);
    case ZQFileOperationType::duplicate:
        return one ? tr("Duplicating %1").arg(first) : tr("Duplicating %n items", nullptr, count);
    case ZQFileOperationType::newFolder: return tr("Making a new folder in %1").arg(folder);
    case ZQFileOperationType::rename:
        return one ? tr("Renaming %1").arg(first) : tr("Renaming %n items", nullptr, count);
    case ZQFileOperationType::restoreFromTrash:
        return one ? tr("Putting back %1").arg(first) : tr("Putting back %n items", nullptr, count);
    }
    return tr("Working");
}

void ActivitiesManager::applyTransaction(ActivityItem &item, ZQFileOperationType type,
                                         const ZQFileOperationTransaction &transaction, qint64 elapsedMs)
{
    item.setCurrentPath(transaction.currentPath);
    if (transaction.isError()) {
        item.setStatus(tr("An error occurred"));
        item.setTimeLeft({});
        return;
    }
    switch (transaction.stage) {
    case ZQFileOperationStage::notStarted:
    case ZQFileOperationStage::preparing:
    case ZQFileOperationStage::preflight:
        item.setIndeterminate(true);
        item.setStatus(tr("Preparing..."));
        return;
    case ZQFileOperationStage::awaitingInitialResolution:
    case ZQFileOperationStage::awaitingPreflightResolution:
        item.setIndeterminate(true);
        item.setStatus(tr("Waiting for your answer..."));
        return;
    case ZQFileOperationStage::cancelling:
        item.setStatus(tr("Cancelling..."));
        item.setTimeLeft({});
        return;
    case ZQFileOperationStage::completed: item.setTimeLeft({}); return;
    case ZQFileOperationStage::performing: break;
    default:
        item.setStatus(tr("Unknown stage %1").arg(int(transaction.stage)));
        logError(QStringLiteral("Unknown status encountered during progress display"));
        return;
    }
    const double fraction = std::clamp(transaction.percentComplete / 100.0, 0.0, 1.0);
    item.setIndeterminate(false);
    item.setProgress(fraction);
    if (type == ZQFileOperationType::rename) {
        item.setStatus(tr("Renaming"));
        return;
    }
    const QLocale locale;
    const QString done = transaction.totalByteCount > 0 ? locale.formattedDataSize(transaction.completedByteCount)
                                                        : QString::number(transaction.completedUnitCount);
    const QString total = transaction.totalByteCount > 0 ? locale.formattedDataSize(transaction.totalByteCount)
                                                         : QString::number(transaction.totalUnitCount);
    QString left;
    if (elapsedMs >= minimumElapsedForEstimateMs && fraction >= minimumFractionForEstimate && fraction < 1) {
        const double seconds = double(elapsedMs) / 1000.0 * (1 - fraction) / fraction;
        if (std::isfinite(seconds))
            left = timeLeftText(qint64(std::ceil(seconds)));
        else
            logError(QStringLiteral("A remaining time that is not a number encountered during time left calculation"));
    }
    item.setTimeLeft(left);
    item.setStatus(
        tr("%1 of %2 complete - %3").arg(done, total, left.isEmpty() ? tr("Calculating remaining time...") : left));
}

ActivityItem *ActivitiesManager::performOperation(ZQFileOperationType type, ZQFileOperationGroup group, Completion done,
                                                  bool undoable)
{
    if (group.units().isEmpty())
        return nullptr;
    const QString title = activityTitle(type, group);
    ZQFileOperationHandler *handler = m_controller->performOperation(type, std::move(group), this);
    if (!handler) {
        logError(tr("There was an unknown error starting the file operation."));
        return nullptr;
    }
    auto *item = new ActivityItem(QStringLiteral("file-operation-%1").arg(m_nextId++), false);
    item->setTitle(title);
    item->setStatus(tr("Preparing..."));
    item->setIndeterminate(true);
    QPointer<ZQFileOperationHandler> running(handler);
    QPointer<ActivitiesManager> self(this);
    item->cancellationHandler = [running, self](ActivityItem *) {
        if (running)
            running->cancel();
        // The handler may have completed at once (nothing was at work).
        const bool winding = running && self && self->m_running.contains(running.data());
        return winding ? ActivityItem::State::cleanup : ActivityItem::State::finished;
    };
    Running entry;
    entry.activity = item;
    entry.done = std::move(done);
    entry.undoable = undoable;
    entry.title = actionTitle(type);
    entry.clock.start();
    m_running.insert(handler, std::move(entry));
    m_model->add(item);
    return item;
}

void ActivitiesManager::askForResolution(ZQFileOperationHandler *handler, ZQFileOperationGroup &group, bool preflight)
{
    QPointer<ZQFileOperationHandler> waiting(handler);
    const auto answer = [waiting, preflight](bool proceed) {
        if (!waiting)
            return;
        if (!proceed)
            waiting->cancel();
        else if (preflight)
            waiting->continueToPerform();
        else
            waiting->continueToPreflight();
    };
    const Running entry = m_running.value(handler);
    if (!m_prompter || !entry.activity) {
        // Nobody to ask: what is in conflict is left alone.
        answer(true);
        return;
    }
    m_prompter->resolveConflicts(entry.activity, group, answer);
}

void ActivitiesManager::fileOperationHandlerNeedsInitialResolution(ZQFileOperationHandler *handler,
                                                                   ZQFileOperationGroup &group)
{
    askForResolution(handler, group, false);
}

void ActivitiesManager::fileOperationHandlerNeedsPreflightResolution(ZQFileOperationHandler *handler,
                                                                     ZQFileOperationGroup &group)
{
    askForResolution(handler, group, true);
}

void ActivitiesManager::fileOperationHandlerReportingTransaction(ZQFileOperationHandler *handler,
                                                                 const ZQFileOperationTransaction &transaction)
{
    auto it = m_running.find(handler);
    if (it == m_running.end() || !it->activity)
        return;
    if (transaction.stage != ZQFileOperationStage::performing)
        it->clock.restart(); // the remaining time counts from the start of the work itself
    if (it->activity->state() == ActivityItem::State::working || transaction.stage == ZQFileOperationStage::cancelling)
        applyTransaction(*it->activity, handler->type(), transaction, it->clock.elapsed());
}

void ActivitiesManager::fileOperationHandlerCompletedOperation(ZQFileOperationHandler *handler)
{
    const Running entry = m_running.take(handler);
    FileOperationOutcome outcome;
    outcome.type = handler->type();
    outcome.title = entry.title;
    outcome.undoable = entry.undoable;
    outcome.cancelled = handler->isCancelled();
    outcome.error = handler->stoppingError();
    QSet<QString> folders;
    for (const ZQFileOperationUnit &unit : handler->group().units()) {
        if (unit.state() != ZQFileOperationUnit::State::done)
            continue;
        const QString source = unit.sourceItem() ? unit.sourceItem()->path() : QString();
        outcome.items.append({source, unit.destinationPath()});
        if (!source.isEmpty())
            folders.insert(QFileInfo(source).path());
        folders.insert(QFileInfo(unit.destinationPath()).path());
    }
    for (const QString &folder : std::as_const(folders))
        m_controller->changeHappenedInDirectory(ZQStandardFile::newFileForPath(folder));
    if (outcome.error.isError() && outcome.error.code != ZQFileOperationErrorCode::cancelled) {
        logError(QStringLiteral("%1 %2").arg(outcome.error.description, outcome.error.failureReason));
        if (entry.activity)
            entry.activity->setStatus(tr("An error occurred"));
        if (m_prompter)
            m_prompter->showError(entry.activity, outcome.error);
    }
    if (entry.activity) {
        if (!outcome.cancelled && !outcome.error.isError())
            entry.activity->setProgress(1);
        entry.activity->setState(ActivityItem::State::finished);
    }
    Q_EMIT operationFinished(outcome);
    if (entry.done)
        entry.done(outcome);
}

ActivityItem *ActivitiesManager::rotateImages(const QList<PXFilePtr> &files, JpegRotation::Turn turn, Completion done)
{
    if (files.isEmpty())
        return nullptr;
    auto work = std::make_shared<ImageRotationActivity>();
    auto *item = new ActivityItem(QStringLiteral("image-rotation-%1").arg(m_nextId++), false);
    item->setTitle(files.size() == 1 ? tr("Rotating %1").arg(quoted(files.first()->displayName()))
                                     : tr("Rotating %n images", nullptr, int(files.size())));
    item->setStatus(tr("Preparing..."));
    item->setIndependentActivity(work);
    m_model->add(item);

    QStringList paths;
    for (const PXFilePtr &file : files)
        paths.append(file->path());
    QPointer<ActivitiesManager> self(this);
    QPointer<ActivityItem> row(item);
    const auto report = [self, row](int finished, int count, const QString &path) {
        postToGui([self, row, finished, count, path] {
            if (!self || !row || row->state() != ActivityItem::State::working)
                return;
            row->setCurrentPath(path);
            row->setProgress(double(finished) / double(count));
            row->setStatus(tr("%1 of %2 complete").arg(finished).arg(count));
        });
    };
    runOnPool(QString::fromLatin1(ZQFileController::poolName),
              [work, paths, turn, report, self, row, files, cacheRoot = m_thumbnailCacheRoot, done = std::move(done)] {
                  const ThumbnailCache cache(cacheRoot);
                  JpegRotation::Workspace workspace;
                  QList<ZQFileOperationError> errors;
                  QList<int> turned;
                  for (int i = 0; i < paths.size(); ++i) {
                      if (work->isCancelled())
                          break;
                      const qint64 modifiedBefore = QFileInfo(paths[i]).lastModified().toSecsSinceEpoch();
                      const ImageRotationActivity::Result result =
                          ImageRotationActivity::rotateFile(paths[i], turn, &workspace);
                      if (result.ok) {
                          ImageRotationActivity::turnCachedThumbnails(paths[i], modifiedBefore, turn, cache);
                          turned.append(i);
                      } else {
                          ZQFileOperationError error =
                              ZQFileOperationError::forCode(ZQFileOperationErrorCode::unknown, paths[i]);
                          error.description = tr("%1 couldn’t be rotated.").arg(quoted(fileName(paths[i])));
                          error.failureReason = result.error;
                          errors.append(error);
                      }
                      report(i + 1, int(paths.size()), paths[i]);
                  }
                  const bool cancelled = work->isCancelled();
                  postToGui([self, row, files, turned, errors, cancelled, turn, done] {
                      FileOperationOutcome outcome;
                      outcome.title = tr("Rotate");
                      outcome.undoable = false;
                      outcome.cancelled = cancelled;
                      QList<PXFilePtr> rotated;
                      for (int index : turned) {
                          const PXFilePtr &file = files[index];
                          file->updateForEvent({ZQFileEventType::contentModified, file->nativePath()});
                          rotated.append(file);
                          outcome.items.append({file->path(), file->path()});
                      }
                      if (!errors.isEmpty())
                          outcome.error = errors.first();
                      for (const ZQFileOperationError &error : errors)
                          logError(QStringLiteral("%1 %2").arg(error.description, error.failureReason));
                      if (self) {
                          if (!rotated.isEmpty())
                              Q_EMIT self->imagesRotated(rotated, turn);
                          if (!errors.isEmpty() && self->m_prompter)
                              self->m_prompter->showError(row, errors.first());
                      }
                      if (row) {
                          if (!errors.isEmpty())
                              row->setStatus(tr("An error occurred"));
                          else
                              row->setProgress(1);
                          row->setState(ActivityItem::State::finished);
                      }
                      if (self)
                          Q_EMIT self->operationFinished(outcome);
                      if (done)
                          done(outcome);
                  });
              });
    return item;
}

bool ActivitiesManager::hasWorkingActivities() const
{
    return m_model->hasUnfinishedActivities();
}

void ActivitiesManager::stopActivities(std::function<void()> done)
{
    if (!m_model->hasUnfinishedActivities()) {
        done();
        return;
    }
    m_whenStopped.append(std::move(done));
    const QList<ActivityItem *> activities = m_model->activities();
    for (ActivityItem *item : activities) {
        QPointer<ActivityItem> alive(item);
        if (alive)
            alive->cancel();
    }
    checkStopped();
}

void ActivitiesManager::checkStopped()
{
    if (m_whenStopped.isEmpty() || m_model->hasUnfinishedActivities())
        return;
    const QList<std::function<void()>> waiting = std::exchange(m_whenStopped, {});
    for (const std::function<void()> &done : waiting)
        done();
}
