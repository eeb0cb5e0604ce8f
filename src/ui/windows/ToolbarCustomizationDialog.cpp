#include "ui/windows/ToolbarCustomizationDialog.h"

#include "ui/windows/MainToolbarBuilder.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int identifierRole = Qt::UserRole;
}

ToolbarCustomizationDialog::ToolbarCustomizationDialog(const QStringList &items, QWidget *parent)
    : QDialog(parent)
    , m_list(new QListWidget(this))
{
    setWindowTitle(tr("Customize Toolbar"));
    auto *layout = new QVBoxLayout(this);
    auto *explanation =
        new QLabel(tr("Tick the items to show in the toolbar and drag them into the order you want."), this);
    explanation->setWordWrap(true);
    layout->addWidget(explanation);

    m_list->setDragDropMode(QAbstractItemView::InternalMove);
    m_list->setDefaultDropAction(Qt::MoveAction);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    layout->addWidget(m_list, 1);

    auto *spacers = new QHBoxLayout;
    for (const QString &identifier : MainToolbarBuilder::allItems()) {
        if (!MainToolbarBuilder::isRepeatable(identifier))
            continue;
        auto *add = new QPushButton(tr("Add %1").arg(MainToolbarBuilder::itemTitle(identifier)), this);
        connect(add, &QPushButton::clicked, this, [this, identifier] { addSpacer(identifier); });
        spacers->addWidget(add);
    }
    spacers->addStretch(1);
    layout->addLayout(spacers);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton *defaults = buttons->addButton(tr("Use Default"), QDialogButtonBox::ResetRole);
    connect(defaults, &QPushButton::clicked, this, &ToolbarCustomizationDialog::useDefault);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_acceptButton = buttons->button(QDialogButtonBox::Ok);
    layout->addWidget(buttons);

    connect(m_list, &QListWidget::itemChanged, this, &ToolbarCustomizationDialog::updateAcceptButton);
    fill(items);
}

QStringList ToolbarCustomizationDialog::items() const
{
    QStringList ticked;
    for (int row = 0; row < m_list->count(); ++row) {
        const QListWidgetItem *item = m_list->item(row);
        if (item->checkState() == Qt::Checked)
            ticked.append(item->data(identifierRole).toString());
    }
    return ticked;
}

void ToolbarCustomizationDialog::useDefault()
{
    fill(MainToolbarBuilder::defaultItems());
}

void ToolbarCustomizationDialog::addSpacer(const QString &identifier)
{
    appendRow(identifier, true);
    m_list->scrollToBottom();
    updateAcceptButton();
}

void ToolbarCustomizationDialog::fill(const QStringList &items)
{
    m_list->clear();
    for (const QString &identifier : items)
        appendRow(identifier, true);
    // Separators and spaces that are not used are not listed: the buttons below add them.
    for (const QString &identifier : MainToolbarBuilder::allItems()) {
        if (!items.contains(identifier) && !MainToolbarBuilder::isRepeatable(identifier))
            appendRow(identifier, false);
    }
    updateAcceptButton();
}

void ToolbarCustomizationDialog::appendRow(const QString &identifier, bool ticked)
{
    auto *item = new QListWidgetItem(MainToolbarBuilder::itemTitle(identifier));
    item->setData(identifierRole, identifier);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsDragEnabled);
    item->setCheckState(ticked ? Qt::Checked : Qt::Unchecked);
    m_list->addItem(item);
}

void ToolbarCustomizationDialog::updateAcceptButton()
{
    if (m_acceptButton)
        m_acceptButton->setEnabled(!items().isEmpty());
}
