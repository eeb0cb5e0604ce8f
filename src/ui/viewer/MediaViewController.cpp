#include "ui/viewer/MediaViewController.h"

#include "core/app/Log.h"
#include "core/fs/TypeIdentifiers.h"
#include "core/fs/ZQFolderSubscription.h"
#include "core/model/PXFile.h"
#include "core/viewer/DecodedImageCache.h"
#include "core/viewer/ImageViewDataSource.h"
#include "core/viewer/ImageViewDataSourceCache.h"
#include "ui/viewer/ImageViewController.h"
#include "ui/viewer/MediaViewActionHandler.h"
#include "ui/viewer/video/VideoView.h"

#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QResizeEvent>
#include <QTimer>
#include <QVariantAnimation>

#include <utility>

MediaViewController::MediaViewController(QWidget *parent)
    : QWidget(parent)
    , m_messageView(new QLabel(this))
    , m_fade(new QVariantAnimation(this))
    , m_dataByFile(std::make_unique<ImageViewDataSourceCache>())
    , m_filesSubscription(new ZQFilesSubscription(this))
    , m_actionHandler(new MediaViewActionHandler(this))
{
    setAutoFillBackground(true);
    for (ImageViewController *&child : m_imageChildren) {
        child = new ImageViewController(this);
        child->hide();
        connect(child, &ImageViewController::imageReady, this, [this, child] { imageChildReady(child); });
        connect(child, &ImageViewController::scaleChanged, this, [this, child](bool sticky) {
            if (child != m_currentChild)
                return;
            setCurrentlySticky(sticky);
            Q_EMIT scaleChanged(sticky);
            Q_EMIT commandsChanged();
        });
        connect(child, &ImageViewController::currentlyStickyChanged, this, [this, child](bool sticky) {
            if (child == m_currentChild)
                setCurrentlySticky(sticky);
        });
        connect(child, &ImageViewController::fitToScreen, this, [this, child] {
            if (child == m_currentChild && child->dataSource())
                Q_EMIT fitToScreenRequested(child->dataSource()->imageSize());
        });
    }
    m_messageView->setAlignment(Qt::AlignCenter);
    m_messageView->setWordWrap(true);
    m_messageView->setTextFormat(Qt::PlainText);
    m_messageView->setContentsMargins(24, 24, 24, 24);
    m_messageView->hide();
    m_fade->setStartValue(0.0);
    m_fade->setEndValue(1.0);
    connect(m_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        if (auto *effect =
                m_currentChild ? qobject_cast<QGraphicsOpacityEffect *>(m_currentChild->graphicsEffect()) : nullptr)
            effect->setOpacity(value.toDouble());
    });
    connect(m_fade, &QVariantAnimation::finished, this, &MediaViewController::finishTransition);
    connect(m_filesSubscription, &ZQFilesSubscription::foundChanges, this, &MediaViewController::filesChanged);
    setSettings({});
    // The video player's library is loaded in the background once the first viewer has been up
    // for a moment: 2 s leaves the window's first paint and the grid's first thumbnails the two
    // cores, and is still before a user has picked a video.
    static bool videoPlayerPreloadScheduled = false;
    if (!std::exchange(videoPlayerPreloadScheduled, true))
        QTimer::singleShot(2000, this, [] { preloadVideoPlayer(); });
}

MediaViewController::~MediaViewController()
{
    // The children go before the cache of data sources they show.
    m_fade->stop();
    qDeleteAll(findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly));
}

void MediaViewController::setSettings(const MediaViewSettings &settings)
{
    m_settings = settings;
    QPalette colors = palette();
    colors.setColor(QPalette::Window, settings.backgroundColor);
    // Text on the background: light on dark, dark on light.
    colors.setColor(QPalette::WindowText,
                    settings.backgroundColor.lightnessF() < 0.5 ? QColor(220, 220, 220) : QColor(40, 40, 40));
    setPalette(colors);
    for (ImageViewController *child : m_imageChildren) {
        child->setBackgroundColor(settings.backgroundColor);
        child->setDisableAnimation(settings.disableAnimation);
        child->setRestoreScrollPositions(settings.restoreScrollPositions);
    }
    for (VideoView *child : m_videoChildren) {
        if (child) {
            child->setAutoplay(settings.autoplayVideo);
            child->setMuted(settings.muteVideo);
        }
    }
}

