#include "ui/app/ServicesProvider.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/model/PXFile.h"

#include <QUrl>

namespace {
constexpr Translator tr("ServicesProvider");
}

ServicesProvider::ServicesProvider(FilesHandler openRenamer, FilesHandler startSlideshow)
    : m_openRenamer(std::move(openRenamer))
    , m_startSlideshow(std::move(startSlideshow))
{ }

QString ServicesProvider::noFilesError()
{
    return tr("Failed to find files for rename service.");
}

QString ServicesProvider::noImagesOrFoldersError()
{
    return tr("No images or folders were selected.");
}

QList<PXFilePtr> ServicesProvider::filesForPaths(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    QList<PXFilePtr> files;
    for (const ZQFilePtr &file : ZQStandardFile::arrayOfFilesForURLs(urls, false))
        files.append(PXFile::from(file));
    return files;
}

QString ServicesProvider::performRenameService(const QStringList &paths) const
{
    const QList<PXFilePtr> files = filesForPaths(paths);
    if (files.isEmpty()) {
        logError(QStringLiteral("Failed to find files for rename service"));
        return noFilesError();
    }
    m_openRenamer(files);
    return {};
}

// The slideshow reports a missing file list with the rename service's texts, on purpose.
QString ServicesProvider::performSlideshowService(const QStringList &paths) const
{
    const QList<PXFilePtr> files = filesForPaths(paths);
    if (files.isEmpty()) {
        logError(QStringLiteral("Failed to find files for rename service"));
        return noFilesError();
    }
    QList<PXFilePtr> shown;
    for (const PXFilePtr &file : files) {
        if (file->isImage() || file->isDirectory())
            shown.append(file);
    }
    if (shown.isEmpty())
        return noImagesOrFoldersError();
    m_startSlideshow(shown);
    return {};
}
