#include "ui/viewer/ImageViewController.h"

#include "core/model/PXFile.h"
#include "core/viewer/DecodedImageCache.h"
#include "core/viewer/ZoomRules.h"
#include "support/CameraJpegs.h"
#include "support/TestDir.h"
#include "support/TestImages.h"
#include "ui/viewer/ImageView.h"
#include "ui/viewer/ZoomingScrollView.h"

#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

// The image view in an offscreen window: when a file is ready, how it is fitted and zoomed, how
// it follows the view's size, what the mouse and keys do, and what reaches the screen.

namespace {

using Quality = ImageViewDataSource::Quality;

class ImageViewControllerTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        dir = new TestDir;
        // A 3:2 camera frame with its EXIF thumbnail and MPF preview.
        cameraPath = CameraJpegs::write(dir->filePath(QStringLiteral("IMG_4242.JPG")), QSize(3000, 2000),
                                        QSize(160, 120), QSize(1200, 800));
        smallPath = TestImages::writeJpeg(dir->filePath(QStringLiteral("small.jpg")), QSize(400, 300));
    }
    static void TearDownTestSuite()
    {
        delete dir;
        dir = nullptr;
    }

    void SetUp() override
    {
        imageCache.clear();
        view.setDisableAnimation(true);
        view.resize(800, 600);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    ImageViewDataSourcePtr sourceFor(const QString &path, Stickiness stickiness, double zoomLevel = 1.0)
    {
        const ImageViewDataSourcePtr dataSource = ImageViewDataSource::create(PXFile::fileForPath(path));
        dataSource->setImageCache(&imageCache);
        dataSource->setStickiness(stickiness);
        dataSource->setZoomLevel(zoomLevel);
        return dataSource;
    }

    // Shows `dataSource` as the media view does and waits for image ready.
    bool show(const ImageViewDataSourcePtr &dataSource)
    {
        QSignalSpy ready(&view, &ImageViewController::imageReady);
        view.setLoadingImage(true);
        view.setDataSource(dataSource);
        return waitUntil([&] { return !ready.isEmpty(); }, 20000);
    }

    bool waitForQuality(const ImageViewDataSourcePtr &dataSource, Quality quality)
    {
        return waitUntil([&] { return dataSource->imageQuality() >= quality && !dataSource->imageLoading(); }, 20000);
    }

    QSize viewportSize() const { return view.scrollView()->viewport()->size(); }

    static inline TestDir *dir = nullptr;
    static inline QString cameraPath;
    static inline QString smallPath;
    DecodedImageCache imageCache;
    ImageViewController view;
};

} // namespace

TEST_F(ImageViewControllerTest, AFittedFileIsReadyWithThePreviewAndSharpensToTheViewsSize)
{
    QSignalSpy sticky(&view, &ImageViewController::currentlyStickyChanged);
    const ImageViewDataSourcePtr dataSource = sourceFor(cameraPath, Stickiness::always);
    ASSERT_TRUE(show(dataSource));
    EXPECT_FALSE(view.loadingImage());
    EXPECT_TRUE(view.currentlySticky());
    ASSERT_FALSE(sticky.isEmpty());
    EXPECT_TRUE(sticky.last().at(0).toBool());
    const double fit = std::min(viewportSize().width() / 3000.0, viewportSize().height() / 2000.0);
    EXPECT_DOUBLE_EQ(view.magnification(), fit);

    // Then a decode at the shown size replaces the preview; never the whole 6 MP.
    ASSERT_TRUE(waitForQuality(dataSource, Quality::scaled));
    EXPECT_EQ(dataSource->imageQuality(), Quality::scaled);
    EXPECT_EQ(view.imageView()->currentImage().cacheKey(), dataSource->image().cacheKey());
    EXPECT_LE(dataSource->image().width(), viewportSize().width() + 1);

    // Following the view's size while fitted.
    QSignalSpy scale(&view, &ImageViewController::scaleChanged);
    view.resize(500, 500);
    ASSERT_TRUE(waitUntil([&] { return !scale.isEmpty(); }));
    EXPECT_TRUE(scale.last().at(0).toBool());
    EXPECT_DOUBLE_EQ(view.magnification(), viewportSize().width() / 3000.0);
}