ImageViewController *MediaViewController::currentImageChild() const
{
    for (ImageViewController *child : m_imageChildren) {
        if (child == m_currentChild)
            return child;
    }
    return nullptr;
}

VideoView *MediaViewController::currentVideoChild() const
{
    for (VideoView *child : m_videoChildren) {
        if (child && child == m_currentChild)
            return child;
    }
    return nullptr;
}

ImageViewController *MediaViewController::waitingForLoadingChild() const
{
    return m_waitingForLoadingChild;
}

ImageViewController *MediaViewController::otherImageChild() const
{
    return m_imageChildren[0] == m_currentChild ? m_imageChildren[1] : m_imageChildren[0];
}

// Video views are made with the first video: a player costs time and memory that a folder of
// photos never needs.
VideoView *MediaViewController::otherVideoChild()
{
    for (VideoView *&child : m_videoChildren) {
        if (child)
            continue;
        child = makeVideoView(this).release();
        child->hide();
        child->setGeometry(rect());
        child->setAutoplay(m_settings.autoplayVideo);
        child->setMuted(m_settings.muteVideo);
        connect(child, &VideoView::videoStateChanged, this, [this, child](VideoState state) {
            if (child == m_currentChild)
                setVideoState(state);
        });
    }
    return m_videoChildren[0] == m_currentChild ? m_videoChildren[1] : m_videoChildren[0];
}

std::shared_ptr<ImageViewDataSource> MediaViewController::dataSource(const PXFilePtr &file) const
{
    return m_dataByFile->find(file);
}

QString MediaViewController::message() const
{
    return m_currentChild == m_messageView ? m_messageView->text() : QString();
}

void MediaViewController::rememberCurrentState()
{
    if (ImageViewController *child = currentImageChild(); child && child->dataSource() && !child->loadingImage())
        child->rememberState();
}

void MediaViewController::showFile(const PXFilePtr &file, const QImage &thumbnail)
{
    // The running transition and the child still loading are forgotten.
    finishTransition();
    m_waitingForLoadingChild = nullptr;
    rememberCurrentState();
    // Only the file on screen is watched: the new one first, so that the folder of both stays
    // watched while stepping through it.
    if (file)
        m_filesSubscription->addFile(file);
    if (m_currentFile && m_currentFile != file)
        m_filesSubscription->removeFile(m_currentFile);
    m_currentFile = file;

    if (!file && !m_emptyText.isEmpty()) {
        showMessage(m_emptyText);
        return;
    }
    if (!file) {
        ImageViewController *empty = otherImageChild();
        empty->setDataSource(nullptr);
        switchTo(empty);
        setVideoState(VideoState::noVideo);
        Q_EMIT fileShown(nullptr);
        return;
    }
    if (file->isPlaceholder()) {
        showMessage(tr("“%1” is no longer there: it was deleted or moved away.").arg(file->displayName()));
    } else if (VideoView::accepts(*file)) {
        if (VideoView *current = currentVideoChild(); current && current->file() == file) {
            Q_EMIT fileShown(file);
            return;
        }
        showVideo(file);
    } else if (file->isImage()) {
        showImage(file, thumbnail);
    } else {
        const QString kind = TypeIdentifiers::description(file->resolvedTypeIdentifier());
        showMessage(file->isDirectory() ? file->displayName()
                                        : tr("%1\n%2 — no preview").arg(file->displayName(), kind));
    }
    Q_EMIT commandsChanged();
}

