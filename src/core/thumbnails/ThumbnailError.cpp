#include "core/thumbnails/ThumbnailError.h"

QString thumbnailSourceName(ThumbnailSource source)
{
    switch (source) {
    case ThumbnailSource::embedded: return QStringLiteral("embedded");
    case ThumbnailSource::cached: return QStringLiteral("cached");
    case ThumbnailSource::rendered: return QStringLiteral("rendered");
    case ThumbnailSource::failed:
    case ThumbnailSource::none: break;
    }
    return QStringLiteral("failed");
}
