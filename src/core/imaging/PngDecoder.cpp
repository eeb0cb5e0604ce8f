#include "core/imaging/PngDecoder.h"

#include <QColorSpace>

#include <png.h>

#include <cstdio>
#include <memory>
#include <vector>

namespace PngDecoder {

namespace {

struct FileCloser
{
    void operator()(FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

// libpng reports errors by longjmp: the message is kept for the caller.
void onError(png_structp png, png_const_charp message)
{
    if (auto *error = static_cast<QString *>(png_get_error_ptr(png)))
        *error = QString::fromUtf8(message);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp)
{ }

class Reader
{
public:
    explicit Reader(QString *error)
    {
        m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, error, onError, onWarning);
        if (m_png)
            m_info = png_create_info_struct(m_png);
    }
    ~Reader() { png_destroy_read_struct(&m_png, m_info ? &m_info : nullptr, nullptr); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    png_structp png() const { return m_png; }
    png_infop info() const { return m_info; }

private:
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
};

File openPng(const QByteArray &nativePath, QString *error)
{
    File file(std::fopen(nativePath.constData(), "rb"));
    if (!file) {
        *error = QStringLiteral("cannot open the file");
        return {};
    }
    png_byte signature[8] = {};
    if (std::fread(signature, 1, sizeof signature, file.get()) != sizeof signature
        || png_sig_cmp(signature, 0, sizeof signature) != 0) {
        *error = QStringLiteral("not a PNG file");
        return {};
    }
    return file;
}

// Sums of premultiplied samples over the source pixels that fall into one row of the result.
struct RowAccumulator
{
    std::vector<quint64> sums; // 4 per output pixel
    std::vector<quint32> counts; // source pixels per output pixel
};

} // namespace

bool isInterlaced(const QByteArray &nativePath)
{
    QString error;
    File file = openPng(nativePath, &error);
    if (!file)
        return false;
    Reader reader(&error);
    if (!reader.info())
        return false;
    if (setjmp(png_jmpbuf(reader.png())))
        return false;
    png_init_io(reader.png(), file.get());
    png_set_sig_bytes(reader.png(), 8);
    png_read_info(reader.png(), reader.info());
    return png_get_interlace_type(reader.png(), reader.info()) != PNG_INTERLACE_NONE;
}

// After a longjmp back to the jump point nothing made or changed since is read again (the error
// path only returns), so the compiler's warning that such values might be clobbered is moot.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wclobbered"
QImage decodeReduced(const QByteArray &nativePath, QSize fitSize, QString *error)
{
    QString ignored;
    QString &message = error ? *error : ignored;
    File file = openPng(nativePath, &message);
    if (!file)
        return {};
    Reader reader(&message);
    if (!reader.info()) {
        message = QStringLiteral("out of memory");
        return {};
    }
    // Everything with a destructor exists before the jump point: a longjmp skips destructors of
    // what is made after it.
    std::vector<png_byte> row;
    RowAccumulator accumulator;
    std::vector<int> columnOf; // source column -> result column
    QImage result;
    QByteArray profile;
    png_structp png = reader.png();
    png_infop info = reader.info();
    if (setjmp(png_jmpbuf(png)))
        return {};

    png_init_io(png, file.get());
    png_set_sig_bytes(png, 8);
    png_read_info(png, info);
    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    if (png_get_interlace_type(png, info) != PNG_INTERLACE_NONE) {
        message = QStringLiteral("interlaced PNG");
        return {};
    }
    png_charp name = nullptr;
    int compression = 0;
    png_bytep data = nullptr;
    png_uint_32 length = 0;
    if (png_get_iCCP(png, info, &name, &compression, &data, &length) && data && length > 0)
        profile = QByteArray(reinterpret_cast<const char *>(data), qsizetype(length));

    // Whatever the file holds, rows arrive as 8-bit RGBA.
    const int colorType = png_get_color_type(png, info);
    png_set_strip_16(png);
    png_set_packing(png);
    if (colorType == PNG_COLOR_TYPE_PALETTE)
        png_set_palette_to_rgb(png);
    if (colorType == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(png, info) < 8)
        png_set_expand_gray_1_2_4_to_8(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS))
        png_set_tRNS_to_alpha(png);
    if (colorType == PNG_COLOR_TYPE_GRAY || colorType == PNG_COLOR_TYPE_GRAY_ALPHA)
        png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
    png_read_update_info(png, info);
    if (png_get_rowbytes(png, info) != png_size_t(width) * 4) {
        message = QStringLiteral("unexpected PNG pixel layout");
        return {};
    }

    const QSize full{int(width), int(height)};
    QSize target = fitSize.isEmpty() ? full : full.scaled(fitSize, Qt::KeepAspectRatio);
    if (target.width() > full.width() || target.height() > full.height())
        target = full;
    target = target.expandedTo(QSize(1, 1));
    result = QImage(target, QImage::Format_RGBA8888_Premultiplied);
    if (result.isNull()) {
        message = QStringLiteral("a %1 x %2 picture needs more memory than there is")
                      .arg(target.width())
                      .arg(target.height());
        return {};
    }
    row.resize(png_size_t(width) * 4);
    columnOf.resize(width);
    for (png_uint_32 x = 0; x < width; ++x)
        columnOf[x] = int(quint64(x) * quint64(target.width()) / width);
    accumulator.sums.assign(size_t(target.width()) * 4, 0);
    accumulator.counts.assign(size_t(target.width()), 0);

    int outputRow = 0;
    const auto flush = [&] {
        auto *line = reinterpret_cast<quint32 *>(result.scanLine(outputRow));
        for (int x = 0; x < target.width(); ++x) {
            const quint64 count = qMax<quint64>(accumulator.counts[size_t(x)], 1);
            const quint64 *sum = &accumulator.sums[size_t(x) * 4];
            auto *pixel = reinterpret_cast<uchar *>(line + x);
            for (int channel = 0; channel < 4; ++channel)
                pixel[channel] = uchar((sum[channel] + count / 2) / count);
        }
        std::fill(accumulator.sums.begin(), accumulator.sums.end(), 0);
        std::fill(accumulator.counts.begin(), accumulator.counts.end(), 0);
    };
    for (png_uint_32 y = 0; y < height; ++y) {
        png_read_row(png, row.data(), nullptr);
        const int destination = int(quint64(y) * quint64(target.height()) / height);
        if (destination != outputRow) {
            flush();
            outputRow = destination;
        }
        const png_byte *pixel = row.data();
        for (png_uint_32 x = 0; x < width; ++x, pixel += 4) {
            const quint32 alpha = pixel[3];
            quint64 *sum = &accumulator.sums[size_t(columnOf[x]) * 4];
            // Premultiplied, so that transparent pixels do not darken their neighbours.
            sum[0] += (pixel[0] * alpha + 127) / 255;
            sum[1] += (pixel[1] * alpha + 127) / 255;
            sum[2] += (pixel[2] * alpha + 127) / 255;
            sum[3] += alpha;
            ++accumulator.counts[size_t(columnOf[x])];
        }
    }
    flush();
    png_read_end(png, nullptr);
    if (!profile.isEmpty())
        result.setColorSpace(QColorSpace::fromIccProfile(profile));
    return result;
}
#pragma GCC diagnostic pop

} // namespace PngDecoder
