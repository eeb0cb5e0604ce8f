#include "core/imaging/ImageHeaderReader.h"

#include "core/imaging/NativeFile.h"

#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QtEndian>

#include <array>
#include <climits>
#include <cstring>

namespace {

// Reads further into the file at least this much at a time, so that a long run of metadata
// segments costs few system calls.
constexpr qint64 ReadChunk = 64 * 1024;
// libjpeg skips stray bytes between segments; a file that has more of them than this in a row
// is not a JPEG worth trusting.
constexpr qint64 MaxStrayBytes = 64 * 1024;
// Real PNG files carry a handful of chunks before their image data; this bounds a crafted one.
constexpr int MaxPngChunks = 4096;

constexpr std::array RawExtensions = {"cr2", "cr3", "nef", "arw", "dng", "orf", "rw2", "raf", "pef", "srw"};
// ISO base media brands of still images that libheif reads.
constexpr std::array HeifBrands = {"heic", "heix", "hevc", "hevx", "heim", "heis",
                                   "hevm", "hevs", "mif1", "msf1", "avif", "avis"};

bool startsWith(const QByteArray &bytes, const char *prefix, qsizetype length)
{
    return bytes.size() >= length && std::memcmp(bytes.constData(), prefix, size_t(length)) == 0;
}

quint32 be32(const char *bytes)
{
    return qFromBigEndian<quint32>(bytes);
}

bool isCameraRawName(const QString &typeHint, const QByteArray &nativePath)
{
    // Every camera raw type identifier ends so ("com.canon.cr2-raw-image", "public.camera-raw-image").
    if (typeHint.endsWith(QLatin1String("raw-image")))
        return true;
    const qsizetype dot = nativePath.lastIndexOf('.');
    if (dot < 0 || nativePath.indexOf('/', dot) >= 0)
        return false;
    const QByteArray extension = nativePath.mid(dot + 1).toLower();
    for (const char *raw : RawExtensions) {
        if (extension == raw)
            return true;
    }
    return false;
}

// The 'ftyp' box: its major brand or any compatible brand names a still-image HEIF family.
bool isHeif(const QByteArray &head, bool *cameraRaw)
{
    if (head.size() < 16 || head.mid(4, 4) != "ftyp")
        return false;
    const qsizetype boxSize = qMin<qsizetype>(be32(head.constData()), head.size());
    for (qsizetype offset = 8; offset + 4 <= boxSize; offset += 4) {
        if (offset == 12)
            continue; // minor version, not a brand
        const QByteArray brand = head.mid(offset, 4);
        if (brand == "crx ") {
            *cameraRaw = true;
            return false;
        }
        for (const char *heif : HeifBrands) {
            if (brand == heif)
                return true;
        }
    }
    return false;
}

bool isJpegFrameMarker(uchar marker)
{
    // SOF0..SOF15 except DHT (C4), JPG (C8) and DAC (CC).
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// The file from its start, read further on demand.
class ByteWindow
{
public:
    ByteWindow(const NativeFile &file, const QByteArray &head)
        : m_file(file)
        , m_bytes(head)
    { }

    bool ensure(qint64 end)
    {
        if (end <= m_bytes.size())
            return true;
        if (end > m_file.size())
            return false;
        m_bytes.append(m_file.read(m_bytes.size(), qMax(end - m_bytes.size(), ReadChunk)));
        return end <= m_bytes.size();
    }
    uchar at(qint64 i) const { return uchar(m_bytes.at(qsizetype(i))); }
    quint16 be16(qint64 i) const { return quint16(at(i) << 8 | at(i + 1)); }
    const char *data(qint64 i) const { return m_bytes.constData() + i; }
    QByteArray left(qint64 length) const { return m_bytes.left(qsizetype(length)); }

private:
    const NativeFile &m_file;
    QByteArray m_bytes;
};

QString jpegColorModel(int components)
{
    switch (components) {
    case 1: return QStringLiteral("Gray");
    case 3: return QStringLiteral("RGB"); // YCbCr is shown as RGB
    case 4: return QStringLiteral("CMYK"); // CMYK or YCCK
    default: return {};
    }
}

void readJfifDensity(const ByteWindow &w, qint64 payload, ImageHeader *header)
{
    // "JFIF\0", version (2 bytes), units, X density, Y density.
    const int units = w.at(payload + 7);
    const double x = w.be16(payload + 8);
    const double y = w.be16(payload + 10);
    if (x <= 0 || y <= 0)
        return;
    const double perInch = units == 1 ? 1.0 : units == 2 ? 2.54 : 0.0; // 0: aspect ratio only
    if (perInch > 0) {
        header->dpiWidth = x * perInch;
        header->dpiHeight = y * perInch;
    }
}

void applyQtFormat(QImage::Format format, ImageHeader *header)
{
    auto set = [header](const char *model, int depth, std::optional<bool> alpha) {
        header->colorModel = QString::fromLatin1(model);
        header->depth = depth;
        header->hasAlpha = alpha;
    };
    switch (format) {
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB: set("Gray", 1, false); break;
    case QImage::Format_Grayscale8: set("Gray", 8, false); break;
    case QImage::Format_Grayscale16: set("Gray", 16, false); break;
    case QImage::Format_Indexed8: set("RGB", 8, std::nullopt); break; // the palette may be transparent
    case QImage::Format_RGB32:
    case QImage::Format_RGB888:
    case QImage::Format_BGR888:
    case QImage::Format_RGBX8888: set("RGB", 8, false); break;
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
    case QImage::Format_RGBA8888:
    case QImage::Format_RGBA8888_Premultiplied: set("RGB", 8, true); break;
    case QImage::Format_BGR30:
    case QImage::Format_RGB30: set("RGB", 10, false); break;
    case QImage::Format_A2BGR30_Premultiplied:
    case QImage::Format_A2RGB30_Premultiplied: set("RGB", 10, true); break;
    case QImage::Format_RGBX64: set("RGB", 16, false); break;
    case QImage::Format_RGBA64:
    case QImage::Format_RGBA64_Premultiplied: set("RGB", 16, true); break;
    case QImage::Format_RGBX16FPx4: set("RGB", 16, false); break;
    case QImage::Format_RGBA16FPx4:
    case QImage::Format_RGBA16FPx4_Premultiplied: set("RGB", 16, true); break;
    case QImage::Format_RGBX32FPx4: set("RGB", 32, false); break;
    case QImage::Format_RGBA32FPx4:
    case QImage::Format_RGBA32FPx4_Premultiplied: set("RGB", 32, true); break;
    default: break; // packed 16-bit and odd formats: nothing certain to say
    }
}

// Qt's WebP plugin reports no pixel format; the first chunk says whether there is alpha.
void readWebpLayout(const QByteArray &head, ImageHeader *header)
{
    if (head.size() < 30 || !startsWith(head, "RIFF", 4) || head.mid(8, 4) != "WEBP")
        return;
    const QByteArray chunk = head.mid(12, 4);
    if (chunk == "VP8X") // extended: flags byte, alpha is bit 4
        header->hasAlpha = (uchar(head.at(20)) & 0x10) != 0;
    else if (chunk == "VP8L") // lossless: signature, 14-bit width and height, then the alpha hint
        header->hasAlpha = (uchar(head.at(24)) & 0x10) != 0;
    else if (chunk == "VP8 ") // lossy without alpha
        header->hasAlpha = false;
    else
        return;
    header->depth = 8;
    header->colorModel = QStringLiteral("RGB");
}

} // namespace

namespace ImageHeaderReader {

ImageFormat detectFormat(const QByteArray &head, const QString &typeHint, const QByteArray &nativePath)
{
    if (startsWith(head, "\xFF\xD8\xFF", 3))
        return ImageFormat::Jpeg;
    if (startsWith(head, "\x89PNG\r\n\x1A\n", 8))
        return ImageFormat::Png;
    bool cameraRaw = false;
    if (isHeif(head, &cameraRaw))
        return ImageFormat::Heif;
    // Fujifilm RAF, Olympus ORF and Panasonic RW2 have signatures of their own; CR3 is an ISO
    // media file of brand "crx ".
    if (cameraRaw || startsWith(head, "FUJIFILMCCD-RAW", 15) || startsWith(head, "IIRO", 4)
        || startsWith(head, "IIRS", 4) || startsWith(head, "MMOR", 4) || startsWith(head, "IIU\0", 4))
        return ImageFormat::CameraRaw;
    if (startsWith(head, "II*\0", 4) || startsWith(head, "MM\0*", 4))
        return isCameraRawName(typeHint, nativePath) ? ImageFormat::CameraRaw : ImageFormat::Tiff;
    return isCameraRawName(typeHint, nativePath) ? ImageFormat::CameraRaw : ImageFormat::Other;
}

bool readJpeg(const NativeFile &file, const QByteArray &head, ImageHeader *header, QByteArray *metadataBytes,
              QString *error)
{
    ByteWindow w(file, head);
    if (!w.ensure(3) || w.at(0) != 0xFF || w.at(1) != 0xD8) {
        *error = QStringLiteral("not a JPEG file");
        return false;
    }
    bool haveFrame = false;
    qint64 pos = 2;
    qint64 strayBytes = 0;
    qint64 end = -1;
    while (end < 0) {
        if (!w.ensure(pos + 2))
            break; // the file ends before its first scan
        if (w.at(pos) != 0xFF) {
            if (++strayBytes > MaxStrayBytes)
                break;
            ++pos;
            continue;
        }
        strayBytes = 0;
        const uchar marker = w.at(pos + 1);
        if (marker == 0xFF) { // fill byte
            ++pos;
            continue;
        }
        if (marker == 0x00 || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) {
            pos += 2; // markers without a length
            continue;
        }
        if (marker == 0xD9) { // end of image before any scan
            end = pos + 2;
            break;
        }
        if (!w.ensure(pos + 4))
            break;
        const int length = w.be16(pos + 2);
        if (length < 2) {
            *error = QStringLiteral("invalid JPEG segment length at offset %1").arg(pos);
            return false;
        }
        const qint64 payload = pos + 4;
        if (isJpegFrameMarker(marker) && !haveFrame) {
            // Precision, height, width, number of components.
            if (length < 8 || !w.ensure(payload + 6))
                break;
            const int precision = w.at(payload);
            const int components = w.at(payload + 5);
            header->width = w.be16(payload + 3);
            header->height = w.be16(payload + 1); // 0: given later by a DNL marker
            if (precision < 1 || precision > 16 || header->width == 0 || components == 0) {
                *error = QStringLiteral("invalid JPEG frame header");
                return false;
            }
            header->depth = precision;
            header->colorModel = jpegColorModel(components);
            header->hasAlpha = false;
            haveFrame = true;
        } else if (marker == 0xE0 && length >= 14 && w.ensure(payload + 12)
                   && std::memcmp(w.data(payload), "JFIF\0", 5) == 0) {
            readJfifDensity(w, payload, header);
        }
        if (marker == 0xDA) { // start of scan: every header segment has been seen
            end = qMin(payload + length - 2, file.size());
            break;
        }
        pos = payload + length - 2;
    }
    if (!haveFrame) {
        *error = QStringLiteral("no JPEG frame header before the image data");
        return false;
    }
    if (end < 0)
        end = qMin(pos, file.size());
    w.ensure(end);
    *metadataBytes = w.left(end);
    return true;
}

bool readPng(const NativeFile &file, const QByteArray &head, ImageHeader *header, QString *error)
{
    // Signature, then IHDR: length 13, "IHDR", width, height, bit depth, colour type, ...
    if (head.size() < 33 || be32(head.constData() + 8) != 13 || head.mid(12, 4) != "IHDR") {
        *error = QStringLiteral("invalid PNG header");
        return false;
    }
    const quint32 width = be32(head.constData() + 16);
    const quint32 height = be32(head.constData() + 20);
    const int bitDepth = uchar(head.at(24));
    const int colorType = uchar(head.at(25));
    const bool validDepth = bitDepth == 1 || bitDepth == 2 || bitDepth == 4 || bitDepth == 8 || bitDepth == 16;
    const bool validType = colorType == 0 || colorType == 2 || colorType == 3 || colorType == 4 || colorType == 6;
    if (width == 0 || height == 0 || width > INT_MAX || height > INT_MAX || !validDepth || !validType) {
        *error = QStringLiteral("invalid PNG header");
        return false;
    }
    header->width = int(width);
    header->height = int(height);
    header->depth = colorType == 3 ? 8 : bitDepth; // palette entries are 8-bit samples
    header->colorModel = colorType == 0 || colorType == 4 ? QStringLiteral("Gray") : QStringLiteral("RGB");
    header->hasAlpha = colorType == 4 || colorType == 6;

    // The chunks before the image data: transparency, density and animation.
    qint64 offset = 33;
    for (int i = 0; i < MaxPngChunks; ++i) {
        const QByteArray chunk = offset + 20 <= head.size() ? head.mid(offset, 20) : file.read(offset, 20);
        if (chunk.size() < 8)
            break;
        const quint32 length = be32(chunk.constData());
        const QByteArray type = chunk.mid(4, 4);
        if (type == "IDAT" || type == "IEND")
            break;
        if (type == "tRNS") {
            header->hasAlpha = true;
        } else if (type == "pHYs" && length >= 9 && chunk.size() >= 17 && chunk.at(16) == 1) {
            // Pixels per metre; DPI values are whole numbers by convention (2835 -> 72).
            header->dpiWidth = qRound(be32(chunk.constData() + 8) * 0.0254);
            header->dpiHeight = qRound(be32(chunk.constData() + 12) * 0.0254);
        } else if (type == "acTL" && length >= 8 && chunk.size() >= 12) {
            header->imageCount = int(qMin<quint32>(be32(chunk.constData() + 8), INT_MAX));
        }
        offset += 12 + qint64(length); // length, type, data, CRC
    }
    return true;
}

bool readWithQt(const NativeFile &file, const QByteArray &head, ImageHeader *header, QString *error)
{
    QFile device;
    if (!device.open(file.handle(), QIODevice::ReadOnly, QFileDevice::DontCloseHandle)) {
        *error = device.errorString();
        return false;
    }
    QImageReader reader(&device);
    if (!reader.canRead()) {
        *error = reader.errorString();
        return false;
    }
    const int count = reader.imageCount();
    header->imageCount = count < 0 ? 1 : count;
    const QSize size = reader.size();
    if (size.isValid()) {
        header->width = size.width();
        header->height = size.height();
    }
    applyQtFormat(reader.imageFormat(), header);
    readWebpLayout(head, header);
    return true;
}

} // namespace ImageHeaderReader
