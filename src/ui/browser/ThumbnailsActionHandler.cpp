#include "ui/browser/ThumbnailsActionHandler.h"

#include "core/activities/ImageRotationActivity.h"
#include "core/app/Log.h"
#include "core/model/PXFile.h"
#include "core/thumbnails/ThumbnailItem.h"
#include "ui/activities/FileOperationsController.h"
#include "ui/browser/FileDropValidator.h"
#include "ui/browser/FileOpener.h"
#include "ui/browser/ThumbnailsViewController.h"

#include <QDesktopServices>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

ThumbnailsActionHandler::ThumbnailsActionHandler(ThumbnailsViewController *pane)
    : QObject(pane)
    , m_pane(pane)
{ }

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

void ThumbnailsActionHandler::performOpen()
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    if (!selected.isEmpty())
        Q_EMIT openRequested(selected);
}

void ThumbnailsActionHandler::openInApp()
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
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
    if (!selected.isEmpty())
        openFilesWith(PXFile::fileForPath(applicationPath), selected);
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
        if (pane && !outcome.items.isEmpty())
            pane->selectWhenShown(PXFile::fileForPath(outcome.items.last().destination));
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
