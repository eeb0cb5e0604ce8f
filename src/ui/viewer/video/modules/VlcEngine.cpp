// Built into the pixcove_vlc module only: the one file that sees libvlc.
#include "ui/viewer/video/VideoEngine.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QObject>

#include <vlc/vlc.h>

#include <atomic>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("VlcVideoView", text);
}

// One libvlc instance for the run: starting it scans the plugins, which costs more than opening
// a file. Made on the first engine and never released (the module stays loaded).
libvlc_instance_t *sharedInstance(QString *error)
{
    static libvlc_instance_t *const instance = [] {
        std::vector<const char *> arguments = {
            "--quiet",
            "--no-video-title-show", // no file name drawn over the first seconds of the picture
            "--no-stats",
        };
        // Without an X11 window to draw into (Wayland, the offscreen platform) libvlc would open
        // a window of its own, or draw in the terminal: decode without a picture instead.
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            arguments.push_back("--vout=dummy");
        return libvlc_new(static_cast<int>(arguments.size()), arguments.data());
    }();
    if (!instance && error) {
        const char *message = libvlc_errmsg();
        *error = tr("VLC cannot start (are its plugins installed?)");
        if (message && *message)
            *error += QStringLiteral(": %1").arg(QString::fromUtf8(message));
    }
    return instance;
}

// libvlc's player. Commands come from the GUI thread; libvlc reports on its own threads, where
// nothing may call back into libvlc, so every report only records and passes on.
class VlcEngine final : public VideoEngine
{
public:
    explicit VlcEngine(libvlc_instance_t *instance)
        : m_instance(instance)
        , m_player(libvlc_media_player_new(instance))
    {
        if (!m_player)
            return;
        // Clicks and keys belong to the program, not to the library's window.
        libvlc_video_set_mouse_input(m_player, 0);
        libvlc_video_set_key_input(m_player, 0);
        libvlc_event_manager_t *events = libvlc_media_player_event_manager(m_player);
        for (const libvlc_event_type_t type : followedEvents)
            libvlc_event_attach(events, type, &VlcEngine::onEvent, this);
    }

    ~VlcEngine() override
    {
        if (!m_player)
            return;
        // Once detached no callback runs (libvlc holds its event lock while calling one).
        libvlc_event_manager_t *events = libvlc_media_player_event_manager(m_player);
        for (const libvlc_event_type_t type : followedEvents)
            libvlc_event_detach(events, type, &VlcEngine::onEvent, this);
        libvlc_media_player_stop(m_player);
        libvlc_media_player_release(m_player);
    }

    bool isValid() const { return m_player != nullptr; }

    void setHandlers(Handlers handlers) override { m_handlers = std::move(handlers); }

    void setWindow(quint64 windowId) override
    {
        if (windowId)
            libvlc_media_player_set_xwindow(m_player, static_cast<uint32_t>(windowId));
    }

    bool deliversFrames() const override { return false; }

    void open(const QByteArray &nativePath) override
    {
        libvlc_media_player_stop(m_player);
        m_path = nativePath;
        m_opened = false;
        m_ended = false;
        m_failed = false;
        m_hasStreams = false;
        m_length = 0;
        start(true);
    }

    void close() override
    {
        libvlc_media_player_stop(m_player);
        libvlc_media_player_set_media(m_player, nullptr);
        m_opened = false;
    }

    void play() override
    {
        if (m_ended.exchange(false)) {
            // After the end libvlc must start the file again.
            start(false);
            return;
        }
        {
            // Before the file has held on its first picture a resume would be undone by that
            // hold: it is asked for once the hold is reported.
            std::lock_guard lock(m_startMutex);
            if (!m_heldAtStart) {
                m_playAfterHold = true;
                return;
            }
        }
        libvlc_media_player_set_pause(m_player, 0);
    }

    void pause() override
    {
        {
            std::lock_guard lock(m_startMutex);
            m_playAfterHold = false;
        }
        libvlc_media_player_set_pause(m_player, 1);
    }

    void seek(qint64 position) override
    {
        if (m_ended.exchange(false)) {
            // libvlc cannot seek after the end: open the file again, paused at its start.
            start(true);
            return;
        }
        libvlc_media_player_set_time(m_player, position);
    }

    void setVolume(int percent) override
    {
        m_volume = percent;
        applyAudio();
    }

    void setMuted(bool muted) override
    {
        m_muted = muted;
        applyAudio();
    }

    void setRate(double rate) override
    {
        m_rate = rate;
        libvlc_media_player_set_rate(m_player, static_cast<float>(rate));
    }

    bool stepForward() override
    {
        libvlc_media_player_next_frame(m_player);
        return true;
    }

private:
    static constexpr libvlc_event_type_t followedEvents[] = {
        libvlc_MediaPlayerPlaying,     libvlc_MediaPlayerPaused,
        libvlc_MediaPlayerEndReached,  libvlc_MediaPlayerEncounteredError,
        libvlc_MediaPlayerTimeChanged, libvlc_MediaPlayerLengthChanged,
        libvlc_MediaPlayerVout,        libvlc_MediaPlayerESAdded,
    };

