#pragma once

#include <QList>
#include <QString>

// The libraries the program runs with and their versions, as the About window lists them: Qt,
// Exiv2, libjpeg-turbo, libheif, LibRaw and FFmpeg. Asked of the loaded libraries where they can
// tell (libjpeg-turbo cannot: the version it was built against is given); libheif and FFmpeg are
// loaded for the question when the program has not loaded them yet, so call it off the GUI thread.
struct LibraryVersion
{
    QString name;
    QString version; // "unavailable" when the library cannot be loaded
};

QList<LibraryVersion> libraryVersions();
