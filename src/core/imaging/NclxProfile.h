#pragma once

#include <QByteArray>

// A colour profile for pictures that describe their colours by code points instead of an
// embedded ICC profile (the "nclx" colour box of HEIF and AVIF files, ITU-T H.273 numbering):
// an RGB matrix/shaper ICC profile made through Little CMS from the primaries, white point and
// transfer function the codes name, so that such a picture is converted like one carrying a
// profile. Phones write Display P3 this way; shown as sRGB it would look dull.
namespace NclxProfile {

// The ICC profile of `colourPrimaries` with `transferCharacteristics`. Empty when there is
// nothing to convert (the primaries are sRGB's and the curve sRGB-like) or the primaries are
// unspecified or unknown. HDR curves (PQ, HLG) are given sRGB's curve: the picture's range is
// not mapped, only its gamut.
QByteArray iccProfile(int colourPrimaries, int transferCharacteristics);

} // namespace NclxProfile
