#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/SettingsValueSets.h"

#include <QList>
#include <QString>

#include <atomic>
#include <cstdint>

// The files a slideshow shows, made from what it was started with: files are taken as given
// (images, and videos when they are included), folders are listed down to a depth, their files in
// name order; with `byFolder` each folder's files stay together (a folder before its
// subfolders), `commingled` sorts them all by name as one list. Hidden files and folders are left
// out. Shuffling is a separate step, so that a shuffled show can be made again in order.
//
// Listing folders reads the disk: run it on a pool (it is safe on any thread), with `cancelled`
// to stop a long listing.
struct SlideshowPlaylistOptions
{
    int folderDepth = 2; // 0: the folder's own files only
    SubfolderInclusionStyle inclusionStyle = SubfolderInclusionStyle::commingled;
    bool includeVideos = false;
};

namespace SlideshowPlaylist {

QList<PXFilePtr> make(const QList<PXFilePtr> &sources, const SlideshowPlaylistOptions &options,
                      const std::atomic<bool> *cancelled = nullptr);

// `files` in a random order drawn from `seed`; the same seed gives the same order.
QList<PXFilePtr> shuffled(QList<PXFilePtr> files, std::uint64_t seed);

} // namespace SlideshowPlaylist
