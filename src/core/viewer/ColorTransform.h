#pragma once

#include <QByteArray>
#include <QImage>

// Colour management of decoded pictures through Little CMS, the only file that sees its types.
// A picture whose file embeds an ICC profile is converted from that profile to sRGB, or to the
// display's profile once one is set. Transforms are made once per pair of profiles and shared.
// Thread-safe.
namespace ColorTransform {

// Converts `image` (32-bit RGB) from `sourceProfile` to the display's profile, in place. Leaves
// it alone when the profile is empty, unreadable, not an RGB profile, or already the target.
void toDisplay(QImage &image, const QByteArray &sourceProfile);

// The display's ICC profile (empty: sRGB). Set when the screen's profile is known.
void setDisplayProfile(const QByteArray &profile);
QByteArray displayProfile();

// The ICC profile carried in a JPEG's APP2 "ICC_PROFILE" segments, its chunks joined in order;
// empty when there is none or a chunk is missing. `segments` holds the file's bytes from its
// start up to its first scan.
QByteArray jpegIccProfile(const QByteArray &segments);

} // namespace ColorTransform
