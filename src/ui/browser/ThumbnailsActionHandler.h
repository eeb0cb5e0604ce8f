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
    // Opens the selection with the application of the .desktop file (or program) at
    // `applicationPath`; an empty path asks for one first ("Other…").
    void openWithMenuAction(const QString &applicationPath);
    // Opens each selected file with the application that made it, where an installed one is
    // named in its metadata, else with the default application.
    void openInCreator();
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
    // The targets of the selected symbolic links.
    void revealOriginal();
    // Ejects the selected volumes; the outcome is reported through errorOccurred or volumeEjected.
    void ejectSelected();
    // Gives the selection the colour label of sort value `value` (0 removes it), keeping the
    // files' other tags; written off the GUI thread.
    void changeFinderLabel(int value);
    // Moves, copies or links the selection into the folder at `folderPath`; an empty path asks
    // for a folder first ("Other Folder…").
    void moveToMenuAction(const QString &folderPath);
    void copyToMenuAction(const QString &folderPath);
    void aliasToMenuAction(const QString &folderPath);
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
    // Files on disk selected (not placeholders).
    bool hasSelectionOnDisk() const;
    // The selection can go to `folderPath` (a folder, not one of the selected items; empty: any
    // folder chosen later).
    bool canTransferTo(const QString &folderPath) const;
    bool canRevealOriginal() const;
    bool canEject() const;

    // The questions and choosers the commands ask through; tests replace them.
    struct Dialogs
    {
        // Answers whether to go on (the question before opening many files).
        std::function<bool(const QString &text)> confirm;
        // A folder's path, empty when cancelled.
        std::function<QString(const QString &title)> chooseFolder;
        // A .desktop file's path, empty when cancelled.
        std::function<QString(const QList<PXFilePtr> &files)> chooseApplication;
    };
    Dialogs &dialogs() { return m_dialogs; }
    // Opening more files than this at once asks first: a window or a program per file.
    static constexpr int manyFilesThreshold = 20;
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
    // A label was written to every file asked (tests wait for it); failures go to errorOccurred.
    void labelsChanged(const QList<PXFilePtr> &files);
    void volumeEjected(const QString &path);

private:
    void changeFlag(FileFlag flag);
    void selectByFlag(FileFlag flag);
    void stepImage(int direction);
    void transferTo(FileDropOperation operation, const QString &folderPath);
    // Asks before opening `count` files when they are many; true to go on.
    bool confirmOpening(qsizetype count);
    void rotatePermanent(bool clockwise);

    ThumbnailsViewController *m_pane;
    ContextMenuFactory m_contextMenuFactory;
    Dialogs m_dialogs;
    QPointer<FileOperationsController> m_operations;
    QPointer<QMenu> m_dropMenu;
    mutable SelectedFilesInfo m_selectedFilesInfo;
    mutable QList<PXFilePtr> m_selectedFilesInfoFor; // the selection the summary is of
    mutable bool m_hasSelectedFilesInfo = false;
};