void MediaViewController::showImage(const PXFilePtr &file, const QImage &thumbnail)
{
    const ImageViewDefaults defaults{scalingModeFor(m_settings.defaultScalingMode), m_settings.defaultScalingPercentage,
                                     m_settings.retainScalingFromPreviousFile};
    const ImageViewDataSourcePtr dataSource = m_dataByFile->dataSourceForShowing(file, defaults);
    // The file already on screen (shown twice in a row) stays where it is, as it was.
    if (ImageViewController *current = currentImageChild(); current && current->dataSource() == dataSource) {
        setVideoState(VideoState::noVideo);
        Q_EMIT fileShown(file);
        return;
    }
    if (!thumbnail.isNull())
        dataSource->setThumbnail(thumbnail);
    ImageViewController *child = otherImageChild();
    m_waitingForLoadingChild = child;
    child->setGeometry(rect());
    child->setLoadingImage(true);
    // Under the current child: it lays itself out and decodes for its real size while the old
    // picture stays on screen.
    child->show();
    if (m_currentChild)
        child->stackUnder(m_currentChild);
    child->setDataSource(dataSource);
    setVideoState(VideoState::noVideo);
}

void MediaViewController::showVideo(const PXFilePtr &file)
{
    VideoView *child = otherVideoChild();
    child->setGeometry(rect());
    child->load(file);
    switchTo(child);
    setVideoState(child->videoState());
    Q_EMIT fileShown(file);
}

void MediaViewController::imageChildReady(ImageViewController *child)
{
    if (child != m_waitingForLoadingChild)
        return;
    m_waitingForLoadingChild = nullptr;
    switchTo(child);
    setCurrentlySticky(child->currentlySticky());
    Q_EMIT imageReady();
    Q_EMIT fileShown(m_currentFile);
    Q_EMIT commandsChanged();
}

// The new child comes to the front and fades in over the old one, which goes when the fade ends.
void MediaViewController::switchTo(QWidget *child)
{
    finishTransition();
    QWidget *previous = m_currentChild;
    m_currentChild = child;
    child->setGeometry(rect());
    child->show();
    child->raise();
    if (previous == child)
        return;
    // A video left behind stops; its view keeps no file.
    if (auto *video = qobject_cast<VideoView *>(previous))
        video->unload();
    const bool animate = previous && previous != m_messageView && previous->isVisible() && !m_settings.disableAnimation
        && m_settings.transitionDuration > 0;
    if (!animate) {
        if (previous)
            previous->hide();
        return;
    }
    m_fadingOutChild = previous;
    m_animationID = ++m_nextAnimationID;
    auto *effect = new QGraphicsOpacityEffect(child);
    effect->setOpacity(0.0);
    child->setGraphicsEffect(effect);
    m_fade->setDuration(int(m_settings.transitionDuration * 1000));
    m_fade->start();
}

void MediaViewController::finishTransition()
{
    if (m_fade->state() == QAbstractAnimation::Running)
        m_fade->stop();
    if (m_currentChild && m_currentChild->graphicsEffect())
        m_currentChild->setGraphicsEffect(nullptr);
    if (m_fadingOutChild && m_fadingOutChild != m_currentChild && m_fadingOutChild != m_waitingForLoadingChild)
        m_fadingOutChild->hide();
    m_fadingOutChild = nullptr;
    m_animationID = 0;
}

void MediaViewController::showMessage(const QString &text)
{
    m_messageView->setText(text);
    switchTo(m_messageView);
    setVideoState(VideoState::noVideo);
    setCurrentlySticky(false);
    Q_EMIT fileShown(m_currentFile);
}

void MediaViewController::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    for (QWidget *child : findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        child->setGeometry(rect());
}

QSize MediaViewController::neededPixels() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

// The neighbours are decoded for this view's size into the shared picture cache, where their own
// data source finds them when they are shown. Their view state is not touched.
void MediaViewController::prefetch(const QList<PXFilePtr> &files)
{
    QList<ImageViewDataSourcePtr> wanted;
    for (const PXFilePtr &file : files) {
        if (!file || !file->isImage() || file == m_currentFile)
            continue;
        ImageViewDataSourcePtr source;
        for (const ImageViewDataSourcePtr &held : std::as_const(m_prefetched)) {
            if (held->file() == file && !held->isOutdated())
                source = held;
        }
        if (!source)
            source = ImageViewDataSource::create(file);
        wanted.append(source);
    }
    // Dropping a data source lets its waiting decode go; a running one finishes into the cache.
    m_prefetched = wanted;
    const QSize needed = neededPixels();
    for (const ImageViewDataSourcePtr &source : std::as_const(m_prefetched))
        source->requestImage(needed);
}

