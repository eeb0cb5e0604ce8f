#include "ui/app/ActivitiesGate.h"
#include "ui/app/AppDelegate.h"
#include "ui/browser/BrowserViewController.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/viewer/MediaViewController.h"
#include "ui/windows/ImageWindowController.h"
#include "ui/windows/MainWindowViewController.h"
#include "ui/windows/QuickviewWindowController.h"
#include "ui/windows/SlideshowWindowController.h"
#include "ui/windows/TabbedWindow.h"

#include "core/model/PXFile.h"
#include "support/TestImages.h"
#include "ui/ShellFixture.h"

#include <QFile>
#include <QFileDevice>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace {

// The shell with a folder of three photos and a note, and the application delegate.
struct Viewers : ShellFixture
{
    AppDelegate delegate;
    PXFilePtr one, two, three, notes;

    Viewers()
    {
        delegate.showMessage = [this](const QString &, const QString &text) { messages.append(text); };
        delegate.terminate = [] {};
        one = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("photos/a/1.jpg"), QSize(640, 480)));
        two = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("photos/a/2.jpg"), QSize(480, 640)));
        three = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("photos/a/3.jpg"), QSize(640, 480)));
        notes = PXFile::fileForPath(dir.write("photos/a/notes.txt", "x"));
    }

    // A main window on photos/a, listed, with `selected` selected.
    MainWindowController *browse(const PXFilePtr &selected = {})
    {
        MainWindowController *window = windows->newMainWindow(folder("photos/a"));
        ThumbnailsViewController *pane = window->mainViewController()->thumbnailsViewController();
        if (!waitUntil([&] { return !pane->isLoading() && pane->fileCount() == 4; }, 10000))
            return nullptr;
        if (selected) {
            pane->selectFiles({selected});
            if (!waitUntil([&] { return window->mainViewController()->selectedFiles() == QList<PXFilePtr>{selected}; }))
                return nullptr;
        }
        return window;
    }
};

} // namespace

// `pixcove 1.jpg 3.jpg` steps through exactly those two; a file that is not a picture opens its
// folder with the file selected, and no other window opens.
TEST(ViewerWindows, FilesGivenOnTheCommandLineAreTheSetTheViewerStepsThrough)
{
    Viewers shell;
    shell.delegate.applicationDidFinishLaunching({LaunchRequest::Kind::open, {shell.one->path(), shell.three->path()}});
    EXPECT_TRUE(shell.windows->windowControllers().isEmpty());
    ASSERT_EQ(shell.imageWindows->imageWindowControllers().size(), 1);
    ImageWindowController *window = shell.imageWindows->imageWindowControllers().first();
    EXPECT_EQ(window->files(), QList<PXFilePtr>({shell.one, shell.three}));
    EXPECT_EQ(window->mediaView()->currentFile(), shell.one);
    EXPECT_FALSE(window->canStep(-1));
    EXPECT_TRUE(window->step(1));
    EXPECT_EQ(window->mediaView()->currentFile(), shell.three);
    EXPECT_FALSE(window->step(1));

    // A second start hands over a note: its folder opens with the note selected.
    shell.delegate.handleRequest({LaunchRequest::Kind::open, {shell.notes->path()}});
    ASSERT_EQ(shell.windows->windowControllers().size(), 1);
    MainWindowViewController *main = shell.windows->windowControllers().first()->mainViewController();
    ASSERT_TRUE(waitUntil([&] { return main->selectedFiles() == QList<PXFilePtr>{shell.notes}; }, 10000));
    EXPECT_EQ(shell.imageWindows->imageWindowControllers().size(), 1);
}

// "Open" shows the picture in Pixcove's own window, stepping through the grid's pictures, or
// hands it to the chosen application; never to the desktop's default one.
TEST(ViewerWindows, OpeningFollowsTheOpenImageDestination)
{
    Viewers shell;
    MainWindowController *main = shell.browse(shell.two);
    ASSERT_TRUE(main);
    ASSERT_TRUE(main->tabbedWindow()->performCommand(CommandId::performOpen));
    ASSERT_EQ(shell.imageWindows->imageWindowControllers().size(), 1);
    ImageWindowController *window = shell.imageWindows->imageWindowControllers().first();
    EXPECT_EQ(window->files(), QList<PXFilePtr>({shell.one, shell.two, shell.three}));
    EXPECT_EQ(window->currentFile(), shell.two);
    window->close();
    EXPECT_TRUE(shell.imageWindows->imageWindowControllers().isEmpty());

    // The chosen application: a script that notes what it was given.
    const QString marker = shell.dir.filePath("opened.txt");
    const QString editor =
        shell.dir.write("editor.sh", QStringLiteral("#!/bin/sh\necho \"$1\" > '%1'\n").arg(marker).toUtf8());
    QFile(editor).setPermissions(QFile(editor).permissions() | QFileDevice::ExeOwner);
    shell.settings()->setOpenImageDestination(OpenImageDestination::other);
    shell.settings()->setOpenImageCustomApp(PXFile::fileForPath(editor));
    ASSERT_TRUE(main->tabbedWindow()->performCommand(CommandId::performOpen));
    // The script's shell makes the file before its one write: wait for the text, not the file.
    ASSERT_TRUE(waitUntil([&] { return QFileInfo(marker).size() > 0; }, 10000));
    QFile opened(marker);
    ASSERT_TRUE(opened.open(QIODevice::ReadOnly));
    EXPECT_EQ(opened.readAll().trimmed(), shell.two->path().toUtf8());
    EXPECT_TRUE(shell.imageWindows->imageWindowControllers().isEmpty());

    // A chosen application that is gone: Pixcove shows the picture itself.
    shell.settings()->setOpenImageCustomApp(PXFile::fileForPath(shell.dir.filePath("gone-editor")));
    ASSERT_TRUE(main->tabbedWindow()->performCommand(CommandId::performOpen));
    EXPECT_EQ(shell.imageWindows->imageWindowControllers().size(), 1);
}