TEST_F(ImageViewControllerTest, ShrinkToFitLeavesASmallImageAtItsZoomLevelAndFitsItInASmallView)
{
    const ImageViewDataSourcePtr dataSource = sourceFor(smallPath, Stickiness::whenNeededToFit);
    ASSERT_TRUE(show(dataSource));
    EXPECT_EQ(view.magnification(), 1.0);
    EXPECT_FALSE(view.currentlySticky());
    // Centred on both axes.
    const QRectF document = view.scrollView()->state().documentRectInViewport();
    EXPECT_NEAR(document.center().x(), viewportSize().width() / 2.0, 1.0);
    EXPECT_NEAR(document.center().y(), viewportSize().height() / 2.0, 1.0);

    view.resize(200, 150);
    ASSERT_TRUE(waitUntil([&] { return view.currentlySticky(); }));
    EXPECT_DOUBLE_EQ(view.magnification(), std::min(viewportSize().width() / 400.0, viewportSize().height() / 300.0));
    // Grown again, it returns to its zoom level.
    view.resize(800, 600);
    ASSERT_TRUE(waitUntil([&] { return !view.currentlySticky(); }));
    EXPECT_EQ(view.magnification(), 1.0);
}

TEST_F(ImageViewControllerTest, ZoomCommandsFixTheZoomAndAreIgnoredWhileLoading)
{
    const ImageViewDataSourcePtr dataSource = sourceFor(cameraPath, Stickiness::always);
    ASSERT_TRUE(show(dataSource));
    const double fit = view.magnification();

    view.setLoadingImage(true);
    view.zoomIn();
    view.setZoom(2.0);
    view.doubleClickAt(QPointF(100, 100));
    EXPECT_EQ(view.magnification(), fit);
    EXPECT_EQ(dataSource->stickiness(), Stickiness::always);
    view.setLoadingImage(false);

    QSignalSpy scale(&view, &ImageViewController::scaleChanged);
    view.setZoom(1.0);
    view.zoomIn();
    view.zoomIn();
    view.zoomOut();
    view.zoomOut();
    EXPECT_DOUBLE_EQ(view.magnification(), 0.87890625);
    EXPECT_EQ(dataSource->stickiness(), Stickiness::none);
    EXPECT_DOUBLE_EQ(dataSource->zoomLevel(), 0.87890625);
    EXPECT_FALSE(view.currentlySticky());
    ASSERT_EQ(scale.size(), 5);
    for (const QList<QVariant> &report : std::as_const(scale))
        EXPECT_FALSE(report.at(0).toBool());

    // Zoomed past the fit, the whole image is decoded.
    ASSERT_TRUE(waitForQuality(dataSource, Quality::full));
    EXPECT_EQ(dataSource->image().size(), QSize(3000, 2000));

    view.scaleToFit();
    EXPECT_TRUE(view.currentlySticky());
    EXPECT_DOUBLE_EQ(view.magnification(), fit);
}

TEST_F(ImageViewControllerTest, DoubleClickGoesToActualSizeAtThePointAndBackToFit)
{
    const ImageViewDataSourcePtr dataSource = sourceFor(cameraPath, Stickiness::always);
    ASSERT_TRUE(show(dataSource));
    const double fit = view.magnification();
    ASSERT_LT(fit, 1.0);

    const QPoint click(200, 150);
    const QPointF under = view.scrollView()->state().viewportToImage(click);
    QTest::mouseDClick(view.scrollView()->viewport(), Qt::LeftButton, {}, click);
    EXPECT_EQ(view.magnification(), 1.0);
    EXPECT_FALSE(view.currentlySticky());
    EXPECT_EQ(dataSource->stickiness(), Stickiness::none);
    const QPointF after = view.scrollView()->state().viewportToImage(click);
    EXPECT_NEAR(after.x(), under.x(), 1.0);
    EXPECT_NEAR(after.y(), under.y(), 1.0);

    QTest::mouseDClick(view.scrollView()->viewport(), Qt::LeftButton, {}, click);
    EXPECT_DOUBLE_EQ(view.magnification(), fit);
    EXPECT_TRUE(view.currentlySticky());
    EXPECT_EQ(dataSource->stickiness(), Stickiness::always);
}

