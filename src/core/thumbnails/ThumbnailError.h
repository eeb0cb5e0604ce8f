#pragma once

#include <QMetaType>
#include <QString>

// A failure to make a thumbnail, as handed to a request's update handler: the producer that
// failed (its domain), a code of that domain and a sentence for the log.
struct ThumbnailError
{
    QString domain;
    int code = 0;
    QString description;
};

// Where a delivered thumbnail came from; `pixcove-cli thumbs` prints it for every file.
enum class ThumbnailSource { none = 0, embedded, cached, rendered, failed };

QString thumbnailSourceName(ThumbnailSource source);
