#include "ui/browser/BrowserViewController.h"

#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "core/thumbnails/ThumbnailItem.h"
#include "ui/browser/ThumbnailsActionHandler.h"
#include "ui/browser/ThumbnailsViewController.h"
#include "ui/viewer/MediaViewActionHandler.h"
#include "ui/viewer/MediaViewController.h"
#include "ui/viewer/video/VideoView.h"

#include <QGuiApplication>
#include <QSplitter>
#include <QVBoxLayout>
#include <QWindow>

BrowserViewController::BrowserViewController(WindowSettingsPtr settings, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(settings ? std::move(settings) : std::make_shared<WindowSettings>())
    , m_splitter(new QSplitter(this))
    , m_thumbnails(new ThumbnailsViewController(m_windowSettings))
    , m_viewer(new MediaViewController)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_splitter);
    m_splitter->setChildrenCollapsible(false);
    m_viewer->setMinimumSize(120, 120);
    applyViewerSettings();
    applyLayout();

    // The viewer's "next" and "previous" are the grid's.
    ThumbnailsActionHandler *pane = m_thumbnails->actionHandler();
    m_viewer->actionHandler()
        ->setStepper([pane](int step) { step > 0 ? pane->nextImageInBrowser() : pane->previousImageInBrowser(); },
                     [pane](int) { return pane->hasFiles(); });

    connect(m_thumbnails, &ThumbnailsViewController::selectionChanged, this, [this](const QList<PXFilePtr> &files) {
        showSelection();
        Q_EMIT selectionChanged(files);
    });
    connect(m_thumbnails, &ThumbnailsViewController::statusTextChanged, this,
            &BrowserViewController::statusTextChanged);
    connect(m_thumbnails, &ThumbnailsViewController::openRequested, this, &BrowserViewController::openRequested);
    connect(m_thumbnails, &ThumbnailsViewController::sourceVanished, this, &BrowserViewController::sourceVanished);
    connect(m_windowSettings.get(), &WindowSettings::browserLayoutChanged, this, [this] {
        applyLayout();
        showSelection();
    });
    connect(m_windowSettings.get(), &WindowSettings::thumbnailSizeChanged, this, [this] {
        if (m_windowSettings->browserLayout() == BrowserLayout::topPreview)
            applyLayout();
    });
    if (AppSettings *app = SettingsManager::shared().settings())
        connect(app, &AppSettings::thumbnailBackgroundColorChanged, this, &BrowserViewController::applyViewerSettings);
    // A video beside the grid pauses when its window is no longer the one in front, if asked to.
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow *focus) {
        const AppSettings *app = SettingsManager::shared().settings();
        VideoView *video = m_viewer->currentVideoChild();
        if (!video || !app || !app->thumbnailsPreviewPauseWhenLosingKey())
            return;
        if (!focus || focus != window()->windowHandle())
            video->pause();
    });
}

BrowserViewController::~BrowserViewController() = default;

// The viewer beside the grid fits what is larger than it, switches at once (stepping through a
// folder is the point) and leaves videos paused until asked.
void BrowserViewController::applyViewerSettings()
{
    MediaViewSettings settings;
    settings.defaultScalingMode = ImageDisplayScaling::shrinkToFit;
    settings.transitionDuration = 0;
    settings.autoplayVideo = false;
    if (AppSettings *app = SettingsManager::shared().settings())
        settings.backgroundColor = app->thumbnailBackgroundColor();
    m_viewer->setSettings(settings);
}

void BrowserViewController::showSelection()
{
    if (m_windowSettings->browserLayout() == BrowserLayout::noPreview) {
        m_viewer->showFile(nullptr);
        m_viewer->prefetch({});
        return;
    }
    const QList<PXFilePtr> selected = m_thumbnails->selectedFiles();
    const PXFilePtr file = selected.value(0);
    const int index = file ? m_thumbnails->indexOfFile(file) : -1;
    // The grid's picture stands in until the viewer's own is decoded.
    const ThumbnailItemPtr item = index >= 0 ? m_thumbnails->itemAt(index) : nullptr;
    m_viewer->showFile(file, item ? item->thumbnail() : QImage());
    // The pictures the user steps to next: the images either side of the file in the grid, the
    // next one first.
    QList<PXFilePtr> neighbours;
    if (index >= 0) {
        for (int direction : {1, -1}) {
            for (int i = index + direction; i >= 0 && i < m_thumbnails->fileCount(); i += direction) {
                if (const PXFilePtr next = m_thumbnails->itemAt(i)->file(); next->isImage()) {
                    neighbours.append(next);
                    break;
                }
            }
        }
    }
    m_viewer->prefetch(neighbours);
}

void BrowserViewController::applyLayout()
{
    const BrowserLayout browserLayout = m_windowSettings->browserLayout();
    // Re-adding moves a widget: put both back in the order of the layout.
    if (browserLayout == BrowserLayout::topPreview) {
        m_splitter->setOrientation(Qt::Vertical);
        m_splitter->insertWidget(0, m_viewer);
        m_splitter->insertWidget(1, m_thumbnails);
    } else {
        m_splitter->setOrientation(Qt::Horizontal);
        m_splitter->insertWidget(0, m_thumbnails);
        m_splitter->insertWidget(1, m_viewer);
    }
    m_viewer->setVisible(browserLayout != BrowserLayout::noPreview);
    // Growing the window grows the preview; the grid keeps what the user gave it.
    m_splitter->setStretchFactor(m_splitter->indexOf(m_viewer), 1);
    m_splitter->setStretchFactor(m_splitter->indexOf(m_thumbnails), browserLayout == BrowserLayout::topPreview ? 0 : 1);
    const int total = browserLayout == BrowserLayout::topPreview ? std::max(400, m_splitter->height())
                                                                 : std::max(600, m_splitter->width());
    if (browserLayout == BrowserLayout::topPreview) {
        // One row of cells under the preview: the thumbnail size and its name line decide it.
        const int row = std::min(total / 2, m_windowSettings->thumbnailSize() / 2 + 70);
        m_splitter->setSizes({total - row, row});
    } else if (browserLayout == BrowserLayout::rightPreview) {
        m_splitter->setSizes({total * 3 / 5, total * 2 / 5});
    }
}

void BrowserViewController::setSources(const QList<PXFilePtr> &folders)
{
    m_thumbnails->setSources(folders);
}
