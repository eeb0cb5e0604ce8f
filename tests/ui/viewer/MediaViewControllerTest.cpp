#include "ui/viewer/MediaViewController.h"
#include "ui/viewer/MediaViewActionHandler.h"

#include "core/model/PXFile.h"
#include "core/viewer/ImageViewDataSource.h"
#include "support/TestDir.h"
#include "support/TestImages.h"
#include "ui/viewer/ImageViewController.h"

#include <QFile>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

struct Viewer
{
    TestDir dir;
    MediaViewController view;
    PXFilePtr a, b, c;

    Viewer()
    {
        a = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("a.jpg"), QSize(1600, 1200)));
        b = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("b.jpg"), QSize(1200, 1600)));
        c = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("c.jpg"), QSize(800, 600)));
        MediaViewSettings settings;
        settings.disableAnimation = true;
        settings.transitionDuration = 0;
        view.setSettings(settings);
        view.resize(400, 300);
        view.show();
    }

    // Shows `file` and waits for the switch to it.
    bool show(const PXFilePtr &file)
    {
        view.showFile(file);
        return waitUntil([&] { return view.currentFile() == file && !view.waitingForLoadingChild(); }, 10000);
    }
};

} // namespace

// A new picture loads in the child that is not on screen; the old one stays until the new one
// is ready, then the two change places.
TEST(MediaViewController, LoadsTheNextFileBesideTheCurrentOneAndSwitchesWhenReady)
{
    Viewer v;
    ASSERT_TRUE(v.show(v.a));
    ImageViewController *first = v.view.currentImageChild();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->dataSource()->file(), v.a);

    QSignalSpy shown(&v.view, &MediaViewController::fileShown);
    v.view.showFile(v.b);
    ImageViewController *loading = v.view.waitingForLoadingChild();
    if (loading) {
        // Still loading: the old child is current and shows the old file.
        EXPECT_NE(loading, first);
        EXPECT_EQ(v.view.currentImageChild(), first);
        EXPECT_EQ(first->dataSource()->file(), v.a);
    }
    ASSERT_TRUE(shown.wait(10000) || !shown.isEmpty());
    EXPECT_NE(v.view.currentImageChild(), first);
    EXPECT_EQ(v.view.currentImageChild()->dataSource()->file(), v.b);
    EXPECT_TRUE(v.view.currentImageChild()->isVisible());

    // A file that is not an image says what it is in place of a picture; nothing shows nothing.
    const PXFilePtr notes = PXFile::fileForPath(v.dir.write("notes.txt", "x"));
    ASSERT_TRUE(v.show(notes));
    EXPECT_FALSE(v.view.isShowingImage());
    EXPECT_TRUE(v.view.message().contains("notes.txt"));
    v.view.showFile(nullptr);
    EXPECT_FALSE(v.view.currentFile());
    EXPECT_EQ(v.view.videoState(), VideoState::noVideo);
}

// The zoom of every file is kept: coming back shows it as it was left; with the previous file's
// scaling retained, the next file takes it instead.
TEST(MediaViewController, RemembersEachFilesZoomAndCarriesItOverWhenAsked)
{
    Viewer v;
    ASSERT_TRUE(v.show(v.a));
    v.view.zoomTo(2.0);
    ASSERT_DOUBLE_EQ(v.view.currentImageChild()->magnification(), 2.0);
    ASSERT_TRUE(v.show(v.b));
    EXPECT_NE(v.view.dataSource(v.b)->zoomLevel(), 2.0);
    ASSERT_TRUE(v.show(v.a));
    EXPECT_EQ(v.view.dataSource(v.a)->stickiness(), Stickiness::none);
    EXPECT_DOUBLE_EQ(v.view.currentImageChild()->magnification(), 2.0);
    EXPECT_FALSE(v.view.currentlySticky());

    // Showing the same file again keeps it where it is.
    ImageViewController *child = v.view.currentImageChild();
    v.view.showFile(v.a);
    EXPECT_EQ(v.view.currentImageChild(), child);
    EXPECT_DOUBLE_EQ(child->magnification(), 2.0);

    MediaViewSettings settings = v.view.settings();
    settings.retainScalingFromPreviousFile = true;
    v.view.setSettings(settings);
    ASSERT_TRUE(v.show(v.c));
    EXPECT_DOUBLE_EQ(v.view.dataSource(v.c)->zoomLevel(), 2.0);
    EXPECT_DOUBLE_EQ(v.view.currentImageChild()->magnification(), 2.0);
}

// The image commands follow what is shown; stepping and fitting the window are the window's.
TEST(MediaViewController, CommandsAreEnabledByWhatIsShown)
{
    Viewer v;
    MediaViewActionHandler *commands = v.view.actionHandler();
    EXPECT_FALSE(commands->canChangeImage());
    EXPECT_FALSE(commands->hasVideo());
    EXPECT_FALSE(commands->canStepForward());
    ASSERT_TRUE(v.show(v.a));
    EXPECT_TRUE(commands->canChangeImage());
    EXPECT_FALSE(commands->canFitToScreen());
    commands->setFitsWindowToImage(true);
    EXPECT_TRUE(commands->canFitToScreen());
    int stepped = 0;
    commands->setStepper([&](int step) { stepped += step; }, [](int step) { return step > 0; });
    EXPECT_TRUE(commands->canStepForward());
    EXPECT_FALSE(commands->canStepBackward());
    commands->nextImageInFolder();
    EXPECT_EQ(stepped, 1);

    commands->zoomIn();
    EXPECT_DOUBLE_EQ(v.view.dataSource(v.a)->zoomLevel(), v.view.currentImageChild()->magnification());
    commands->scaleToFit();
    EXPECT_TRUE(commands->scaleToFitState().checked);
    commands->rotateClockwise();
    EXPECT_EQ(v.view.dataSource(v.a)->rotationAngle(), 90);
    ASSERT_TRUE(v.show(v.b));
    ASSERT_TRUE(v.show(v.a));
    EXPECT_EQ(v.view.dataSource(v.a)->rotationAngle(), 90) << "the turn is kept with the file";
}

// A file written anew is shown anew in place, keeping its zoom; a deleted one says so.
TEST(MediaViewController, FollowsTheShownFileOnDisk)
{
    Viewer v;
    ASSERT_TRUE(v.show(v.a));
    v.view.zoomTo(0.5);
    QSignalSpy shown(&v.view, &MediaViewController::fileShown);
    TestImages::writeJpeg(v.a->path(), QSize(900, 900));
    ASSERT_TRUE(waitUntil(
        [&] {
            const auto source = v.view.dataSource(v.a);
            return !shown.isEmpty() && source && source->imageSize() == QSize(900, 900);
        },
        10000));
    EXPECT_DOUBLE_EQ(v.view.dataSource(v.a)->zoomLevel(), 0.5);
    EXPECT_EQ(v.view.currentFile(), v.a);

    ASSERT_TRUE(QFile::remove(v.a->path()));
    ASSERT_TRUE(waitUntil([&] { return v.view.message().contains("no longer there"); }, 10000));
    EXPECT_FALSE(v.view.isShowingImage());
}
