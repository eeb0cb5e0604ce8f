#include "ui/rename/RenamePresetsView.h"

#include "core/rename/PXRenamePresets.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QKeyEvent>

namespace {

namespace Key = PXRenameSettingsKey;

constexpr int groupRole = Qt::UserRole + 1;
constexpr int indexRole = Qt::UserRole + 2;

} // namespace

RenamePresetsView::RenamePresetsView(PXRenamePresets *presets, QWidget *parent)
    : QTreeWidget(parent)
    , m_presets(presets)
{
    setObjectName(QStringLiteral("presetsList"));
    setColumnCount(2);
    header()->hide();
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(0, QHeaderView::Stretch);
    header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    setRootIsDecorated(false);
    setIndentation(12);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setDragDropMode(QAbstractItemView::InternalMove);
    setDefaultDropAction(Qt::MoveAction);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);

    connect(this, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *current) {
        if (m_reloading || !current || indexOf(current) < 0)
            return;
        Q_EMIT presetChosen(groupOf(current), indexOf(current));
    });
    connect(this, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *item, int column) {
        if (m_reloading || column != 0 || groupOf(item) != PXRenamePresets::savedPresetsGroup)
            return;
        const qsizetype index = indexOf(item);
        if (index < 0 || index >= m_presets->savedPresets().size())
            return;
        const QString name = item->text(0).trimmed();
        QJsonObject &preset = m_presets->savedPresets()[index];
        // An empty name would leave a preset nobody can pick from a menu: keep the old one.
        if (name.isEmpty()) {
            m_reloading = true;
            item->setText(0, preset.value(Key::presetName).toString());
            m_reloading = false;
            return;
        }
        preset.insert(Key::presetName, name);
        Q_EMIT presetRenamed(index);
    });
}

QString RenamePresetsView::groupOf(const QTreeWidgetItem *item)
{
    return item ? item->data(0, groupRole).toString() : QString();
}

qsizetype RenamePresetsView::indexOf(const QTreeWidgetItem *item)
{
    return item ? item->data(0, indexRole).toLongLong() : -1;
}

void RenamePresetsView::reload(const QString &selectGroup, qsizetype selectIndex)
{
    m_reloading = true;
    clear();
    const auto makeHeader = [this](const QString &title, const QString &identifier) {
        auto *header = new QTreeWidgetItem(this, {title});
        header->setData(0, groupRole, identifier);
        header->setData(0, indexRole, -1);
        // Group rows: shown, never selected, never dragged.
        header->setFlags(Qt::ItemIsEnabled | Qt::ItemIsDropEnabled);
        QFont font = header->font(0);
        font.setBold(true);
        font.setPointSizeF(font.pointSizeF() * 0.85);
        header->setFont(0, font);
        header->setForeground(0, palette().color(QPalette::Disabled, QPalette::Text));
        return header;
    };
    m_savedHeader = makeHeader(tr("PRESETS"), QStringLiteral("presetsHeader"));
    m_recentHeader = makeHeader(tr("RECENT"), QStringLiteral("recentHeader"));
    const auto fill = [](QTreeWidgetItem *header, const QList<QJsonObject> &list, const QString &group, bool editable) {
        for (qsizetype i = 0; i < list.size(); ++i) {
            auto *item = new QTreeWidgetItem(header, {list[i].value(Key::presetName).toString()});
            item->setData(0, groupRole, group);
            item->setData(0, indexRole, qlonglong(i));
            Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
            if (editable)
                flags |= Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
            item->setFlags(flags);
        }
    };
    fill(m_savedHeader, m_presets->savedPresets(), PXRenamePresets::savedPresetsGroup, true);
    fill(m_recentHeader, m_presets->recentSettings(), PXRenamePresets::recentSettingsGroup, false);
    expandAll();
    refreshMarks();
    if (QTreeWidgetItem *selected = itemFor(selectGroup, selectIndex))
        setCurrentItem(selected);
    m_reloading = false;
}

