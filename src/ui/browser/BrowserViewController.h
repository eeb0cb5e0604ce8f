#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"

#include <QList>
#include <QWidget>

class PreviewView;
class QSplitter;
class ThumbnailsViewController;

// The browser of a main window: the thumbnail grid and, on the side the window's browserLayout
// chooses, a preview of the selected image scaled to fit. With the preview on top the grid
// becomes one row under it.
class BrowserViewController : public QWidget
{
    Q_OBJECT

public:
    explicit BrowserViewController(WindowSettingsPtr settings, QWidget *parent = nullptr);
    ~BrowserViewController() override;

    ThumbnailsViewController *thumbnailsViewController() const { return m_thumbnails; }
    PreviewView *previewView() const { return m_preview; }
    // The sidebar's selection.
    void setSources(const QList<PXFilePtr> &folders);

Q_SIGNALS:
    void selectionChanged(const QList<PXFilePtr> &files);
    void statusTextChanged(const QString &text);
    void openRequested(const QList<PXFilePtr> &files);
    void sourceVanished(const PXFilePtr &folder, const QString &reason);

private:
    void applyLayout();

    WindowSettingsPtr m_windowSettings;
    QSplitter *m_splitter;
    ThumbnailsViewController *m_thumbnails;
    PreviewView *m_preview;
};
