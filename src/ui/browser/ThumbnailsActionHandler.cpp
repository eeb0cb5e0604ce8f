#include "ui/browser/ThumbnailsActionHandler.h"

#include "core/activities/ImageRotationActivity.h"
#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/fs/Applications.h"
#include "core/fs/TypeIdentifiers.h"
#include "core/fs/Volumes.h"
#include "core/imaging/ImagePropertiesItem.h"
#include "core/model/PXFile.h"
#include "core/thumbnails/ThumbnailItem.h"
#include "ui/activities/FileOperationsController.h"
#include "ui/browser/ApplicationChooser.h"
#include "ui/browser/FileDropValidator.h"
#include "ui/browser/FileOpener.h"
#include "ui/browser/ThumbnailsViewController.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <algorithm>
#include <mutex>

namespace {

// The software a file names as its maker: the TIFF block's, else the IPTC originating program.
QString creatorOf(const PXFilePtr &file)
{
    const ImagePropertiesItemPtr item = file->isImage() ? ImagePropertiesItem::load(file) : nullptr;
    if (!item)
        return {};
    if (item->tiffSoftwareInfo)
        return *item->tiffSoftwareInfo;
    return item->originatingSoftware.value_or(QString());
}

// Files on disk among `files`.
QList<PXFilePtr> realFiles(const QList<PXFilePtr> &files)
{
    QList<PXFilePtr> result;
    for (const PXFilePtr &file : files) {
        if (!file->isPlaceholder())
            result.append(file);
    }
    return result;
}

} // namespace

ThumbnailsActionHandler::ThumbnailsActionHandler(ThumbnailsViewController *pane)
    : QObject(pane)
    , m_pane(pane)
{
    m_dialogs.confirm = [pane](const QString &text) {
        QMessageBox box(QMessageBox::Question, tr("Open Files"), text, QMessageBox::Cancel, pane);
        QPushButton *open = box.addButton(tr("Open"), QMessageBox::AcceptRole);
        box.setDefaultButton(open);
        box.exec();
        return box.clickedButton() == open;
    };
    // Starts beside the shown folder: the usual destination is a sibling ("Keepers", "Rejects").
    m_dialogs.chooseFolder = [pane](const QString &title) {
        const QList<PXFilePtr> &shown = pane->sources();
        const QString start = shown.isEmpty() ? QDir::homePath() : shown.first()->parentPath();
        return QFileDialog::getExistingDirectory(pane, title, start);
    };
    m_dialogs.chooseApplication = [pane](const QList<PXFilePtr> &) {
        return ApplicationChooser::choose(pane, tr("Open With"));
    };
    // The desktop's application database is read once per process, on a worker, so that the
    // first "Open With" menu does not wait for it.
    static std::once_flag warmed;
    std::call_once(warmed,
                   [] { runOnPool(QStringLiteral("Browser Disk Work"), [] { Applications::allApplications(); }); });
}

QMenu *ThumbnailsActionHandler::makeContextMenu(int index)
{
    ThumbnailGridView *grid = m_pane->gridView();
    if (index >= 0 && !grid->isSelected(index))
        grid->setSelectedIndexes({index}, index);
    return m_contextMenuFactory ? m_contextMenuFactory(this, index >= 0) : nullptr;
}

bool ThumbnailsActionHandler::hasSelection() const
{
    return !m_pane->selectedFiles().isEmpty();
}

bool ThumbnailsActionHandler::hasFiles() const
{
    return m_pane->fileCount() > 0;
}

bool ThumbnailsActionHandler::canRename() const
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    return selected.size() == 1 && !selected.first()->isPlaceholder();
}

bool ThumbnailsActionHandler::canMakeFolder() const
{
    const QList<PXFilePtr> &sources = m_pane->sources();
    return sources.size() == 1 && sources.first()->isDirectory() && sources.first()->isWritable();
}

bool ThumbnailsActionHandler::canChangeFlags() const
{
    return hasSelection() && m_pane->tracksFlags();
}

bool ThumbnailsActionHandler::canSelectByFlag() const
{
    return hasFiles() && m_pane->tracksFlags();
}

bool ThumbnailsActionHandler::hasSelectionOnDisk() const
{
    return !realFiles(m_pane->selectedFiles()).isEmpty();
}

