#pragma once

#include "core/model/PXFileForward.h"
#include "core/viewer/VideoState.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <atomic>
#include <memory>

class AppSettings;
class MediaViewController;
class QLabel;
class QTimer;
class SlideshowControls;
class WindowManager;

// A running slideshow: a full-screen window on the chosen screen (`slideshowScreen`), the other
// screens blacked out (`slideshowBlackoutOtherScreens`), one file after another at the interval
// of the slideshow settings, looping and shuffled as they say. Videos are included, and play by
// themselves, as the settings say; the show does not move on while a video plays (unless told
// otherwise). On-screen controls (previous, play/pause, next, close, the position) show at the
// start when `slideshowControlsVisibleOnStart` is set and whenever the mouse moves; the file's
// name and place show as `infoVisibility` says. Escape or closing any of its windows ends it.
//
// The file list is made on a pool from the sources (folders are listed down to
// `slideshowFolderSearchDepth`); until it is there the window says it is collecting pictures, and
// a list that comes back empty says there is nothing to show.
class SlideshowWindowController : public QObject
{
    Q_OBJECT
public:
    SlideshowWindowController(AppSettings *settings, WindowManager *delegate, const QList<PXFilePtr> &sources,
                              QObject *parent = nullptr);
    ~SlideshowWindowController() override;

    QWidget *window() const { return m_window; }
    MediaViewController *mediaView() const { return m_mediaView; }
    // The files of the show, in the order shown; empty until listed.
    const QList<PXFilePtr> &files() const { return m_files; }
    bool isListed() const { return m_listed; }
    int currentIndex() const { return m_index; }
    PXFilePtr currentFile() const;
    bool isPlaying() const { return m_playing; }
    // The blackout windows on the other screens.
    QList<QWidget *> blackoutWindows() const;

    void start();
    void setPlaying(bool playing);
    void togglePlaying() { setPlaying(!m_playing); }
    // Moves `step` files on; at the end it wraps when looping, else it stays (and stops).
    // With `byUser` false (the timer), it waits while a video plays when the settings say so.
    bool step(int step, bool byUser = true);
    void close();
    bool isClosed() const { return m_closed; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void listed();
    void closed(SlideshowWindowController *controller);

private:
    void filesListed(const QList<PXFilePtr> &files);
    void showCurrent();
    void restartTimer();
    void videoStateChanged(VideoState state);
    void updateInfo();

    AppSettings *m_settings;
    WindowManager *m_delegate;
    QList<PXFilePtr> m_sources;
    QList<PXFilePtr> m_files;
    int m_index = 0;
    bool m_listed = false;
    bool m_playing = true;
    bool m_closed = false;
    QPointer<QWidget> m_window;
    QList<QPointer<QWidget>> m_blackouts;
    MediaViewController *m_mediaView = nullptr;
    SlideshowControls *m_controls = nullptr;
    QLabel *m_info = nullptr;
    QTimer *m_timer = nullptr;
    std::shared_ptr<std::atomic<bool>> m_listingCancelled;
};
