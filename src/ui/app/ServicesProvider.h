#pragma once

#include "core/model/PXFileForward.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

// The two services, reached as `pixcove --rename FILES...` and `pixcove --slideshow FILES...`
// (the desktop entry's actions). Each answers an empty text when it ran, else the error text for
// the caller, which shows it on stderr and in a message box.
class ServicesProvider
{
public:
    using FilesHandler = std::function<void(const QList<PXFilePtr> &files)>;

    // What runs the batch renamer and a slideshow over files.
    ServicesProvider(FilesHandler openRenamer, FilesHandler startSlideshow);

    QString performRenameService(const QStringList &paths) const;
    QString performSlideshowService(const QStringList &paths) const;

    static QString noFilesError();
    static QString noImagesOrFoldersError();

private:
    static QList<PXFilePtr> filesForPaths(const QStringList &paths);

    FilesHandler m_openRenamer;
    FilesHandler m_startSlideshow;
};
