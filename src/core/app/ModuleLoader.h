#pragma once

#include <QString>

#include <functional>

class QLibrary;

// Loads one of the program's own modules (the parts that link a large library, such as FFmpeg
// or libvlc, and load on first use so that start-up does not pay for them).
namespace ModuleLoader {

// Where a module may be, tried in this order: the file named by an environment variable, the
// installed layout beside the running program (bin/../lib/pixcove/), the install prefix the
// build was configured with, and the build folder.
struct Location
{
    const char *environment; // "PIXCOVE_VIDEO_MODULE"
    const char *fileName; // "pixcove_video.so"
    const char *installed; // full path under the configured prefix
    const char *build; // full path in the build folder
};

// The first candidate that loads and whose entry points `resolve` finds (it keeps them); the
// library stays loaded for the rest of the run. Null with `error` set when none does.
QLibrary *load(const Location &location, const std::function<bool(QLibrary &)> &resolve, QString *error);

} // namespace ModuleLoader
