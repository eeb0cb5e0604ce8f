#pragma once

#include "core/activities/ActivitiesManager.h"
#include "core/activities/ActivitiesModel.h"
#include "core/activities/FileOperationHistory.h"
#include "core/fs/FileOperationsSupport.h"
#include "core/fs/operations/ZQTrashPerformer.h"
#include "core/model/PXFile.h"

#include <QFileInfo>

#include <memory>

// Answers the manager's questions as a user would, and records them.
struct ScriptedPrompter : ActivitiesPrompter
{
    ZQFileOperationResolution answer = ZQFileOperationResolution::skip; // cancel: the user stops
    bool applyToAll = true;
    QStringList questions; // the names in conflict, in the order asked
    QList<ZQFileOperationError> errors;

    void resolveConflicts(ActivityItem *, ZQFileOperationGroup &group, std::function<void(bool)> done) override
    {
        for (ZQFileOperationUnit &unit : group.units()) {
            if (!unit.hasError() || unit.resolution() != ZQFileOperationResolution::unresolved)
                continue;
            questions.append(QFileInfo(unit.error().path).fileName());
            if (answer == ZQFileOperationResolution::cancel) {
                done(false);
                return;
            }
            unit.setResolution(answer);
            if (!applyToAll)
                break;
        }
        done(true);
    }
    void showError(ActivityItem *, const ZQFileOperationError &error) override { errors.append(error); }
};

// A file controller whose trash is in the test's folder, an activities manager and a history over
// it, and a folder to work in.
struct ActivitiesFixture
{
    TestDir dir;
    QString trashFolder;
    ZQFileController controller;
    std::unique_ptr<ActivitiesManager> manager;
    std::unique_ptr<FileOperationHistory> history;
    ScriptedPrompter prompter;

    ActivitiesFixture()
    {
        trashFolder = dir.filePath(QStringLiteral("data/Trash"));
        ZQTrash trash(QFile::encodeName(trashFolder));
        const QByteArray top = QFile::encodeName(dir.path());
        // The test's folder stands for the home volume: its items go to the trash above.
        trash.setTopDirectoryFinder(
            [top](const QByteArray &path) { return path.startsWith(top) ? top : ZQTrash::topDirectoryOf(path); });
        for (ZQFileOperationType type : {ZQFileOperationType::trash, ZQFileOperationType::restoreFromTrash})
            controller.setPerformerFactory(type,
                                           [type, trash] { return std::make_unique<ZQTrashPerformer>(type, trash); });
        manager = std::make_unique<ActivitiesManager>(&controller);
        manager->activitiesModel()->setFinishedLinger(0);
        manager->setPrompter(&prompter);
        history = std::make_unique<FileOperationHistory>(manager.get());
    }

    PXFilePtr file(const QString &relative) const { return PXFile::fileForPath(dir.filePath(relative)); }

    // Runs an operation to its end; the outcome.
    FileOperationOutcome run(ZQFileOperationType type, const QStringList &relatives, const QString &folder = {})
    {
        QList<ZQFileOperationUnit> units;
        for (const QString &relative : relatives)
            units.append(ZQFileOperationUnit(file(relative), QString()));
        return wait(
            manager->performOperation(type, ZQFileOperationGroup(units, folder.isEmpty() ? nullptr : file(folder))));
    }

    // Waits for `started` to end: an operation finishes and none is working any more (one started
    // earlier may finish first). The outcome of the last one to finish.
    FileOperationOutcome wait(ActivityItem *started)
    {
        FileOperationOutcome last;
        bool finished = false;
        const QMetaObject::Connection connection =
            QObject::connect(manager.get(), &ActivitiesManager::operationFinished,
                             [&](const FileOperationOutcome &outcome) {
                                 last = outcome;
                                 finished = true;
                             });
        if (started)
            waitUntil([&] { return finished && !manager->hasWorkingActivities(); }, 20000);
        QObject::disconnect(connection);
        return last;
    }

    // Waits for an undo or redo, which may run several operations, to end.
    bool settle()
    {
        return waitUntil([&] { return !history->isBusy() && !manager->hasWorkingActivities(); }, 20000);
    }
};