bool ThumbnailsActionHandler::canTransferTo(const QString &folderPath) const
{
    const QList<PXFilePtr> selected = realFiles(m_pane->selectedFiles());
    if (selected.isEmpty())
        return false;
    // A folder cannot go into itself or into a folder inside it.
    for (const PXFilePtr &file : selected) {
        if (!folderPath.isEmpty()
            && (folderPath == file->path() || folderPath.startsWith(file->path() + QLatin1Char('/'))))
            return false;
    }
    return true;
}

bool ThumbnailsActionHandler::canRevealOriginal() const
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    return std::any_of(selected.cbegin(), selected.cend(),
                       [](const PXFilePtr &file) { return file->isSymbolicLink(); });
}

bool ThumbnailsActionHandler::canEject() const
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    return std::any_of(selected.cbegin(), selected.cend(), [](const PXFilePtr &file) { return file->isVolumeRoot(); });
}

bool ThumbnailsActionHandler::confirmOpening(qsizetype count)
{
    if (count <= manyFilesThreshold || !m_dialogs.confirm)
        return true;
    return m_dialogs.confirm(tr("You are attempting to open a large number of files at once. This could take a while. "
                                "Are you sure you want to open %1 files?")
                                 .arg(count));
}

void ThumbnailsActionHandler::performOpen()
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    if (!selected.isEmpty())
        Q_EMIT openRequested(selected);
}

void ThumbnailsActionHandler::openInApp()
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    if (!confirmOpening(selected.size()))
        return;
    for (const PXFilePtr &file : selected) {
        if (!QDesktopServices::openUrl(file->url())) {
            logError(tr("No application opens %1").arg(file->path()));
            Q_EMIT errorOccurred(tr("The file could not be opened"),
                                 tr("No application is set to open \"%1\".").arg(file->displayName()));
        }
    }
}

void ThumbnailsActionHandler::openFilesWith(const PXFilePtr &application, const QList<PXFilePtr> &files)
{
    if (!FileOpener::openWith(application, files)) {
        logError(tr("Cannot start %1").arg(application->path()));
        Q_EMIT errorOccurred(tr("The application could not be started"), application->displayName());
    }
}

void ThumbnailsActionHandler::setFileOperations(FileOperationsController *operations)
{
    m_operations = operations;
}

FileOperationsController *ThumbnailsActionHandler::fileOperations() const
{
    return m_operations ? m_operations.data() : &FileOperationsController::shared();
}

const SelectedFilesInfo &ThumbnailsActionHandler::selectedFilesInfo() const
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    if (!m_hasSelectedFilesInfo || selected != m_selectedFilesInfoFor) {
        m_selectedFilesInfo = SelectedFilesInfo::forFiles(selected);
        m_selectedFilesInfoFor = selected;
        m_hasSelectedFilesInfo = true;
    }
    return m_selectedFilesInfo;
}

QMenu *ThumbnailsActionHandler::dropMenu() const
{
    return m_dropMenu.data();
}

void ThumbnailsActionHandler::placeDroppedFiles(FileDropOperation operation, const QList<PXFilePtr> &sources,
                                                const PXFilePtr &destination)
{
    FileOperationsController *operations = fileOperations();
    switch (operation) {
    case FileDropOperation::open: openFilesWith(destination, sources); return;
    case FileDropOperation::move: operations->move(sources, destination); return;
    case FileDropOperation::copy: operations->copy(sources, destination); return;
    case FileDropOperation::link: operations->link(sources, destination); return;
    case FileDropOperation::none: return;
    case FileDropOperation::ask: break;
    }
    // Alt held: the choice is the user's, in a menu where the files were dropped.
    delete m_dropMenu.data();
    m_dropMenu = operations->offerPlacement(sources, destination, m_pane);
}

void ThumbnailsActionHandler::openWithMenuAction(const QString &applicationPath)
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    if (selected.isEmpty())
        return;
    QString application = applicationPath;
    if (application.isEmpty() && m_dialogs.chooseApplication)
        application = m_dialogs.chooseApplication(selected);
    if (application.isEmpty() || !confirmOpening(selected.size()))
        return;
    openFilesWith(PXFile::fileForPath(application), selected);
}

