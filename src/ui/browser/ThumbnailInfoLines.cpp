#include "ui/browser/ThumbnailInfoLines.h"

#include "core/model/PXFile.h"

QStringList thumbnailInfoLines(const PXFile &file, ThumbnailInfoOptions options)
{
    QStringList lines;
    if (options.testFlag(ThumbnailInfoOption::filename))
        lines.append(file.displayName());
    if (options.testFlag(ThumbnailInfoOption::dimensions)) {
        // Folders and files without pixels keep the line empty, so that cells stay aligned.
        lines.append(file.isImage() ? file.dimensionsString() : QString());
    }
    if (options.testFlag(ThumbnailInfoOption::fileSize))
        lines.append(file.isDirectory() ? QString() : file.fileSizeString());
    if (options.testFlag(ThumbnailInfoOption::modificationDate))
        lines.append(file.modificationDateString());
    if (options.testFlag(ThumbnailInfoOption::kind))
        lines.append(file.kindString());
    return lines;
}

int thumbnailInfoLineCount(ThumbnailInfoOptions options, bool singleRow)
{
    if (singleRow)
        return options.testFlag(ThumbnailInfoOption::filename) ? 1 : 0;
    int count = 0;
    for (ThumbnailInfoOption option :
         {ThumbnailInfoOption::filename, ThumbnailInfoOption::dimensions, ThumbnailInfoOption::fileSize,
          ThumbnailInfoOption::modificationDate, ThumbnailInfoOption::kind}) {
        count += options.testFlag(option) ? 1 : 0;
    }
    return count;
}
