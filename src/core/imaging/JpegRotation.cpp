#include "core/imaging/JpegRotation.h"

#include "core/app/Translate.h"
#include "core/fs/operations/ZQItemCopier.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QTransform>

#include <exiv2/exiv2.hpp>
#include <turbojpeg.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace JpegRotation {

namespace {

constexpr Translator tr("JpegRotation");

// 95: a re-encode the eye cannot tell from the original, chosen only when the user asked for it.
constexpr int reencodeQuality = 95;
// 90: what cameras use for their EXIF thumbnails.
constexpr int thumbnailQuality = 90;

// A transform of the plane as a matrix on (x, y), y pointing down: x' = a x + b y, y' = c x + d y.
struct Matrix
{
    int a, b, c, d;
    bool operator==(const Matrix &) const = default;
    Matrix after(const Matrix &first) const // this ∘ first
    {
        return {a * first.a + b * first.c, a * first.b + b * first.d, c * first.a + d * first.c,
                c * first.b + d * first.d};
    }
    QTransform transform() const { return QTransform(a, c, b, d, 0, 0); }
    bool swapsSides() const { return a == 0; }
};

// libjpeg-turbo's operations, and the EXIF orientation (1 to 8) each one displays.
struct Operation
{
    int op;
    Matrix matrix;
    int orientation;
};
constexpr std::array<Operation, 8> operations{{
    {TJXOP_NONE, {1, 0, 0, 1}, 1},
    {TJXOP_HFLIP, {-1, 0, 0, 1}, 2},
    {TJXOP_ROT180, {-1, 0, 0, -1}, 3},
    {TJXOP_VFLIP, {1, 0, 0, -1}, 4},
    {TJXOP_TRANSPOSE, {0, 1, 1, 0}, 5},
    {TJXOP_ROT90, {0, -1, 1, 0}, 6},
    {TJXOP_TRANSVERSE, {0, -1, -1, 0}, 7},
    {TJXOP_ROT270, {0, 1, -1, 0}, 8},
}};

const Operation &forOrientation(int orientation)
{
    return operations[size_t(orientation >= 1 && orientation <= 8 ? orientation - 1 : 0)];
}

const Operation &forMatrix(const Matrix &matrix)
{
    for (const Operation &operation : operations) {
        if (operation.matrix == matrix)
            return operation;
    }
    return operations[0];
}

Matrix turnMatrix(Turn turn)
{
    switch (turn) {
    case Turn::clockwise: return forOrientation(6).matrix;
    case Turn::counterclockwise: return forOrientation(8).matrix;
    case Turn::halfTurn: return forOrientation(3).matrix;
    }
    return forOrientation(1).matrix;
}

QByteArray encoded(const QImage &image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    return writer.write(image) ? bytes : QByteArray();
}

// Drops the multi-picture index (APP2 "MPF"): the pictures it points at are not in the new file.
QByteArray withoutMultiPictureIndex(const QByteArray &jpeg)
{
    QByteArray out = jpeg.left(2);
    qsizetype at = 2;
    while (at + 4 <= jpeg.size() && uchar(jpeg[at]) == 0xFF) {
        const uchar marker = uchar(jpeg[at + 1]);
        if (marker == 0xDA || marker == 0xD9) // the scan: the rest is image data
            break;
        const qsizetype length = (uchar(jpeg[at + 2]) << 8) | uchar(jpeg[at + 3]);
        const bool mpf = marker == 0xE2 && jpeg.mid(at + 4, 4) == QByteArray("MPF\0", 4);
        if (!mpf)
            out += jpeg.mid(at, 2 + length);
        at += 2 + length;
    }
    return out + jpeg.mid(at);
}

// The metadata of the turned picture: orientation 1 (or `orientation`), the thumbnail turned
// by `matrix`, the pixel dimensions following. `source` gives the metadata when `jpeg` lost it
// (a re-encode). Empty with `error` set when Exiv2 fails.
QByteArray withMetadata(const QByteArray &jpeg, const QByteArray &source, const Matrix &matrix, int orientation,
                        QString &error)
{
    try {
        Exiv2::Image::AutoPtr image =
            Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte *>(jpeg.constData()), long(jpeg.size()));
        image->readMetadata();
        if (!source.isEmpty()) {
            Exiv2::Image::AutoPtr original =
                Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte *>(source.constData()),
                                          long(source.size()));
            original->readMetadata();
            image->setExifData(original->exifData());
            image->setIptcData(original->iptcData());
            image->setXmpData(original->xmpData());
        }
        Exiv2::ExifData &exif = image->exifData();
        if (exif.empty() && orientation == 1)
            return jpeg;
        exif["Exif.Image.Orientation"] = uint16_t(orientation);
        if (image->xmpData().findKey(Exiv2::XmpKey("Xmp.tiff.Orientation")) != image->xmpData().end())
            image->xmpData()["Xmp.tiff.Orientation"] = std::to_string(orientation);
        if (matrix.swapsSides()) {
            const auto width = exif.findKey(Exiv2::ExifKey("Exif.Photo.PixelXDimension"));
            const auto height = exif.findKey(Exiv2::ExifKey("Exif.Photo.PixelYDimension"));
            if (width != exif.end() && height != exif.end()) {
                const uint32_t w = uint32_t(width->toLong());
                const uint32_t h = uint32_t(height->toLong());
                exif["Exif.Photo.PixelXDimension"] = h;
                exif["Exif.Photo.PixelYDimension"] = w;
            }
        }
        Exiv2::ExifThumb thumbnail(exif);
        const Exiv2::DataBuf thumbnailBytes = thumbnail.copy();
        if (thumbnailBytes.size_ > 0 && !(matrix == forOrientation(1).matrix)) {
            const QImage small = QImage::fromData(
                QByteArray(reinterpret_cast<const char *>(thumbnailBytes.pData_), thumbnailBytes.size_));
            const QByteArray turned =
                small.isNull() ? QByteArray() : encoded(small.transformed(matrix.transform()), thumbnailQuality);
            if (!turned.isEmpty())
                thumbnail.setJpegThumbnail(reinterpret_cast<const Exiv2::byte *>(turned.constData()),
                                           long(turned.size()));
            else
                thumbnail.erase(); // a thumbnail that no longer matches is worse than none
        }
        image->writeMetadata();
        Exiv2::BasicIo &io = image->io();
        io.open();
        const Exiv2::DataBuf written = io.read(long(io.size()));
        io.close();
        return withoutMultiPictureIndex(QByteArray(reinterpret_cast<const char *>(written.pData_), written.size_));
    } catch (const std::exception &e) {
        error = tr("Its metadata could not be rewritten: %1").arg(QString::fromUtf8(e.what()));
        return {};
    }
}

