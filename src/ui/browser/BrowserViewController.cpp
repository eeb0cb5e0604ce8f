#include "ui/browser/BrowserViewController.h"

#include "ui/browser/PreviewView.h"
#include "ui/browser/ThumbnailsViewController.h"

#include <QSplitter>
#include <QVBoxLayout>

BrowserViewController::BrowserViewController(WindowSettingsPtr settings, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(settings ? std::move(settings) : std::make_shared<WindowSettings>())
    , m_splitter(new QSplitter(this))
    , m_thumbnails(new ThumbnailsViewController(m_windowSettings))
    , m_preview(new PreviewView)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_splitter);
    m_splitter->setChildrenCollapsible(false);
    applyLayout();

    connect(m_thumbnails, &ThumbnailsViewController::selectionChanged, this, [this](const QList<PXFilePtr> &files) {
        m_preview->setFile(files.isEmpty() ? nullptr : files.first());
        Q_EMIT selectionChanged(files);
    });
    connect(m_thumbnails, &ThumbnailsViewController::statusTextChanged, this,
            &BrowserViewController::statusTextChanged);
    connect(m_thumbnails, &ThumbnailsViewController::openRequested, this, &BrowserViewController::openRequested);
    connect(m_thumbnails, &ThumbnailsViewController::sourceVanished, this, &BrowserViewController::sourceVanished);
    connect(m_windowSettings.get(), &WindowSettings::browserLayoutChanged, this, &BrowserViewController::applyLayout);
    connect(m_windowSettings.get(), &WindowSettings::thumbnailSizeChanged, this, [this] {
        if (m_windowSettings->browserLayout() == BrowserLayout::topPreview)
            applyLayout();
    });
}

BrowserViewController::~BrowserViewController() = default;

void BrowserViewController::applyLayout()
{
    const BrowserLayout browserLayout = m_windowSettings->browserLayout();
    // Re-adding moves a widget: put both back in the order of the layout.
    if (browserLayout == BrowserLayout::topPreview) {
        m_splitter->setOrientation(Qt::Vertical);
        m_splitter->insertWidget(0, m_preview);
        m_splitter->insertWidget(1, m_thumbnails);
    } else {
        m_splitter->setOrientation(Qt::Horizontal);
        m_splitter->insertWidget(0, m_thumbnails);
        m_splitter->insertWidget(1, m_preview);
    }
    m_preview->setVisible(browserLayout != BrowserLayout::noPreview);
    // Growing the window grows the preview; the grid keeps what the user gave it.
    m_splitter->setStretchFactor(m_splitter->indexOf(m_preview), 1);
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
