#include "core/imaging/JpegRotation.h"

#include "core/app/Translate.h"
#include "core/fs/operations/ZQItemCopier.h"
#include "core/imaging/CoefficientArena.h"
#include "core/imaging/LosslessJpegTransform.h"
#include "core/imaging/TiffView.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QTransform>

#include <exiv2/exiv2.hpp>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

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

using Move = LosslessJpegTransform::Operation;

// The moves of the blocks, and the EXIF orientation (1 to 8) each one displays.
struct Operation
{
    Move op;
    Matrix matrix;
    int orientation;
};
constexpr std::array<Operation, 8> operations{{
    {Move::none, {1, 0, 0, 1}, 1},
    {Move::flipHorizontal, {-1, 0, 0, 1}, 2},
    {Move::rotate180, {-1, 0, 0, -1}, 3},
    {Move::flipVertical, {1, 0, 0, -1}, 4},
    {Move::transpose, {0, 1, 1, 0}, 5},
    {Move::rotate90, {0, -1, 1, 0}, 6},
    {Move::transverse, {0, -1, -1, 0}, 7},
    {Move::rotate270, {0, 1, -1, 0}, 8},
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

int orientationOfByExiv2(const QByteArray &jpeg)
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

// The EXIF thumbnail turned by `op`: its blocks moved when they can be, else decoded, turned and
// encoded again (a thumbnail of a few kilobytes). Empty when it cannot be read.
QByteArray turnedThumbnail(const QByteArray &thumbnail, const Operation &operation)
{
    CoefficientArena arena;
    QByteArray moved;
    if (LosslessJpegTransform::transform(thumbnail, operation.op, arena, moved).outcome
        == LosslessJpegTransform::Outcome::done)
        return moved;
    const QImage small = QImage::fromData(thumbnail);
    return small.isNull() ? QByteArray() : encoded(small.transformed(operation.matrix.transform()), thumbnailQuality);
}

// One marker segment before the first scan: where its 0xFF is and its size with the marker.
struct Segment
{
    uchar marker = 0;
    qsizetype at = 0;
    qsizetype size = 0;
};

std::vector<Segment> segmentsOf(const QByteArray &jpeg)
{
    std::vector<Segment> segments;
    qsizetype at = 2;
    while (at + 4 <= jpeg.size() && uchar(jpeg[at]) == 0xFF) {
        const uchar marker = uchar(jpeg[at + 1]);
        if (marker == 0xDA || marker == 0xD9)
            break;
        const qsizetype length = (uchar(jpeg[at + 2]) << 8) | uchar(jpeg[at + 3]);
        if (length < 2 || at + 2 + length > jpeg.size())
            break;
        segments.push_back({marker, at, 2 + length});
        at += 2 + length;
    }
    return segments;
}

bool startsWith(const QByteArray &jpeg, const Segment &segment, const char *prefix, qsizetype length)
{
    return segment.size >= 4 + length && std::memcmp(jpeg.constData() + segment.at + 4, prefix, size_t(length)) == 0;
}

bool isExif(const QByteArray &jpeg, const Segment &segment)
{
    return segment.marker == 0xE1 && startsWith(jpeg, segment, "Exif\0\0", 6);
}

bool isMultiPictureIndex(const QByteArray &jpeg, const Segment &segment)
{
    return segment.marker == 0xE2 && startsWith(jpeg, segment, "MPF\0", 4);
}

// An EXIF segment (APP1 with its marker) changed where it lies: values are written over in their
// own slots, so nothing else in it moves. Bounds-checked; a structure it does not expect makes it
// give up (`ok()` false) and the caller rewrites the metadata the long way.
class ExifSegment
{
public:
    explicit ExifSegment(QByteArray segment)
        : m_bytes(std::move(segment))
    {
        m_ok = tiff().valid();
        m_little = m_ok && tiff().isLittleEndian();
        if (!m_ok)
            return;
        m_ifd0 = u32(4);
        walk(m_ifd0, [&](quint32 tag, quint32 type, quint32 count, qint64 value) {
            if (tag == 0x0112 && type == 3 && count >= 1)
                m_orientationSlot = value;
            else if (tag == 0x8769 && count == 1)
                m_exifIfd = u32(value);
        });
    }

    bool ok() const { return m_ok; }
    const QByteArray &bytes() const { return m_bytes; }
    int orientation() const
    {
        const quint32 value = m_orientationSlot ? u16(m_orientationSlot) : 1;
        return value >= 1 && value <= 8 ? int(value) : 1;
    }

    // Orientation 1, the pixel dimensions swapped for a quarter turn, the thumbnail turned.
    bool fold(const Operation &operation)
    {
        if (m_orientationSlot)
            put16(m_orientationSlot, 1);
        if (operation.matrix.swapsSides() && m_exifIfd)
            m_ok = m_ok && swapDimensions(m_exifIfd, 0xA002, 0xA003);
        const quint32 ifd1 = m_ok ? nextIfd(m_ifd0) : 0;
        if (ifd1 == 0 || ifd1 == m_ifd0 || operation.op == Move::none)
            return m_ok;
        if (operation.matrix.swapsSides())
            m_ok = m_ok && swapDimensions(ifd1, 0x0100, 0x0101);
        qint64 offsetSlot = 0, lengthSlot = 0;
        walk(ifd1, [&](quint32 tag, quint32 type, quint32 count, qint64 value) {
            if (tag == 0x0201 && type == 4 && count == 1)
                offsetSlot = value;
            else if (tag == 0x0202 && type == 4 && count == 1)
                lengthSlot = value;
        });
        if (!m_ok || !offsetSlot || !lengthSlot)
            return m_ok;
        const quint32 offset = u32(offsetSlot);
        const quint32 length = u32(lengthSlot);
        if (!contains(offset, length) || length == 0)
            return m_ok = false;
        const QByteArray turned = turnedThumbnail(m_bytes.mid(tiffStart + offset, length), operation);
        if (turned.isEmpty())
            return m_ok = false;
        const qsizetype tiffSize = m_bytes.size() - tiffStart;
        if (turned.size() > qsizetype(length)) {
            // A thumbnail that grew goes to the end of the segment (its old place is left unused),
            // within a segment's 64 KB.
            const qsizetype end = qsizetype(offset) + length == tiffSize ? qsizetype(offset) : tiffSize;
            if (tiffStart + end + turned.size() > 0xFFFF + 2)
                return m_ok = false;
            m_bytes.truncate(tiffStart + end);
            m_bytes.append(turned);
            put32(offsetSlot, quint32(end));
            const qsizetype segmentLength = m_bytes.size() - 2;
            m_bytes[2] = char(segmentLength >> 8);
            m_bytes[3] = char(segmentLength & 0xFF);
        } else {
            char *at = m_bytes.data() + tiffStart + offset;
            std::memcpy(at, turned.constData(), size_t(turned.size()));
            std::memset(at + turned.size(), 0, size_t(length - turned.size()));
        }
        put32(lengthSlot, quint32(turned.size()));
        return m_ok;
    }

private:
    static constexpr qsizetype tiffStart = 10; // FF E1, the length, "Exif\0\0"

    // Made for each use: the segment's bytes grow when a thumbnail does.
    TiffView tiff() const { return TiffView(m_bytes, tiffStart, m_bytes.size()); }
    bool contains(qint64 offset, qint64 length) const { return tiff().contains(offset, length); }
    quint32 u16(qint64 offset) const { return tiff().u16(offset); }
    quint32 u32(qint64 offset) const { return tiff().u32(offset); }
    void put16(qint64 offset, quint32 value)
    {
        if (!contains(offset, 2))
            return;
        char *at = m_bytes.data() + tiffStart + offset;
        at[m_little ? 0 : 1] = char(value & 0xFF);
        at[m_little ? 1 : 0] = char((value >> 8) & 0xFF);
    }
    void put32(qint64 offset, quint32 value)
    {
        put16(offset + (m_little ? 0 : 2), value & 0xFFFF);
        put16(offset + (m_little ? 2 : 0), value >> 16);
    }
    template<typename F>
    void walk(quint32 offset, F entry) const
    {
        if (offset != 0)
            tiff().walkIfd(offset, entry);
    }
    quint32 nextIfd(quint32 offset) const
    {
        return tiff().walkIfd(offset, [](quint32, quint32, quint32, qint64) {});
    }
    // Swaps the values of two one-value tags (SHORT or LONG) of an IFD; false when one does not
    // fit the other's slot.
    bool swapDimensions(quint32 ifd, quint32 widthTag, quint32 heightTag)
    {
        qint64 slots[2] = {0, 0};
        quint32 types[2] = {0, 0};
        walk(ifd, [&](quint32 tag, quint32 type, quint32 count, qint64 value) {
            const int index = tag == widthTag ? 0 : tag == heightTag ? 1 : -1;
            if (index >= 0 && count == 1 && (type == 3 || type == 4)) {
                slots[index] = value;
                types[index] = type;
            }
        });
        if (!slots[0] || !slots[1])
            return true; // nothing to swap
        const auto read = [&](int i) { return types[i] == 3 ? u16(slots[i]) : u32(slots[i]); };
        const quint32 width = read(0), height = read(1);
        if ((types[0] == 3 && height > 0xFFFF) || (types[1] == 3 && width > 0xFFFF))
            return false;
        const auto write = [&](int i, quint32 value) {
            if (types[i] == 3)
                put16(slots[i], value);
            else
                put32(slots[i], value);
        };
        write(0, height);
        write(1, width);
        return true;
    }

    QByteArray m_bytes;
    bool m_ok = false;
    bool m_little = false;
    quint32 m_ifd0 = 0;
    quint32 m_exifIfd = 0;
    qint64 m_orientationSlot = 0;
};

// The turned file: the moved picture's bytes with the EXIF segment replaced and the multi-picture
// index left out, as pieces written one after another (no copy of the picture), or the whole file
// when it was made the long way.
struct Turned
{
    QByteArray moved; // a view of the workspace's output

    QByteArray exif;
    QByteArray whole;
    std::vector<QByteArrayView> pieces;

    QByteArray joined() const
    {
        if (pieces.empty())
            return whole;
        qsizetype size = 0;
        for (const QByteArrayView &piece : pieces)
            size += piece.size();
        QByteArray out;
        out.reserve(size);
        for (const QByteArrayView &piece : pieces)
            out.append(piece);
        return out;
    }
};

// The turned file in one pass over the transformed bytes: the EXIF segment changed in place, the
// multi-picture index left out, everything else as libjpeg-turbo wrote it. False when the
// metadata needs the long way (a thumbnail with no room, an XMP orientation to follow).
bool assemble(const Operation &operation, Turned &turned)
{
    const QByteArray &moved = turned.moved;
    const std::vector<Segment> segments = segmentsOf(moved);
    for (const Segment &segment : segments) {
        if (segment.marker == 0xE1 && startsWith(moved, segment, "http://ns.adobe.com/xap/1.0/", 28)
            && QByteArray::fromRawData(moved.constData() + segment.at, segment.size).contains("Orientation"))
            return false;
        if (turned.exif.isEmpty() && isExif(moved, segment)) {
            ExifSegment patched(moved.mid(segment.at, segment.size));
            if (!patched.fold(operation))
                return false;
            turned.exif = patched.bytes();
        }
    }
    qsizetype from = 0;
    bool exifDone = false;
    for (const Segment &segment : segments) {
        const bool replaced = !exifDone && !turned.exif.isEmpty() && isExif(moved, segment);
        if (!replaced && !isMultiPictureIndex(moved, segment))
            continue;
        turned.pieces.emplace_back(moved.constData() + from, segment.at - from);
        if (replaced) {
            turned.pieces.emplace_back(turned.exif);
            exifDone = true;
        }
        from = segment.at + segment.size;
    }
    turned.pieces.emplace_back(moved.constData() + from, moved.size() - from);
    return true;
}

// The orientation the EXIF states, read by our own parser; Exiv2's reading when the segment is
// not one it knows.
int orientationOf(const QByteArray &jpeg, bool &known)
{
    known = true;
    for (const Segment &segment : segmentsOf(jpeg)) {
        if (!isExif(jpeg, segment))
            continue;
        const ExifSegment exif(jpeg.mid(segment.at, segment.size));
        known = exif.ok();
        return known ? exif.orientation() : 1;
    }
    return 1;
}

} // namespace

namespace {

// What rotated() says, in pieces.
void turnInto(const QByteArray &jpeg, Turn turn, Fallback fallback, Result &result, Turned &turned,
              Workspace &workspace)
{
    result = {};
    bool known = false;
    int orientation = orientationOf(jpeg, known);
    if (!known)
        orientation = orientationOfByExiv2(jpeg);
    const Matrix shown = forOrientation(orientation).matrix;
    const Matrix wanted = turnMatrix(turn).after(shown);
    const Operation &operation = forMatrix(wanted);

    using LosslessJpegTransform::Outcome;
    const LosslessJpegTransform::Result moved =
        LosslessJpegTransform::transform(jpeg, operation.op, *workspace.arena, workspace.output);
    if (moved.outcome == Outcome::done) {
        turned.moved = QByteArray::fromRawData(workspace.output.constData(), workspace.output.size());
        if (!known || !assemble(operation, turned)) {
            turned.pieces.clear();
            turned.whole = withMetadata(turned.moved, {}, wanted, 1, result.error);
            if (turned.whole.constData() == turned.moved.constData())
                turned.whole = QByteArray(turned.whole.constData(), turned.whole.size()); // outlives the workspace
        }
        const bool made = !turned.pieces.empty() || !turned.whole.isEmpty();
        result.kind = made ? Result::Kind::lossless : Result::Kind::failed;
        return;
    }
    // Damaged picture data is never moved into a new file; its tag may still turn it.
    if (moved.outcome == Outcome::damaged && fallback != Fallback::orientationTag) {
        result.error = tr("Its picture data is damaged (%1), so it is left as it is.").arg(moved.error);
        return;
    }
    if (moved.outcome == Outcome::unreadable) {
        result.error = tr("It is not a JPEG picture that can be read: %1").arg(moved.error);
        return;
    }
    switch (fallback) {
    case Fallback::refuse:
        result.error = tr("Its width or height is not a whole number of blocks, so it can’t be turned without "
                          "losing quality or cropping its edge.");
        return;
    case Fallback::orientationTag: {
        // The pixels stay; only how they are shown changes.
        turned.whole = withMetadata(jpeg, {}, forOrientation(1).matrix, forMatrix(wanted).orientation, result.error);
        if (turned.whole.constData() == jpeg.constData())
            turned.whole = QByteArray(jpeg.constData(), jpeg.size()); // outlives `jpeg`
        result.kind = turned.whole.isEmpty() ? Result::Kind::failed : Result::Kind::orientationTagOnly;
        return;
    }
    case Fallback::reencode: {
        const QImage image = QImage::fromData(jpeg, "JPEG");
        if (image.isNull()) {
            result.error = tr("It is not a JPEG picture that can be read.");
            return;
        }
        const QByteArray pixels = encoded(image.transformed(wanted.transform()), reencodeQuality);
        turned.whole = pixels.isEmpty() ? QByteArray() : withMetadata(pixels, jpeg, wanted, 1, result.error);
        result.kind = turned.whole.isEmpty() ? Result::Kind::failed : Result::Kind::reencoded;
        return;
    }
    }
}

} // namespace

Workspace::Workspace()
    : arena(std::make_unique<CoefficientArena>())
{ }

Workspace::~Workspace() = default;

QByteArray rotated(const QByteArray &jpeg, Turn turn, Fallback fallback, Result &result)
{
    Workspace workspace;
    Turned turned;
    turnInto(jpeg, turn, fallback, result, turned, workspace);
    return result.isOk() ? turned.joined() : QByteArray();
}

namespace {

// The whole file into `into`, whose memory is reused; 0 or an errno.
int readWhole(int file, qsizetype sizeHint, QByteArray &into)
{
    into.resize(std::max(into.capacity(), sizeHint + 1)); // + 1: a file that grew is seen to
    qsizetype at = 0;
    for (;;) {
        if (at == into.size())
            into.resize(into.size() + into.size() / 2 + 65536);
        const ssize_t got = ::read(file, into.data() + at, size_t(into.size() - at));
        if (got == 0)
            break;
        if (got < 0 && errno != EINTR)
            return errno;
        at += got > 0 ? got : 0;
    }
    into.resize(at);
    return 0;
}

} // namespace

Result rotateFile(const QString &path, Turn turn, Fallback fallback, Workspace *workspace)
{
    std::optional<Workspace> own;
    Workspace &work = workspace ? *workspace : own.emplace();
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
    if (const int error = readWhole(in, qsizetype(before.st_size), work.input); error != 0) {
        ::close(in);
        return failed(QString::fromLocal8Bit(std::strerror(error)));
    }
    const QByteArray original = QByteArray::fromRawData(work.input.constData(), work.input.size());
    Turned turned;
    turnInto(original, turn, fallback, result, turned, work);
    if (!result.isOk()) {
        ::close(in);
        return failed(result.error);
    }
    // Written beside the original and renamed over it: the picture is whole at every moment.
    const int error = turned.pieces.empty() ? ZQItemCopier::replaceContents(nativePath, in, before, turned.whole)
                                            : ZQItemCopier::replaceContents(nativePath, in, before, turned.pieces);
    ::close(in);
    if (error == ECANCELED)
        return failed(tr("It changed while it was being turned."));
    if (error != 0)
        return failed(QString::fromLocal8Bit(std::strerror(error)));
    return result;
}

} // namespace JpegRotation
