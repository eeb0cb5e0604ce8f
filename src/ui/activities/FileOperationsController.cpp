#include "ui/activities/FileOperationsController.h"

#include "core/activities/ActivitiesManager.h"
#include "core/activities/FileOperationHistory.h"
#include "core/model/PXFile.h"

#include <QCursor>
#include <QFileInfo>
#include <QHash>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

namespace {
FileOperationsController *installedController = nullptr;
} // namespace

FileOperationsController::FileOperationsController(ActivitiesManager *manager, FileOperationHistory *history,
                                                   QObject *parent)
    : QObject(parent)
    , m_manager(manager ? manager : &ActivitiesManager::shared())
    , m_history(history ? history : &FileOperationHistory::shared())
{ }

FileOperationsController::~FileOperationsController()
{
    if (installedController == this)
        installedController = nullptr;
}

FileOperationsController &FileOperationsController::shared()
{
    if (installedController)
        return *installedController;
    static auto *own = new FileOperationsController;
    return *own;
}

void FileOperationsController::setShared(FileOperationsController *controller)
{
    installedController = controller;
}

ActivityItem *FileOperationsController::start(int type, const QList<PXFilePtr> &files, const PXFilePtr &folder,
                                              Completion done)
{
    QList<ZQFileOperationUnit> units;
    for (const PXFilePtr &file : files) {
        if (file)
            units.append(ZQFileOperationUnit(file, QString()));
    }
    if (units.isEmpty() && ZQFileOperationType(type) != ZQFileOperationType::newFolder)
        return nullptr;
    if (ZQFileOperationType(type) == ZQFileOperationType::newFolder)
        units = {ZQFileOperationUnit(nullptr, QString())};
    QPointer<FileOperationsController> self(this);
    return m_manager->performOperation(ZQFileOperationType(type), ZQFileOperationGroup(units, folder),
                                       [self, done = std::move(done)](const FileOperationOutcome &outcome) {
                                           if (self)
                                               Q_EMIT self->operationFinished(outcome);
                                           if (done)
                                               done(outcome);
                                       });
}

ActivityItem *FileOperationsController::move(const QList<PXFilePtr> &files, const PXFilePtr &folder, Completion done)
{
    return folder ? start(int(ZQFileOperationType::move), files, folder, std::move(done)) : nullptr;
}

ActivityItem *FileOperationsController::copy(const QList<PXFilePtr> &files, const PXFilePtr &folder, Completion done)
{
    return folder ? start(int(ZQFileOperationType::copy), files, folder, std::move(done)) : nullptr;
}

ActivityItem *FileOperationsController::link(const QList<PXFilePtr> &files, const PXFilePtr &folder, Completion done)
{
    return folder ? start(int(ZQFileOperationType::alias), files, folder, std::move(done)) : nullptr;
}

ActivityItem *FileOperationsController::duplicate(const QList<PXFilePtr> &files, Completion done)
{
    return start(int(ZQFileOperationType::duplicate), files, nullptr, std::move(done));
}

ActivityItem *FileOperationsController::makeAlias(const QList<PXFilePtr> &files, Completion done)
{
    // Beside the originals; links of items in several folders go to each one's own folder.
    QHash<QString, QList<PXFilePtr>> byFolder;
    QStringList order;
    for (const PXFilePtr &file : files) {
        const QString folder = file->parentPath();
        if (!byFolder.contains(folder))
            order.append(folder);
        byFolder[folder].append(file);
    }
    ActivityItem *first = nullptr;
    for (const QString &folder : std::as_const(order)) {
        ActivityItem *item = link(byFolder.value(folder), PXFile::fileForPath(folder), done);
        first = first ? first : item;
    }
    return first;
}

ActivityItem *FileOperationsController::moveToTrash(const QList<PXFilePtr> &files, Completion done)
{
    return start(int(ZQFileOperationType::trash), files, nullptr, std::move(done));
}

ActivityItem *FileOperationsController::newFolder(const PXFilePtr &parent, Completion done)
{
    return parent ? start(int(ZQFileOperationType::newFolder), {}, parent, std::move(done)) : nullptr;
}

ActivityItem *FileOperationsController::rotate(const QList<PXFilePtr> &files, JpegRotation::Turn turn, Completion done)
{
    QPointer<FileOperationsController> self(this);
    return m_manager->rotateImages(files, turn, [self, done = std::move(done)](const FileOperationOutcome &outcome) {
        if (self)
            Q_EMIT self->operationFinished(outcome);
        if (done)
            done(outcome);
    });
}

QMenu *FileOperationsController::offerPlacement(const QList<PXFilePtr> &files, const PXFilePtr &folder, QWidget *parent)
{
    auto *menu = new QMenu(parent);
    menu->setObjectName(QStringLiteral("dropMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QPointer<FileOperationsController> self(this);
    connect(menu->addAction(tr("Move Here")), &QAction::triggered, this, [self, files, folder] {
        if (self)
            self->move(files, folder);
    });
    connect(menu->addAction(tr("Copy Here")), &QAction::triggered, this, [self, files, folder] {
        if (self)
            self->copy(files, folder);
    });
    connect(menu->addAction(tr("Link Here")), &QAction::triggered, this, [self, files, folder] {
        if (self)
            self->link(files, folder);
    });
    menu->addSeparator();
    menu->addAction(tr("Cancel"));
    menu->popup(QCursor::pos());
    return menu;
}

bool FileOperationsController::changesExtension(const QString &name, const QString &newName)
{
    return QFileInfo(name).suffix().compare(QFileInfo(newName).suffix(), Qt::CaseInsensitive) != 0;
}

bool FileOperationsController::confirmExtensionChange(const QString &name, const QString &newName, QWidget *window)
{
    if (extensionQuestion)
        return extensionQuestion(name, newName);
    const QString oldSuffix = QFileInfo(name).suffix();
    const QString newSuffix = QFileInfo(newName).suffix();
    const QString from = oldSuffix.isEmpty() ? tr("no extension") : QStringLiteral(".") + oldSuffix;
    const QString to = newSuffix.isEmpty() ? tr("no extension") : QStringLiteral(".") + newSuffix;
    QMessageBox box(QMessageBox::Warning, tr("Change Extension"),
                    tr("Are you sure you want to change the extension for '%1' from %2 to %3?").arg(name, from, to),
                    QMessageBox::NoButton, window);
    box.setInformativeText(tr("Changing the extension of a file will make it appear as a different type of file. It "
                              "may open in a different application, or it may not be recognized at all."));
    QPushButton *use =
        box.addButton(newSuffix.isEmpty() ? tr("Remove Extension") : tr("Use %1").arg(to), QMessageBox::AcceptRole);
    QPushButton *cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(cancel);
    box.exec();
    return box.clickedButton() == use;
}

ActivityItem *FileOperationsController::rename(const PXFilePtr &file, const QString &newName, QWidget *window,
                                               Completion done)
{
    if (!file || newName.isEmpty() || newName == file->name())
        return nullptr;
    if (!file->isDirectory() && changesExtension(file->name(), newName)
        && !confirmExtensionChange(file->name(), newName, window))
        return nullptr;
    QPointer<FileOperationsController> self(this);
    return m_manager->performOperation(ZQFileOperationType::rename,
                                       ZQFileOperationGroup({ZQFileOperationUnit(file, newName)}),
                                       [self, done = std::move(done)](const FileOperationOutcome &outcome) {
                                           if (self)
                                               Q_EMIT self->operationFinished(outcome);
                                           if (done)
                                               done(outcome);
                                       });
}
