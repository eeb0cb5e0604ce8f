#include "support/TestImages.h"

#include "core/imaging/JpegDecoder.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>

// Decoding a JPEG with restart markers in two halves at once gives the picture a decode of the
// whole stream gives, and a file whose markers cannot be trusted is decoded whole.

namespace {

QByteArray readData(const QString &name)
{
    QFile file(TestImages::dataFile(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct Decoded
{
    QImage image;
    QString warning;
};

Decoded decode(const QByteArray &data, QSize fit, bool twoThreads)
{
    Decoded decoded;
    QString error;
    decoded.image =
        JpegDecoder::decode(data.constData(), data.size(), fit, qint64(1) << 28, &error, &decoded.warning, twoThreads);
    return decoded;
}

// The largest difference of a colour channel between two pictures of the same size, and how many
// rows differ at all.
std::pair<int, int> difference(const QImage &a, const QImage &b)
{
    int largest = 0, rows = 0;
    for (int y = 0; y < a.height(); ++y) {
        const auto *left = reinterpret_cast<const QRgb *>(a.constScanLine(y));
        const auto *right = reinterpret_cast<const QRgb *>(b.constScanLine(y));
        int row = 0;
        for (int x = 0; x < a.width(); ++x)
            row = std::max({row, std::abs(qRed(left[x]) - qRed(right[x])), std::abs(qGreen(left[x]) - qGreen(right[x])),
                            std::abs(qBlue(left[x]) - qBlue(right[x]))});
        largest = std::max(largest, row);
        rows += row > 0;
    }
    return {largest, rows};
}

} // namespace

TEST(JpegDecoderTest, RestartMarkersLetTwoThreadsDecodeTheHalvesOfThePictureTheWholeStreamGives)
{
    // 640 x 480, 4:2:0, a marker after each of its 30 rows of MCUs: cut after 16 of them.
    const QByteArray data = readData(QStringLiteral("restart-markers.jpg"));
    ASSERT_FALSE(data.isEmpty());
    EXPECT_EQ(JpegDecoder::twoThreadCut(data.constData(), data.size()), 256);
    for (const QSize fit : {QSize(), QSize(160, 120), QSize(300, 200)}) {
        const Decoded whole = decode(data, fit, false);
        const Decoded halves = decode(data, fit, true);
        ASSERT_FALSE(whole.image.isNull());
        ASSERT_EQ(halves.image.size(), whole.image.size());
        EXPECT_TRUE(halves.warning.isEmpty()) << qPrintable(halves.warning);
        // The same pixels; at full size the smooth chroma upsampling of the two rows beside the
        // cut sees one neighbour fewer.
        const auto [largest, rows] = difference(whole.image, halves.image);
        EXPECT_LE(largest, 6) << fit.width();
        EXPECT_LE(rows, 2) << fit.width();
    }

    // A marker out of order in the top half, or a stream that ends before the middle: decoded
    // whole, with the decoder's warning, as without a second thread.
    QByteArray misnumbered = data;
    const qsizetype scan = misnumbered.indexOf("\xFF\xDA");
    const qsizetype marker = misnumbered.indexOf("\xFF\xD3", scan);
    ASSERT_GT(marker, scan);
    misnumbered[marker + 1] = char(0xD5);
    const QByteArray truncated = data.left(data.size() * 4 / 10);
    for (const QByteArray &damaged : {misnumbered, truncated}) {
        EXPECT_EQ(JpegDecoder::twoThreadCut(damaged.constData(), damaged.size()), 0);
        const Decoded whole = decode(damaged, QSize(160, 120), false);
        const Decoded halves = decode(damaged, QSize(160, 120), true);
        ASSERT_FALSE(halves.image.isNull());
        EXPECT_EQ(halves.image, whole.image);
        EXPECT_EQ(halves.warning, whole.warning);
    }
}
