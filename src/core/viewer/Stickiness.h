#pragma once

#include "core/settings/SettingsValueSets.h"

// How a file's view follows the size of the view, in the order of its raw values: a fixed zoom
// level, fitted only when the image is larger than the view, or always fitted.
enum class Stickiness : int {
    none = 0,
    whenNeededToFit = 1,
    always = 2,
};

// The scaling a viewer gives a file it has not shown before.
enum class ImageViewScalingMode : int {
    alwaysFit = 0,
    shrinkToFit = 1,
    percentage = 2,
};

// The stored choice of the quick view, image windows and slideshows, as a viewer's scaling mode.
inline ImageViewScalingMode scalingModeFor(ImageDisplayScaling scaling)
{
    switch (scaling) {
    case ImageDisplayScaling::alwaysFit: return ImageViewScalingMode::alwaysFit;
    case ImageDisplayScaling::shrinkToFit: return ImageViewScalingMode::shrinkToFit;
    case ImageDisplayScaling::percentage: break;
    }
    return ImageViewScalingMode::percentage;
}

// The fit rule a scaling mode starts a file with; `percentage` is a fixed zoom.
inline Stickiness stickinessFor(ImageViewScalingMode mode)
{
    switch (mode) {
    case ImageViewScalingMode::alwaysFit: return Stickiness::always;
    case ImageViewScalingMode::shrinkToFit: return Stickiness::whenNeededToFit;
    case ImageViewScalingMode::percentage: break;
    }
    return Stickiness::none;
}
