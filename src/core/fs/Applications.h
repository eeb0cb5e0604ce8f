#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace Applications {

// The .desktop file of the default application for `mimeType` (through GIO), or empty.
// With `forEditing`, the first recommended application that is not the default viewer, falling
// back to the default: the desktop has no separate editor role.
QString defaultApplicationFile(const QString &mimeType, bool forEditing);

// The .desktop file of the installed application, among those that open `mimeType`, that
// `creator` names (a file's creator software: "GIMP 2.10.34", "darktable 4.4.2"), or empty.
// An application is named when its name or its program's name is in the text. Pixcove itself
// is never the answer.
QString creatorApplicationFile(const QString &mimeType, const QString &creator);

} // namespace Applications

namespace Applications {

// Starts the application of the .desktop file `desktopFile` on `paths` (through GIO). False with
// the reason when it cannot be started.
bool launch(const QString &desktopFile, const QStringList &paths, QString *error);

} // namespace Applications

namespace Applications {

// An installed application as menus show it.
struct ApplicationInfo
{
    QString desktopFile; // its .desktop file's path: what launch() takes
    QString name; // "GNU Image Manipulation Program"
    QString icon; // a theme icon name or an icon file's path; empty without one
};

// Every application that opens `mimeType`, the default first, then by name; Pixcove itself is
// left out. Reads the desktop's application database (tens of milliseconds the first time):
// call it off the GUI thread where a folder's worth of types is asked.
QList<ApplicationInfo> applicationsForType(const QString &mimeType);
// Every installed application that is shown in menus, by name (the "Other…" chooser).
QList<ApplicationInfo> allApplications();
// The application of one .desktop file; a null desktopFile when it is not one.
ApplicationInfo applicationInfo(const QString &desktopFile);
// The applications that open any of `mimeTypes` (every application shown in menus when the
// list is empty), by name, each once; Pixcove itself is left out. Call it off the GUI thread.
QList<ApplicationInfo> installedApplications(const QStringList &mimeTypes = {});

} // namespace Applications
