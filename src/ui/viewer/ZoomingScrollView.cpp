#include "ui/viewer/ZoomingScrollView.h"

#include "core/viewer/ZoomRules.h"
#include "ui/viewer/CenteringClipView.h"
#include "ui/viewer/ImageView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QVariantAnimation>
#include <QWheelEvent>

#include <cmath>

ZoomingScrollView::ZoomingScrollView(QWidget *parent)
    : QAbstractScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    // The scroll bars keep the position (the keys move them) but stay hidden: scroll bars that
    // came and went with the zoom would change the view's size, and with it the fit.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_clipView = new CenteringClipView(&m_state);
    m_imageView = m_clipView->documentView();
    setViewport(m_clipView);
    m_animation = new QVariantAnimation(this);
    m_animation->setDuration(animationMilliseconds);
    m_animation->setEasingCurve(QEasingCurve::OutCubic);
    connect(m_animation, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        if (m_animation->state() == QAbstractAnimation::Running)
            applyMagnification(value.toDouble(), m_animationAnchor);
    });
    connect(m_animation, &QVariantAnimation::finished, this,
            [this] { applyMagnification(m_animationTarget, m_animationAnchor); });
    syncViewportSize();
}

ZoomingScrollView::~ZoomingScrollView() = default;

void ZoomingScrollView::setImageSize(QSize imageSize)
{
    m_state.setImageSize(imageSize);
    syncScrollBars();
    m_clipView->placeDocument();
}

void ZoomingScrollView::setRotation(int degrees)
{
    if (m_state.rotation() == ((degrees / 90 * 90) % 360 + 360) % 360)
        return;
    m_state.setRotation(degrees);
    syncScrollBars();
    m_clipView->placeDocument();
}

double ZoomingScrollView::magnification() const
{
    return isAnimating() ? m_animationTarget : m_state.magnification();
}

bool ZoomingScrollView::isAnimating() const
{
    return m_animation->state() == QAbstractAnimation::Running;
}

void ZoomingScrollView::setMagnification(double magnification, bool animated, std::optional<QPointF> anchor)
{
    magnification = ZoomRules::clampMagnification(magnification);
    const QPointF point = anchor.value_or(QPointF(viewport()->width() / 2.0, viewport()->height() / 2.0));
    if (animated && !m_disableAnimation && isVisible() && magnification != m_state.magnification()) {
        m_animation->stop();
        m_animationTarget = magnification;
        m_animationAnchor = point;
        m_animation->setStartValue(m_state.magnification());
        m_animation->setEndValue(magnification);
        m_animation->start();
        // Reported at once with the target, so that the owner asks for the picture it needs.
        Q_EMIT magnificationChanged(magnification);
        return;
    }
    m_animation->stop();
    m_animationTarget = magnification;
    applyMagnification(magnification, point);
}

void ZoomingScrollView::stopAnimation()
{
    if (!isAnimating())
        return;
    m_animation->stop();
    applyMagnification(m_animationTarget, m_animationAnchor);
}

void ZoomingScrollView::applyMagnification(double magnification, QPointF anchor)
{
    m_state.setMagnification(magnification, anchor);
    syncScrollBars();
    m_clipView->placeDocument();
    Q_EMIT magnificationChanged(m_state.magnification());
}

void ZoomingScrollView::scrollBy(QPointF delta)
{
    setScrollPosition(m_state.scrollPosition() + delta);
}

void ZoomingScrollView::setScrollPosition(QPointF position)
{
    const QPointF before = m_state.scrollPosition();
    m_state.setScrollPosition(position);
    if (m_state.scrollPosition() == before)
        return;
    syncScrollBars();
    m_clipView->placeDocument();
    Q_EMIT scrolled();
}

void ZoomingScrollView::recenter()
{
    m_state.recenter();
    syncScrollBars();
    m_clipView->placeDocument();
    Q_EMIT scrolled();
}

void ZoomingScrollView::scrollToVisibleOrigin(QPointF rotatedImagePoint)
{
    m_state.scrollToVisibleOrigin(rotatedImagePoint);
    syncScrollBars();
    m_clipView->placeDocument();
}

QSize ZoomingScrollView::viewportDeviceSize() const
{
    const qreal ratio = viewport()->devicePixelRatioF();
    return QSize(int(std::lround(viewport()->width() * ratio)), int(std::lround(viewport()->height() * ratio)));
}

