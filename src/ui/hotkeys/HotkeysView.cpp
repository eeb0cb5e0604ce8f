#include "ui/hotkeys/HotkeysView.h"

#include "ui/hotkeys/HotkeysController.h"
#include "ui/hotkeys/KeyRecorder.h"

#include <QColor>
#include <QFont>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

enum Role {
    IdentifierRole = Qt::UserRole + 1,
    ConflictRole,
};

enum Column {
    TitleColumn = 0,
    KeysColumn = 1,
};

} // namespace

HotkeysView::HotkeysView(HotkeysController *controller, QWidget *parent)
    : QWidget(parent)
    , m_controller(controller)
    , m_search(new QLineEdit(this))
    , m_tree(new QTreeView(this))
    , m_model(new QStandardItemModel(this))
    , m_filter(new QSortFilterProxyModel(this))
    , m_recorder(new KeyRecorder(this))
    , m_details(new QLabel(this))
    , m_add(new QPushButton(tr("Add Key…"), this))
    , m_clear(new QPushButton(tr("Clear"), this))
    , m_reset(new QPushButton(tr("Reset"), this))
    , m_resetAll(new QPushButton(tr("Reset All"), this))
{
    setObjectName(QStringLiteral("hotkeysView"));
    setAccessibleName(tr("Hotkeys"));
    m_search->setObjectName(QStringLiteral("hotkeysSearch"));
    m_search->setPlaceholderText(tr("Search commands or keys"));
    m_search->setAccessibleName(tr("Search hotkeys"));
    m_search->setClearButtonEnabled(true);

    m_model->setHorizontalHeaderLabels({tr("Command"), tr("Keys")});
    m_filter->setSourceModel(m_model);
    m_filter->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_filter->setFilterKeyColumn(-1);
    // A group that matches shows all its commands; a command that matches shows its group.
    m_filter->setRecursiveFilteringEnabled(true);
    m_filter->setAutoAcceptChildRows(true);
    m_tree->setObjectName(QStringLiteral("hotkeysTable"));
    m_tree->setAccessibleName(tr("Commands and their keys"));
    m_tree->setModel(m_filter);
    m_tree->setUniformRowHeights(true);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tree->setAlternatingRowColors(true);
    m_tree->header()->setStretchLastSection(true);

    m_details->setObjectName(QStringLiteral("hotkeyDetails"));
    m_details->setWordWrap(true);
    m_details->setTextFormat(Qt::PlainText);
    m_details->setMinimumHeight(m_details->fontMetrics().lineSpacing() * 2);
    for (QPushButton *button : {m_add, m_clear, m_reset, m_resetAll})
        button->setAccessibleName(button->text().remove(QStringLiteral("…")));
    m_add->setObjectName(QStringLiteral("addKey"));
    m_clear->setObjectName(QStringLiteral("clearKeys"));
    m_reset->setObjectName(QStringLiteral("resetKeys"));
    m_resetAll->setObjectName(QStringLiteral("resetAllKeys"));
    m_add->setToolTip(tr("Record another key for the selected command"));
    m_clear->setToolTip(tr("Leave the selected command without keys"));
    m_reset->setToolTip(tr("Give the selected command its default keys again"));
    m_resetAll->setToolTip(tr("Give every command its default keys again"));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_search);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_details);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_recorder, 1);
    buttons->addWidget(m_add);
    buttons->addWidget(m_clear);
    buttons->addWidget(m_reset);
    buttons->addStretch();
    buttons->addWidget(m_resetAll);
    layout->addLayout(buttons);

    connect(m_search, &QLineEdit::textChanged, this, &HotkeysView::setSearchText);
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this, &HotkeysView::updateDetails);
    connect(m_tree, &QTreeView::doubleClicked, this, [this](const QModelIndex &index) {
        if (index.parent().isValid())
            recordKey();
    });
    connect(m_add, &QPushButton::clicked, this, &HotkeysView::recordKey);
    connect(m_clear, &QPushButton::clicked, this, &HotkeysView::clearKeys);
    connect(m_reset, &QPushButton::clicked, this, &HotkeysView::resetSelected);
    connect(m_resetAll, &QPushButton::clicked, this, &HotkeysView::resetAll);
    connect(m_recorder, &KeyRecorder::recorded, this, &HotkeysView::keyRecorded);
    connect(m_recorder, &KeyRecorder::cancelled, this, &HotkeysView::updateDetails);
    if (m_controller)
        connect(m_controller, &HotkeysController::tableChanged, this, &HotkeysView::refreshRows);

    rebuild();
}

void HotkeysView::rebuild()
{
    m_model->removeRows(0, m_model->rowCount());
    if (!m_controller)
        return;
    QHash<QString, QStandardItem *> groups;
    for (const HotkeyTable::Row &row : m_controller->table().rows()) {
        QStandardItem *group = groups.value(row.group);
        if (!group) {
            group = new QStandardItem(row.group);
            QFont bold = group->font();
            bold.setBold(true);
            group->setFont(bold);
            group->setSelectable(false);
            m_model->appendRow({group, new QStandardItem});
            groups.insert(row.group, group);
        }
        auto *title = new QStandardItem(row.title);
        title->setData(row.identifier, IdentifierRole);
        title->setToolTip(row.identifier);
        group->appendRow({title, new QStandardItem});
    }
    refreshRows();
    m_tree->expandAll();
    m_tree->resizeColumnToContents(TitleColumn);
}

QStandardItem *HotkeysView::itemFor(const QString &identifier) const
{
    for (int g = 0; g < m_model->rowCount(); ++g) {
        QStandardItem *group = m_model->item(g);
        for (int r = 0; r < group->rowCount(); ++r) {
            if (group->child(r)->data(IdentifierRole).toString() == identifier)
                return group->child(r);
        }
    }
    return nullptr;
}

