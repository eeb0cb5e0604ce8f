#pragma once

#include "core/model/PXFileForward.h"
#include "core/thumbnails/ThumbnailGenerator.h"

#include <QImage>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

class ThumbnailItem;
class WindowSettings;
using WindowSettingsPtr = std::shared_ptr<WindowSettings>;

// How much of a grid cell shows; the item asks for its thumbnail only when the cell is on or
// near the screen.
enum class Visibility { offscreen = 0, nearby = 1, onscreen = 2, unknown = 3 };

// Told when an item's picture changed, so that the grid redraws that cell (GUI thread).
class ThumbnailItemDelegate
{
public:
    virtual ~ThumbnailItemDelegate() = default;
    virtual void thumbnailItemThumbnailChanged(ThumbnailItem &item) = 0;
};

// The thumbnail side of one grid cell: asks the generator for a 400-point thumbnail while the
// cell is on screen (high priority) or near it (medium), withdraws the request when the cell
// scrolls away, and keeps the latest picture delivered. Phases: no request and no result; a
// request outstanding; a result present (`lookedForThumbnail`, no request). A failed render
// leaves no picture (the grid shows the file's icon) and is not asked again until `reload`.
// GUI thread only; holds no widgets.
class ThumbnailItem : public std::enable_shared_from_this<ThumbnailItem>
{
public:
    ThumbnailItem(PXFilePtr file, WindowSettingsPtr windowSettings,
                  ThumbnailGenerator &generator = ThumbnailGenerator::shared());
    ~ThumbnailItem();
    ThumbnailItem(const ThumbnailItem &) = delete;
    ThumbnailItem &operator=(const ThumbnailItem &) = delete;

    const PXFilePtr &file() const { return m_file; }
    const WindowSettingsPtr &windowSettings() const { return m_windowSettings; }

    // The delegate, valid while `guard` lives.
    void setController(ThumbnailItemDelegate *controller, QObject *guard);

    Visibility visible() const { return m_visible; }
    void setVisible(Visibility visible); // runs update() when it changes

    std::optional<int> indexPath; // position in the grid (flat index)

    const QImage &thumbnail() const { return m_thumbnail; }
    bool lookedForThumbnail() const { return m_lookedForThumbnail; }
    const ThumbnailGenerator::RequestPtr &thumbnailRequest() const { return m_thumbnailRequest; }

    // Asks, re-prioritises or withdraws by visibility.
    void update();
    // Cancels the outstanding request and forgets the picture.
    void reset();
    // Cancels like reset but keeps the picture on show until the new one arrives, then asks again.
    void reload();
    // The file was turned a quarter turn on disk: the picture on show turns at once, and the
    // new thumbnail is asked for.
    void showTurned(bool clockwise);

    // Grid cells are 400 points square at most.
    static constexpr double thumbnailPoints = 400;

private:
    void cancelRequest();
    void handleResult(const QImage &image, bool final, const std::optional<ThumbnailError> &error);

    PXFilePtr m_file;
    WindowSettingsPtr m_windowSettings;
    ThumbnailGenerator &m_generator;
    ThumbnailItemDelegate *m_controller = nullptr;
    QPointer<QObject> m_controllerGuard;
    Visibility m_visible = Visibility::unknown;
    QImage m_thumbnail;
    bool m_lookedForThumbnail = false;
    ThumbnailGenerator::RequestPtr m_thumbnailRequest;
};

using ThumbnailItemPtr = std::shared_ptr<ThumbnailItem>;