TEST_F(ImageViewControllerTest, DragsAndKeysPanAndAFileComesBackWhereItWasLeft)
{
    const ImageViewDataSourcePtr dataSource = sourceFor(cameraPath, Stickiness::none, 1.0);
    ASSERT_TRUE(show(dataSource));
    EXPECT_EQ(view.magnification(), 1.0);
    ZoomingScrollView *scroll = view.scrollView();
    // A new file at a fixed zoom starts centred.
    const QPointF centred = scroll->state().scrollPosition();
    EXPECT_NEAR(centred.x(), (3000 - viewportSize().width()) / 2.0, 1.0);

    QWidget *viewport = scroll->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, QPoint(400, 300));
    QTest::mouseMove(viewport, QPoint(300, 250));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, QPoint(300, 250));
    EXPECT_NEAR(scroll->state().scrollPosition().x(), centred.x() + 100, 0.5);
    EXPECT_NEAR(scroll->state().scrollPosition().y(), centred.y() + 50, 0.5);
    EXPECT_EQ(scroll->horizontalScrollBar()->value(), qRound(scroll->state().scrollPosition().x()));

    view.moveNorthWest();
    EXPECT_NEAR(scroll->state().scrollPosition().x(), centred.x() + 100 - viewportSize().width() / 10.0, 0.5);
    EXPECT_NEAR(scroll->state().scrollPosition().y(), centred.y() + 50 - viewportSize().height() / 10.0, 0.5);
    const QPointF left = scroll->state().scrollPosition();

    // Leave for another file and come back: the same part is on screen.
    view.rememberState();
    EXPECT_EQ(dataSource->visibleRect().topLeft(), left);
    ASSERT_TRUE(show(sourceFor(smallPath, Stickiness::whenNeededToFit)));
    ASSERT_TRUE(show(dataSource));
    EXPECT_EQ(view.magnification(), 1.0);
    EXPECT_NEAR(scroll->state().scrollPosition().x(), left.x(), 0.5);
    EXPECT_NEAR(scroll->state().scrollPosition().y(), left.y(), 0.5);

    view.recenter();
    EXPECT_NEAR(scroll->state().scrollPosition().x(), centred.x(), 0.5);
}

TEST_F(ImageViewControllerTest, RotatingTurnsThePictureAndTheFit)
{
    const ImageViewDataSourcePtr dataSource = sourceFor(cameraPath, Stickiness::always);
    ASSERT_TRUE(show(dataSource));
    view.rotateClockwise();
    EXPECT_EQ(dataSource->rotationAngle(), 90);
    EXPECT_DOUBLE_EQ(view.magnification(), std::min(viewportSize().width() / 2000.0, viewportSize().height() / 3000.0));
    view.rotate180();
    view.rotateClockwise();
    EXPECT_EQ(dataSource->rotationAngle(), 0);
    view.rotateCounterclockwise();
    EXPECT_EQ(dataSource->rotationAngle(), 270);
}

TEST_F(ImageViewControllerTest, ZoomValueNotificationsNeedANumber)
{
    const ImageViewDataSourcePtr dataSource = sourceFor(cameraPath, Stickiness::always);
    ASSERT_TRUE(show(dataSource));
    const double fit = view.magnification();
    view.handleZoomValue({});
    view.handleZoomValue({{QStringLiteral("ZoomValue"), QStringLiteral("lots")}});
    view.handleZoomValue({{QStringLiteral("Zoom"), 2.0}});
    EXPECT_EQ(view.magnification(), fit);
    EXPECT_TRUE(view.currentlySticky());

    QSignalSpy scale(&view, &ImageViewController::scaleChanged);
    view.handleZoomValue({{QStringLiteral("ZoomValue"), 2.0}});
    EXPECT_EQ(view.magnification(), 2.0);
    EXPECT_EQ(dataSource->zoomLevel(), 2.0);
    EXPECT_EQ(dataSource->stickiness(), Stickiness::none);
    EXPECT_FALSE(view.currentlySticky());
    ASSERT_EQ(scale.size(), 1);
}

