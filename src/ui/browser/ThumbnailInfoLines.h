#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/SettingsValueSets.h"

#include <QStringList>

// The information lines under a thumbnail, in their fixed order: name, dimensions, size,
// modification date, kind. Reading dimensions opens the image: call off the GUI thread.
QStringList thumbnailInfoLines(const PXFile &file, ThumbnailInfoOptions options);

// How many lines the options give (the single-row layout shows the name only).
int thumbnailInfoLineCount(ThumbnailInfoOptions options, bool singleRow);
