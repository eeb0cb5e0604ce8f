#include "core/thumbnails/VideoFrameGrabber.h"

#include <QTransform>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <cmath>
#include <mutex>

namespace VideoFrameGrabber {
namespace {

QString avError(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

// Mean brightness below this (of 255) counts as a black frame: fades and slates, not dark scenes.
constexpr double blackLevel = 12;

// One open video: its container, the decoder of its best video stream and a scaler.
class Grabber
{
public:
    ~Grabber()
    {
        sws_freeContext(m_scaler);
        av_frame_free(&m_frame);
        av_packet_free(&m_packet);
        avcodec_free_context(&m_codec);
        avformat_close_input(&m_format);
    }

    bool open(const QByteArray &nativePath, QString *error)
    {
        // Damaged files are reported through the answers here, not by FFmpeg on stderr.
        static std::once_flag quiet;
        std::call_once(quiet, [] { av_log_set_level(AV_LOG_QUIET); });
        int result = avformat_open_input(&m_format, nativePath.constData(), nullptr, nullptr);
        if (result < 0) {
            *error = avError(result);
            return false;
        }
        result = avformat_find_stream_info(m_format, nullptr);
        if (result < 0) {
            *error = avError(result);
            return false;
        }
        const AVCodec *decoder = nullptr;
        m_streamIndex = av_find_best_stream(m_format, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
        if (m_streamIndex < 0 || !decoder) {
            *error = QStringLiteral("no video stream that can be decoded");
            return false;
        }
        m_stream = m_format->streams[m_streamIndex];
        m_codec = avcodec_alloc_context3(decoder);
        if (!m_codec || avcodec_parameters_to_context(m_codec, m_stream->codecpar) < 0) {
            *error = QStringLiteral("cannot set up the video decoder");
            return false;
        }
        // Slice threads decode one frame on both cores; frame threads would first queue several.
        m_codec->thread_count = 2;
        m_codec->thread_type = FF_THREAD_SLICE;
        result = avcodec_open2(m_codec, decoder, nullptr);
        if (result < 0) {
            *error = avError(result);
            return false;
        }
        m_packet = av_packet_alloc();
        m_frame = av_frame_alloc();
        if (const uint8_t *matrix = av_stream_get_side_data(m_stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr)) {
            const double rotation = av_display_rotation_get(reinterpret_cast<const int32_t *>(matrix));
            if (!std::isnan(rotation))
                m_rotation = -int(std::lround(rotation));
        }
        return m_packet && m_frame;
    }

    double duration() const
    {
        if (m_stream->duration > 0 && m_stream->time_base.den > 0)
            return m_stream->duration * av_q2d(m_stream->time_base);
        if (m_format->duration > 0)
            return double(m_format->duration) / AV_TIME_BASE;
        return 0;
    }

    // The first frame at or after the key frame before `seconds`.
    QImage frameAt(double seconds, QSize fitSize, QString *error)
    {
        const auto timestamp = qint64(seconds / av_q2d(m_stream->time_base))
            + (m_stream->start_time != AV_NOPTS_VALUE ? m_stream->start_time : 0);
        if (seconds > 0 && av_seek_frame(m_format, m_streamIndex, timestamp, AVSEEK_FLAG_BACKWARD) >= 0)
            avcodec_flush_buffers(m_codec);
        bool draining = false;
        for (int packets = 0; packets < 2000; ++packets) {
            const int received = avcodec_receive_frame(m_codec, m_frame);
            if (received == 0)
                return convert(fitSize, error);
            if (received == AVERROR_EOF)
                break;
            if (draining)
                continue;
            const int read = av_read_frame(m_format, m_packet);
            if (read < 0) {
                avcodec_send_packet(m_codec, nullptr);
                draining = true;
                continue;
            }
            if (m_packet->stream_index == m_streamIndex)
                avcodec_send_packet(m_codec, m_packet);
            av_packet_unref(m_packet);
        }
        *error = QStringLiteral("no frame could be decoded");
        return {};
    }

private:
    QImage convert(QSize fitSize, QString *error)
    {
        QSize size(m_frame->width, m_frame->height);
        const AVRational aspect = m_frame->sample_aspect_ratio;
        if (aspect.num > 0 && aspect.den > 0 && aspect.num != aspect.den)
            size.setWidth(int(std::lround(size.width() * av_q2d(aspect))));
        QSize fit = fitSize;
        if (m_rotation % 180 != 0)
            fit.transpose();
        if (!fit.isEmpty() && (size.width() > fit.width() || size.height() > fit.height()))
            size = size.scaled(fit, Qt::KeepAspectRatio);
        size = size.expandedTo(QSize(1, 1));
        QImage image(size, QImage::Format_RGB32);
        m_scaler =
            sws_getCachedContext(m_scaler, m_frame->width, m_frame->height, AVPixelFormat(m_frame->format),
                                 size.width(), size.height(), AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr);
        if (!m_scaler || image.isNull()) {
            *error = QStringLiteral("cannot convert the video frame");
            return {};
        }
        uint8_t *planes[4] = {image.bits(), nullptr, nullptr, nullptr};
        int strides[4] = {int(image.bytesPerLine()), 0, 0, 0};
        sws_scale(m_scaler, m_frame->data, m_frame->linesize, 0, m_frame->height, planes, strides);
        av_frame_unref(m_frame);
        if (m_rotation != 0)
            image = image.transformed(QTransform().rotate(m_rotation));
        return image;
    }

    AVFormatContext *m_format = nullptr;
    AVCodecContext *m_codec = nullptr;
    AVStream *m_stream = nullptr;
    AVPacket *m_packet = nullptr;
    AVFrame *m_frame = nullptr;
    SwsContext *m_scaler = nullptr;
    int m_streamIndex = -1;
    int m_rotation = 0;
};

double meanBrightness(const QImage &image)
{
    // Every 8th pixel of every 8th row: enough to tell a black frame from a picture.
    qint64 sum = 0;
    qint64 count = 0;
    for (int y = 0; y < image.height(); y += 8) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); x += 8) {
            sum += qGray(line[x]);
            ++count;
        }
    }
    return count ? double(sum) / count : 0;
}

} // namespace

