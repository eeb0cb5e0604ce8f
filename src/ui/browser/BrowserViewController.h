#pragma once

#include "model/PXFile.h"
#include "settings/WindowSettings.h"

#include <QList>
#include <QWidget>

class ThumbnailsViewController;

// The browser of a main window: the thumbnail grid and, on the side the window's browserLayout
// chooses, a preview of the selected image scaled to fit.
class BrowserViewController : public QWidget
{
    Q_OBJECT

public:
    explicit BrowserViewController(WindowSettingsPtr settings, QWidget *parent = nullptr);
    ~BrowserViewController() override;

    ThumbnailsViewController *thumbnailsViewController() const { return m_thumbnails; }
    // The sidebar's selection.
    void setSources(const QList<PXFilePtr> &folders);

Q_SIGNALS:
    void selectionChanged(const QList<PXFilePtr> &files);
    void statusTextChanged(const QString &text);
    void openRequested(const QList<PXFilePtr> &files);
    void sourceVanished(const PXFilePtr &folder, const QString &reason);

private:
    WindowSettingsPtr m_windowSettings;
    ThumbnailsViewController *m_thumbnails;
};
