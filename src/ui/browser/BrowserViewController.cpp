#include "browser/BrowserViewController.h"

#include "browser/ThumbnailsViewController.h"

#include <QVBoxLayout>

BrowserViewController::BrowserViewController(WindowSettingsPtr settings, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(std::move(settings))
    , m_thumbnails(new ThumbnailsViewController(m_windowSettings, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_thumbnails);
    connect(m_thumbnails, &ThumbnailsViewController::selectionChanged, this, &BrowserViewController::selectionChanged);
    connect(m_thumbnails, &ThumbnailsViewController::statusTextChanged, this, &BrowserViewController::statusTextChanged);
    connect(m_thumbnails, &ThumbnailsViewController::openRequested, this, &BrowserViewController::openRequested);
    connect(m_thumbnails, &ThumbnailsViewController::sourceVanished, this, &BrowserViewController::sourceVanished);
}

BrowserViewController::~BrowserViewController() = default;

void BrowserViewController::setSources(const QList<PXFilePtr> &folders)
{
    m_thumbnails->setSources(folders);
}
