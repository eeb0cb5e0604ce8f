// Built into the pixcove_qtmedia module only, beside QtMediaEngine.cpp.
#include "ui/viewer/video/modules/VideoFrameConverter.h"

#include <QVideoFrame>
#include <QVideoFrameFormat>

extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

namespace {

// The libswscale name of a picture layout; AV_PIX_FMT_NONE for those left to Qt.
AVPixelFormat avFormat(QVideoFrameFormat::PixelFormat format)
{
    switch (format) {
    case QVideoFrameFormat::Format_YUV420P: return AV_PIX_FMT_YUV420P;
    case QVideoFrameFormat::Format_YV12: return AV_PIX_FMT_YUV420P; // planes swapped below
    case QVideoFrameFormat::Format_YUV422P: return AV_PIX_FMT_YUV422P;
    case QVideoFrameFormat::Format_NV12: return AV_PIX_FMT_NV12;
    case QVideoFrameFormat::Format_NV21: return AV_PIX_FMT_NV21;
    case QVideoFrameFormat::Format_UYVY: return AV_PIX_FMT_UYVY422;
    case QVideoFrameFormat::Format_YUYV: return AV_PIX_FMT_YUYV422;
    case QVideoFrameFormat::Format_P010: return AV_PIX_FMT_P010LE;
    case QVideoFrameFormat::Format_P016: return AV_PIX_FMT_P016LE;
    case QVideoFrameFormat::Format_YUV420P10: return AV_PIX_FMT_YUV420P10LE;
    case QVideoFrameFormat::Format_Y8: return AV_PIX_FMT_GRAY8;
    default: return AV_PIX_FMT_NONE;
    }
}

int swsColorSpace(QVideoFrameFormat::ColorSpace space)
{
    switch (space) {
    case QVideoFrameFormat::ColorSpace_BT709: return SWS_CS_ITU709;
    case QVideoFrameFormat::ColorSpace_BT2020: return SWS_CS_BT2020;
    default: return SWS_CS_ITU601;
    }
}

} // namespace

VideoFrameConverter::~VideoFrameConverter()
{
    sws_freeContext(m_context);
}

QImage VideoFrameConverter::convert(const QVideoFrame &input, QSize fitSize)
{
    const QVideoFrameFormat format = input.surfaceFormat();
    const AVPixelFormat source = avFormat(format.pixelFormat());
    const QSize size = input.size();
    if (source == AV_PIX_FMT_NONE || size.isEmpty())
        return input.toImage();
    const QSize target = fitSize.isEmpty() ? size : size.scaled(fitSize, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));

    QVideoFrame frame(input);
    if (!frame.map(QVideoFrame::ReadOnly))
        return input.toImage();
    // Bilinear: as sharp as the picture needs at the size of a view, at a fraction of bicubic's
    // cost per frame.
    m_context = sws_getCachedContext(m_context, size.width(), size.height(), source, target.width(), target.height(),
                                     AV_PIX_FMT_RGB32, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!m_context) {
        frame.unmap();
        return input.toImage();
    }
    const bool fullRange = format.colorRange() == QVideoFrameFormat::ColorRange_Full;
    const int *coefficients = sws_getCoefficients(swsColorSpace(format.colorSpace()));
    sws_setColorspaceDetails(m_context, coefficients, fullRange ? 1 : 0, sws_getCoefficients(SWS_CS_DEFAULT), 1, 0,
                             1 << 16, 1 << 16);

    const uint8_t *planes[4] = {};
    int strides[4] = {};
    for (int plane = 0; plane < std::min(frame.planeCount(), 4); ++plane) {
        planes[plane] = frame.bits(plane);
        strides[plane] = frame.bytesPerLine(plane);
    }
    if (format.pixelFormat() == QVideoFrameFormat::Format_YV12) {
        std::swap(planes[1], planes[2]);
        std::swap(strides[1], strides[2]);
    }
    // AV_PIX_FMT_RGB32 is the native-endian 0xAARRGGBB word, which is QImage's RGB32.
    QImage image(target, QImage::Format_RGB32);
    uint8_t *destination[4] = {image.bits()};
    const int destinationStrides[4] = {static_cast<int>(image.bytesPerLine())};
    sws_scale(m_context, planes, strides, 0, size.height(), destination, destinationStrides);
    frame.unmap();
    return image;
}
