#pragma once

#include "core/model/PXFileForward.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

class AppSettings;
class MediaViewController;
class WindowManager;

// One image window: a window of its own that shows one file of a set given to it (the files
// opened together, or the folder of the file opened) and steps through that set, next and
// previous, wrapping at neither end. It takes the image-window scaling from the settings, runs
// the viewer's commands by their keys, and can take the size of its image ("Fit to Screen").
// The title is the file's name and its place in the set. Closing it tells its manager.
class ImageWindowController : public QObject
{
    Q_OBJECT
public:
    // `files`: the set to step through (never empty); `current`: the file shown first, one of
    // them (else the first).
    ImageWindowController(AppSettings *settings, WindowManager *delegate, const QList<PXFilePtr> &files,
                          const PXFilePtr &current = {}, QObject *parent = nullptr);
    ~ImageWindowController() override;

    QWidget *window() const { return m_window; }
    MediaViewController *mediaView() const { return m_mediaView; }
    const QList<PXFilePtr> &files() const { return m_files; }
    PXFilePtr currentFile() const;
    int currentIndex() const { return m_index; }

    // Shows the file `step` places on in the set; false at either end.
    bool step(int step);
    bool canStep(int step) const;

    void show();
    // Brings the window to the front.
    void raise();
    void close();
    bool isClosed() const { return m_closed; }

Q_SIGNALS:
    void closed(ImageWindowController *controller);

private:
    void showCurrent();
    void fitWindowToImage(QSize imageSize);

    AppSettings *m_settings;
    WindowManager *m_delegate;
    QList<PXFilePtr> m_files;
    int m_index = 0;
    QPointer<QWidget> m_window;
    MediaViewController *m_mediaView = nullptr;
    bool m_closed = false;
};