void HotkeysView::refreshRows()
{
    if (!m_controller)
        return;
    const HotkeyTable &table = m_controller->table();
    for (int g = 0; g < m_model->rowCount(); ++g) {
        QStandardItem *group = m_model->item(g);
        for (int r = 0; r < group->rowCount(); ++r) {
            QStandardItem *title = group->child(r, TitleColumn);
            QStandardItem *keys = group->child(r, KeysColumn);
            const HotkeyTable::Row *row = table.row(title->data(IdentifierRole).toString());
            if (!row)
                continue;
            keys->setText(HotkeysController::keysText(row->keys()));
            // The user's own keys stand out from the defaults.
            QFont font = keys->font();
            font.setBold(row->isCustomized());
            keys->setFont(font);
            const bool conflict = table.hasConflict(row->identifier);
            title->setData(conflict, ConflictRole);
            keys->setIcon(conflict ? QIcon::fromTheme(QStringLiteral("dialog-warning")) : QIcon());
            keys->setData(conflict ? QVariant::fromValue(QColor(Qt::red)) : QVariant(), Qt::ForegroundRole);
            keys->setToolTip(conflict ? tr("This key is also used by another command") : QString());
            keys->setData(conflict ? tr("%1, conflicting").arg(keys->text()) : keys->text(), Qt::AccessibleTextRole);
        }
    }
    updateDetails();
}

QString HotkeysView::selectedCommand() const
{
    return m_tree->currentIndex().siblingAtColumn(TitleColumn).data(IdentifierRole).toString();
}

bool HotkeysView::selectCommand(const QString &identifier)
{
    QStandardItem *item = itemFor(identifier);
    const QModelIndex index = item ? m_filter->mapFromSource(item->index()) : QModelIndex();
    if (!index.isValid())
        return false;
    m_tree->expand(index.parent());
    m_tree->setCurrentIndex(index);
    m_tree->scrollTo(index);
    return true;
}

void HotkeysView::setSearchText(const QString &text)
{
    if (m_search->text() != text)
        m_search->setText(text);
    m_filter->setFilterFixedString(text.trimmed());
    m_tree->expandAll();
}

QStringList HotkeysView::shownCommands() const
{
    QStringList shown;
    for (int g = 0; g < m_filter->rowCount(); ++g) {
        const QModelIndex group = m_filter->index(g, TitleColumn);
        for (int r = 0; r < m_filter->rowCount(group); ++r)
            shown.append(m_filter->index(r, TitleColumn, group).data(IdentifierRole).toString());
    }
    return shown;
}

bool HotkeysView::isMarkedAsConflict(const QString &identifier) const
{
    const QStandardItem *item = itemFor(identifier);
    return item && item->data(ConflictRole).toBool();
}

void HotkeysView::recordKey()
{
    if (selectedCommand().isEmpty())
        return;
    m_recorder->start();
}

void HotkeysView::keyRecorded(const QKeySequence &key)
{
    const QString identifier = selectedCommand();
    const HotkeyTable::Row *row = m_controller ? m_controller->table().row(identifier) : nullptr;
    if (!row)
        return;
    QList<QKeySequence> keys = row->keys();
    keys.append(key);
    m_controller->setKeys(identifier, keys);
    m_recorder->clear();
}

void HotkeysView::clearKeys()
{
    if (const QString identifier = selectedCommand(); m_controller && !identifier.isEmpty())
        m_controller->setKeys(identifier, {});
}

void HotkeysView::resetSelected()
{
    if (const QString identifier = selectedCommand(); m_controller && !identifier.isEmpty())
        m_controller->reset(identifier);
}

void HotkeysView::resetAll()
{
    if (m_controller)
        m_controller->resetAll();
}

// Under the list: what the selected command's keys collide with, else its default keys.
void HotkeysView::updateDetails()
{
    const QString identifier = selectedCommand();
    const HotkeyTable::Row *row =
        m_controller && !identifier.isEmpty() ? m_controller->table().row(identifier) : nullptr;
    m_add->setEnabled(row != nullptr);
    m_clear->setEnabled(row != nullptr && !row->keys().isEmpty());
    m_reset->setEnabled(row != nullptr && row->userKeys.has_value());
    m_resetAll->setEnabled(m_controller && !m_controller->table().bindings().isEmpty());
    if (!row) {
        m_details->clear();
        return;
    }
    QStringList lines;
    const HotkeyTable &table = m_controller->table();
    for (const QKeySequence &key : row->keys()) {
        QStringList others;
        for (const QString &other : table.rowsWithKey(key, identifier)) {
            const HotkeyTable::Row *otherRow = table.row(other);
            others.append(QStringLiteral("%1 (%2)").arg(otherRow->title, otherRow->group));
        }
        if (!others.isEmpty())
            lines.append(tr("%1 is also used by %2: neither works until one is changed.")
                             .arg(HotkeysController::keyText(key), others.join(QStringLiteral(", "))));
    }
    if (lines.isEmpty())
        lines.append(row->defaultKeys.isEmpty() ? tr("No default keys.")
                                                : tr("Default: %1").arg(HotkeysController::keysText(row->defaultKeys)));
    m_details->setText(lines.join(QLatin1Char('\n')));
    QPalette palette = m_details->palette();
    palette.setColor(QPalette::WindowText,
                     table.hasConflict(identifier) ? QColor(Qt::red) : this->palette().color(QPalette::WindowText));
    m_details->setPalette(palette);
}
