#pragma once

#include "core/model/PXFileForward.h"
#include "ui/windows/WindowManager.h"

#include <QList>
#include <QObject>

class AppSettings;
class SlideshowWindowController;

// The running slideshows. Starting one over files and folders (the menus, the thumbnails' context
// menu, `pixcove --slideshow`, the open image windows) makes its window controller; quitting
// closes them all first.
class SlideshowWindowsManager : public QObject, public WindowManager
{
    Q_OBJECT
public:
    explicit SlideshowWindowsManager(AppSettings *settings, QObject *parent = nullptr);
    ~SlideshowWindowsManager() override;

    static SlideshowWindowsManager &shared();
    static void setShared(SlideshowWindowsManager *manager); // not owned

    SlideshowWindowController *startSlideshow(const QList<PXFilePtr> &sources);
    const QList<SlideshowWindowController *> &slideshowWindowControllers() const { return m_controllers; }
    void closeAll();

    void windowControllerWillClose(QObject *controller) override;

Q_SIGNALS:
    // After a slideshow's window has closed.
    void slideshowWindowControllersChanged();

private:
    AppSettings *m_settings;
    QList<SlideshowWindowController *> m_controllers;
};
