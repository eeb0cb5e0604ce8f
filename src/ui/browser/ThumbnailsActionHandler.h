#pragma once

#include "core/model/PXFileForward.h"
#include "core/model/SelectedFilesInfo.h"
#include "ui/common/Command.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

class FileOperationsController;
class QMenu;
class ThumbnailsViewController;
enum class FileDropOperation;
enum class FileFlag;

// The commands of a thumbnail pane and whether each can run now: opening, selecting, renaming in
// place, new folders, flags, stepping through the images, and the file operations, which run as
// activities (FileOperationsController). Each command is a member function with a validator
// beside it; the command registry binds them, and the window's menus, toolbar and the pane's
// context menu run them. Most act on the pane's selection.
class ThumbnailsActionHandler : public QObject
{
    Q_OBJECT
public:
    static constexpr CommandOwner commandOwner = CommandOwner::pane;
    // Builds the pane's context menu for the selected items (`onItems`) or the background.
    using ContextMenuFactory = std::function<QMenu *(ThumbnailsActionHandler *handler, bool onItems)>;

    explicit ThumbnailsActionHandler(ThumbnailsViewController *pane);

    ThumbnailsViewController *pane() const { return m_pane; }
    // The window that shows the pane makes its context menu.
    void setContextMenuFactory(ContextMenuFactory factory) { m_contextMenuFactory = std::move(factory); }
    // Selects item `index` unless it is selected already (-1: the background, the selection
    // stays), then builds the context menu; null without a factory.
    QMenu *makeContextMenu(int index);
    // Starts `application` on `files`; a failure is reported through errorOccurred.
    void openFilesWith(const PXFilePtr &application, const QList<PXFilePtr> &files);
    // Moves, copies or links `sources` into the folder `destination` as an activity, or opens them
    // with the application `destination`; `ask` offers the choice in a menu at the pointer.
    void placeDroppedFiles(FileDropOperation operation, const QList<PXFilePtr> &sources, const PXFilePtr &destination);
    // The menu of a drop that asks, while it is open (tests choose from it).
    QMenu *dropMenu() const;
    // The file operations this pane starts; the shared ones unless a test sets its own.
    void setFileOperations(FileOperationsController *operations);
    FileOperationsController *fileOperations() const;
    // What the selection holds, computed once per selection change.
    const SelectedFilesInfo &selectedFilesInfo() const;
    // Asks before the rejects go to the trash; tests answer it themselves.
    std::function<bool(int count)> deleteRejectedQuestion;

    void performOpen();
    void openInApp();
    // Opens the selection with the favourite application at `applicationPath`.
    void openWithMenuAction(const QString &applicationPath);
    void selectAll();
    void deselectAll();
    void renameFile();
    void makeAlias();
    void makeSymlink();
    void duplicate();
    void moveToTrash();
    // The files marked rejected in this pane, to the trash after a question.
    void deleteRejected();
    void rotateClockwisePermanent();
    void rotateCounterclockwisePermanent();
    // The selection, else the pane's folders.
    void revealInFileManager();
    // In the pane's only folder; its name opens for editing once it is listed.
    void newFolder();
    void flagItem();
    void rejectItem();
    void clearItemFlag();
    void selectFlagged();
    void selectRejected();
    void nextImageInBrowser();
    void previousImageInBrowser();
    void scrollSelectionToVisible();
    // Slideshows: of the selection (else of the pane's folders), of the selection, of the folders.
    void startSlideshow();
    void startSlideshowWithSelected();
    void startSlideshowInFolder();
    bool canStartSlideshow() const;
    bool canStartSlideshowInFolder() const;

    bool hasSelection() const;
    bool hasFiles() const;
    // One file, on disk.
    bool canRename() const;
    // One folder shown, and writable.
    bool canMakeFolder() const;
    // A selection and a flag store.
    bool canChangeFlags() const;
    bool canSelectByFlag() const;
    // The selection is on disk (duplicates also need a folder that can be written).
    bool canMakeAlias() const;
    bool canDuplicate() const;
    bool canMoveToTrash() const;
    bool canDeleteRejected() const;
    // Images in formats that can be turned for good.
    bool canRotatePermanent() const;

Q_SIGNALS:
    void openRequested(const QList<PXFilePtr> &files);
    // Files and folders to show as a slideshow.
    void slideshowRequested(const QList<PXFilePtr> &sources);
    void flagChangeRequested(const QList<PXFilePtr> &files, FileFlag flag);
    void errorOccurred(const QString &title, const QString &text);

private:
    void changeFlag(FileFlag flag);
    void selectByFlag(FileFlag flag);
    void stepImage(int direction);
    void rotatePermanent(bool clockwise);

    ThumbnailsViewController *m_pane;
    ContextMenuFactory m_contextMenuFactory;
    QPointer<FileOperationsController> m_operations;
    QPointer<QMenu> m_dropMenu;
    mutable SelectedFilesInfo m_selectedFilesInfo;
    mutable QList<PXFilePtr> m_selectedFilesInfoFor; // the selection the summary is of
    mutable bool m_hasSelectedFilesInfo = false;
};
