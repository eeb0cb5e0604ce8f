#include "core/viewer/ZoomRules.h"
#include "core/viewer/Stickiness.h"
#include "core/viewer/ZoomState.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

// The zoom decisions and the geometry of a view, without a window.

TEST(ZoomRules, StepsAreNotInversesAndStayInRange)
{
    double magnification = 1.0;
    magnification = ZoomRules::zoomedIn(ZoomRules::zoomedIn(magnification));
    magnification = ZoomRules::zoomedOut(ZoomRules::zoomedOut(magnification));
    EXPECT_EQ(magnification, 0.87890625);

    EXPECT_EQ(ZoomRules::zoomedIn(90.0), 100.0);
    EXPECT_EQ(ZoomRules::zoomedOut(0.0011), 0.001);
    EXPECT_EQ(ZoomRules::clampMagnification(1e9), 100.0);
    EXPECT_EQ(ZoomRules::clampMagnification(0.0), 0.001);
    EXPECT_EQ(ZoomRules::clampMagnification(std::numeric_limits<double>::quiet_NaN()), 1.0);
}

TEST(ZoomRules, FitFollowsTheStickiness)
{
    // 400 x 300 in 1000 x 800: fits, so shrink-to-fit shows it at its zoom level.
    double fit = ZoomRules::fitMagnification(400, 300, 1000, 800);
    bool fits = ZoomRules::imageFitsView(400, 300, 1000, 800);
    EXPECT_TRUE(fits);
    ZoomRules::FitDecision decision = ZoomRules::fitUpdate(Stickiness::whenNeededToFit, 1.0, fit, fits, true);
    EXPECT_FALSE(decision.sticky);
    EXPECT_EQ(decision.magnification, 1.0);
    // ... and always-fit enlarges it.
    decision = ZoomRules::fitUpdate(Stickiness::always, 1.0, fit, fits, false);
    EXPECT_TRUE(decision.sticky);
    EXPECT_DOUBLE_EQ(*decision.magnification, 2.5);

    // The same image in 200 x 150 is fitted at 0.5.
    fit = ZoomRules::fitMagnification(400, 300, 200, 150);
    fits = ZoomRules::imageFitsView(400, 300, 200, 150);
    EXPECT_FALSE(fits);
    decision = ZoomRules::fitUpdate(Stickiness::whenNeededToFit, 1.0, fit, fits, false);
    EXPECT_TRUE(decision.sticky);
    EXPECT_DOUBLE_EQ(*decision.magnification, 0.5);

    // A fixed zoom level is applied when the image is shown, never by a change of the view.
    decision = ZoomRules::fitUpdate(Stickiness::none, 3.0, fit, fits, true);
    EXPECT_FALSE(decision.sticky);
    EXPECT_EQ(decision.magnification, 3.0);
    EXPECT_FALSE(ZoomRules::fitUpdate(Stickiness::none, 3.0, fit, fits, false).magnification);
}

TEST(ZoomRules, DoubleClickTogglesBetweenActualSizeAndFit)
{
    using ZoomRules::DoubleClick;
    // Fitted and smaller than 100 %, then at 100 %: back and forth.
    EXPECT_EQ(ZoomRules::doubleClick(0.25, Stickiness::always), DoubleClick::actualSize);
    EXPECT_EQ(ZoomRules::doubleClick(1.0, Stickiness::none), DoubleClick::fit);
    // A small image fitted (enlarged) goes to 100 % too; a fixed zoom below 100 % as well.
    EXPECT_EQ(ZoomRules::doubleClick(2.5, Stickiness::always), DoubleClick::actualSize);
    EXPECT_EQ(ZoomRules::doubleClick(0.5, Stickiness::none), DoubleClick::actualSize);
    EXPECT_EQ(ZoomRules::doubleClick(3.0, Stickiness::whenNeededToFit), DoubleClick::fit);
}

TEST(ZoomRules, ScalingModesSeedTheirStickiness)
{
    EXPECT_EQ(stickinessFor(ImageViewScalingMode::alwaysFit), Stickiness::always);
    EXPECT_EQ(stickinessFor(ImageViewScalingMode::shrinkToFit), Stickiness::whenNeededToFit);
    EXPECT_EQ(stickinessFor(ImageViewScalingMode::percentage), Stickiness::none);
    // The stored choices have other raw values than the viewer's modes.
    EXPECT_EQ(scalingModeFor(ImageDisplayScaling::percentage), ImageViewScalingMode::percentage);
    EXPECT_EQ(scalingModeFor(ImageDisplayScaling::alwaysFit), ImageViewScalingMode::alwaysFit);
    EXPECT_EQ(scalingModeFor(ImageDisplayScaling::shrinkToFit), ImageViewScalingMode::shrinkToFit);
}

