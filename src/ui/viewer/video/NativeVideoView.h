#pragma once

#include "ui/viewer/video/EngineVideoView.h"

#include <QImage>
#include <QMutex>

#include <memory>

// A video played by Qt Multimedia (its FFmpeg backend). The engine hands each decoded picture
// over on its own thread, where it is converted and scaled to the view's size; the view paints
// the latest one, so the GUI thread only copies a picture of its own size per frame. A burst of
// pictures while the GUI thread is busy costs one repaint: only the newest is kept.
class NativeVideoView : public EngineVideoView
{
    Q_OBJECT

public:
    explicit NativeVideoView(QWidget *parent = nullptr);
    ~NativeVideoView() override;

    // Whether a picture of the current file is shown (tests).
    bool hasFrame() const { return !m_shown.isNull(); }

protected:
    void prepareEngine(VideoEngine &engine) override;
    void openMedia(const QString &path) override;
    void closeMedia() override;
    void takeFrame(const QImage &frame, quint64 generation) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // The hand-over between the engine's thread and the GUI thread.
    struct FrameSlot
    {
        QMutex mutex;
        QImage latest; // the newest picture, already scaled
        QImage lastOriginal; // kept to rescale a paused picture when the view is resized
        quint64 generation = 0;
        QSize target; // device pixels
        bool updateQueued = false;
    };

    void showLatestFrame();
    QSize targetSize() const;

    std::shared_ptr<FrameSlot> m_slot = std::make_shared<FrameSlot>();
    QImage m_shown;
};