// Reading the creators reads metadata: done on a pool; the launches follow on the GUI thread.
void ThumbnailsActionHandler::openInCreator()
{
    const QList<PXFilePtr> selected = realFiles(m_pane->selectedFiles());
    if (selected.isEmpty() || !confirmOpening(selected.size()))
        return;
    const QPointer<ThumbnailsActionHandler> self(this);
    runOnPool(QStringLiteral("Open in Creator"), [self, selected] {
        // Files by the application that made them; empty key: none known.
        QList<std::pair<QString, QList<PXFilePtr>>> groups;
        for (const PXFilePtr &file : selected) {
            const QString mimeType = TypeIdentifiers::preferredMimeType(file->resolvedTypeIdentifier());
            const QString application = Applications::creatorApplicationFile(mimeType, creatorOf(file));
            auto group =
                std::find_if(groups.begin(), groups.end(), [&](const auto &g) { return g.first == application; });
            if (group == groups.end())
                groups.append(std::make_pair(application, QList<PXFilePtr>{file}));
            else
                group->second.append(file);
        }
        postToGui([self, groups] {
            if (!self)
                return;
            for (const auto &[application, files] : groups) {
                if (!application.isEmpty()) {
                    self->openFilesWith(PXFile::fileForPath(application), files);
                    continue;
                }
                logDebug(QStringLiteral("No installed application made %1 file(s); opening them in the default one")
                             .arg(files.size()));
                for (const PXFilePtr &file : files) {
                    if (!QDesktopServices::openUrl(file->url()))
                        Q_EMIT self
                            ->errorOccurred(tr("The file could not be opened"),
                                            tr("No application is set to open \"%1\".").arg(file->displayName()));
                }
            }
        });
    });
}

void ThumbnailsActionHandler::selectAll()
{
    m_pane->gridView()->selectAll();
}

void ThumbnailsActionHandler::deselectAll()
{
    m_pane->gridView()->clearSelection();
}

void ThumbnailsActionHandler::renameFile()
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    if (selected.size() != 1)
        return;
    if (const int index = m_pane->indexOfFile(selected.first()); index >= 0)
        m_pane->gridView()->editName(index);
}

bool ThumbnailsActionHandler::canMakeAlias() const
{
    const SelectedFilesInfo &info = selectedFilesInfo();
    return info.anyItems && !info.needsRefresh;
}

bool ThumbnailsActionHandler::canDuplicate() const
{
    const SelectedFilesInfo &info = selectedFilesInfo();
    return info.anyItems && !info.needsRefresh && info.deleteable;
}

bool ThumbnailsActionHandler::canMoveToTrash() const
{
    return selectedFilesInfo().deleteable;
}

bool ThumbnailsActionHandler::canRotatePermanent() const
{
    if (!selectedFilesInfo().images)
        return false;
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    for (const PXFilePtr &file : selected) {
        if (file->isImage() && ImageRotationActivity::canRotate(file->path()))
            return true;
    }
    return false;
}

bool ThumbnailsActionHandler::canDeleteRejected() const
{
    if (!m_pane->tracksFlags())
        return false;
    const int count = m_pane->fileCount();
    for (int i = 0; i < count; ++i) {
        if (m_pane->flagOf(m_pane->itemAt(i)->file()) == FileFlag::rejected)
            return true;
    }
    return false;
}

void ThumbnailsActionHandler::makeAlias()
{
    if (canMakeAlias())
        fileOperations()->makeAlias(m_pane->selectedFiles());
}

void ThumbnailsActionHandler::makeSymlink()
{
    makeAlias();
}

void ThumbnailsActionHandler::duplicate()
{
    if (!canDuplicate())
        return;
    QPointer<ThumbnailsViewController> pane(m_pane);
    fileOperations()->duplicate(m_pane->selectedFiles(), [pane](const FileOperationOutcome &outcome) {
        // The copies take the selection once they are listed.
        if (!pane || outcome.items.isEmpty())
            return;
        QList<PXFilePtr> copies;
        for (const FileOperationOutcome::Item &item : outcome.items)
            copies.append(PXFile::fileForPath(item.destination));
        pane->selectWhenShown(copies);
    });
}

void ThumbnailsActionHandler::moveToTrash()
{
    if (canMoveToTrash())
        fileOperations()->moveToTrash(m_pane->selectedFiles());
}