// The embedded viewer and the quick view follow the selection; the viewer's commands are
// enabled while a picture is shown.
TEST(ViewerWindows, TheEmbeddedViewerAndTheQuickViewFollowTheSelection)
{
    Viewers shell;
    MainWindowController *main = shell.browse(shell.one);
    ASSERT_TRUE(main);
    TabbedWindow *tabbed = main->tabbedWindow();
    MediaViewController *embedded = main->mainViewController()->browserViewController()->mediaView();
    ASSERT_TRUE(waitUntil([&] { return embedded->currentFile() == shell.one && embedded->canChangeImage(); }, 10000));
    EXPECT_TRUE(tabbed->commandState(CommandId::zoomIn).enabled);
    EXPECT_TRUE(tabbed->performCommand(CommandId::zoomTo200Percent));
    EXPECT_FALSE(tabbed->commandState(CommandId::scaleToFit).checked);
    EXPECT_FALSE(tabbed->commandState(CommandId::fitToScreen).enabled) << "the main window does not fit itself";

    ASSERT_TRUE(tabbed->performCommand(CommandId::openQuickview));
    QuickviewWindowController *quickview = shell.auxiliary->quickviewWindowController();
    ASSERT_TRUE(quickview);
    EXPECT_TRUE(tabbed->commandState(CommandId::openQuickview).checked);
    EXPECT_EQ(quickview->mediaView()->currentFile(), shell.one);

    ThumbnailsViewController *pane = main->mainViewController()->thumbnailsViewController();
    pane->selectFiles({shell.notes});
    ASSERT_TRUE(waitUntil([&] { return quickview->mediaView()->currentFile() == shell.notes; }));
    ASSERT_TRUE(waitUntil([&] { return embedded->currentFile() == shell.notes; }));
    EXPECT_FALSE(tabbed->commandState(CommandId::zoomIn).enabled);

    // Nothing selected: the quick view says where its pictures come from instead of staying black.
    pane->selectFiles({});
    ASSERT_TRUE(waitUntil([&] { return !quickview->mediaView()->currentFile(); }));
    EXPECT_TRUE(quickview->mediaView()->message().contains(QStringLiteral("Select a picture")));

    ASSERT_TRUE(tabbed->performCommand(CommandId::openQuickview));
    EXPECT_FALSE(shell.auxiliary->quickviewWindowController());
}

// A slideshow of a folder shows its pictures, not its other files, and loops.
TEST(ViewerWindows, ASlideshowOfAFolderShowsItsPicturesInTurn)
{
    Viewers shell;
    MainWindowController *main = shell.browse();
    ASSERT_TRUE(main);
    ASSERT_TRUE(main->tabbedWindow()->performCommand(CommandId::startSlideshow));
    ASSERT_EQ(shell.slideshows->slideshowWindowControllers().size(), 1);
    SlideshowWindowController *show = shell.slideshows->slideshowWindowControllers().first();
    ASSERT_TRUE(waitUntil([&] { return show->isListed(); }, 10000));
    EXPECT_EQ(show->files(), QList<PXFilePtr>({shell.one, shell.two, shell.three}));
    EXPECT_EQ(show->mediaView()->currentFile(), shell.one);
    EXPECT_TRUE(show->step(-1)) << "looping wraps back to the last";
    EXPECT_EQ(show->currentFile(), shell.three);

    shell.settings()->slideshowSettings()->setLoop(false);
    EXPECT_FALSE(show->step(1));
    EXPECT_EQ(show->currentFile(), shell.three);

    shell.delegate.requestQuit();
    EXPECT_TRUE(shell.slideshows->slideshowWindowControllers().isEmpty());
}