void ZoomingScrollView::syncViewportSize()
{
    m_state.setDevicePixelRatio(viewport()->devicePixelRatioF());
    m_state.setViewportSize(QSizeF(viewport()->size()));
    syncScrollBars();
    m_clipView->placeDocument();
}

void ZoomingScrollView::syncScrollBars()
{
    m_syncingScrollBars = true;
    const QPointF maximum = m_state.maximumScrollPosition();
    const QPointF position = m_state.scrollPosition();
    const QSize view = viewport()->size();
    // A tenth of the view per arrow key: several presses cross it without losing one's place.
    horizontalScrollBar()->setRange(0, int(std::ceil(maximum.x())));
    horizontalScrollBar()->setPageStep(view.width());
    horizontalScrollBar()->setSingleStep(qMax(1, view.width() / 10));
    horizontalScrollBar()->setValue(int(std::lround(position.x())));
    verticalScrollBar()->setRange(0, int(std::ceil(maximum.y())));
    verticalScrollBar()->setPageStep(view.height());
    verticalScrollBar()->setSingleStep(qMax(1, view.height() / 10));
    verticalScrollBar()->setValue(int(std::lround(position.y())));
    m_syncingScrollBars = false;
}

void ZoomingScrollView::resizeEvent(QResizeEvent *event)
{
    // Called for the viewport's resizes too, which is what counts.
    QAbstractScrollArea::resizeEvent(event);
    const QSizeF before = m_state.viewportSize();
    const qreal ratio = m_state.devicePixelRatio();
    syncViewportSize();
    if (before != m_state.viewportSize() || ratio != m_state.devicePixelRatio())
        Q_EMIT frameChanged();
}

void ZoomingScrollView::showEvent(QShowEvent *event)
{
    QAbstractScrollArea::showEvent(event);
    // The screen, and with it the pixel ratio, is known for sure once shown.
    const qreal ratio = m_state.devicePixelRatio();
    syncViewportSize();
    if (ratio != m_state.devicePixelRatio())
        Q_EMIT frameChanged();
}

void ZoomingScrollView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    m_clipView->paintBackground(painter, event->rect());
}

void ZoomingScrollView::scrollContentsBy(int, int)
{
    if (m_syncingScrollBars)
        return;
    m_state.setScrollPosition(QPointF(horizontalScrollBar()->value(), verticalScrollBar()->value()));
    m_clipView->placeDocument();
    Q_EMIT scrolled();
}

bool ZoomingScrollView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::NativeGesture) {
        auto *gesture = static_cast<QNativeGestureEvent *>(event);
        switch (gesture->gestureType()) {
        case Qt::ZoomNativeGesture:
            stopAnimation();
            m_liveMagnifying = true;
            applyMagnification(m_state.magnification() * (1.0 + gesture->value()), gesture->position());
            return true;
        case Qt::EndNativeGesture:
            if (m_liveMagnifying) {
                m_liveMagnifying = false;
                Q_EMIT liveMagnificationEnded(m_state.magnification());
            }
            return true;
        default: break;
        }
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void ZoomingScrollView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mousePressEvent(event);
        return;
    }
    m_dragStart = event->position();
    m_lastDragPoint = event->position();
    event->accept();
}

void ZoomingScrollView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragStart || !(event->buttons() & Qt::LeftButton)) {
        QAbstractScrollArea::mouseMoveEvent(event);
        return;
    }
    const QPointF delta = m_lastDragPoint - event->position();
    m_lastDragPoint = event->position();
    if (viewport()->cursor().shape() != Qt::ClosedHandCursor)
        viewport()->setCursor(Qt::ClosedHandCursor);
    scrollBy(delta);
    event->accept();
}

void ZoomingScrollView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && m_dragStart) {
        m_dragStart.reset();
        viewport()->unsetCursor();
        event->accept();
        return;
    }
    QAbstractScrollArea::mouseReleaseEvent(event);
}

void ZoomingScrollView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mouseDoubleClickEvent(event);
        return;
    }
    Q_EMIT doubleClicked(event->position());
    event->accept();
}

void ZoomingScrollView::wheelEvent(QWheelEvent *event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    // One notch (120) is one zoom step; touchpads send fractions of it.
    const double notches = event->angleDelta().y() / 120.0;
    if (notches == 0)
        return;
    const double factor =
        notches > 0 ? std::pow(ZoomRules::zoomInFactor, notches) : std::pow(ZoomRules::zoomOutFactor, -notches);
    Q_EMIT zoomRequested(factor, event->position());
    event->accept();
}
