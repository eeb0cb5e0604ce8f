#pragma once

#include "core/viewer/Stickiness.h"

#include <optional>

// The rules of zooming a viewer, as small functions of plain values so that the widgets only
// apply what these decide.
//
// Magnification is image pixels to device pixels: at 1.0 one pixel of the image covers one pixel
// of the screen, also on a high-DPI screen (where 1.0 therefore looks smaller than at 1x).
namespace ZoomRules {

// The range a view accepts; anything outside is brought to the nearer end.
inline constexpr double minimumMagnification = 0.001;
inline constexpr double maximumMagnification = 100.0;
// Zoom in and out steps. Deliberately not inverses: in, in, out, out from 1.0 gives 0.87890625.
inline constexpr double zoomInFactor = 1.25;
inline constexpr double zoomOutFactor = 0.75;

double clampMagnification(double magnification);
double zoomedIn(double magnification);
double zoomedOut(double magnification);

// The magnification that shows all of an image of `imageSize` (device pixels at 1.0, already
// turned by the view's rotation) inside `viewSize` (device pixels). 1.0 for empty sizes.
double fitMagnification(double imageWidth, double imageHeight, double viewWidth, double viewHeight);

// Whether the whole image at 1.0 fits the view in both directions (then `whenNeededToFit` does
// not fit it).
bool imageFitsView(double imageWidth, double imageHeight, double viewWidth, double viewHeight);

// What a double click does.
enum class DoubleClick {
    actualSize, // zoom level 1.0, stickiness none, magnified to 1.0 about the clicked point
    fit, // stickiness always, fitted (animated)
};
// Below 1.0, or already always fitted: actual size; otherwise fit.
DoubleClick doubleClick(double magnification, Stickiness stickiness);

// What a view does when its size, its image or the fit rule changed (the fit update), or when a
// new image has just been shown (image ready: a fixed zoom level is applied then too).
struct FitDecision
{
    bool sticky = false; // whether the view is now fitted
    std::optional<double> magnification; // the magnification to set, if any
};
// `fitFactor` is fitMagnification() of the image in the view, `fits` is imageFitsView().
// With `none` the zoom level is applied only on image ready; with `whenNeededToFit` an image
// that fits shows at its zoom level (so a view that grows back past the image returns to it).
FitDecision fitUpdate(Stickiness stickiness, double zoomLevel, double fitFactor, bool fits, bool imageReady);

} // namespace ZoomRules
