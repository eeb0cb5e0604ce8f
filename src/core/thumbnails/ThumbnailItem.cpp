#include "core/thumbnails/ThumbnailItem.h"

#include <QTransform>

ThumbnailItem::ThumbnailItem(PXFilePtr file, WindowSettingsPtr windowSettings, ThumbnailGenerator &generator)
    : m_file(std::move(file))
    , m_windowSettings(std::move(windowSettings))
    , m_generator(generator)
{ }

ThumbnailItem::~ThumbnailItem()
{
    reset();
}

void ThumbnailItem::setController(ThumbnailItemDelegate *controller, QObject *guard)
{
    m_controller = controller;
    m_controllerGuard = guard;
}

void ThumbnailItem::setVisible(Visibility visible)
{
    if (m_visible == visible)
        return;
    m_visible = visible;
    update();
}

void ThumbnailItem::update()
{
    if (m_lookedForThumbnail && !m_thumbnailRequest)
        return;

    ThumbnailGenerator::Priority wanted = ThumbnailGenerator::Priority::high;
    switch (m_visible) {
    case Visibility::offscreen:
    case Visibility::unknown:
        if (m_thumbnailRequest) {
            m_generator.remove(m_thumbnailRequest);
            m_thumbnailRequest.reset();
        }
        return;
    case Visibility::nearby: wanted = ThumbnailGenerator::Priority::medium; break;
    case Visibility::onscreen: wanted = ThumbnailGenerator::Priority::high; break;
    }

    if (m_thumbnailRequest) {
        m_thumbnailRequest->setPriority(wanted);
        return;
    }

    // The handler holds the item weakly: an item released while its request runs drops the result.
    auto cell = std::make_shared<ThumbnailGenerator::Request *>(nullptr);
    std::weak_ptr<ThumbnailItem> weakSelf = weak_from_this();
    auto handler = [weakSelf, cell](const QImage &image, bool final, std::optional<ThumbnailError> error) {
        const auto self = weakSelf.lock();
        if (!self || !self->m_thumbnailRequest || self->m_thumbnailRequest.get() != *cell)
            return;
        self->handleResult(image, final, error);
    };
    m_thumbnailRequest = std::make_shared<ThumbnailGenerator::Request>(m_file, QSizeF(thumbnailPoints, thumbnailPoints),
                                                                       wanted, std::move(handler));
    *cell = m_thumbnailRequest.get();
    m_generator.add(m_thumbnailRequest);
}

void ThumbnailItem::handleResult(const QImage &image, bool final, const std::optional<ThumbnailError> &error)
{
    m_lookedForThumbnail = true;
    m_thumbnail = image;
    if (final || error)
        m_thumbnailRequest.reset();
    if (m_controller && m_controllerGuard)
        m_controller->thumbnailItemThumbnailChanged(*this);
}

void ThumbnailItem::cancelRequest()
{
    if (!m_thumbnailRequest)
        return;
    m_thumbnailRequest->cancel();
    m_thumbnailRequest.reset();
}

void ThumbnailItem::reset()
{
    cancelRequest();
    m_thumbnail = QImage();
    m_lookedForThumbnail = false;
}

void ThumbnailItem::reload()
{
    cancelRequest();
    m_lookedForThumbnail = false;
    update();
}

void ThumbnailItem::showTurned(bool clockwise)
{
    if (!m_thumbnail.isNull()) {
        m_thumbnail = m_thumbnail.transformed(QTransform().rotate(clockwise ? 90 : -90));
        if (m_controller && m_controllerGuard)
            m_controller->thumbnailItemThumbnailChanged(*this);
    }
    reload();
}