int orientationOf(const QByteArray &jpeg)
{
    try {
        Exiv2::Image::AutoPtr image =
            Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte *>(jpeg.constData()), long(jpeg.size()));
        image->readMetadata();
        const auto found = image->exifData().findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
        const long value = found != image->exifData().end() ? found->toLong() : 1;
        return value >= 1 && value <= 8 ? int(value) : 1;
    } catch (const std::exception &) {
        return 1;
    }
}

class Transformer
{
public:
    Transformer()
        : m_handle(tjInitTransform())
    { }
    ~Transformer()
    {
        if (m_handle)
            tjDestroy(m_handle);
    }
    Transformer(const Transformer &) = delete;
    Transformer &operator=(const Transformer &) = delete;

    // The blocks moved by `op`; empty when that is impossible without losing an edge.
    QByteArray transform(const QByteArray &jpeg, int op, QString &error)
    {
        if (!m_handle)
            return {};
        unsigned char *out = nullptr;
        unsigned long outSize = 0;
        tjtransform transform;
        std::memset(&transform, 0, sizeof transform);
        transform.op = op;
        transform.options = TJXOPT_PERFECT;
        const int status = tjTransform(m_handle, reinterpret_cast<const unsigned char *>(jpeg.constData()),
                                       static_cast<unsigned long>(jpeg.size()), 1, &out, &outSize, &transform, 0);
        QByteArray bytes;
        if (status == 0)
            bytes = QByteArray(reinterpret_cast<const char *>(out), qsizetype(outSize));
        else
            error = QString::fromLatin1(tjGetErrorStr2(m_handle));
        tjFree(out);
        return bytes;
    }

private:
    tjhandle m_handle;
};

} // namespace