QImage thumbnailFrame(const QByteArray &nativePath, QSize fitSize, QString *error)
{
    QString ignored;
    QString &message = error ? *error : ignored;
    Grabber grabber;
    if (!grabber.open(nativePath, &message))
        return {};
    const double length = grabber.duration();
    // About 10% in, past title cards; then further on while the frame is black.
    QImage fallback;
    for (const double share : {0.1, 0.25, 0.5, 0.75}) {
        QImage frame = grabber.frameAt(length * share, fitSize, &message);
        if (frame.isNull())
            continue;
        if (meanBrightness(frame) >= blackLevel)
            return frame;
        if (fallback.isNull())
            fallback = frame;
        if (length <= 0)
            break;
    }
    return fallback;
}

QList<QImage> framesAt(const QByteArray &nativePath, const QList<double> &seconds, QSize fitSize,
                       const std::atomic<bool> *cancelled, QString *error)
{
    QString ignored;
    QString &message = error ? *error : ignored;
    QList<QImage> frames(seconds.size());
    Grabber grabber;
    if (!grabber.open(nativePath, &message))
        return frames;
    for (qsizetype i = 0; i < seconds.size(); ++i) {
        if (cancelled && cancelled->load())
            break;
        frames[i] = grabber.frameAt(seconds.at(i), fitSize, &message);
    }
    return frames;
}

double duration(const QByteArray &nativePath, QString *error)
{
    QString ignored;
    Grabber grabber;
    if (!grabber.open(nativePath, error ? error : &ignored))
        return 0;
    return grabber.duration();
}

} // namespace VideoFrameGrabber
