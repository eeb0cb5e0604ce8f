#include "core/thumbnails/ThumbnailVisibilityUpdater.h"

#include "core/app/Dispatch.h"
#include "core/model/PXFile.h"
#include "core/settings/WindowSettings.h"

#include <QPointer>

#include <algorithm>

namespace {
// Items this many screens away from the view forget their pictures.
constexpr int keepScreens = 3;
// Reading dimensions opens every image of the band: like the decoders, it gives way to the GUI
// thread.
const QString infoPoolName = QStringLiteral("Thumbnail Info");
} // namespace

ThumbnailVisibilityUpdater::ThumbnailVisibilityUpdater(const QList<ThumbnailItemPtr> &items,
                                                       const QHash<const PXFile *, int> &indexByFile,
                                                       WindowSettingsPtr settings, InfoLinesReader reader,
                                                       QObject *parent)
    : QObject(parent)
    , m_items(items)
    , m_indexByFile(indexByFile)
    , m_windowSettings(std::move(settings))
    , m_readInfoLines(std::move(reader))
{
    setBackgroundPriority(namedThreadPool(infoPoolName));
}

void ThumbnailVisibilityUpdater::setVisibleRange(int first, int last, int bandFirst, int bandLast)
{
    QSet<ThumbnailItem *> now;
    now.reserve(bandLast - bandFirst);
    // On-screen cells first, in reading order, so that their requests are the oldest of the
    // most urgent class.
    for (int i = first; i < last && i < m_items.size(); ++i) {
        ThumbnailItem *item = m_items[i].get();
        item->setVisible(Visibility::onscreen);
        now.insert(item);
    }
    for (int i = bandFirst; i < bandLast && i < m_items.size(); ++i) {
        if (i >= first && i < last)
            continue;
        ThumbnailItem *item = m_items[i].get();
        item->setVisible(Visibility::nearby);
        now.insert(item);
    }
    const int span = std::max(1, last - first);
    const int keepFirst = first - keepScreens * span;
    const int keepLast = last + keepScreens * span;
    for (ThumbnailItem *item : std::as_const(m_nearItems)) {
        if (now.contains(item))
            continue;
        item->setVisible(Visibility::offscreen);
        const int index = item->indexPath.value_or(-1);
        if (index < keepFirst || index >= keepLast) {
            Q_EMIT thumbnailForgotten(item);
            item->reset();
        } else {
            now.insert(item); // still close: keep its picture, watch it leave
        }
    }
    m_nearItems = std::move(now);
    requestInfoLines(bandFirst, bandLast);
    requestAttributes(bandFirst, bandLast);
}

void ThumbnailVisibilityUpdater::requestAttributes(int first, int last)
{
    QList<PXFilePtr> wanted;
    for (int i = std::max(0, first); i < last && i < m_items.size(); ++i) {
        const PXFilePtr &file = m_items[i]->file();
        if (!file->hasCachedAttributes() && !m_attributesPending.contains(file.get())) {
            wanted.append(file);
            m_attributesPending.insert(file.get());
        }
    }
    if (wanted.isEmpty())
        return;
    QPointer<ThumbnailVisibilityUpdater> self(this);
    // Two small reads per file, but on a network volume any read may wait: off the GUI thread.
    runOnPool(QStringLiteral("File Attributes"), [self, wanted] {
        for (const PXFilePtr &file : wanted)
            file->warmAttributes();
        postToGui([self, wanted] {
            if (!self)
                return;
            for (const PXFilePtr &file : wanted) {
                self->m_attributesPending.remove(file.get());
                if (const auto it = self->m_indexByFile.constFind(file.get()); it != self->m_indexByFile.cend())
                    Q_EMIT self->attributesRead(*it);
            }
        });
    });
}

void ThumbnailVisibilityUpdater::forget(ThumbnailItem *item)
{
    item->setVisible(Visibility::offscreen);
    item->reset();
    m_nearItems.remove(item);
    Q_EMIT thumbnailForgotten(item);
    m_infoLines.remove(item->file().get());
}

void ThumbnailVisibilityUpdater::clear()
{
    m_nearItems.clear();
    clearInfoLines();
}

std::optional<QStringList> ThumbnailVisibilityUpdater::infoLines(const PXFile *file) const
{
    const auto it = m_infoLines.constFind(file);
    if (it == m_infoLines.cend())
        return std::nullopt;
    return *it;
}

void ThumbnailVisibilityUpdater::forgetInfoLines(const PXFile *file)
{
    m_infoLines.remove(file);
}

void ThumbnailVisibilityUpdater::clearInfoLines()
{
    m_infoLines.clear();
    m_infoLinesPending.clear();
    ++m_infoGeneration;
}

void ThumbnailVisibilityUpdater::requestInfoLines(int first, int last)
{
    const ThumbnailInfoOptions options = m_windowSettings->thumbnailInformation();
    if (!m_windowSettings->thumbnailShowInformation() || options == ThumbnailInfoOptions(ThumbnailInfoOption::filename))
        return;
    QList<PXFilePtr> wanted;
    for (int i = std::max(0, first); i < last && i < m_items.size(); ++i) {
        const PXFilePtr &file = m_items[i]->file();
        if (!m_infoLines.contains(file.get()) && !m_infoLinesPending.contains(file.get())) {
            wanted.append(file);
            m_infoLinesPending.insert(file.get());
        }
    }
    if (wanted.isEmpty())
        return;
    QPointer<ThumbnailVisibilityUpdater> self(this);
    const quint64 generation = m_infoGeneration;
    // Dimensions open each image: read them off the GUI thread.
    runOnPool(infoPoolName, [self, wanted, options, generation, read = m_readInfoLines] {
        QList<QStringList> lines;
        lines.reserve(wanted.size());
        for (const PXFilePtr &file : wanted)
            lines.append(read(*file, options));
        postToGui([self, wanted, lines, generation] {
            if (!self || generation != self->m_infoGeneration)
                return;
            for (qsizetype i = 0; i < wanted.size(); ++i) {
                const PXFile *file = wanted[i].get();
                self->m_infoLinesPending.remove(file);
                const auto it = self->m_indexByFile.constFind(file);
                if (it == self->m_indexByFile.cend())
                    continue;
                self->m_infoLines.insert(file, lines[i]);
                Q_EMIT self->infoLinesChanged(*it);
            }
        });
    });
}
