#include "core/viewer/VideoPlayerChooser.h"

#include <algorithm>

namespace {

// Enough for every video of a few folders; the oldest failure is forgotten beyond it.
constexpr qsizetype rememberedFailures = 256;

} // namespace

VideoPlayerChooser::VideoPlayerChooser(VideoPlayerSource source, std::function<bool()> vlcAvailable)
    : m_source(source)
    , m_vlcAvailable(std::move(vlcAvailable))
{ }

VideoPlayerSource VideoPlayerChooser::sourceFromSettings(bool alwaysUseThirdPartyVideoPlayer)
{
    return alwaysUseThirdPartyVideoPlayer ? VideoPlayerSource::vlc : VideoPlayerSource::automatic;
}

bool VideoPlayerChooser::vlcAvailable() const
{
    return m_vlcAvailable && m_vlcAvailable();
}

VideoPlayerSource VideoPlayerChooser::firstChoice(const QString &path) const
{
    switch (m_source) {
    case VideoPlayerSource::native: return VideoPlayerSource::native;
    case VideoPlayerSource::vlc: return vlcAvailable() ? VideoPlayerSource::vlc : VideoPlayerSource::native;
    case VideoPlayerSource::automatic: break;
    }
    if (m_nativeFailures.contains(path) && vlcAvailable())
        return VideoPlayerSource::vlc;
    return VideoPlayerSource::native;
}

std::optional<VideoPlayerSource> VideoPlayerChooser::nextChoice(const QString &path, VideoPlayerSource failed,
                                                                const QList<VideoPlayerSource> &tried)
{
    if (failed == VideoPlayerSource::native && m_source == VideoPlayerSource::automatic) {
        if (m_nativeFailures.size() >= rememberedFailures && !m_nativeFailures.contains(path)) {
            const auto oldest = std::min_element(m_nativeFailures.begin(), m_nativeFailures.end());
            m_nativeFailures.erase(oldest);
        }
        m_nativeFailures.insert(path, ++m_failureCounter);
    }
    const auto untried = [&tried](VideoPlayerSource source) { return !tried.contains(source); };
    switch (m_source) {
    case VideoPlayerSource::native: return std::nullopt;
    case VideoPlayerSource::vlc:
        if (untried(VideoPlayerSource::native))
            return VideoPlayerSource::native;
        return std::nullopt;
    case VideoPlayerSource::automatic:
        if (failed == VideoPlayerSource::native && untried(VideoPlayerSource::vlc) && vlcAvailable())
            return VideoPlayerSource::vlc;
        if (failed == VideoPlayerSource::vlc && untried(VideoPlayerSource::native))
            return VideoPlayerSource::native;
        return std::nullopt;
    }
    return std::nullopt;
}
