#include "ui/browser/ThumbnailGridDataSource.h"

#include "core/model/ColorLabels.h"
#include "core/model/FileModel.h"
#include "core/settings/WindowSettings.h"
#include "core/thumbnails/ThumbnailItem.h"
#include "core/thumbnails/ThumbnailVisibilityUpdater.h"
#include "ui/browser/FileDropValidator.h"
#include "ui/browser/ThumbnailsViewController.h"

#include <QMimeData>
#include <QMimeDatabase>
#include <QStyle>

#include <algorithm>

ThumbnailGridDataSource::ThumbnailGridDataSource(ThumbnailsViewController &pane, WindowSettingsPtr settings,
                                                 const ThumbnailVisibilityUpdater &visibility)
    : m_pane(pane)
    , m_windowSettings(std::move(settings))
    , m_visibility(visibility)
{ }

PXFilePtr ThumbnailGridDataSource::fileAt(int index) const
{
    const ThumbnailItemPtr item = m_pane.itemAt(index);
    return item ? item->file() : nullptr;
}

QPixmap ThumbnailGridDataSource::gridThumbnail(int index, int side)
{
    const ThumbnailItemPtr item = m_pane.itemAt(index);
    if (!item)
        return {};
    const QImage &image = item->thumbnail();
    if (image.isNull())
        return {};
    auto it = m_pixmaps.find(item.get());
    if (it != m_pixmaps.end() && std::max(it->width(), it->height()) == side)
        return *it;
    // Scaled once to fit the cell exactly, so that painting a screenful costs blits, not
    // resampling.
    QPixmap pixmap = QPixmap::fromImage(image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    m_pixmaps.insert(item.get(), pixmap);
    return pixmap;
}

QPixmap ThumbnailGridDataSource::gridIcon(int index, int side)
{
    const PXFilePtr file = fileAt(index);
    if (!file)
        return {};
    QString key;
    if (file->isDirectory())
        key = QStringLiteral("inode/directory");
    else
        key = QMimeDatabase().mimeTypeForFile(file->name(), QMimeDatabase::MatchExtension).name();
    auto it = m_iconsByType.find(key);
    if (it == m_iconsByType.end()) {
        QStyle *style = m_pane.style();
        QIcon icon;
        if (key == QLatin1String("inode/directory")) {
            icon = QIcon::fromTheme(QStringLiteral("folder"), style->standardIcon(QStyle::SP_DirIcon));
        } else {
            const QMimeType mime = QMimeDatabase().mimeTypeForName(key);
            icon = QIcon::fromTheme(mime.iconName(),
                                    QIcon::fromTheme(mime.genericIconName(), style->standardIcon(QStyle::SP_FileIcon)));
        }
        it = m_iconsByType.insert(key, icon);
    }
    return it->pixmap(QSize(side, side));
}

QStringList ThumbnailGridDataSource::gridInfoLines(int index)
{
    const PXFilePtr file = fileAt(index);
    if (!file || !m_windowSettings->thumbnailShowInformation())
        return {};
    const ThumbnailInfoOptions options = m_windowSettings->thumbnailInformation();
    if (m_windowSettings->browserLayout() != BrowserLayout::topPreview) {
        if (std::optional<QStringList> lines = m_visibility.infoLines(file.get()))
            return *lines;
    }
    // Until the other lines are read, and in the single row: the name alone.
    return options.testFlag(ThumbnailInfoOption::filename) ? QStringList{file->displayName()} : QStringList{};
}

QString ThumbnailGridDataSource::gridSectionTitle(int section)
{
    const FileModelPtr folderNode = m_pane.sectionFolder(section);
    if (!folderNode)
        return {};
    const PXFilePtr &folder = folderNode->file();
    for (const PXFilePtr &source : m_pane.sources()) {
        if (folder->path().startsWith(source->path() + QLatin1Char('/')))
            return source->displayName() + QLatin1Char('/') + folder->path().mid(source->path().size() + 1);
    }
    return folder->displayName();
}

int ThumbnailGridDataSource::gridMark(int index)
{
    const PXFilePtr file = fileAt(index);
    if (!file)
        return 0;
    switch (m_pane.flagOf(file)) {
    case FileFlag::flagged: return 1;
    case FileFlag::rejected: return 2;
    case FileFlag::none: break;
    }
    return 0;
}

QColor ThumbnailGridDataSource::gridLabelColor(int index)
{
    const PXFilePtr file = fileAt(index);
    // What is cached: the pane reads the labels of the cells it shows off the GUI thread.
    const ColorLabels::Label *label =
        file ? ColorLabels::labelForValue(file->cachedFinderLabelSortValue().value_or(0)) : nullptr;
    return label ? label->colour : QColor();
}

QString ThumbnailGridDataSource::gridEditableName(int index)
{
    const PXFilePtr file = fileAt(index);
    return file ? file->name() : QString();
}

QMimeData *ThumbnailGridDataSource::gridMimeDataForDrag(const QList<int> &indexes)
{
    QList<QUrl> urls;
    for (int index : indexes) {
        if (const PXFilePtr file = fileAt(index))
            urls.append(file->url());
    }
    if (urls.isEmpty())
        return nullptr;
    auto *data = new QMimeData;
    data->setUrls(urls);
    return data;
}

Qt::DropAction ThumbnailGridDataSource::gridValidateDrop(const QMimeData *data, int index, int section,
                                                         Qt::KeyboardModifiers modifiers)
{
    if (!data->hasUrls())
        return Qt::IgnoreAction;
    return dropActionForOperation(m_pane.dropOperation(data->urls(), index, section, modifiers));
}

bool ThumbnailGridDataSource::gridAcceptDrop(const QMimeData *data, int index, int section,
                                             Qt::KeyboardModifiers modifiers)
{
    return m_pane.acceptDrop(data->urls(), index, section, modifiers);
}
