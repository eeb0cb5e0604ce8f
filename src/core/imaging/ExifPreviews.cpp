#include "core/imaging/ExifPreviews.h"

#include "core/imaging/ExifReader.h"

#include <exiv2/exiv2.hpp>

namespace ExifPreviews {

Preview best(const QByteArray &nativePath, int neededPixels, QString *error)
{
    ExifReader::initialize();
    try {
        Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(std::string(nativePath.constData()));
        if (!image.get())
            throw Exiv2::Error(Exiv2::kerFileContainsUnknownImageType);
        {
            const auto lock = ExifReader::lockXmpParsing();
            image->readMetadata();
        }
        Exiv2::PreviewManager manager(*image);
        const Exiv2::PreviewPropertiesList list = manager.getPreviewProperties(); // smallest first
        if (list.empty()) {
            *error = QStringLiteral("no embedded preview");
            return {};
        }
        const Exiv2::PreviewProperties *chosen = &list.back();
        for (const Exiv2::PreviewProperties &properties : list) {
            if (int(qMax(properties.width_, properties.height_)) >= neededPixels) {
                chosen = &properties;
                break;
            }
        }
        const Exiv2::PreviewImage preview = manager.getPreviewImage(*chosen);
        Preview result;
        result.data = QByteArray(reinterpret_cast<const char *>(preview.pData()), qsizetype(preview.size()));
        result.width = int(preview.width());
        result.height = int(preview.height());
        const Exiv2::ExifData &exif = image->exifData();
        const auto orientation = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
        if (orientation != exif.end() && orientation->count() > 0)
            result.orientation = int(orientation->toLong());
        return result;
    } catch (const Exiv2::AnyError &e) {
        *error = QString::fromUtf8(e.what());
    } catch (const std::exception &e) {
        *error = QStringLiteral("preview reader failed: ") + QString::fromUtf8(e.what());
    } catch (...) {
        *error = QStringLiteral("preview reader failed");
    }
    return {};
}

} // namespace ExifPreviews
