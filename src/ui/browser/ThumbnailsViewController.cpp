#include "browser/ThumbnailsViewController.h"

ThumbnailsViewController::ThumbnailsViewController(WindowSettingsPtr settings, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(std::move(settings))
{
}

ThumbnailsViewController::~ThumbnailsViewController() = default;

void ThumbnailsViewController::setSources(const QList<PXFilePtr> &folders) { m_currentSources = folders; }
QList<PXFilePtr> ThumbnailsViewController::sources() const { return m_currentSources; }
bool ThumbnailsViewController::validateAction(const QString &) const { return false; }
QList<PXFilePtr> ThumbnailsViewController::selectedFiles() const { return {}; }
QString ThumbnailsViewController::statusText() const { return tr("No Folder Selected"); }
void ThumbnailsViewController::performOpen() {}
void ThumbnailsViewController::openInApp() {}
void ThumbnailsViewController::selectAll() {}
void ThumbnailsViewController::deselectAll() {}
void ThumbnailsViewController::renameFile() {}
void ThumbnailsViewController::makeAlias() {}
void ThumbnailsViewController::makeSymlink() {}
void ThumbnailsViewController::duplicate() {}
void ThumbnailsViewController::moveToTrash() {}
void ThumbnailsViewController::revealInFinder() {}
void ThumbnailsViewController::newFolder() {}
void ThumbnailsViewController::flagItem() {}
void ThumbnailsViewController::rejectItem() {}
void ThumbnailsViewController::clearItemFlag() {}
void ThumbnailsViewController::selectFlagged() {}
void ThumbnailsViewController::selectRejected() {}
void ThumbnailsViewController::nextImageInBrowser() {}
void ThumbnailsViewController::previousImageInBrowser() {}
void ThumbnailsViewController::scrollSelectionToVisible() {}
void ThumbnailsViewController::thumbnailViewSearch(const QString &) {}
void ThumbnailsViewController::setThumbnailViewSearchCategory(ThumbnailsSearchType) {}
