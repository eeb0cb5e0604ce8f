#include "ui/viewer/video/NativeVideoView.h"
#include "ui/viewer/video/SwitchingVideoView.h"
#include "ui/viewer/video/VideoControlsBar.h"
#include "ui/viewer/video/VideoEngineLoader.h"

#include "support/TestDir.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

// A two-second H.264 clip of 50 frames at 160 x 120, made once by the ffmpeg program; the tests
// that need it skip without it.
class VideoViewTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_dir = new QTemporaryDir;
        const QString ffmpeg = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
        if (ffmpeg.isEmpty())
            return;
        const QString clip = s_dir->filePath(QStringLiteral("clip.mp4"));
        QProcess process;
        process.start(ffmpeg,
                      {"-v", "error", "-f", "lavfi", "-i", "testsrc2=size=160x120:rate=25:duration=2", "-c:v",
                       "libx264", "-pix_fmt", "yuv420p", "-y", clip});
        if (process.waitForFinished(60000) && process.exitCode() == 0 && QFile::exists(clip))
            s_clip = clip;
    }

    static void TearDownTestSuite()
    {
        delete s_dir;
        s_dir = nullptr;
    }

    void SetUp() override
    {
        if (s_clip.isEmpty())
            GTEST_SKIP() << "the ffmpeg program is needed to make a test video";
    }

    // A shown view of `source` with the clip copied into the test's folder, loaded and ready.
    std::unique_ptr<VideoView> loadedView(VideoPlayerSource source, QString *copy = nullptr)
    {
        const QString path = m_dir.filePath(QStringLiteral("clip.mp4"));
        QFile::copy(s_clip, path);
        if (copy)
            *copy = path;
        auto view = makeVideoView(source);
        view->resize(320, 240);
        view->show();
        QSignalSpy firstFrame(view.get(), &VideoView::firstFrameShown);
        view->loadPath(path);
        EXPECT_TRUE(waitUntil([&] { return view->canPlay() && !firstFrame.isEmpty(); }, 10000))
            << view->errorMessage().toStdString();
        return view;
    }

    static QList<VideoState> states(const QSignalSpy &spy)
    {
        QList<VideoState> result;
        for (const QList<QVariant> &arguments : spy)
            result << arguments.at(0).value<VideoState>();
        return result;
    }

    static inline QTemporaryDir *s_dir = nullptr;
    static inline QString s_clip;
    TestDir m_dir;
};

TEST_F(VideoViewTest, NativePlayerGoesFromPausedThroughPlayingToFinishedAndAgain)
{
    auto view = loadedView(VideoPlayerSource::native);
    ASSERT_TRUE(view->canPlay());
    EXPECT_EQ(view->playerSource(), VideoPlayerSource::native);
    EXPECT_EQ(view->videoState(), VideoState::paused);
    EXPECT_NEAR(view->duration(), 2000, 100);
    EXPECT_NEAR(view->frameRate(), 25, 0.5);
    auto *player = qobject_cast<NativeVideoView *>(static_cast<SwitchingVideoView *>(view.get())->player());
    ASSERT_NE(player, nullptr);
    EXPECT_TRUE(player->hasFrame());

    QSignalSpy spy(view.get(), &VideoView::videoStateChanged);
    view->play();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::finished; }, 10000));
    EXPECT_EQ(states(spy), (QList<VideoState>{VideoState::playing, VideoState::finished}));
    EXPECT_EQ(view->position(), view->duration());

    // Playing again starts from the beginning; a pause holds it.
    spy.clear();
    view->play();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::playing; }));
    EXPECT_LT(view->position(), 1500);
    view->pause();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::paused; }));
    EXPECT_EQ(states(spy), (QList<VideoState>{VideoState::playing, VideoState::paused}));

    // Unloading leaves nothing to play, and commands are then ignored.
    view->unload();
    EXPECT_EQ(view->videoState(), VideoState::noVideo);
    EXPECT_FALSE(view->canPlay());
    view->play();
    view->nextFrame();
    view->seek(500);
    EXPECT_EQ(view->videoState(), VideoState::noVideo);
    EXPECT_EQ(view->position(), 0);
}

TEST_F(VideoViewTest, AutoplayStartsAtOnceAndSettingsCarryOverToTheNextFile)
{
    auto view = makeVideoView(VideoPlayerSource::native);
    view->resize(320, 240);
    view->show();
    view->setAutoplay(true);
    view->setVolume(40);
    view->setMuted(true);
    view->setPlaybackRate(2.0);
    const QString path = m_dir.filePath(QStringLiteral("auto.mp4"));
    QFile::copy(s_clip, path);
    QSignalSpy spy(view.get(), &VideoView::videoStateChanged);
    view->loadPath(path);
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::finished; }, 10000));
    EXPECT_TRUE(states(spy).contains(VideoState::playing));
    EXPECT_EQ(view->volume(), 40);
    EXPECT_TRUE(view->isMuted());
    EXPECT_EQ(view->playbackRate(), 2.0);
    // Turning the volume up unmutes; the range is kept.
    view->volumeUp();
    EXPECT_FALSE(view->isMuted());
    view->setVolume(500);
    EXPECT_EQ(view->volume(), 100);
}

