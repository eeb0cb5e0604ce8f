#include "ui/viewer/ImageViewController.h"

#include "core/viewer/ZoomRules.h"
#include "ui/viewer/ImageView.h"
#include "ui/viewer/ZoomingScrollView.h"

#include <QVBoxLayout>

#include <cmath>

namespace {

// The key under which a zoom-value notification carries its magnification.
const QString zoomValueKey = QStringLiteral("ZoomValue");

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong: return true;
    default: return false;
    }
}

} // namespace

ImageViewController::ImageViewController(QWidget *parent)
    : QWidget(parent)
{
    m_scrollView = new ZoomingScrollView(this);
    m_imageView = m_scrollView->imageView();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_scrollView);
    setFocusProxy(m_scrollView);

    connect(m_scrollView, &ZoomingScrollView::frameChanged, this, &ImageViewController::viewportResized);
    connect(m_scrollView, &ZoomingScrollView::magnificationChanged, this, &ImageViewController::requestNeededPicture);
    connect(m_scrollView, &ZoomingScrollView::doubleClicked, this, &ImageViewController::doubleClickAt);
    connect(m_scrollView, &ZoomingScrollView::liveMagnificationEnded, this, &ImageViewController::endLiveMagnification);
    connect(m_scrollView, &ZoomingScrollView::zoomRequested, this, [this](double factor, QPointF anchor) {
        if (m_loadingImage || !m_dataSource || !m_ready)
            return;
        setZoomAt(magnification() * factor, anchor);
    });
}

ImageViewController::~ImageViewController()
{
    if (m_dataSource)
        m_dataSource->cancelLoading();
}

QColor ImageViewController::backgroundColor() const
{
    return m_imageView->backgroundColor();
}

void ImageViewController::setBackgroundColor(const QColor &color)
{
    m_imageView->setBackgroundColor(color);
}

bool ImageViewController::disableAnimation() const
{
    return m_scrollView->disableAnimation();
}

void ImageViewController::setDisableAnimation(bool disable)
{
    m_scrollView->setDisableAnimation(disable);
}

double ImageViewController::magnification() const
{
    return m_scrollView->magnification();
}

double ImageViewController::fitMagnification() const
{
    return m_scrollView->state().fitMagnification();
}

void ImageViewController::setLoadingImage(bool loading)
{
    if (loading == m_loadingImage)
        return;
    m_loadingImage = loading;
    Q_EMIT loadingImageChanged(loading);
}

void ImageViewController::setCurrentlySticky(bool sticky)
{
    if (sticky == m_currentlySticky)
        return;
    m_currentlySticky = sticky;
    Q_EMIT currentlyStickyChanged(sticky);
}

void ImageViewController::setDataSource(const ImageViewDataSourcePtr &dataSource)
{
    disconnect(m_dataSourceConnection);
    if (m_dataSource && m_dataSource != dataSource)
        m_dataSource->cancelLoading();
    m_dataSource = dataSource;
    m_ready = false;
    m_scrollView->stopAnimation();
    if (!m_dataSource) {
        m_imageView->setCurrentImage({});
        m_imageView->setMessage({});
        m_imageView->setNotice({});
        m_scrollView->setImageSize({});
        setLoadingImage(false);
        return;
    }
    m_dataSourceConnection =
        connect(m_dataSource.get(), &ImageViewDataSource::changed, this, &ImageViewController::dataSourceChanged);
    requestNeededPicture();
    // What the data source already holds (a file shown before) is ready at once.
    if (m_dataSource->imageLoaded())
        runImageReady();
}

void ImageViewController::dataSourceChanged()
{
    if (!m_dataSource)
        return;
    if (!m_ready) {
        if (m_dataSource->imageLoaded())
            runImageReady();
        return;
    }
    showPicture(true);
    requestNeededPicture();
}

