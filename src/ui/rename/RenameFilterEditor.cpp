#include "ui/rename/RenameFilterEditor.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

using Row = PXRenameFilter::Row;
using Key = PXRenameFilter::Key;
using Comparison = PXRenameFilter::Comparison;
using ValueType = PXRenameFilter::ValueType;

QComboBox *keyMenu(QWidget *row)
{
    return row->findChild<QComboBox *>(QStringLiteral("filterKey"));
}

QComboBox *comparisonMenu(QWidget *row)
{
    return row->findChild<QComboBox *>(QStringLiteral("filterComparison"));
}

QLineEdit *valueField(QWidget *row)
{
    return row->findChild<QLineEdit *>(QStringLiteral("filterValue"));
}

QString placeholderFor(ValueType type)
{
    switch (type) {
    case ValueType::number: return QStringLiteral("1000000");
    case ValueType::date: return QStringLiteral("2024-06-30");
    case ValueType::boolean: return QStringLiteral("YES");
    case ValueType::text: break;
    }
    return QString();
}

} // namespace

RenameFilterEditor::RenameFilterEditor(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *header = new QHBoxLayout;
    header->addWidget(new QLabel(tr("Rename only files matching"), this));
    m_allAny = new QComboBox(this);
    m_allAny->setObjectName(QStringLiteral("filterAllAny"));
    m_allAny->addItem(tr("all"), true);
    m_allAny->addItem(tr("any"), false);
    connect(m_allAny, &QComboBox::activated, this, &RenameFilterEditor::edited);
    header->addWidget(m_allAny);
    header->addWidget(new QLabel(tr("of these conditions"), this));
    auto *add = new QToolButton(this);
    add->setObjectName(QStringLiteral("addFilterRow"));
    add->setText(QStringLiteral("+"));
    add->setToolTip(tr("Add a condition"));
    connect(add, &QToolButton::clicked, this, &RenameFilterEditor::addRow);
    header->addWidget(add);
    header->addStretch(1);
    layout->addLayout(header);
    m_rowsLayout = new QVBoxLayout;
    m_rowsLayout->setSpacing(2);
    layout->addLayout(m_rowsLayout);
    m_problem = new QLabel(this);
    m_problem->setObjectName(QStringLiteral("filterProblem"));
    m_problem->setStyleSheet(QStringLiteral("color: #c0392b;"));
    m_problem->setWordWrap(true);
    m_problem->hide();
    layout->addWidget(m_problem);
}

int RenameFilterEditor::rowCount() const
{
    return m_rowsLayout->count();
}

PXRenameFilter RenameFilterEditor::filter() const
{
    PXRenameFilter filter;
    filter.setMatchesAll(m_allAny->currentData().toBool());
    QList<Row> rows;
    for (int i = 0; i < m_rowsLayout->count(); ++i) {
        QWidget *widget = m_rowsLayout->itemAt(i)->widget();
        Row row;
        row.key = Key(keyMenu(widget)->currentData().toInt());
        row.comparison = Comparison(comparisonMenu(widget)->currentData().toInt());
        row.value = valueField(widget)->text();
        // A condition without a value is still being written: it filters nothing yet.
        if (row.value.trimmed().isEmpty())
            continue;
        // Texts compare as a person reads them: "jpg" finds "JPG", "e" finds "é".
        row.ignoreCase = true;
        row.ignoreDiacritics = true;
        rows.append(row);
    }
    filter.setRows(rows);
    return filter;
}

void RenameFilterEditor::setFilter(const PXRenameFilter &filter)
{
    m_filling = true;
    while (QLayoutItem *item = m_rowsLayout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    m_allAny->setCurrentIndex(filter.matchesAll() ? 0 : 1);
    for (const Row &row : filter.rows())
        m_rowsLayout->addWidget(makeRow(row));
    m_problem->hide();
    m_filling = false;
}

void RenameFilterEditor::setProblem(const QString &text)
{
    m_problem->setText(text.isEmpty() ? QString()
                                      : tr("The saved filter could not be read (%1), so no file is renamed. "
                                           "Set a filter again or remove its conditions.")
                                            .arg(text));
    m_problem->setVisible(!text.isEmpty());
}

void RenameFilterEditor::addRow()
{
    Row row;
    row.key = Key::extension;
    row.comparison = Comparison::equal;
    m_rowsLayout->addWidget(makeRow(row));
    edited();
}

QWidget *RenameFilterEditor::makeRow(const Row &row)
{
    auto *widget = new QWidget(this);
    auto *layout = new QHBoxLayout(widget);
    layout->setContentsMargins(16, 0, 0, 0);
    auto *key = new QComboBox(widget);
    key->setObjectName(QStringLiteral("filterKey"));
    for (const Key k : PXRenameFilter::allKeys())
        key->addItem(PXRenameFilter::keyTitle(k), int(k));
    key->setCurrentIndex(key->findData(int(row.key)));
    auto *comparison = new QComboBox(widget);
    comparison->setObjectName(QStringLiteral("filterComparison"));
    auto *value = new QLineEdit(row.value, widget);
    value->setObjectName(QStringLiteral("filterValue"));
    auto *remove = new QToolButton(widget);
    remove->setText(QStringLiteral("−"));
    remove->setToolTip(tr("Remove this condition"));
    layout->addWidget(key);
    layout->addWidget(comparison);
    layout->addWidget(value, 1);
    layout->addWidget(remove);
    fillComparisons(widget, row.comparison);

    connect(key, &QComboBox::activated, this, [this, widget] {
        fillComparisons(widget, Comparison(comparisonMenu(widget)->currentData().toInt()));
        edited();
    });
    connect(comparison, &QComboBox::activated, this, &RenameFilterEditor::edited);
    connect(value, &QLineEdit::textEdited, this, &RenameFilterEditor::edited);
    connect(remove, &QToolButton::clicked, this, [this, widget] {
        m_rowsLayout->removeWidget(widget);
        widget->deleteLater();
        edited();
    });
    return widget;
}

void RenameFilterEditor::fillComparisons(QWidget *row, Comparison chosen)
{
    const ValueType type = PXRenameFilter::valueType(Key(keyMenu(row)->currentData().toInt()));
    QComboBox *menu = comparisonMenu(row);
    menu->clear();
    for (const Comparison c : PXRenameFilter::comparisonsFor(type))
        menu->addItem(PXRenameFilter::comparisonTitle(c, type), int(c));
    const int index = menu->findData(int(chosen));
    menu->setCurrentIndex(index >= 0 ? index : 0);
    valueField(row)->setPlaceholderText(placeholderFor(type));
}

void RenameFilterEditor::edited()
{
    if (m_filling)
        return;
    m_problem->hide();
    Q_EMIT filterChanged();
}