void ThumbnailsActionHandler::deleteRejected()
{
    if (!canDeleteRejected())
        return;
    QList<PXFilePtr> rejected;
    const int count = m_pane->fileCount();
    for (int i = 0; i < count; ++i) {
        const PXFilePtr file = m_pane->itemAt(i)->file();
        if (m_pane->flagOf(file) == FileFlag::rejected)
            rejected.append(file);
    }
    bool confirmed = false;
    if (deleteRejectedQuestion) {
        confirmed = deleteRejectedQuestion(int(rejected.size()));
    } else {
        QMessageBox box(QMessageBox::Warning, tr("Delete Rejected"),
                        tr("Move %n rejected item(s) to the Trash?", nullptr, int(rejected.size())),
                        QMessageBox::NoButton, m_pane->window());
        box.setInformativeText(tr("You can put them back with Undo, or from the Trash."));
        QPushButton *trash = box.addButton(tr("Move to Trash"), QMessageBox::DestructiveRole);
        box.setDefaultButton(box.addButton(QMessageBox::Cancel));
        box.exec();
        confirmed = box.clickedButton() == trash;
    }
    if (confirmed)
        fileOperations()->moveToTrash(rejected);
}

void ThumbnailsActionHandler::rotatePermanent(bool clockwise)
{
    QList<PXFilePtr> images;
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    for (const PXFilePtr &file : selected) {
        if (file->isImage() && ImageRotationActivity::canRotate(file->path()))
            images.append(file);
    }
    if (!images.isEmpty())
        fileOperations()->rotate(images,
                                 clockwise ? JpegRotation::Turn::clockwise : JpegRotation::Turn::counterclockwise);
}

void ThumbnailsActionHandler::rotateClockwisePermanent()
{
    rotatePermanent(true);
}

void ThumbnailsActionHandler::rotateCounterclockwisePermanent()
{
    rotatePermanent(false);
}

void ThumbnailsActionHandler::revealInFileManager()
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    FileOpener::reveal(selected.isEmpty() ? m_pane->sources() : selected, m_pane);
}

void ThumbnailsActionHandler::revealOriginal()
{
    QList<PXFilePtr> originals;
    for (const PXFilePtr &file : m_pane->selectedFiles()) {
        if (file->isSymbolicLink())
            originals.append(PXFile::fileForPath(file->resolvedPath()));
    }
    if (!originals.isEmpty())
        FileOpener::reveal(originals, m_pane);
}

void ThumbnailsActionHandler::ejectSelected()
{
    QPointer<ThumbnailsActionHandler> self(this);
    for (const PXFilePtr &file : m_pane->selectedFiles()) {
        if (!file->isVolumeRoot())
            continue;
        const QString path = file->path();
        const QString name = file->displayName();
        Volumes::eject(path, this, [self, path, name](const QString &error) {
            if (!self)
                return;
            if (error.isEmpty())
                Q_EMIT self->volumeEjected(path);
            else
                Q_EMIT self->errorOccurred(tr("The volume \"%1\" could not be ejected").arg(name), error);
        });
    }
}

void ThumbnailsActionHandler::changeFinderLabel(int value)
{
    const QList<PXFilePtr> files = realFiles(m_pane->selectedFiles());
    if (files.isEmpty())
        return;
    const QPointer<ThumbnailsActionHandler> self(this);
    runOnPool(QStringLiteral("Browser Disk Work"), [self, files, value] {
        QList<PXFilePtr> changed;
        QStringList failures;
        for (const PXFilePtr &file : files) {
            QString error;
            if (file->setFinderLabel(value, &error))
                changed.append(file);
            else
                failures.append(QStringLiteral("%1: %2").arg(file->displayName(), error));
        }
        postToGui([self, changed, failures] {
            if (!self)
                return;
            self->m_pane->gridView()->viewport()->update();
            if (!failures.isEmpty()) {
                logError(QStringLiteral("Cannot label ") + failures.join(QStringLiteral("; ")));
                Q_EMIT self->errorOccurred(tr("Some files could not be labelled"), failures.join(QLatin1Char('\n')));
            }
            Q_EMIT self->labelsChanged(changed);
        });
    });
}

void ThumbnailsActionHandler::transferTo(FileDropOperation operation, const QString &folderPath)
{
    const QList<PXFilePtr> files = realFiles(m_pane->selectedFiles());
    if (files.isEmpty())
        return;
    QString folder = folderPath;
    if (folder.isEmpty() && m_dialogs.chooseFolder) {
        folder = m_dialogs.chooseFolder(operation == FileDropOperation::move       ? tr("Move To")
                                            : operation == FileDropOperation::copy ? tr("Copy To")
                                                                                   : tr("Alias To"));
    }
    if (folder.isEmpty() || !canTransferTo(folder))
        return;
    // An activity like a drop: progress, cancel, a question when a name is taken, undo.
    placeDroppedFiles(operation, files, PXFile::fileForPath(folder));
}

