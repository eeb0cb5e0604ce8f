#include "core/viewer/ZoomRules.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>

namespace ZoomRules {

double clampMagnification(double magnification)
{
    if (!std::isfinite(magnification))
        return 1.0;
    return std::clamp(magnification, minimumMagnification, maximumMagnification);
}

double zoomedIn(double magnification)
{
    return clampMagnification(magnification * zoomInFactor);
}

double zoomedOut(double magnification)
{
    return clampMagnification(magnification * zoomOutFactor);
}

double fitMagnification(double imageWidth, double imageHeight, double viewWidth, double viewHeight)
{
    if (imageWidth <= 0 || imageHeight <= 0 || viewWidth <= 0 || viewHeight <= 0)
        return 1.0;
    return clampMagnification(std::min(viewWidth / imageWidth, viewHeight / imageHeight));
}

bool imageFitsView(double imageWidth, double imageHeight, double viewWidth, double viewHeight)
{
    return imageWidth <= viewWidth && imageHeight <= viewHeight;
}

DoubleClick doubleClick(double magnification, Stickiness stickiness)
{
    if (magnification < 1.0 || stickiness == Stickiness::always)
        return DoubleClick::actualSize;
    return DoubleClick::fit;
}

FitDecision fitUpdate(Stickiness stickiness, double zoomLevel, double fitFactor, bool fits, bool imageReady)
{
    switch (stickiness) {
    case Stickiness::none:
        if (imageReady)
            return {false, clampMagnification(zoomLevel)};
        return {false, std::nullopt};
    case Stickiness::whenNeededToFit:
        if (fits)
            return {false, clampMagnification(zoomLevel)};
        return {true, fitFactor};
    case Stickiness::always: break;
    }
    return {true, fitFactor};
}

} // namespace ZoomRules
