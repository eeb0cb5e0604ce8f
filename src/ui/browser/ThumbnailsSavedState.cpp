#include "ui/browser/ThumbnailsSavedState.h"

#include "core/model/PXFile.h"

#include <QStringList>

QString thumbnailsSavedSourcesKey(const QList<PXFilePtr> &sources)
{
    QStringList paths;
    paths.reserve(sources.size());
    for (const PXFilePtr &source : sources)
        paths.append(source->path());
    paths.sort();
    paths.removeDuplicates();
    return paths.join(QLatin1Char('\n'));
}