TEST_F(VideoViewTest, AFileThatIsNoVideoSaysSoInPlace)
{
    // Named like a video, but text: every player that is tried fails, and the view says so.
    const QString path = m_dir.write(QStringLiteral("holiday.mp4"), "Shopping list\nmilk\neggs\n");
    auto view = makeVideoView(VideoPlayerSource::automatic);
    view->resize(320, 240);
    view->show();
    QSignalSpy failed(view.get(), &VideoView::failed);
    QSignalSpy canPlay(view.get(), &VideoView::canPlayChanged);
    view->loadPath(path);
    ASSERT_TRUE(failed.wait(10000) || !failed.isEmpty());
    EXPECT_EQ(failed.size(), 1); // once, after the last player gave up
    const QString message = failed.first().first().toString();
    EXPECT_TRUE(message.startsWith(QStringLiteral("This video cannot be played: "))) << message.toStdString();
    EXPECT_EQ(view->errorMessage(), message);
    EXPECT_EQ(view->videoState(), VideoState::noVideo);
    EXPECT_FALSE(view->canPlay());
    EXPECT_TRUE(canPlay.isEmpty());
    // The file is left as it was.
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("Shopping list\nmilk\neggs\n"));
    // The message is painted where the picture would be.
    const QImage shot = view->grab().toImage().convertToFormat(QImage::Format_RGB32);
    int lit = 0;
    for (int y = 0; y < shot.height(); ++y)
        for (int x = 0; x < shot.width(); ++x)
            lit += qGray(shot.pixel(x, y)) > 128;
    EXPECT_GT(lit, 50) << "the view should show the message";

    // A file that is gone says that, and a good file loaded afterwards plays.
    QSignalSpy gone(view.get(), &VideoView::failed);
    view->loadPath(m_dir.filePath(QStringLiteral("deleted.mp4")));
    ASSERT_EQ(gone.size(), 1);
    EXPECT_EQ(gone.first().first().toString(),
              QStringLiteral("This video cannot be played: the file no longer exists."));
    const QString clip = m_dir.filePath(QStringLiteral("clip.mp4"));
    QFile::copy(s_clip, clip);
    view->loadPath(clip);
    EXPECT_TRUE(view->errorMessage().isEmpty());
    ASSERT_TRUE(waitUntil([&] { return view->canPlay(); }, 10000));
}

TEST_F(VideoViewTest, AFileDeletedWhilePlayingEndsCleanly)
{
    QString path;
    auto view = loadedView(VideoPlayerSource::native, &path);
    ASSERT_TRUE(view->canPlay());
    view->play();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::playing; }));
    ASSERT_TRUE(QFile::remove(path));
    // The open file plays on to its end, or the player stops with a message: never a hang.
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::finished || !view->errorMessage().isEmpty(); },
                          10000));
    // Showing it again says it is gone.
    view->loadPath(path);
    EXPECT_EQ(view->errorMessage(), QStringLiteral("This video cannot be played: the file no longer exists."));
}

TEST_F(VideoViewTest, ControlsBarCommandsDriveTheView)
{
    auto view = loadedView(VideoPlayerSource::native);
    ASSERT_TRUE(view->canPlay());
    VideoControlsBar *bar = view->controlsBar();
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible()); // paused: the bar stays
    EXPECT_EQ(bar->timeText(), QStringLiteral("0:00 / 0:02"));

    // Every control can be reached and named.
    for (QWidget *control : bar->findChildren<QWidget *>()) {
        if (qobject_cast<QAbstractButton *>(control) || qobject_cast<QAbstractSlider *>(control)) {
            EXPECT_FALSE(control->accessibleName().isEmpty());
            EXPECT_EQ(control->focusPolicy(), Qt::StrongFocus) << control->accessibleName().toStdString();
        }
    }

    bar->jumpForward15(); // clamped to the end of a two-second clip
    EXPECT_EQ(view->position(), view->duration());
    bar->jumpBackward15();
    EXPECT_EQ(view->position(), 0);
    bar->nextFrame();
    EXPECT_EQ(view->videoState(), VideoState::paused);
    EXPECT_EQ(view->position(), 40); // one frame at 25 frames a second
    bar->prevFrame();
    EXPECT_EQ(view->position(), 0);

    bar->volumeDown();
    EXPECT_EQ(view->volume(), 90);
    bar->volumeUp();
    EXPECT_EQ(view->volume(), 100);
    bar->mute();
    EXPECT_TRUE(view->isMuted());
    bar->mute();
    EXPECT_FALSE(view->isMuted());

    // Slower and faster play as they change the speed.
    bar->slow();
    EXPECT_EQ(view->playbackRate(), 0.5);
    bar->fastForward();
    bar->fastForward();
    EXPECT_EQ(view->playbackRate(), 2.0);
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::playing; }));
    // Fast backward goes back at normal speed, still playing.
    bar->fastBackward();
    EXPECT_EQ(view->playbackRate(), 1.0);
    EXPECT_EQ(view->position(), 0);

    bar->playPause();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::paused; }));
    // Playing, the bar hides once the pointer rests (and no control has the keyboard), and any
    // command shows it again.
    bar->setAutohideDelay(200);
    view->setFocus();
    bar->playPause();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::playing; }));
    ASSERT_TRUE(waitUntil([&] { return !bar->isVisible(); }, 1500));
    bar->playPause();
    EXPECT_TRUE(bar->isVisible());
}

TEST_F(VideoViewTest, VlcPlayerGoesFromPausedThroughPlayingToFinished)
{
    if (!VideoEngineLoader::isAvailable(VideoPlayerSource::vlc))
        GTEST_SKIP() << "VLC is not installed";
    auto view = loadedView(VideoPlayerSource::vlc);
    ASSERT_TRUE(view->canPlay());
    EXPECT_EQ(view->playerSource(), VideoPlayerSource::vlc);
    EXPECT_EQ(view->videoState(), VideoState::paused);
    QSignalSpy spy(view.get(), &VideoView::videoStateChanged);
    view->play();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::finished; }, 10000));
    EXPECT_EQ(states(spy), (QList<VideoState>{VideoState::playing, VideoState::finished}));
    view->play();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::playing; }, 10000));
    view->pause();
    ASSERT_TRUE(waitUntil([&] { return view->videoState() == VideoState::paused; }, 10000));
}

} // namespace
