// Built into the pixcove_qtmedia module only: the one file that sees Qt Multimedia.
#include "ui/viewer/video/VideoEngine.h"
#include "ui/viewer/video/modules/VideoFrameConverter.h"

#include <QAudio>
#include <QAudioDevice>
#include <QAudioOutput>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QLibraryInfo>
#include <QMediaDevices>
#include <QMediaMetaData>
#include <QMediaPlayer>
#include <QUrl>
#include <QVideoFrame>
#include <QVideoSink>

#include <algorithm>
#include <atomic>
#include <memory>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("NativeVideoView", text);
}

// The reason shown after "This video cannot be played: ".
QString failureReason(QMediaPlayer::Error error, const QString &detail)
{
    QString reason;
    switch (error) {
    case QMediaPlayer::ResourceError: reason = tr("the file could not be opened or read"); break;
    case QMediaPlayer::FormatError: reason = tr("its format is not supported"); break;
    case QMediaPlayer::AccessDeniedError: reason = tr("access to the file was denied"); break;
    default: reason = tr("the player reported an error"); break;
    }
    if (!detail.isEmpty())
        reason += QStringLiteral(" (%1)").arg(detail);
    return reason + QLatin1Char('.');
}

// Qt Multimedia's player with a sink that hands each decoded picture over as an image. One
// QMediaPlayer per file: replacing it stops the old file's threads before the next one starts,
// so no picture of an old file can arrive afterwards. Lives on the GUI thread; pictures are
// converted on the player's rendering thread.
class QtMediaEngine final : public VideoEngine
{
public:
    QtMediaEngine() { makePlayer(); }

    ~QtMediaEngine() override { dropPlayer(); }

    bool isAvailable() const { return m_player && m_player->isAvailable(); }

    void setHandlers(Handlers handlers) override { *m_handlers = std::move(handlers); }
    void setWindow(quint64) override { }
    bool deliversFrames() const override { return true; }

    void setFrameSize(QSize fitSize) override
    {
        m_fitSize->store(quint64(quint32(fitSize.width())) << 32 | quint32(fitSize.height()));
    }

    void open(const QByteArray &nativePath) override
    {
        if (m_used)
            makePlayer();
        m_used = true;
        m_opened = false;
        m_failed = false;
        m_ended = false;
        m_restarting = false;
        m_url = QUrl::fromLocalFile(QFile::decodeName(nativePath));
        m_player->setSource(m_url);
    }

    void close() override
    {
        if (m_used)
            makePlayer();
        m_ended = false;
        m_restarting = false;
    }

    void play() override
    {
        if (m_ended || m_restarting) {
            restart();
            m_playWhenRestarted = true;
            return;
        }
        m_player->play();
    }

    void pause() override
    {
        if (m_restarting) {
            m_playWhenRestarted = false;
            return;
        }
        m_player->pause();
    }

    void seek(qint64 position) override
    {
        if (m_ended || m_restarting) {
            restart();
            m_seekWhenRestarted = position;
            return;
        }
        m_player->setPosition(position);
    }

    void setVolume(int percent) override
    {
        m_volume = percent;
        if (m_audio)
            m_audio->setVolume(
                QAudio::convertVolume(percent / 100.0, QAudio::LogarithmicVolumeScale, QAudio::LinearVolumeScale));
    }

    void setMuted(bool muted) override
    {
        m_muted = muted;
        if (m_audio)
            m_audio->setMuted(muted);
    }

    void setRate(double rate) override
    {
        m_rate = rate;
        m_player->setPlaybackRate(rate);
    }

    bool stepForward() override { return false; }

private:
    void send(Event event) const
    {
        if (m_handlers->event)
            m_handlers->event(event);
    }

    void dropPlayer()
    {
        // The player first: its threads stop before the sink they deliver to goes.
        delete m_player;
        m_player = nullptr;
        delete m_sink;
        m_sink = nullptr;
        delete m_audio;
        m_audio = nullptr;
    }

    void makePlayer()
    {
        dropPlayer();
        m_used = false;
        m_player = new QMediaPlayer;
        m_sink = new QVideoSink;
        m_player->setVideoSink(m_sink);
        // Without a sound device the player would wait for one; play the picture alone then.
        if (!QMediaDevices::audioOutputs().isEmpty()) {
            m_audio = new QAudioOutput;
            m_player->setAudioOutput(m_audio);
            setVolume(m_volume);
            setMuted(m_muted);
        }
        m_player->setPlaybackRate(m_rate);

        const std::shared_ptr<Handlers> handlers = m_handlers;
        const std::shared_ptr<std::atomic<quint64>> fitSize = m_fitSize;
        // The rendering thread (one per player, so one converter each): convert there, to the
        // size shown, never on the GUI thread.
        QObject::connect(
            m_sink, &QVideoSink::videoFrameChanged, m_sink,
            [handlers, fitSize, converter = std::make_shared<VideoFrameConverter>()](const QVideoFrame &frame) {
                if (!frame.isValid() || !handlers->frame)
                    return;
                const quint64 packed = fitSize->load();
                const QImage image = converter->convert(frame, QSize(int(packed >> 32), int(packed & 0xffffffff)));
                if (!image.isNull())
                    handlers->frame(image);
            },
            Qt::DirectConnection);
        QObject::connect(m_player, &QMediaPlayer::mediaStatusChanged, m_player,
                         [this](QMediaPlayer::MediaStatus status) { statusChanged(status); });
        QObject::connect(m_player, &QMediaPlayer::playbackStateChanged, m_player,
                         [this](QMediaPlayer::PlaybackState state) {
                             if (!m_opened)
                                 return;
                             if (state == QMediaPlayer::PlayingState)
                                 send({EventType::playing});
                             else if (state == QMediaPlayer::PausedState)
                                 send({EventType::paused});
                         });
        QObject::connect(m_player, &QMediaPlayer::positionChanged, m_player, [this](qint64 position) {
            if (m_opened)
                send({EventType::positionChanged, position});
        });
        QObject::connect(m_player, &QMediaPlayer::durationChanged, m_player, [this](qint64 duration) {
            if (m_opened)
                send({EventType::durationChanged, duration});
        });
        QObject::connect(m_player, &QMediaPlayer::errorOccurred, m_player,
                         [this](QMediaPlayer::Error error, const QString &detail) { fail(error, detail); });
    }

