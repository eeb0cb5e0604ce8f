#pragma once

#include <QString>
#include <QStringList>

namespace Applications {

// The .desktop file of the default application for `mimeType` (through GIO), or empty.
// With `forEditing`, the first recommended application that is not the default viewer, falling
// back to the default: the desktop has no separate editor role.
QString defaultApplicationFile(const QString &mimeType, bool forEditing);

} // namespace Applications

namespace Applications {

// Starts the application of the .desktop file `desktopFile` on `paths` (through GIO). False with
// the reason when it cannot be started.
bool launch(const QString &desktopFile, const QStringList &paths, QString *error);

} // namespace Applications
