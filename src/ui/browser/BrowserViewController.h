#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"

#include <QList>
#include <QWidget>

class MediaViewController;
class QSplitter;
class ThumbnailsViewController;

// The browser of a main window: the thumbnail grid and, on the side the window's browserLayout
// chooses, the embedded viewer, which shows the first selected file (an image zoomable and
// rotatable, a video with its controls) and decodes the files beside it in the grid ahead, so
// that stepping through a folder shows each picture at once. With the preview on top the grid
// becomes one row under it; with no preview the viewer shows nothing and decodes nothing.
class BrowserViewController : public QWidget
{
    Q_OBJECT

public:
    explicit BrowserViewController(WindowSettingsPtr settings, QWidget *parent = nullptr);
    ~BrowserViewController() override;

    ThumbnailsViewController *thumbnailsViewController() const { return m_thumbnails; }
    MediaViewController *mediaView() const { return m_viewer; }
    // The sidebar's selection.
    void setSources(const QList<PXFilePtr> &folders);

Q_SIGNALS:
    void selectionChanged(const QList<PXFilePtr> &files);
    void statusTextChanged(const QString &text);
    void openRequested(const QList<PXFilePtr> &files);
    void sourceVanished(const PXFilePtr &folder, const QString &reason);

private:
    void applyLayout();
    void showSelection();
    void applyViewerSettings();

    WindowSettingsPtr m_windowSettings;
    QSplitter *m_splitter;
    ThumbnailsViewController *m_thumbnails;
    MediaViewController *m_viewer;
};
