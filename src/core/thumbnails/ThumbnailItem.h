#pragma once

#include "model/PXFile.h"
#include "thumbnails/ThumbnailGenerator.h"

#include <QImage>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

class ThumbnailItem;
class WindowSettings;
using WindowSettingsPtr = std::shared_ptr<WindowSettings>;

enum class Visibility { offscreen = 0, nearby = 1, onscreen = 2, unknown = 3 };

class ThumbnailItemDelegate
{
public:
    virtual ~ThumbnailItemDelegate() = default;
    virtual void thumbnailItemThumbnailChanged(ThumbnailItem &item) = 0;
};

// Stand-in until the thumbnail generator lands: decodes a reduced image on a pool.
class ThumbnailItem : public std::enable_shared_from_this<ThumbnailItem>
{
public:
    ThumbnailItem(PXFilePtr file, WindowSettingsPtr windowSettings,
                  ThumbnailGenerator &generator = ThumbnailGenerator::shared());
    ~ThumbnailItem();

    const PXFilePtr &file() const { return m_file; }
    void setController(ThumbnailItemDelegate *controller, QObject *guard);
    Visibility visible() const { return m_visible; }
    void setVisible(Visibility visible);
    std::optional<int> indexPath;
    const QImage &thumbnail() const { return m_thumbnail; }
    bool lookedForThumbnail() const { return m_lookedForThumbnail; }
    void update();
    void reset();
    void reload();

private:
    PXFilePtr m_file;
    WindowSettingsPtr m_windowSettings;
    ThumbnailItemDelegate *m_controller = nullptr;
    QPointer<QObject> m_controllerGuard;
    Visibility m_visible = Visibility::unknown;
    QImage m_thumbnail;
    bool m_lookedForThumbnail = false;
    bool m_requested = false;
};

using ThumbnailItemPtr = std::shared_ptr<ThumbnailItem>;
