#pragma once

#include "core/viewer/VideoPlayerChooser.h"

#include <QString>

#include <memory>

class VideoEngine;

// Makes the engines of the two player libraries, loading each library's module on its first use
// (pixcove_qtmedia.so for `native`, pixcove_vlc.so for `vlc`): from $PIXCOVE_QTMEDIA_MODULE or
// $PIXCOVE_VLC_MODULE when set, else beside the program when installed, else from the build tree.
// A module that is missing or whose library cannot start is reported once in the log and then
// through `error` at each call. GUI thread only, but for `preload`.
namespace VideoEngineLoader {

// A new engine for `source` (`native` or `vlc`), or null with the reason in `error`.
std::unique_ptr<VideoEngine> newEngine(VideoPlayerSource source, QString *error = nullptr);

// Whether an engine for `source` can be made: loads the module and starts its library once.
bool isAvailable(VideoPlayerSource source);

// Loads the module of `source` (`automatic`: the native player's) on a worker thread, once, so
// that the first video does not wait for the library and its dependencies to be mapped. Making
// an engine stays on the GUI thread; one made while the load is under way waits for it.
void preload(VideoPlayerSource source);

} // namespace VideoEngineLoader
