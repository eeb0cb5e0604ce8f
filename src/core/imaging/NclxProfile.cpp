#include "core/imaging/NclxProfile.h"

#include "core/app/Log.h"

#include <lcms2.h>

#include <array>
#include <memory>

namespace NclxProfile {
namespace {

struct Chromaticities
{
    double redX, redY, greenX, greenY, blueX, blueY, whiteX, whiteY;
};

constexpr double d65X = 0.3127, d65Y = 0.3290;
constexpr double illuminantCX = 0.310, illuminantCY = 0.316;

// ITU-T H.273, table 2. 1 is sRGB's (BT.709); 2 is "unspecified".
bool chromaticities(int code, Chromaticities *out)
{
    switch (code) {
    case 1: *out = {0.640, 0.330, 0.300, 0.600, 0.150, 0.060, d65X, d65Y}; return true;
    case 4: *out = {0.670, 0.330, 0.210, 0.710, 0.140, 0.080, illuminantCX, illuminantCY}; return true;
    case 5: *out = {0.640, 0.330, 0.290, 0.600, 0.150, 0.060, d65X, d65Y}; return true;
    case 6:
    case 7: *out = {0.630, 0.340, 0.310, 0.595, 0.155, 0.070, d65X, d65Y}; return true;
    case 8: *out = {0.681, 0.319, 0.243, 0.692, 0.145, 0.049, illuminantCX, illuminantCY}; return true;
    case 9: *out = {0.708, 0.292, 0.170, 0.797, 0.131, 0.046, d65X, d65Y}; return true;
    case 11: *out = {0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.314, 0.351}; return true; // DCI-P3
    case 12: *out = {0.680, 0.320, 0.265, 0.690, 0.150, 0.060, d65X, d65Y}; return true; // Display P3
    case 22: *out = {0.630, 0.340, 0.295, 0.605, 0.155, 0.077, d65X, d65Y}; return true;
    default: return false;
    }
}

enum class Curve { srgb, linear, gamma22, gamma28 };

// ITU-T H.273, table 3. The camera curves of BT.709, BT.601 and BT.2020 are shown with sRGB's
// display curve, as their pictures are graded on sRGB-like displays.
Curve curve(int code)
{
    switch (code) {
    case 4: return Curve::gamma22;
    case 5: return Curve::gamma28;
    case 8: return Curve::linear;
    case 16:
    case 18:
        logDebug(QStringLiteral("A picture with an HDR transfer curve (%1) is shown with sRGB's curve").arg(code));
        return Curve::srgb;
    default: return Curve::srgb;
    }
}

struct CurveDeleter
{
    void operator()(cmsToneCurve *curve) const { cmsFreeToneCurve(curve); }
};
struct ProfileDeleter
{
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};

cmsToneCurve *buildCurve(Curve kind)
{
    switch (kind) {
    case Curve::linear: return cmsBuildGamma(nullptr, 1.0);
    case Curve::gamma22: return cmsBuildGamma(nullptr, 2.2);
    case Curve::gamma28: return cmsBuildGamma(nullptr, 2.8);
    case Curve::srgb: break;
    }
    // IEC 61966-2-1: Y = ((X + 0.055) / 1.055) ^ 2.4 above 0.04045, X / 12.92 below.
    const cmsFloat64Number parameters[5] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return cmsBuildParametricToneCurve(nullptr, 4, parameters);
}

} // namespace

QByteArray iccProfile(int colourPrimaries, int transferCharacteristics)
{
    Chromaticities c{};
    if (!chromaticities(colourPrimaries, &c))
        return {};
    const Curve kind = curve(transferCharacteristics);
    if (colourPrimaries == 1 && kind == Curve::srgb)
        return {};
    const std::unique_ptr<cmsToneCurve, CurveDeleter> toneCurve(buildCurve(kind));
    if (!toneCurve)
        return {};
    const cmsCIExyY white{c.whiteX, c.whiteY, 1.0};
    const cmsCIExyYTRIPLE primaries{{c.redX, c.redY, 1.0}, {c.greenX, c.greenY, 1.0}, {c.blueX, c.blueY, 1.0}};
    cmsToneCurve *curves[3] = {toneCurve.get(), toneCurve.get(), toneCurve.get()};
    const std::unique_ptr<void, ProfileDeleter> profile(cmsCreateRGBProfile(&white, &primaries, curves));
    if (!profile)
        return {};
    cmsUInt32Number size = 0;
    if (!cmsSaveProfileToMem(profile.get(), nullptr, &size) || size == 0)
        return {};
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size))
        return {};
    return bytes;
}

} // namespace NclxProfile
