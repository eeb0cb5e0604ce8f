#pragma once

#include "core/model/ImagePropertyKeys.h"

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <memory>

// An image file opened for its facts: how many images it holds and the property dictionary of
// image 0, as nested maps keyed like the platform image library's property dictionaries
// (top-level "PixelWidth", "Orientation", ...; groups "{Exif}", "{ExifAux}", "{IPTC}", "{GPS}",
// "{TIFF}"). Metadata comes from Exiv2, pixel size, depth, alpha and colour model from the
// format's header. Never decodes pixels. Safe to use from any thread, one object per thread.
class ImageSource
{
public:
    ~ImageSource();
    ImageSource(const ImageSource &) = delete;
    ImageSource &operator=(const ImageSource &) = delete;

    // Opens `nativePath` (file-system bytes, so that names that are not UTF-8 still open).
    // `typeHint` is the file's type identifier ("public.jpeg", ...); it may be empty or wrong.
    // Answers null, with a reason in `error`, when the file cannot be read as an image.
    static std::unique_ptr<ImageSource> create(const QByteArray &nativePath, const QString &typeHint = {},
                                               QString *error = nullptr);
    static std::unique_ptr<ImageSource> create(const QString &path, const QString &typeHint = {},
                                               QString *error = nullptr);

    // Makes file records read their image facts through this class. Every program calls it once
    // at start-up, before the first record is asked for an image fact; idempotent.
    static void install();

    int imageCount() const;
    // The properties of image `index`; only image 0 carries metadata, others are empty.
    QVariantMap propertiesAtIndex(int index) const;

private:
    struct Private;
    explicit ImageSource(std::unique_ptr<Private> d);
    std::unique_ptr<Private> m_d;
};
