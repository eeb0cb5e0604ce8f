#include "ui/viewer/video/VlcVideoView.h"

#include <QGuiApplication>
#include <QPalette>
#include <QResizeEvent>

VlcVideoView::VlcVideoView(QWidget *parent)
    : EngineVideoView(VideoPlayerSource::vlc, parent)
    , m_surface(new QWidget(this))
{
    // A window of its own for libvlc, without making every ancestor native too.
    m_surface->setAttribute(Qt::WA_DontCreateNativeAncestors);
    m_surface->setAttribute(Qt::WA_NativeWindow);
    // libvlc draws in a window of its own inside this one; black around the picture.
    QPalette palette = m_surface->palette();
    palette.setColor(QPalette::Window, Qt::black);
    m_surface->setPalette(palette);
    m_surface->setAutoFillBackground(true);
    // Clicks and keys go to the view and its owner, not to the library.
    m_surface->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_surface->setFocusPolicy(Qt::NoFocus);
    m_surface->hide();
}

VlcVideoView::~VlcVideoView() = default;

void VlcVideoView::prepareEngine(VideoEngine &engine)
{
    // Only an X11 window can be handed to libvlc; elsewhere it decodes without a picture.
    const bool x11 = QGuiApplication::platformName() == QLatin1String("xcb");
    engine.setWindow(x11 ? static_cast<quint64>(m_surface->winId()) : 0);
}

void VlcVideoView::openMedia(const QString &path)
{
    m_surface->setGeometry(rect());
    m_surface->show();
    EngineVideoView::openMedia(path);
}

void VlcVideoView::closeMedia()
{
    EngineVideoView::closeMedia();
    m_surface->hide();
    update();
}

void VlcVideoView::resizeEvent(QResizeEvent *event)
{
    EngineVideoView::resizeEvent(event);
    m_surface->setGeometry(rect());
}
