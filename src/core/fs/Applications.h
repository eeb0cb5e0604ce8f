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

// An installed application, as its .desktop file describes it.
struct Application
{
    QString desktopFile;
    QString name;
    QString iconName; // a theme icon's name, or an icon file's path; may be empty
};

// The installed applications that open any of `mimeTypes` (every application that the desktop
// shows in its menus when the list is empty), by name, each once; Pixcove itself is left out.
// Reads every .desktop file: call it off the GUI thread.
QList<Application> installedApplications(const QStringList &mimeTypes = {});

// The application of one .desktop file; empty fields when it is not one.
Application applicationForFile(const QString &desktopFile);

} // namespace Applications
