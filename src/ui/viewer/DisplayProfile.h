#pragma once

#include <QByteArray>

// The screen's ICC profile, as colour managers publish it on X11: the `_ICC_PROFILE` property of
// the root window (`_ICC_PROFILE_1` and so on for further screens). Pictures with a profile of
// their own are then converted to it instead of to sRGB.
namespace DisplayProfile {

// The profile published for screen `screen` of the X display `displayName` (null: $DISPLAY);
// empty when there is no X server, no such property, or it is not an ICC profile.
QByteArray read(const char *displayName = nullptr, int screen = 0);

// Reads the first screen's profile and hands it to the colour transforms; on another platform
// than X11, or without a published profile, pictures keep being converted to sRGB.
void install();

} // namespace DisplayProfile
