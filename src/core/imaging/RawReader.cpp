#include "core/imaging/RawReader.h"

#include <libraw/libraw.h>

#include <memory>

namespace {
struct RawDeleter
{
    void operator()(libraw_data_t *raw) const { libraw_close(raw); }
};
} // namespace

namespace RawReader {

bool read(const QByteArray &nativePath, ImageHeader *header, QString *error)
{
    // Without these flags LibRaw reports damaged data and memory errors on stderr itself.
    std::unique_ptr<libraw_data_t, RawDeleter> raw(
        libraw_init(LIBRAW_OPIONS_NO_MEMERR_CALLBACK | LIBRAW_OPIONS_NO_DATAERR_CALLBACK));
    if (!raw) {
        *error = QStringLiteral("out of memory");
        return false;
    }
    const int result = libraw_open_file(raw.get(), nativePath.constData());
    if (result != LIBRAW_SUCCESS) {
        *error = QString::fromUtf8(libraw_strerror(result));
        return false;
    }
    header->width = raw->sizes.width;
    header->height = raw->sizes.height;
    if (header->width <= 0 || header->height <= 0) {
        *error = QStringLiteral("camera raw file without an image size");
        return false;
    }
    // LibRaw develops every raw file into 16-bit RGB samples.
    header->depth = 16;
    header->colorModel = QStringLiteral("RGB");
    header->hasAlpha = false;
    return true;
}

} // namespace RawReader
