#include "ui/browser/ThumbnailsStatusText.h"

#include "core/app/Translate.h"

namespace {
constexpr Translator tr("ThumbnailsViewController");
} // namespace

QString thumbnailsCountText(int fileCount, int selectedCount)
{
    if (selectedCount <= 0)
        return QString::number(fileCount) + (fileCount == 1 ? tr(" file") : tr(" files"));
    return QString::number(selectedCount) + tr(" of ") + QString::number(fileCount)
        + (fileCount == 1 ? tr(" file selected") : tr(" files selected"));
}

QString thumbnailsStatusText(const ThumbnailsStatusInput &input)
{
    if (input.sourceNames.isEmpty())
        return tr("No Folder Selected");
    if (input.loading)
        return tr("Loading. %1 found...").arg(input.foundCount);
    const QString count = thumbnailsCountText(input.fileCount, input.selectedCount);
    const int sources = int(input.sourceNames.size());
    if (sources == 1)
        return input.includesSubfolders ? tr("%1 and its subfolders: %2").arg(input.sourceNames.first(), count) : count;
    return input.includesSubfolders ? tr("%1 folders and their subfolders: %2").arg(sources).arg(count)
                                    : tr("%1 folders: %2").arg(sources).arg(count);
}
