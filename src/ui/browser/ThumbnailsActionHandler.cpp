#include "ui/browser/ThumbnailsActionHandler.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/thumbnails/ThumbnailItem.h"
#include "ui/browser/FileDropPerformer.h"
#include "ui/browser/FileDropValidator.h"
#include "ui/browser/FileOpener.h"
#include "ui/browser/ThumbnailsViewController.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QPointer>

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

void ThumbnailsActionHandler::placeDroppedFiles(FileDropOperation operation, const QList<PXFilePtr> &sources,
                                                const PXFilePtr &destination)
{
    if (operation == FileDropOperation::open) {
        openFilesWith(destination, sources);
        return;
    }
    QPointer<ThumbnailsActionHandler> self(this);
    FileDropPerformer::perform(operation, sources, destination, m_pane, [self](const QStringList &errors) {
        if (self && !errors.isEmpty())
            Q_EMIT self->errorOccurred(tr("Some items could not be placed"), errors.join(QLatin1Char('\n')));
    });
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

void ThumbnailsActionHandler::makeAlias()
{ }

void ThumbnailsActionHandler::makeSymlink()
{ }

void ThumbnailsActionHandler::duplicate()
{ }

void ThumbnailsActionHandler::moveToTrash()
{ }

void ThumbnailsActionHandler::revealInFileManager()
{
    const QList<PXFilePtr> selected = m_pane->selectedFiles();
    FileOpener::reveal(selected.isEmpty() ? m_pane->sources() : selected, m_pane);
}

void ThumbnailsActionHandler::newFolder()
{
    if (!canMakeFolder())
        return;
    const QString parent = m_pane->sources().first()->resolvedPath();
    const QString baseName = tr("untitled folder");
    QPointer<ThumbnailsActionHandler> self(this);
    runOnPool(QStringLiteral("Browser Disk Work"), [self, parent, baseName] {
        QDir dir(parent);
        QString name = baseName;
        for (int n = 2; dir.exists(name) || QFileInfo(dir.filePath(name)).isSymLink(); ++n)
            name = baseName + QLatin1Char(' ') + QString::number(n);
        const bool ok = dir.mkdir(name);
        const QString path = dir.filePath(name);
        postToGui([self, ok, path, parent] {
            if (!self)
                return;
            if (!ok) {
                logError(tr("Cannot make a folder in %1").arg(parent));
                Q_EMIT self->errorOccurred(tr("The folder could not be made"), parent);
                return;
            }
            self->m_pane->editNameWhenShown(PXFile::fileForPath(path));
        });
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
