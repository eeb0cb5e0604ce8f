#pragma once

#include "core/model/PXFileForward.h"
#include "ui/common/Command.h"

#include <QList>
#include <QObject>

#include <functional>

class QMenu;
class ThumbnailsViewController;
enum class FileDropOperation;
enum class FileFlag;

// The commands of a thumbnail pane and whether each can run now: opening, selecting, renaming in
// place, new folders, flags, stepping through the images, and the file operations that will run
// as activities. Each command is a member function with a validator beside it; the command
// registry binds them, and the window's menus, toolbar and the pane's context menu run them.
// Most act on the pane's selection.
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
    // Moves, copies or links `sources` into the folder `destination`, or opens them with the
    // application `destination`; failures are reported through errorOccurred.
    void placeDroppedFiles(FileDropOperation operation, const QList<PXFilePtr> &sources, const PXFilePtr &destination);

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
    // Aliases, duplicates and the trash run as activities, which this pane does not start yet.
    bool canStartActivities() const { return false; }

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

    ThumbnailsViewController *m_pane;
    ContextMenuFactory m_contextMenuFactory;
};
