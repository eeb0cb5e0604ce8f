#pragma once

#include <QString>
#include <QStringList>

// What the pane's status line says about the files shown and the selection.
struct ThumbnailsStatusInput
{
    QStringList sourceNames; // display names of the folders shown
    bool includesSubfolders = false;
    bool loading = false;
    int foundCount = 0; // files found so far while loading
    int fileCount = 0;
    int selectedCount = 0;
};

// "12 files", "3 of 12 files selected", "1 of 1 file selected".
QString thumbnailsCountText(int fileCount, int selectedCount);
QString thumbnailsStatusText(const ThumbnailsStatusInput &input);
