#pragma once

#include "core/model/PXFileForward.h"

#include <QList>

// What the selection of a pane holds, for enabling commands: computed once per selection change
// from the file records' cached facts, so that validating a menu touches no disk.
struct SelectedFilesInfo
{
    bool needsRefresh = false; // a selected file is gone from the disk: the pane should reload
    bool images = false; // at least one image
    bool media = false; // at least one image, video or sound
    bool folders = false; // at least one folder
    bool aliases = false; // at least one symbolic link
    bool ejectable = false; // at least one volume that can be ejected
    bool deleteable = false; // every item can go to the trash: on disk, not a volume, folder writable
    bool oneItem = false;
    bool anyItems = false;

    static SelectedFilesInfo forFiles(const QList<PXFilePtr> &files);
};
