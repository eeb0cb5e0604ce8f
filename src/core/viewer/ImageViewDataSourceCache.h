#pragma once

#include "core/model/PXFileForward.h"
#include "core/viewer/ImageViewDataSource.h"
#include "core/viewer/Stickiness.h"

#include <QByteArray>
#include <QHash>

// How a viewer starts a file it shows: the default scaling, and whether the previous file's
// scaling carries over.
struct ImageViewDefaults
{
    ImageViewScalingMode scalingMode = ImageViewScalingMode::shrinkToFit;
    int percentage = 100; // used by ImageViewScalingMode::percentage
    bool retainScalingFromPreviousFile = false;
};

// A viewer's data sources by file (keyed by the file's path), so that a file shown again comes
// back with its zoom and position. Trimmed a step at a time after every show: the decoded
// pictures of the 15 most recently shown files stay, the 16th most recent loses its picture
// (never its view state), and past 1000 files the 1001st most recent is forgotten. One entry at
// most each time, so the map shrinks gradually as the user moves on. GUI thread.
class ImageViewDataSourceCache
{
public:
    // The 16th most recently shown file drops its picture (index 15).
    static constexpr int decodedImagesKept = 15;
    // More files than this: the 1001st most recent is removed (index 1000).
    static constexpr int entriesKept = 1000;

    // The data source to show `file` with, as the viewer's "show a file" does: the remembered one
    // or a new one seeded from `defaults`; with retainScalingFromPreviousFile, the previous
    // file's scaling copied into it (also into a remembered one). It becomes the previous data
    // source and is marked displayed. Then trims. Null for a null file.
    ImageViewDataSourcePtr dataSourceForShowing(const PXFilePtr &file, const ImageViewDefaults &defaults);

    ImageViewDataSourcePtr find(const PXFilePtr &file) const;
    ImageViewDataSourcePtr previousDataSource() const { return m_previous; }
    // One trimming step (dataSourceForShowing runs it).
    void trim();
    void remove(const PXFilePtr &file);
    void clear();
    int count() const { return int(m_byPath.size()); }

    // Made data sources read and fill this decoded-picture cache (the shared one by default).
    void setImageCache(DecodedImageCache *cache);

private:
    QHash<QByteArray, ImageViewDataSourcePtr> m_byPath;
    ImageViewDataSourcePtr m_previous;
    DecodedImageCache *m_imageCache = nullptr;
    bool m_imageCacheSet = false;
};