TEST(ZoomState, SmallImagesAreCentredAndLargeOnesScrollWithinTheDocument)
{
    ZoomState state;
    state.setImageSize(QSize(400, 300));
    state.setViewportSize(QSizeF(1000, 800));
    EXPECT_EQ(state.documentOrigin(), QPointF(300, 250));
    EXPECT_EQ(state.visibleRect(), QRectF(0, 0, 400, 300));
    state.setScrollPosition(QPointF(50, 50));
    EXPECT_EQ(state.scrollPosition(), QPointF(0, 0));

    // Wider than the view only: scrolls horizontally, stays centred vertically.
    state.setMagnification(3.0);
    EXPECT_EQ(state.documentSize(), QSizeF(1200, 900));
    state.setScrollPosition(QPointF(1000, 1000));
    EXPECT_EQ(state.scrollPosition(), QPointF(200, 100));
    EXPECT_EQ(state.documentOrigin(), QPointF(-200, -100));
    state.setMagnification(2.5);
    EXPECT_EQ(state.documentOrigin().y(), 25);
    EXPECT_EQ(state.scrollPosition().y(), 0);
}

TEST(ZoomState, MagnifyingKeepsTheAnchoredPointInPlace)
{
    ZoomState state;
    state.setImageSize(QSize(6000, 4000));
    state.setViewportSize(QSizeF(1000, 800));
    state.setMagnification(state.fitMagnification());
    EXPECT_DOUBLE_EQ(state.magnification(), 1000.0 / 6000.0);

    const QPointF anchor(700, 300);
    const QPointF under = state.viewportToImage(anchor);
    state.setMagnification(1.0, anchor);
    EXPECT_NEAR(state.viewportToImage(anchor).x(), under.x(), 1.0);
    EXPECT_NEAR(state.viewportToImage(anchor).y(), under.y(), 1.0);

    // Near an edge the scroll position is clamped rather than showing beyond the image.
    state.setMagnification(state.fitMagnification());
    state.setMagnification(1.0, QPointF(0, 0));
    EXPECT_EQ(state.scrollPosition(), QPointF(0, 0));
}

TEST(ZoomState, RotationTurnsTheDocumentAndTheFit)
{
    ZoomState state;
    state.setImageSize(QSize(4000, 3000));
    state.setViewportSize(QSizeF(1000, 1000));
    state.setRotation(-270); // the same as 90
    EXPECT_EQ(state.rotation(), 90);
    EXPECT_EQ(state.rotatedImageSize(), QSizeF(3000, 4000));
    EXPECT_DOUBLE_EQ(state.fitMagnification(), 0.25);
    state.setMagnification(0.25);
    // Turned clockwise, the image's top left corner is the document's top right.
    const QPointF corner = state.imageToViewportPoint(QPointF(0, 0));
    EXPECT_NEAR(corner.x(), state.documentRectInViewport().right(), 1e-9);
    EXPECT_NEAR(corner.y(), state.documentRectInViewport().top(), 1e-9);
    EXPECT_NEAR(state.viewportToImage(corner).x(), 0, 1e-9);
}

TEST(ZoomState, OneImagePixelIsOneDevicePixelAt100PercentOnHighDpi)
{
    ZoomState state;
    state.setDevicePixelRatio(2);
    state.setImageSize(QSize(1001, 801));
    state.setViewportSize(QSizeF(1000, 800)); // 2000 x 1600 device pixels
    EXPECT_EQ(state.documentSize(), QSizeF(500.5, 400.5));
    EXPECT_TRUE(state.imageFitsView());
    EXPECT_DOUBLE_EQ(state.fitMagnification(), 1600.0 / 801.0);
    // The centred origin lies on a whole device pixel, so pixels map one to one.
    const QPointF origin = state.documentOrigin();
    EXPECT_EQ(origin.x() * 2, std::round(origin.x() * 2));
    EXPECT_EQ(origin.y() * 2, std::round(origin.y() * 2));
}

TEST(ZoomState, AVisibleRectangleRestoresItsScrollPosition)
{
    ZoomState state;
    state.setImageSize(QSize(6000, 4000));
    state.setViewportSize(QSizeF(1000, 800));
    state.setMagnification(1.0);
    state.setScrollPosition(QPointF(1234, 567));
    const QRectF visible = state.visibleRect();
    EXPECT_EQ(visible, QRectF(1234, 567, 1000, 800));

    ZoomState again;
    again.setImageSize(QSize(6000, 4000));
    again.setViewportSize(QSizeF(1000, 800));
    again.setMagnification(1.0);
    again.scrollToVisibleOrigin(visible.topLeft());
    EXPECT_EQ(again.scrollPosition(), QPointF(1234, 567));
}
