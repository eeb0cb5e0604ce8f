#pragma once

#include "core/thumbnails/SystemThumbnailer.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QList>
#include <QStringList>

// A thumbnailer that holds every rendering until the test finishes it, recording the names of
// the files asked for in the order they were asked for.
class HeldThumbnailer : public SystemThumbnailer
{
public:
    HeldThumbnailer()
        : SystemThumbnailer(ThumbnailCache(QStringLiteral("/nonexistent")))
    { }

    void generate(const std::shared_ptr<SystemThumbnailRequest> &request, Handler handler) override
    {
        started.append(QFileInfo(QFile::decodeName(request->nativePath())).fileName());
        handlers.append(handler);
    }

    // Delivers a plain picture of `size` for the `index`th request.
    void finish(qsizetype index, QSize size = QSize(800, 600))
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::white);
        handlers.at(index)({image, std::nullopt, ThumbnailSource::rendered});
    }

    QStringList started;
    QList<Handler> handlers;
};
