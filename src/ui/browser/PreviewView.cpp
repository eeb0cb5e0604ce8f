#include "ui/browser/PreviewView.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/imaging/ImageDecoder.h"
#include "core/model/PXFile.h"

#include <QPainter>
#include <QPointer>

PreviewView::PreviewView(QWidget *parent)
    : QWidget(parent)
{
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setMinimumSize(120, 120);
}

void PreviewView::setFile(const PXFilePtr &file)
{
    if (file == m_file)
        return;
    m_file = file;
    m_loadedFor = {};
    load();
}

void PreviewView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // Decode again only when the view grew past what the last decode covered.
    const QSize wanted = size() * devicePixelRatioF();
    if (m_file && (wanted.width() > m_loadedFor.width() || wanted.height() > m_loadedFor.height()))
        load();
}

void PreviewView::load()
{
    const quint64 generation = ++m_generation;
    m_message.clear();
    if (!m_file || !m_file->isImage()) {
        m_image = {};
        m_message = m_file ? m_file->displayName() : QString();
        update();
        return;
    }
    const QSize target = size() * devicePixelRatioF();
    m_loadedFor = target;
    const QString path = m_file->resolvedPath();
    const QByteArray nativePath = m_file->resolvedNativePath();
    QPointer<PreviewView> self(this);
    runOnPool(QStringLiteral("Preview"), [self, path, nativePath, target, generation] {
        // The thumbnails' decoder: upright, scaled while decoding, within its memory limit.
        ImageDecoder::Options options;
        options.fitSize = target;
        QString error;
        const QImage image = ImageDecoder::decode(nativePath, options, &error);
        postToGui([self, image, error, generation, path] {
            if (!self || generation != self->m_generation)
                return;
            self->m_image = image;
            if (image.isNull()) {
                logError(QStringLiteral("Cannot show %1: %2").arg(path, error));
                self->m_message = tr("The image cannot be shown.");
            }
            self->update();
            Q_EMIT self->imageShown();
        });
    });
}

void PreviewView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_image.isNull()) {
        if (!m_message.isEmpty()) {
            painter.setPen(palette().color(QPalette::PlaceholderText));
            painter.drawText(rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap, m_message);
        }
        return;
    }
    const QRectF area = QRectF(rect()).adjusted(8, 8, -8, -8);
    // Fitted to the view, small images enlarged too, as a viewer set to fit shows them.
    QSizeF size = QSizeF(m_image.size()) / devicePixelRatioF();
    size.scale(area.size(), Qt::KeepAspectRatio);
    QRectF target(QPointF(), size);
    target.moveCenter(area.center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    painter.drawImage(target, m_image);
}