    // Plays m_path from its start; `paused`: held on its first picture.
    void start(bool paused)
    {
        libvlc_media_player_stop(m_player);
        {
            std::lock_guard lock(m_startMutex);
            m_heldAtStart = !paused;
            m_playAfterHold = false;
            ++m_starts;
        }
        libvlc_media_t *media = libvlc_media_new_path(m_instance, m_path.constData());
        if (!media) {
            send({EventType::failed, 0, 0, tr("VLC could not open the file.")});
            return;
        }
        if (paused)
            libvlc_media_add_option(media, ":start-paused");
        libvlc_media_player_set_media(m_player, media);
        libvlc_media_release(media);
        applyAudio();
        libvlc_media_player_set_rate(m_player, static_cast<float>(m_rate));
        if (libvlc_media_player_play(m_player) != 0)
            send({EventType::failed, 0, 0, tr("VLC could not start playing the file.")});
    }

    // A thread of libvlc's: the file holds on its first picture; resume it if play() came first.
    void heldAtStart()
    {
        std::lock_guard lock(m_startMutex);
        if (m_heldAtStart)
            return;
        m_heldAtStart = true;
        if (!std::exchange(m_playAfterHold, false))
            return;
        // libvlc may not be called from its own callbacks: resume from the GUI thread. The
        // context goes with the engine, and with it any resume still queued.
        QMetaObject::invokeMethod(
            m_context.get(),
            [this, start = m_starts] {
                if (start == m_starts) // not another file meanwhile
                    libvlc_media_player_set_pause(m_player, 0);
            },
            Qt::QueuedConnection);
    }

    void applyAudio()
    {
        libvlc_audio_set_volume(m_player, m_volume);
        libvlc_audio_set_mute(m_player, m_muted ? 1 : 0);
    }

    void send(const Event &event) const
    {
        if (m_handlers.event)
            m_handlers.event(event);
    }

    // A thread of libvlc's.
    static void onEvent(const libvlc_event_t *event, void *data) { static_cast<VlcEngine *>(data)->handle(*event); }

    void handle(const libvlc_event_t &event)
    {
        if (m_failed)
            return;
        switch (event.type) {
        case libvlc_MediaPlayerPlaying:
            // libvlc "plays" any file, a text file too: the file counts as open only once it
            // holds on its first picture (or shows one).
            if (m_opened)
                send({EventType::playing});
            break;
        case libvlc_MediaPlayerPaused:
            heldAtStart();
            if (!m_opened && !m_hasStreams) {
                // Held at the start of a file with neither picture nor sound: not a video.
                m_failed = true;
                send({EventType::failed, 0, 0, tr("VLC found no picture or sound in it.")});
                break;
            }
            if (!m_opened.exchange(true)) {
                // Held on the first picture, which is on screen.
                send({EventType::opened, m_length.load()});
                send({EventType::firstFrame});
            }
            send({EventType::paused});
            break;
        case libvlc_MediaPlayerEndReached:
            m_ended = true;
            if (!m_opened) {
                m_failed = true;
                send({EventType::failed, 0, 0, tr("VLC found no picture or sound in it.")});
                break;
            }
            send({EventType::finished});
            break;
        case libvlc_MediaPlayerEncounteredError:
            m_failed = true;
            send({EventType::failed, 0, 0, tr("VLC cannot decode it.")});
            break;
        case libvlc_MediaPlayerTimeChanged:
            send({EventType::positionChanged, event.u.media_player_time_changed.new_time});
            break;
        case libvlc_MediaPlayerLengthChanged:
            m_length = event.u.media_player_length_changed.new_length;
            if (m_opened)
                send({EventType::durationChanged, m_length.load()});
            break;
        case libvlc_MediaPlayerESAdded:
            if (event.u.media_player_es_changed.i_type == libvlc_track_video
                || event.u.media_player_es_changed.i_type == libvlc_track_audio)
                m_hasStreams = true;
            break;
        case libvlc_MediaPlayerVout:
            if (event.u.media_player_vout.new_count > 0) {
                if (!m_opened.exchange(true))
                    send({EventType::opened, m_length.load()});
                send({EventType::firstFrame});
            }
            break;
        default: break;
        }
    }

    libvlc_instance_t *m_instance;
    libvlc_media_player_t *m_player;
    Handlers m_handlers;
    int m_volume = 100;
    bool m_muted = false;
    double m_rate = 1.0;
    QByteArray m_path;
    // Lives on the GUI thread, for resuming from there.
    std::unique_ptr<QObject> m_context = std::make_unique<QObject>();
    std::mutex m_startMutex;
    bool m_heldAtStart = true;
    bool m_playAfterHold = false;
    quint64 m_starts = 0; // written on the GUI thread only
    std::atomic<bool> m_opened = false;
    std::atomic<bool> m_ended = false;
    std::atomic<bool> m_failed = false;
    std::atomic<bool> m_hasStreams = false; // a picture or sound stream was found
    std::atomic<qint64> m_length = 0;
};

} // namespace

extern "C" Q_DECL_EXPORT VideoEngine *pixcove_new_video_engine(QString *error)
{
    libvlc_instance_t *instance = sharedInstance(error);
    if (!instance)
        return nullptr;
    auto engine = std::make_unique<VlcEngine>(instance);
    if (!engine->isValid()) {
        if (error)
            *error = tr("VLC cannot make a player.");
        return nullptr;
    }
    return engine.release();
}
