#include "thumbnails/ThumbnailItem.h"

#include "app/Dispatch.h"

#include <QImageReader>

ThumbnailItem::ThumbnailItem(PXFilePtr file, WindowSettingsPtr windowSettings, ThumbnailGenerator &)
    : m_file(std::move(file))
    , m_windowSettings(std::move(windowSettings))
{
}

ThumbnailItem::~ThumbnailItem() = default;

void ThumbnailItem::setController(ThumbnailItemDelegate *controller, QObject *guard)
{
    m_controller = controller;
    m_controllerGuard = guard;
}

void ThumbnailItem::setVisible(Visibility visible)
{
    if (visible == m_visible)
        return;
    m_visible = visible;
    update();
}

void ThumbnailItem::update()
{
    if (m_lookedForThumbnail || m_requested || (m_visible != Visibility::onscreen && m_visible != Visibility::nearby))
        return;
    if (!m_file->isImage()) {
        m_lookedForThumbnail = true;
        return;
    }
    m_requested = true;
    std::weak_ptr<ThumbnailItem> weak = weak_from_this();
    const QString path = m_file->resolvedPath();
    runOnPool(QStringLiteral("Thumbnail Generator"), [weak, path] {
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QSize size = reader.size();
        if (size.isValid())
            reader.setScaledSize(size.scaled(400, 400, Qt::KeepAspectRatio));
        QImage image = reader.read();
        postToGui([weak, image] {
            auto self = weak.lock();
            if (!self)
                return;
            self->m_requested = false;
            self->m_lookedForThumbnail = true;
            self->m_thumbnail = image;
            if (self->m_controllerGuard && self->m_controller)
                self->m_controller->thumbnailItemThumbnailChanged(*self);
        });
    });
}

void ThumbnailItem::reset()
{
    m_thumbnail = {};
    m_lookedForThumbnail = false;
}

void ThumbnailItem::reload()
{
    m_lookedForThumbnail = false;
    update();
}
