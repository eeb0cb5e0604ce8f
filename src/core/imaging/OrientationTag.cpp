#include "core/imaging/OrientationTag.h"

#include "core/app/Translate.h"

#include <exiv2/exiv2.hpp>

#include <array>

namespace OrientationTag {

namespace {
constexpr Translator tr("OrientationTag");
// A clockwise quarter turn of what each orientation shows: 1 → 6 (turned right), 2 (mirrored)
// → 7 (mirrored, then turned right), and so on round the eight.
constexpr std::array<int, 9> clockwiseOf{0, 6, 7, 8, 5, 2, 3, 4, 1};
} // namespace

int turned(int orientation, bool clockwise)
{
    const int from = orientation >= 1 && orientation <= 8 ? orientation : 1;
    if (clockwise)
        return clockwiseOf[size_t(from)];
    for (int candidate = 1; candidate <= 8; ++candidate) {
        if (clockwiseOf[size_t(candidate)] == from)
            return candidate;
    }
    return 1;
}

QByteArray turnedFile(const QByteArray &bytes, bool clockwise, QString &error)
{
    try {
        Exiv2::Image::AutoPtr image =
            Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte *>(bytes.constData()), long(bytes.size()));
        image->readMetadata();
        Exiv2::ExifData &exif = image->exifData();
        const auto found = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
        const int orientation = found != exif.end() ? int(found->toLong()) : 1;
        const int next = turned(orientation, clockwise);
        exif["Exif.Image.Orientation"] = uint16_t(next);
        if (image->xmpData().findKey(Exiv2::XmpKey("Xmp.tiff.Orientation")) != image->xmpData().end())
            image->xmpData()["Xmp.tiff.Orientation"] = std::to_string(next);
        image->writeMetadata();
        Exiv2::BasicIo &io = image->io();
        io.open();
        const Exiv2::DataBuf written = io.read(long(io.size()));
        io.close();
        if (written.size_ <= 0) {
            error = tr("Its metadata could not be written.");
            return {};
        }
        return QByteArray(reinterpret_cast<const char *>(written.pData_), written.size_);
    } catch (const std::exception &e) {
        error = tr("Its format can’t be turned without loss: %1").arg(QString::fromUtf8(e.what()));
        return {};
    }
}

} // namespace OrientationTag