void ImageViewController::showPicture(bool followSize)
{
    const QSize before = m_scrollView->state().imageSize();
    m_imageView->setCurrentImage(m_dataSource->image());
    m_imageView->setMessage(m_dataSource->errorMessage());
    m_imageView->setNotice(m_dataSource->notice());
    m_scrollView->setRotation(m_dataSource->rotationAngle());
    m_scrollView->setImageSize(m_dataSource->imageSize());
    // A decode that corrected the size a preview gave: the fit follows.
    if (followSize && before != m_dataSource->imageSize() && !before.isEmpty())
        fitUpdate(false);
}

void ImageViewController::runImageReady()
{
    m_ignoreFrameUpdates = false;
    m_ready = true;
    showPicture(false);
    setCurrentlySticky(false);
    const ZoomState &state = m_scrollView->state();
    const ZoomRules::FitDecision decision = ZoomRules::fitUpdate(m_dataSource->stickiness(), m_dataSource->zoomLevel(),
                                                                 state.fitMagnification(), state.imageFitsView(), true);
    if (decision.magnification)
        m_scrollView->setMagnification(*decision.magnification, false);
    setCurrentlySticky(decision.sticky);
    const QRectF remembered = m_dataSource->visibleRect();
    const QSizeF document = state.documentSize();
    const QSizeF view = state.viewportSize();
    if (m_dataSource->stickiness() == Stickiness::none && m_restoreScrollPositions && !remembered.isEmpty()
        && (document.width() >= view.width() || document.height() >= view.height()))
        m_scrollView->scrollToVisibleOrigin(remembered.topLeft());
    else
        m_scrollView->recenter();
    fitUpdate(false);
    setLoadingImage(false);
    requestNeededPicture();
    Q_EMIT imageReady();
}

void ImageViewController::fitUpdate(bool animated)
{
    if (m_ignoreFrameUpdates || !m_dataSource || !m_ready)
        return;
    const ZoomState &state = m_scrollView->state();
    const ZoomRules::FitDecision decision =
        ZoomRules::fitUpdate(m_dataSource->stickiness(), m_dataSource->zoomLevel(), state.fitMagnification(),
                             state.imageFitsView(), false);
    if (decision.magnification && !m_dataSource->imageSize().isEmpty())
        m_scrollView->setMagnification(*decision.magnification, animated);
    setCurrentlySticky(decision.sticky);
    Q_EMIT scaleChanged(m_currentlySticky);
}

void ImageViewController::viewportResized()
{
    fitUpdate(false);
    requestNeededPicture();
}

void ImageViewController::requestNeededPicture()
{
    if (!m_dataSource)
        return;
    const QSize imageSize = m_dataSource->imageSize();
    QSize need;
    if (!m_ready || imageSize.isEmpty()) {
        // Not placed yet: the picture that fits the view (the decoder fits the image into it).
        need = m_scrollView->viewportDeviceSize();
        if (m_dataSource->rotationAngle() % 180 != 0)
            need.transpose();
    } else {
        const double shown = magnification();
        // Past the fit, the whole image: each further zoom step would otherwise decode again.
        const double scale = shown > fitMagnification() * 1.001 ? 1.0 : std::min(1.0, shown);
        need = QSize(int(std::ceil(imageSize.width() * scale)), int(std::ceil(imageSize.height() * scale)));
    }
    if (need.width() < 2 || need.height() < 2)
        need = {};
    m_dataSource->requestImage(need);
}

void ImageViewController::rememberState()
{
    if (!m_dataSource || !m_ready)
        return;
    m_dataSource->setVisibleRect(m_scrollView->visibleRect());
    // A fitted file keeps its own zoom level, which shows again once the image fits the view.
    if (!m_currentlySticky)
        m_dataSource->setZoomLevel(magnification());
}

void ImageViewController::zoomIn()
{
    setZoom(ZoomRules::zoomedIn(magnification()));
}

void ImageViewController::zoomOut()
{
    setZoom(ZoomRules::zoomedOut(magnification()));
}