TEST_F(ImageViewControllerTest, AnimatedZoomReportsItsTargetAndGetsThere)
{
    view.setDisableAnimation(false);
    const ImageViewDataSourcePtr dataSource = sourceFor(cameraPath, Stickiness::always);
    ASSERT_TRUE(show(dataSource));
    view.setZoom(1.0);
    EXPECT_EQ(view.magnification(), 1.0);
    EXPECT_TRUE(view.scrollView()->isAnimating());
    ASSERT_TRUE(waitUntil([&] { return !view.scrollView()->isAnimating(); }));
    EXPECT_EQ(view.scrollView()->state().magnification(), 1.0);
}

TEST_F(ImageViewControllerTest, UnreadableAndPartialFilesSaySoInPlace)
{
    const QString garbage = dir->write(QStringLiteral("broken.jpg"), QByteArray(4096, 'x'));
    ASSERT_TRUE(show(sourceFor(garbage, Stickiness::always)));
    EXPECT_FALSE(view.imageView()->message().isEmpty());
    EXPECT_TRUE(view.imageView()->currentImage().isNull());
    EXPECT_FALSE(view.loadingImage());

    const ImageViewDataSourcePtr truncated =
        sourceFor(TestImages::dataFile(QStringLiteral("truncated-in-scan.jpg")), Stickiness::always);
    ASSERT_TRUE(show(truncated));
    ASSERT_TRUE(waitForQuality(truncated, Quality::scaled));
    EXPECT_TRUE(view.imageView()->message().isEmpty());
    EXPECT_FALSE(view.imageView()->notice().isEmpty());
    EXPECT_FALSE(view.imageView()->currentImage().isNull());
}

TEST_F(ImageViewControllerTest, TheClipViewCentresASmallPictureAndGivesALargeOneTheWholeView)
{
    QImage flat(400, 300, QImage::Format_RGB32);
    flat.fill(QColor(20, 40, 220));
    const QString flatPath = dir->filePath(QStringLiteral("flat.jpg"));
    ASSERT_TRUE(flat.save(flatPath, "JPEG", 95));
    view.setBackgroundColor(QColor(200, 30, 30));
    const ImageViewDataSourcePtr dataSource = sourceFor(flatPath, Stickiness::whenNeededToFit);
    ASSERT_TRUE(show(dataSource));
    ASSERT_TRUE(waitForQuality(dataSource, Quality::full));
    EXPECT_EQ(view.magnification(), 1.0);

    ZoomingScrollView *scroll = view.scrollView();
    QWidget *clip = scroll->viewport();
    const QSize viewSize = viewportSize();
    const QRect centred(QPoint((viewSize.width() - 400) / 2, (viewSize.height() - 300) / 2), QSize(400, 300));
    EXPECT_EQ(view.imageView()->parentWidget(), clip);
    EXPECT_EQ(view.imageView()->geometry(), centred);
    // On screen: the picture in the middle, the background around it.
    const auto shown = [&](QPoint point) {
        return QColor(clip->grab().toImage().pixel(point * clip->devicePixelRatioF()));
    };
    EXPECT_LT(std::abs(shown(centred.center()).blue() - 220), 8);
    EXPECT_EQ(shown(centred.topLeft() - QPoint(3, 3)), QColor(200, 30, 30));
    EXPECT_EQ(shown(QPoint(centred.right() + 3, centred.center().y())), QColor(200, 30, 30));
    // Clicks go through the picture to the clip view, where the scroll view takes them.
    EXPECT_EQ(clip->childAt(centred.center()), nullptr);

    // Larger than the view: the document is the whole view, never the whole zoomed image.
    view.setZoom(4.0);
    EXPECT_EQ(view.imageView()->geometry(), clip->rect());
    EXPECT_LT(std::abs(shown(QPoint(5, 5)).blue() - 220), 8);

    // A file with nothing to show but why: its message is centred in the whole view.
    const QString garbage = dir->write(QStringLiteral("garbage.jpg"), QByteArray(4096, 'x'));
    ASSERT_TRUE(show(sourceFor(garbage, Stickiness::always)));
    EXPECT_FALSE(view.imageView()->message().isEmpty());
    EXPECT_EQ(view.imageView()->geometry(), clip->rect());
}

