#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

// Which library plays videos. `automatic` tries the native player (Qt Multimedia) first and
// falls back to VLC for a file the native player cannot play; `native` and `vlc` use that one
// library first. The settings store one Bool, `alwaysUseThirdPartyVideoPlayer`: true is `vlc`,
// false `automatic`.
enum class VideoPlayerSource : int {
    automatic,
    native,
    vlc,
};

// Says which library to try for a file, and which to try next when one fails. Each library is
// tried at most once per load; a file the native player failed on is remembered (the most recent
// 256 paths) so that showing it again goes straight to VLC in `automatic`.
//
// Rules:
// - `native`: the native player only.
// - `vlc`: VLC, then the native player when VLC fails or is not installed, so that a missing
//   library never costs the user a video the other one plays.
// - `automatic`: the native player, then VLC when it is installed.
//
// Whether VLC is installed is asked through `vlcAvailable` only when VLC would be chosen, so that
// merely looking at the rules loads no library. GUI thread only.
class VideoPlayerChooser
{
public:
    explicit VideoPlayerChooser(VideoPlayerSource source = VideoPlayerSource::automatic,
                                std::function<bool()> vlcAvailable = {});

    // The source the settings ask for.
    static VideoPlayerSource sourceFromSettings(bool alwaysUseThirdPartyVideoPlayer);

    VideoPlayerSource source() const { return m_source; }
    void setSource(VideoPlayerSource source) { m_source = source; }

    // The library to try first for `path`: `native` or `vlc`, never `automatic`.
    VideoPlayerSource firstChoice(const QString &path) const;
    // After `failed` could not play `path` (and `tried` have been tried already, `failed`
    // included): the library to try next, or nothing when none is left. Remembers a native
    // failure for the next load of the path.
    std::optional<VideoPlayerSource> nextChoice(const QString &path, VideoPlayerSource failed,
                                                const QList<VideoPlayerSource> &tried);

    // Forgets the remembered failures (the user changed the source, or a file was replaced).
    void forgetFailures() { m_nativeFailures.clear(); }

private:
    bool vlcAvailable() const;

    VideoPlayerSource m_source;
    std::function<bool()> m_vlcAvailable;
    // Path -> a counter value, for dropping the oldest entry once there are too many.
    QHash<QString, quint64> m_nativeFailures;
    quint64 m_failureCounter = 0;
};
