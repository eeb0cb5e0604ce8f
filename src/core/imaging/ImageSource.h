#pragma once

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

    int imageCount() const;
    // The properties of image `index`; only image 0 carries metadata, others are empty.
    QVariantMap propertiesAtIndex(int index) const;

private:
    struct Private;
    explicit ImageSource(std::unique_ptr<Private> d);
    std::unique_ptr<Private> m_d;
};

// Keys of the property dictionaries.
namespace ImagePropertyKey {
inline constexpr char PixelWidth[] = "PixelWidth";
inline constexpr char PixelHeight[] = "PixelHeight";
inline constexpr char Depth[] = "Depth";
inline constexpr char HasAlpha[] = "HasAlpha";
inline constexpr char ColorModel[] = "ColorModel";
inline constexpr char ProfileName[] = "ProfileName";
inline constexpr char NamedColorSpace[] = "NamedColorSpace";
inline constexpr char Orientation[] = "Orientation";
inline constexpr char DPIWidth[] = "DPIWidth";
inline constexpr char DPIHeight[] = "DPIHeight";

inline constexpr char ExifDictionary[] = "{Exif}";
inline constexpr char ExifAuxDictionary[] = "{ExifAux}";
inline constexpr char IPTCDictionary[] = "{IPTC}";
inline constexpr char GPSDictionary[] = "{GPS}";
inline constexpr char TIFFDictionary[] = "{TIFF}";
} // namespace ImagePropertyKey
