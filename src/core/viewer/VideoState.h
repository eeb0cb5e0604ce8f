#pragma once

#include <QMetaType>

// What a video view is doing, as its owner sees it: the viewer shows it in its commands, and a
// slideshow waits while a video plays. `finished` is reached at the end of the video; playing
// again starts from the beginning.
enum class VideoState : int {
    noVideo, // nothing loaded, the file is still opening, or it cannot be played
    paused,
    playing,
    finished,
};

Q_DECLARE_METATYPE(VideoState)
