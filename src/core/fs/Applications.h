#pragma once

#include <QString>

namespace Applications {

// The .desktop file of the default application for `mimeType` (through GIO), or empty.
// With `forEditing`, the first recommended application that is not the default viewer, falling
// back to the default: the desktop has no separate editor role.
QString defaultApplicationFile(const QString &mimeType, bool forEditing);

} // namespace Applications