void RenamePresetsView::refreshMarks()
{
    const bool wasReloading = std::exchange(m_reloading, true);
    for (int i = 0; m_savedHeader && i < m_savedHeader->childCount(); ++i) {
        QTreeWidgetItem *item = m_savedHeader->child(i);
        const qsizetype index = indexOf(item);
        const bool altered =
            index < m_presets->savedPresets().size() && m_presets->savedPresets()[index].contains(Key::altered);
        item->setText(1, altered ? QStringLiteral("●") : QString());
        item->setToolTip(1, altered ? tr("Changed since it was saved") : QString());
        QFont font = item->font(0);
        font.setItalic(altered);
        item->setFont(0, font);
    }
    m_reloading = wasReloading;
}

QTreeWidgetItem *RenamePresetsView::itemFor(const QString &group, qsizetype index) const
{
    QTreeWidgetItem *header = group == PXRenamePresets::savedPresetsGroup ? m_savedHeader
        : group == PXRenamePresets::recentSettingsGroup                   ? m_recentHeader
                                                                          : nullptr;
    if (!header || index < 0 || index >= header->childCount())
        return nullptr;
    return header->child(int(index));
}

void RenamePresetsView::editName(qsizetype index)
{
    if (QTreeWidgetItem *item = itemFor(PXRenamePresets::savedPresetsGroup, index)) {
        scrollToItem(item);
        editItem(item, 0);
    }
}

void RenamePresetsView::moveSavedPreset(qsizetype from, qsizetype to)
{
    QList<QJsonObject> &saved = m_presets->savedPresets();
    if (from < 0 || from >= saved.size() || to < 0 || to >= saved.size() || from == to)
        return;
    // The selection stays on the preset it was on, wherever that one moved.
    const QString group = groupOf(currentItem());
    qsizetype selected = indexOf(currentItem());
    if (group == PXRenamePresets::savedPresetsGroup) {
        if (selected == from)
            selected = to;
        else if (from < selected && selected <= to)
            --selected;
        else if (to <= selected && selected < from)
            ++selected;
    }
    saved.move(from, to);
    reload(group, selected);
    Q_EMIT presetMoved(from, to);
}

void RenamePresetsView::dragMoveEvent(QDragMoveEvent *event)
{
    // Saved presets move within their own group only.
    QTreeWidgetItem *target = itemAt(event->position().toPoint());
    const bool inSaved = target && (target == m_savedHeader || groupOf(target) == PXRenamePresets::savedPresetsGroup)
        && event->source() == this;
    if (!inSaved) {
        event->ignore();
        return;
    }
    QTreeWidget::dragMoveEvent(event);
}

void RenamePresetsView::dropEvent(QDropEvent *event)
{
    QTreeWidgetItem *moving = currentItem();
    QTreeWidgetItem *target = itemAt(event->position().toPoint());
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    if (!moving || groupOf(moving) != PXRenamePresets::savedPresetsGroup || !target)
        return;
    if (groupOf(target) != PXRenamePresets::savedPresetsGroup && target != m_savedHeader)
        return;
    const qsizetype from = indexOf(moving);
    // The gap the preset is dropped into: above the row, or below it when dropped on its lower half.
    qsizetype gap = target == m_savedHeader ? 0 : indexOf(target);
    if (target != m_savedHeader && event->position().y() > visualItemRect(target).center().y())
        ++gap;
    moveSavedPreset(from, gap > from ? gap - 1 : gap);
}

void RenamePresetsView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        QList<qsizetype> indexes;
        for (QTreeWidgetItem *item : selectedItems()) {
            if (groupOf(item) == PXRenamePresets::savedPresetsGroup)
                indexes.append(indexOf(item));
        }
        if (!indexes.isEmpty())
            Q_EMIT removeRequested(indexes);
        event->accept();
        return;
    }
    QTreeWidget::keyPressEvent(event);
}