void ThumbnailsActionHandler::moveToMenuAction(const QString &folderPath)
{
    transferTo(FileDropOperation::move, folderPath);
}

void ThumbnailsActionHandler::copyToMenuAction(const QString &folderPath)
{
    transferTo(FileDropOperation::copy, folderPath);
}

void ThumbnailsActionHandler::aliasToMenuAction(const QString &folderPath)
{
    transferTo(FileDropOperation::link, folderPath);
}

void ThumbnailsActionHandler::newFolder()
{
    if (!canMakeFolder())
        return;
    QPointer<ThumbnailsViewController> pane(m_pane);
    fileOperations()->newFolder(m_pane->sources().first(), [pane](const FileOperationOutcome &outcome) {
        // Its name opens for editing once it is listed.
        if (pane && !outcome.items.isEmpty())
            pane->editNameWhenShown(PXFile::fileForPath(outcome.items.first().destination));
    });
}

void ThumbnailsActionHandler::changeFlag(FileFlag flag)
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    if (m_pane->tracksFlags() && !selected.isEmpty())
        Q_EMIT flagChangeRequested(selected, flag);
    m_pane->gridView()->viewport()->update();
}

void ThumbnailsActionHandler::flagItem()
{
    changeFlag(FileFlag::flagged);
}

void ThumbnailsActionHandler::rejectItem()
{
    changeFlag(FileFlag::rejected);
}

void ThumbnailsActionHandler::clearItemFlag()
{
    changeFlag(FileFlag::none);
}

void ThumbnailsActionHandler::selectByFlag(FileFlag flag)
{
    if (!m_pane->tracksFlags())
        return;
    QList<int> indexes;
    const int count = m_pane->fileCount();
    for (int i = 0; i < count; ++i) {
        // Marks of files never shown are read now: a command the user asked for, which costs a
        // few milliseconds per thousand files the first time.
        m_pane->itemAt(i)->file()->warmAttributes();
        if (m_pane->flagOf(m_pane->itemAt(i)->file()) == flag)
            indexes.append(i);
    }
    m_pane->gridView()->setSelectedIndexes(indexes);
    scrollSelectionToVisible();
}

void ThumbnailsActionHandler::selectFlagged()
{
    selectByFlag(FileFlag::flagged);
}

void ThumbnailsActionHandler::selectRejected()
{
    selectByFlag(FileFlag::rejected);
}

void ThumbnailsActionHandler::stepImage(int direction)
{
    const int count = m_pane->fileCount();
    if (count == 0)
        return;
    ThumbnailGridView *grid = m_pane->gridView();
    const int index = grid->currentIndex();
    for (int i = index + direction; i >= 0 && i < count; i += direction) {
        if (m_pane->itemAt(i)->file()->isImage()) {
            grid->setSelectedIndexes({i}, i);
            grid->scrollToItem(i);
            return;
        }
    }
}

void ThumbnailsActionHandler::nextImageInBrowser()
{
    stepImage(1);
}

void ThumbnailsActionHandler::previousImageInBrowser()
{
    stepImage(-1);
}

void ThumbnailsActionHandler::startSlideshow()
{
    if (hasSelection())
        startSlideshowWithSelected();
    else
        startSlideshowInFolder();
}

void ThumbnailsActionHandler::startSlideshowWithSelected()
{
    if (const QList<PXFilePtr> selected = m_pane->selectedFiles(); !selected.isEmpty())
        Q_EMIT slideshowRequested(selected);
}

void ThumbnailsActionHandler::startSlideshowInFolder()
{
    if (!m_pane->sources().isEmpty())
        Q_EMIT slideshowRequested(m_pane->sources());
}

bool ThumbnailsActionHandler::canStartSlideshow() const
{
    return hasSelection() || canStartSlideshowInFolder();
}

bool ThumbnailsActionHandler::canStartSlideshowInFolder() const
{
    return !m_pane->sources().isEmpty() && hasFiles();
}

void ThumbnailsActionHandler::scrollSelectionToVisible()
{
    ThumbnailGridView *grid = m_pane->gridView();
    const int current = grid->currentIndex();
    if (current >= 0 && grid->isSelected(current))
        grid->scrollToItem(current);
    else if (const QList<int> selected = grid->selectedIndexes(); !selected.isEmpty())
        grid->scrollToItem(selected.first());
}
