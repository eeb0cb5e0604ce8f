#pragma once

#include "core/model/PXFileForward.h"

#include <QList>

class QWidget;

// What a main window asks of the program around it. The manager that opens main windows hands
// it in, so that windows do not reach for the application's managers themselves.
class MainWindowHost
{
public:
    virtual ~MainWindowHost() = default;
    // The user chose a deeper subfolder scan in `window`: the folder-depth warning, unless the
    // user turned it off.
    virtual void folderDepthIncreased(QWidget *window) = 0;
    // A window's thumbnail selection changed; the latest of any window is the one the quick view
    // and the services follow.
    virtual void thumbnailSelectionChanged(const QList<PXFilePtr> &files) = 0;
    // The user opened `file` (Return, a double click, "Open"): shown where the settings say, in
    // a viewer that steps through `set`.
    virtual void openInViewer(const PXFilePtr &file, const QList<PXFilePtr> &set) = 0;
    // A slideshow of files and folders.
    virtual void startSlideshow(const QList<PXFilePtr> &sources) = 0;
};
