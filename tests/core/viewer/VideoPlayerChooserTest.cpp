#include "core/viewer/VideoPlayerChooser.h"

#include <gtest/gtest.h>

namespace {

using Source = VideoPlayerSource;

// A chooser whose VLC is installed or not, counting how often that was asked.
struct Rig
{
    explicit Rig(Source source, bool vlcInstalled = true)
        : chooser(source, [this, vlcInstalled] {
            ++vlcQuestions;
            return vlcInstalled;
        })
    { }

    int vlcQuestions = 0;
    VideoPlayerChooser chooser;
};

} // namespace

TEST(VideoPlayerChooser, SettingsPickAutomaticOrVlc)
{
    EXPECT_EQ(VideoPlayerChooser::sourceFromSettings(false), Source::automatic);
    EXPECT_EQ(VideoPlayerChooser::sourceFromSettings(true), Source::vlc);
}

TEST(VideoPlayerChooser, AutomaticFallsBackToVlcAndRemembersTheFile)
{
    Rig rig(Source::automatic);
    const QString clip = QStringLiteral("/videos/clip.mkv");
    EXPECT_EQ(rig.chooser.firstChoice(clip), Source::native);
    // Choosing the native player loads nothing: VLC is not even asked about.
    EXPECT_EQ(rig.vlcQuestions, 0);

    EXPECT_EQ(rig.chooser.nextChoice(clip, Source::native, {Source::native}), Source::vlc);
    // VLC failed too: nothing is left, and the native player is not tried a second time.
    EXPECT_EQ(rig.chooser.nextChoice(clip, Source::vlc, {Source::native, Source::vlc}), std::nullopt);

    // The next time the file goes straight to VLC; other files still start native.
    EXPECT_EQ(rig.chooser.firstChoice(clip), Source::vlc);
    EXPECT_EQ(rig.chooser.firstChoice(QStringLiteral("/videos/other.mp4")), Source::native);
    // When VLC then fails on it, the native player gets another chance (the file may have been
    // replaced).
    EXPECT_EQ(rig.chooser.nextChoice(clip, Source::vlc, {Source::vlc}), Source::native);

    rig.chooser.forgetFailures();
    EXPECT_EQ(rig.chooser.firstChoice(clip), Source::native);
}

TEST(VideoPlayerChooser, AutomaticWithoutVlcStopsAfterTheNativePlayer)
{
    Rig rig(Source::automatic, false);
    const QString clip = QStringLiteral("/videos/clip.mkv");
    EXPECT_EQ(rig.chooser.nextChoice(clip, Source::native, {Source::native}), std::nullopt);
    EXPECT_EQ(rig.chooser.firstChoice(clip), Source::native);
}

TEST(VideoPlayerChooser, VlcSourceFallsBackToNativeAndNativeSourceNever)
{
    Rig vlc(Source::vlc);
    const QString clip = QStringLiteral("/videos/clip.avi");
    EXPECT_EQ(vlc.chooser.firstChoice(clip), Source::vlc);
    EXPECT_EQ(vlc.chooser.nextChoice(clip, Source::vlc, {Source::vlc}), Source::native);
    EXPECT_EQ(vlc.chooser.nextChoice(clip, Source::native, {Source::vlc, Source::native}), std::nullopt);
    // A VLC failure is not remembered against the native player.
    EXPECT_EQ(vlc.chooser.firstChoice(clip), Source::vlc);

    Rig missingVlc(Source::vlc, false);
    EXPECT_EQ(missingVlc.chooser.firstChoice(clip), Source::native);

    Rig native(Source::native);
    EXPECT_EQ(native.chooser.firstChoice(clip), Source::native);
    EXPECT_EQ(native.chooser.nextChoice(clip, Source::native, {Source::native}), std::nullopt);
    EXPECT_EQ(native.chooser.firstChoice(clip), Source::native);
    EXPECT_EQ(native.vlcQuestions, 0);
}

TEST(VideoPlayerChooser, RemembersOnlyTheMostRecentFailures)
{
    Rig rig(Source::automatic);
    const auto path = [](int i) { return QStringLiteral("/videos/%1.mov").arg(i); };
    for (int i = 0; i <= 256; ++i)
        rig.chooser.nextChoice(path(i), Source::native, {Source::native});
    EXPECT_EQ(rig.chooser.firstChoice(path(0)), Source::native); // the oldest is forgotten
    EXPECT_EQ(rig.chooser.firstChoice(path(1)), Source::vlc);
    EXPECT_EQ(rig.chooser.firstChoice(path(256)), Source::vlc);
}