void ImageViewController::setZoom(double zoomLevel)
{
    setZoomAt(zoomLevel, std::nullopt);
}

void ImageViewController::setZoomAt(double zoomLevel, std::optional<QPointF> anchor)
{
    if (m_loadingImage || !m_dataSource || !m_ready)
        return;
    setCurrentlySticky(false);
    m_dataSource->setStickiness(Stickiness::none);
    m_dataSource->setZoomLevel(zoomLevel);
    m_scrollView->setMagnification(m_dataSource->zoomLevel(), true, anchor);
    Q_EMIT scaleChanged(false);
}

void ImageViewController::scaleToFit()
{
    if (m_loadingImage || !m_dataSource || !m_ready)
        return;
    m_dataSource->setStickiness(Stickiness::always);
    fitUpdate(true);
}

void ImageViewController::requestFitToScreen()
{
    Q_EMIT fitToScreen();
}

void ImageViewController::doubleClickAt(QPointF viewportPoint)
{
    if (m_loadingImage || !m_dataSource || !m_ready || m_dataSource->imageSize().isEmpty())
        return;
    switch (ZoomRules::doubleClick(magnification(), m_dataSource->stickiness())) {
    case ZoomRules::DoubleClick::actualSize:
        m_dataSource->setZoomLevel(1.0);
        m_dataSource->setStickiness(Stickiness::none);
        setCurrentlySticky(false);
        m_scrollView->setMagnification(1.0, true, viewportPoint);
        Q_EMIT scaleChanged(false);
        break;
    case ZoomRules::DoubleClick::fit:
        m_dataSource->setStickiness(Stickiness::always);
        setCurrentlySticky(true);
        fitUpdate(true);
        break;
    }
}

void ImageViewController::endLiveMagnification(double magnification)
{
    if (!m_dataSource)
        return;
    m_dataSource->setZoomLevel(magnification);
    m_dataSource->setStickiness(Stickiness::none);
    setCurrentlySticky(false);
}

void ImageViewController::handleZoomValue(const QVariantMap &userInfo)
{
    const QVariant value = userInfo.value(zoomValueKey);
    if (!isNumber(value) || !m_dataSource)
        return;
    const double magnification = ZoomRules::clampMagnification(value.toDouble());
    m_scrollView->setMagnification(magnification, false);
    endLiveMagnification(magnification);
    Q_EMIT scaleChanged(false);
}

void ImageViewController::rotateClockwise()
{
    rotateBy(90);
}

void ImageViewController::rotateCounterclockwise()
{
    rotateBy(-90);
}

void ImageViewController::rotate180()
{
    rotateBy(180);
}

void ImageViewController::rotateBy(int degrees)
{
    if (!m_dataSource || !m_ready)
        return;
    m_dataSource->setRotationAngle(m_dataSource->rotationAngle() + degrees);
    m_scrollView->setRotation(m_dataSource->rotationAngle());
    m_scrollView->recenter();
    fitUpdate(false);
    requestNeededPicture();
}

void ImageViewController::move(int dx, int dy)
{
    const QSize view = m_scrollView->viewport()->size();
    // A tenth of the view per press, as the arrow keys scroll.
    m_scrollView->scrollBy(QPointF(dx * view.width() / 10.0, dy * view.height() / 10.0));
}

void ImageViewController::moveUp()
{
    move(0, -1);
}

void ImageViewController::moveDown()
{
    move(0, 1);
}

void ImageViewController::moveLeft()
{
    move(-1, 0);
}

void ImageViewController::moveRight()
{
    move(1, 0);
}

void ImageViewController::moveNorthWest()
{
    move(-1, -1);
}

void ImageViewController::moveNorthEast()
{
    move(1, -1);
}

void ImageViewController::moveSouthWest()
{
    move(-1, 1);
}

void ImageViewController::moveSouthEast()
{
    move(1, 1);
}

void ImageViewController::recenter()
{
    m_scrollView->recenter();
}

void ImageViewController::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    requestNeededPicture();
}
