#include "thumbnails/ThumbnailGenerator.h"

ThumbnailGenerator &ThumbnailGenerator::shared()
{
    static ThumbnailGenerator generator;
    return generator;
}