    void statusChanged(QMediaPlayer::MediaStatus status)
    {
        switch (status) {
        case QMediaPlayer::LoadedMedia:
            if (m_restarting) {
                restarted();
                break;
            }
            if (!m_opened && !m_failed) {
                m_opened = true;
                send({EventType::opened, m_player->duration(), frameRate()});
            }
            break;
        case QMediaPlayer::EndOfMedia:
            m_ended = true;
            if (m_opened)
                send({EventType::finished});
            break;
        case QMediaPlayer::InvalidMedia:
            fail(m_player->error() == QMediaPlayer::NoError ? QMediaPlayer::FormatError : m_player->error(),
                 m_player->errorString());
            break;
        default: break;
        }
    }

    // After the end the player does not reliably seek or play again (a play can end at once at
    // the old end): a fresh player opens the file again, then seeks and plays as asked meanwhile.
    void restart()
    {
        if (m_restarting)
            return;
        m_ended = false;
        m_restarting = true;
        m_playWhenRestarted = false;
        m_seekWhenRestarted = 0;
        makePlayer();
        m_used = true;
        m_player->setSource(m_url);
    }

    void restarted()
    {
        m_restarting = false;
        if (m_seekWhenRestarted > 0)
            m_player->setPosition(m_seekWhenRestarted);
        if (m_playWhenRestarted)
            m_player->play();
        else
            m_player->pause();
    }

    void fail(QMediaPlayer::Error error, const QString &detail)
    {
        if (m_failed || error == QMediaPlayer::NoError)
            return;
        m_failed = true;
        send({EventType::failed, 0, 0, failureReason(error, detail)});
    }

    double frameRate() const
    {
        const QList<QMediaMetaData> tracks = m_player->videoTracks();
        const int active = std::max(0, m_player->activeVideoTrack());
        if (active < tracks.size()) {
            const double rate = tracks.at(active).value(QMediaMetaData::VideoFrameRate).toDouble();
            if (rate > 0)
                return rate;
        }
        return m_player->metaData().value(QMediaMetaData::VideoFrameRate).toDouble();
    }

    std::shared_ptr<Handlers> m_handlers = std::make_shared<Handlers>();
    // Width and height the pictures are shown at, packed in one word for the rendering thread.
    std::shared_ptr<std::atomic<quint64>> m_fitSize = std::make_shared<std::atomic<quint64>>(0);
    QMediaPlayer *m_player = nullptr;
    QVideoSink *m_sink = nullptr;
    QAudioOutput *m_audio = nullptr;
    bool m_used = false;
    bool m_opened = false;
    bool m_failed = false;
    QUrl m_url;
    bool m_ended = false;
    bool m_restarting = false;
    bool m_playWhenRestarted = false;
    qint64 m_seekWhenRestarted = 0;
    int m_volume = 100;
    bool m_muted = false;
    double m_rate = 1.0;
};

} // namespace

extern "C" Q_DECL_EXPORT VideoEngine *pixcove_new_video_engine(QString *error)
{
    // Qt's GStreamer backend crashes making a player on a machine without its plugins; the FFmpeg
    // backend needs nothing beyond FFmpeg. A backend chosen in the environment is kept.
    if (!qEnvironmentVariableIsSet("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    auto engine = std::make_unique<QtMediaEngine>();
    if (!engine->isAvailable()) {
        if (error)
            *error = tr("Qt Multimedia has no media backend on this system");
        return nullptr;
    }
    return engine.release();
}

extern "C" Q_DECL_EXPORT void pixcove_warm_video_engine()
{
    // The first player loads Qt's FFmpeg backend, and with it FFmpeg's libraries: some 100 ms of
    // mapping and relocating on the GUI thread. Loaded here first, the player's load finds them
    // in memory. Only a library is loaded, which is safe on any thread; it stays for the run.
    const QString backend =
        QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/multimedia/libffmpegmediaplugin.so");
    if (QFileInfo::exists(backend))
        QLibrary(backend).load();
}