TEST_F(ImageViewControllerTest, AViewNotLaidOutYetStillGetsAPictureWithoutAPreview)
{
    // small.jpg has no embedded preview: only a decode makes it ready.
    ImageViewController hidden;
    hidden.resize(0, 0);
    QSignalSpy ready(&hidden, &ImageViewController::imageReady);
    const ImageViewDataSourcePtr dataSource = sourceFor(smallPath, Stickiness::whenNeededToFit);
    hidden.setLoadingImage(true);
    hidden.setDataSource(dataSource);
    ASSERT_TRUE(waitUntil([&] { return !ready.isEmpty(); }));
    EXPECT_EQ(dataSource->imageQuality(), Quality::full);
    EXPECT_FALSE(hidden.loadingImage());
}

TEST(ImageViewPainting, OneImagePixelCoversOneDevicePixelAt100Percent)
{
    // A one-pixel checkerboard: any filtering or half-pixel offset greys it.
    QImage checker(64, 48, QImage::Format_RGB32);
    for (int y = 0; y < checker.height(); ++y)
        for (int x = 0; x < checker.width(); ++x)
            checker.setPixel(x, y, (x + y) % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));

    for (const qreal ratio : {1.0, 2.0}) {
        ZoomState state;
        state.setDevicePixelRatio(ratio);
        state.setImageSize(checker.size());
        state.setViewportSize(QSizeF(101, 77)); // odd sizes: centring must still land on pixels
        state.setMagnification(1.0);
        ImageView imageView(&state);
        imageView.setBackgroundColor(Qt::red);
        imageView.setCurrentImage(checker);

        QImage screen(QSize(int(101 * ratio), int(77 * ratio)), QImage::Format_RGB32);
        screen.setDevicePixelRatio(ratio);
        {
            QPainter painter(&screen);
            imageView.paintContent(painter, QRect(0, 0, 101, 77));
        }
        const QPointF origin = state.documentOrigin() * ratio;
        const int left = qRound(origin.x());
        const int top = qRound(origin.y());
        int mismatches = 0;
        for (int y = 0; y < checker.height(); ++y)
            for (int x = 0; x < checker.width(); ++x)
                mismatches += screen.pixel(left + x, top + y) != checker.pixel(x, y);
        EXPECT_EQ(mismatches, 0) << "pixel ratio " << ratio;
        // Exactly the image's pixels: the background around it is untouched.
        EXPECT_EQ(screen.pixel(left - 1, top), qRgb(255, 0, 0));
        EXPECT_EQ(screen.pixel(left + checker.width(), top), qRgb(255, 0, 0));
    }
}

TEST(ImageViewPainting, APictureShownFarBelowItsSizeIsDrawnFromAnAveragedCopy)
{
    // Stripes two pixels black, one white, shown at an eighth: sampled, they beat into bands of
    // black and grey; averaged, they are an even dark grey (a third of white).
    QImage stripes(4000, 400, QImage::Format_RGB32);
    for (int x = 0; x < stripes.width(); ++x)
        for (int y = 0; y < stripes.height(); ++y)
            stripes.setPixel(x, y, x % 3 == 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
    ZoomState state;
    state.setImageSize(stripes.size());
    state.setViewportSize(QSizeF(500, 50));
    state.setMagnification(0.125);
    ImageView imageView(&state);
    imageView.setCurrentImage(stripes);

    QImage screen(500, 50, QImage::Format_RGB32);
    auto render = [&] {
        QPainter painter(&screen);
        imageView.paint(painter, screen.rect());
    };
    render();
    ASSERT_TRUE(waitUntil([&] { return imageView.reducedLevel() == 2; }));
    render();
    int worst = 0;
    for (int x = 10; x < 490; ++x)
        worst = std::max(worst, std::abs(qGray(screen.pixel(x, 25)) - 85));
    EXPECT_LT(worst, 24);

    // Zoomed back in, the copy is not enlarged: the picture itself is drawn, pixel for pixel.
    state.setMagnification(1.0);
    render();
    for (int x = 10; x < 20; ++x) {
        const int imageX = int(state.viewportToImage(QPointF(x + 0.5, 25)).x());
        EXPECT_EQ(screen.pixel(x, 25), stripes.pixel(imageX, 0)) << "at " << x;
    }
}