QByteArray rotated(const QByteArray &jpeg, Turn turn, Fallback fallback, Result &result)
{
    result = {};
    const int orientation = orientationOf(jpeg);
    const Matrix shown = forOrientation(orientation).matrix;
    const Matrix wanted = turnMatrix(turn).after(shown);
    const Operation &operation = forMatrix(wanted);

    Transformer transformer;
    QString libraryError;
    QByteArray moved = transformer.transform(jpeg, operation.op, libraryError);
    if (!moved.isEmpty()) {
        QByteArray bytes = withMetadata(moved, {}, wanted, 1, result.error);
        result.kind = bytes.isEmpty() ? Result::Kind::failed : Result::Kind::lossless;
        return bytes;
    }
    const bool imperfect = libraryError.contains(QLatin1String("perfect"), Qt::CaseInsensitive);
    if (!imperfect) {
        result.error = tr("It is not a JPEG picture that can be read: %1").arg(libraryError);
        return {};
    }
    switch (fallback) {
    case Fallback::refuse:
        result.error = tr("Its width or height is not a whole number of blocks, so it can’t be turned without "
                          "losing quality or cropping its edge.");
        return {};
    case Fallback::orientationTag: {
        // The pixels stay; only how they are shown changes.
        QByteArray bytes =
            withMetadata(jpeg, {}, forOrientation(1).matrix, forMatrix(wanted).orientation, result.error);
        result.kind = bytes.isEmpty() ? Result::Kind::failed : Result::Kind::orientationTagOnly;
        return bytes;
    }
    case Fallback::reencode: {
        const QImage image = QImage::fromData(jpeg, "JPEG");
        if (image.isNull()) {
            result.error = tr("It is not a JPEG picture that can be read.");
            return {};
        }
        const QByteArray pixels = encoded(image.transformed(wanted.transform()), reencodeQuality);
        QByteArray bytes = pixels.isEmpty() ? QByteArray() : withMetadata(pixels, jpeg, wanted, 1, result.error);
        result.kind = bytes.isEmpty() ? Result::Kind::failed : Result::Kind::reencoded;
        return bytes;
    }
    }
    return {};
}

Result rotateFile(const QString &path, Turn turn, Fallback fallback)
{
    Result result;
    const QByteArray nativePath = QFile::encodeName(path);
    const QString name = QFileInfo(path).fileName();
    const auto failed = [&](const QString &why) {
        result.kind = Result::Kind::failed;
        result.error = tr("“%1” couldn’t be turned. %2").arg(name, why);
        return result;
    };
    const int in = ::open(nativePath.constData(), O_RDONLY | O_CLOEXEC);
    struct stat before
    { };
    if (in < 0 || ::fstat(in, &before) != 0) {
        if (in >= 0)
            ::close(in);
        return failed(QString::fromLocal8Bit(std::strerror(errno)));
    }
    QFile file;
    file.open(in, QIODevice::ReadOnly, QFileDevice::DontCloseHandle);
    const QByteArray original = file.readAll();
    file.close();
    const QByteArray bytes = rotated(original, turn, fallback, result);
    if (bytes.isEmpty()) {
        ::close(in);
        return failed(result.error);
    }
    // Written beside the original and renamed over it: the picture is whole at every moment.
    const int error = ZQItemCopier::replaceContents(nativePath, in, before, bytes);
    ::close(in);
    if (error == ECANCELED)
        return failed(tr("It changed while it was being turned."));
    if (error != 0)
        return failed(QString::fromLocal8Bit(std::strerror(error)));
    return result;
}

} // namespace JpegRotation
