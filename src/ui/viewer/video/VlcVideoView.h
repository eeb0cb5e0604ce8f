#pragma once

#include "ui/viewer/video/EngineVideoView.h"

// A video played by libvlc, which draws into a native child window of this view (X11). The
// library is loaded on the first video this view plays. Where there is no X11 window to give it
// (Wayland without XWayland, the offscreen platform of the tests) it plays without a picture.
class VlcVideoView : public EngineVideoView
{
    Q_OBJECT

public:
    explicit VlcVideoView(QWidget *parent = nullptr);
    ~VlcVideoView() override;

protected:
    void prepareEngine(VideoEngine &engine) override;
    void openMedia(const QString &path) override;
    void closeMedia() override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // The native window libvlc draws into; hidden while there is nothing to show, so that a
    // failure message painted by the view is seen.
    QWidget *m_surface = nullptr;
};