void MediaViewController::filesChanged(const QList<ZQFileEvent> &events)
{
    if (!m_currentFile)
        return;
    const QByteArray path = m_currentFile->nativePath();
    for (const ZQFileEvent &event : events) {
        if (event.nativePath != path)
            continue;
        m_currentFile->updateForEvent(event);
        if (event.type == ZQFileEventType::removed) {
            logDebug(QStringLiteral("The file shown was deleted or moved: %1").arg(m_currentFile->path()));
            if (ImageViewController *child = currentImageChild())
                child->setDataSource(nullptr);
            showMessage(tr("“%1” is no longer there: it was deleted or moved away.").arg(m_currentFile->displayName()));
            return;
        }
        if (event.changesContentOrIdentity()) {
            reloadCurrentFile();
            return;
        }
    }
}

// A file written anew is decoded again; its zoom, fit, position and turn stay.
void MediaViewController::reloadCurrentFile()
{
    const PXFilePtr file = m_currentFile;
    if (VideoView *video = currentVideoChild()) {
        video->load(file);
        return;
    }
    rememberCurrentState();
    const ImageViewDataSourcePtr old = m_dataByFile->find(file);
    DecodedImageCache::shared().remove(file->resolvedNativePath());
    m_dataByFile->remove(file);
    m_prefetched.removeIf([&file](const ImageViewDataSourcePtr &source) { return source->file() == file; });
    if (old) {
        const ImageViewDefaults defaults{scalingModeFor(m_settings.defaultScalingMode),
                                         m_settings.defaultScalingPercentage, false};
        const ImageViewDataSourcePtr fresh = m_dataByFile->dataSourceForShowing(file, defaults);
        fresh->copyScaling(*old);
        fresh->setRotationAngle(old->rotationAngle());
    }
    m_currentFile = nullptr; // so that showing it is not "the same file again"
    showFile(file);
}

void MediaViewController::setCurrentlySticky(bool sticky)
{
    m_currentlySticky = sticky;
}

void MediaViewController::setVideoState(VideoState state)
{
    if (state == m_videoState)
        return;
    m_videoState = state;
    Q_EMIT videoStateChanged(state);
    Q_EMIT commandsChanged();
}

bool MediaViewController::canChangeImage() const
{
    const ImageViewController *child = currentImageChild();
    return child && child->dataSource() && !child->loadingImage() && !m_waitingForLoadingChild;
}

void MediaViewController::zoomIn()
{
    if (canChangeImage())
        currentImageChild()->zoomIn();
}

void MediaViewController::zoomOut()
{
    if (canChangeImage())
        currentImageChild()->zoomOut();
}

void MediaViewController::zoomTo(double magnification)
{
    if (canChangeImage())
        currentImageChild()->setZoom(magnification);
}

void MediaViewController::scaleToFit()
{
    if (canChangeImage())
        currentImageChild()->scaleToFit();
}

void MediaViewController::fitToScreen()
{
    if (canChangeImage())
        currentImageChild()->requestFitToScreen();
}

void MediaViewController::rotate(int degrees)
{
    if (!canChangeImage())
        return;
    ImageViewController *child = currentImageChild();
    switch (((degrees % 360) + 360) % 360) {
    case 90: child->rotateClockwise(); break;
    case 180: child->rotate180(); break;
    case 270: child->rotateCounterclockwise(); break;
    default: break;
    }
    Q_EMIT commandsChanged();
}

void MediaViewController::moveImage(int dx, int dy)
{
    if (!canChangeImage())
        return;
    ImageViewController *child = currentImageChild();
    if (dx == 0 && dy == 0)
        child->recenter();
    else if (dx < 0 && dy < 0)
        child->moveNorthWest();
    else if (dx > 0 && dy < 0)
        child->moveNorthEast();
    else if (dx < 0 && dy > 0)
        child->moveSouthWest();
    else if (dx > 0 && dy > 0)
        child->moveSouthEast();
    else if (dx < 0)
        child->moveLeft();
    else if (dx > 0)
        child->moveRight();
    else if (dy < 0)
        child->moveUp();
    else
        child->moveDown();
}
