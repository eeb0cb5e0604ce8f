#include "core/imaging/LosslessJpegTransform.h"

#include "core/imaging/CoefficientArena.h"
#include "support/TestImages.h"

#include <QFile>
#include <QRandomGenerator>

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <vector>

namespace {

using LosslessJpegTransform::Operation;
using LosslessJpegTransform::Outcome;

constexpr Operation allOperations[] = {Operation::none,         Operation::flipHorizontal, Operation::rotate180,
                                       Operation::flipVertical, Operation::transpose,      Operation::rotate90,
                                       Operation::transverse,   Operation::rotate270};

int libraryOperation(Operation operation)
{
    switch (operation) {
    case Operation::none: return TJXOP_NONE;
    case Operation::flipHorizontal: return TJXOP_HFLIP;
    case Operation::rotate180: return TJXOP_ROT180;
    case Operation::flipVertical: return TJXOP_VFLIP;
    case Operation::transpose: return TJXOP_TRANSPOSE;
    case Operation::rotate90: return TJXOP_ROT90;
    case Operation::transverse: return TJXOP_TRANSVERSE;
    case Operation::rotate270: return TJXOP_ROT270;
    }
    return TJXOP_NONE;
}

// Noise with some structure: every frequency of every block is in play, so a coefficient moved to
// the wrong place or with the wrong sign changes pixels.
QByteArray encoded(int width, int height, int subsampling, int flags, quint32 seed)
{
    QRandomGenerator random(seed);
    std::vector<unsigned char> pixels(size_t(width) * size_t(height) * 3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c)
                pixels[size_t((y * width + x) * 3 + c)] =
                    (unsigned char)((x * (c + 1) * 7 + y * 3 + int(random.bounded(90))) & 0xFF);
    tjhandle handle = tjInitCompress();
    unsigned char *out = nullptr;
    unsigned long size = 0;
    tjCompress2(handle, pixels.data(), width, 0, height, TJPF_RGB, &out, &size, subsampling, 92, flags);
    const QByteArray bytes(reinterpret_cast<const char *>(out), qsizetype(size));
    tjFree(out);
    tjDestroy(handle);
    return bytes;
}

// The picture's pixels as libjpeg-turbo decodes them, with its size in front.
std::vector<unsigned char> decoded(const QByteArray &jpeg)
{
    tjhandle handle = tjInitDecompress();
    int width = 0, height = 0, subsampling = 0, colourspace = 0;
    std::vector<unsigned char> pixels;
    const auto *data = reinterpret_cast<const unsigned char *>(jpeg.constData());
    if (tjDecompressHeader3(handle, data, static_cast<unsigned long>(jpeg.size()), &width, &height, &subsampling,
                            &colourspace)
        == 0) {
        pixels.resize(size_t(width) * size_t(height) * 3 + 2);
        tjDecompress2(handle, data, static_cast<unsigned long>(jpeg.size()), pixels.data() + 2, width, 0, height,
                      TJPF_RGB, TJFLAG_ACCURATEDCT);
        pixels[0] = (unsigned char)width;
        pixels[1] = (unsigned char)height;
    }
    tjDestroy(handle);
    return pixels;
}

// libjpeg-turbo's own transform, whole blocks only; empty when it refuses.
QByteArray libraryTransform(const QByteArray &jpeg, Operation operation)
{
    tjhandle handle = tjInitTransform();
    unsigned char *out = nullptr;
    unsigned long size = 0;
    tjtransform transform{};
    transform.op = libraryOperation(operation);
    transform.options = TJXOPT_PERFECT;
    QByteArray bytes;
    if (tjTransform(handle, reinterpret_cast<const unsigned char *>(jpeg.constData()),
                    static_cast<unsigned long>(jpeg.size()), 1, &out, &size, &transform, 0)
        == 0)
        bytes = QByteArray(reinterpret_cast<const char *>(out), qsizetype(size));
    tjFree(out);
    tjDestroy(handle);
    return bytes;
}

QByteArray readData(const QString &name)
{
    QFile file(TestImages::dataFile(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The segment that starts with `marker` before the scan (DRI, a frame header), or empty.
QByteArray segmentBeforeScan(const QByteArray &jpeg, uchar marker)
{
    qsizetype at = 2;
    while (at + 4 <= jpeg.size() && uchar(jpeg[at]) == 0xFF && uchar(jpeg[at + 1]) != 0xDA) {
        const qsizetype length = (uchar(jpeg[at + 2]) << 8) | uchar(jpeg[at + 3]);
        if (uchar(jpeg[at + 1]) == marker)
            return jpeg.mid(at, 2 + length);
        at += 2 + length;
    }
    return {};
}

// The markers before the first frame header, each with its bytes.
QList<QByteArray> headerSegments(const QByteArray &jpeg)
{
    QList<QByteArray> segments;
    qsizetype at = 2;
    while (at + 4 <= jpeg.size() && uchar(jpeg[at]) == 0xFF) {
        const uchar marker = uchar(jpeg[at + 1]);
        if (marker == 0xDB || marker == 0xC4 || marker == 0xDD || (marker >= 0xC0 && marker <= 0xCF))
            break;
        const qsizetype length = (uchar(jpeg[at + 2]) << 8) | uchar(jpeg[at + 3]);
        segments.append(jpeg.mid(at, 2 + length));
        at += 2 + length;
    }
    return segments;
}

QByteArray segment(uchar marker, const QByteArray &payload)
{
    const qsizetype length = payload.size() + 2;
    return QByteArray("\xFF") + char(marker) + char(length >> 8) + char(length & 0xFF) + payload;
}

} // namespace

// Every move, every sampling layout, whole and partial edges, baseline, progressive and with
// restart markers: the same pixels as libjpeg-turbo's own transform, and refused exactly where it
// refuses. One arena serves every picture, so memory a picture leaves behind must not leak into
// the next.
TEST(LosslessJpegTransform, EveryMoveGivesTheLibrarysPixels)
{
    struct Source
    {
        const char *name;
        QByteArray jpeg;
    };
    const std::vector<Source> sources{
        {"4:2:0 whole", encoded(96, 64, TJSAMP_420, 0, 1)},
        {"4:2:0 partial", encoded(100, 75, TJSAMP_420, 0, 2)},
        {"4:2:2 partial width", encoded(100, 64, TJSAMP_422, 0, 3)},
        {"4:4:0 partial height", encoded(64, 75, TJSAMP_440, 0, 4)},
        {"4:4:4 partial", encoded(37, 29, TJSAMP_444, 0, 5)},
        {"4:1:1 whole", encoded(128, 40, TJSAMP_411, 0, 6)},
        {"grey partial", encoded(60, 44, TJSAMP_GRAY, 0, 7)},
        {"progressive 4:2:0", encoded(96, 64, TJSAMP_420, TJFLAG_PROGRESSIVE, 8)},
        {"4:2:0 after a progressive one", encoded(96, 64, TJSAMP_420, 0, 9)},
    };
    CoefficientArena arena;
    QByteArray out;
    for (const Source &source : sources) {
        for (Operation operation : allOperations) {
            const QByteArray expected = libraryTransform(source.jpeg, operation);
            const LosslessJpegTransform::Result result =
                LosslessJpegTransform::transform(source.jpeg, operation, arena, out);
            const std::string where = std::string(source.name) + ", operation " + std::to_string(int(operation));
            if (expected.isEmpty()) {
                EXPECT_EQ(result.outcome, Outcome::imperfect) << where;
                EXPECT_TRUE(out.isEmpty()) << where;
                continue;
            }
            ASSERT_EQ(result.outcome, Outcome::done) << where << ": " << qPrintable(result.error);
            EXPECT_TRUE(decoded(out) == decoded(expected)) << where;
            EXPECT_EQ(segmentBeforeScan(out, 0xC2).isEmpty(), segmentBeforeScan(source.jpeg, 0xC2).isEmpty()) << where;
        }
    }
}

// What a camera put before the picture comes through byte for byte and in order, with nothing
// added (no JFIF marker in front of the EXIF); the restart interval stays.
TEST(LosslessJpegTransform, MarkersAndRestartIntervalComeThroughAsTheyWere)
{
    QByteArray camera = encoded(64, 48, TJSAMP_422, 0, 11);
    const QList<QByteArray> written = headerSegments(camera);
    ASSERT_FALSE(written.isEmpty());
    ASSERT_TRUE(written.first().startsWith("\xFF\xE0")); // the encoder's JFIF marker, dropped below
    const QList<QByteArray> cameraSegments{segment(0xE1, QByteArray("Exif\0\0MM\0\x2A\0\0\0\x08\0\0\0\0\0\0", 20)),
                                           segment(0xE2,
                                                   QByteArray("ICC_PROFILE\0\x01\x01", 14) + QByteArray(300, 'p')),
                                           segment(0xED, QByteArray("Photoshop 3.0\0", 14) + "8BIM"),
                                           segment(0xFE, "Lisbon, May 2008")};
    camera = camera.left(2) + cameraSegments.join() + camera.mid(2 + written.first().size());
    CoefficientArena arena;
    QByteArray out;
    ASSERT_EQ(LosslessJpegTransform::transform(camera, Operation::rotate90, arena, out).outcome, Outcome::done);
    EXPECT_EQ(headerSegments(out), cameraSegments);
    EXPECT_TRUE(decoded(out) == decoded(libraryTransform(camera, Operation::rotate90)));

    // A restart marker after every MCU row, as many cameras write them: the interval stays, so
    // the turned picture still decodes on two cores.
    const QByteArray restarts = readData(QStringLiteral("restart-markers.jpg"));
    ASSERT_FALSE(segmentBeforeScan(restarts, 0xDD).isEmpty());
    ASSERT_EQ(LosslessJpegTransform::transform(restarts, Operation::rotate270, arena, out).outcome, Outcome::done);
    EXPECT_EQ(segmentBeforeScan(out, 0xDD), segmentBeforeScan(restarts, 0xDD));
    EXPECT_TRUE(out.contains("\xFF\xD0"));
    EXPECT_TRUE(decoded(out) == decoded(libraryTransform(restarts, Operation::rotate270)));
}

// A picture cut short or with a corrupt segment is refused, not turned into a new file with gray
// blocks; what is not a JPEG says what libjpeg found.
TEST(LosslessJpegTransform, DamagedOrUnreadablePicturesAreRefused)
{
    CoefficientArena arena;
    QByteArray out;
    LosslessJpegTransform::Result result =
        LosslessJpegTransform::transform(readData(QStringLiteral("truncated-in-scan.jpg")), Operation::rotate90, arena,
                                         out);
    EXPECT_EQ(result.outcome, Outcome::damaged);
    EXPECT_EQ(result.error, QStringLiteral("Premature end of JPEG file"));
    EXPECT_TRUE(out.isEmpty());

    result = LosslessJpegTransform::transform(readData(QStringLiteral("damaged-scan-hole.jpg")), Operation::rotate90,
                                              arena, out);
    EXPECT_EQ(result.outcome, Outcome::damaged);
    EXPECT_TRUE(out.isEmpty());

    result = LosslessJpegTransform::transform(QByteArray("Shopping list"), Operation::rotate90, arena, out);
    EXPECT_EQ(result.outcome, Outcome::unreadable);
    EXPECT_EQ(result.error, QStringLiteral("Not a JPEG file: starts with 0x53 0x68"));

    // The arena still serves after the errors.
    const QByteArray whole = encoded(64, 48, TJSAMP_420, 0, 21);
    EXPECT_EQ(LosslessJpegTransform::transform(whole, Operation::rotate270, arena, out).outcome, Outcome::done);
    EXPECT_TRUE(decoded(out) == decoded(libraryTransform(whole, Operation::rotate270)));
}
