#include "ui/rename/RenameRuleEditor.h"

#include "core/rename/PXRangeFormatter.h"
#include "core/rename/RenameTextHelpers.h"

#include <QComboBox>
#include <QDateTime>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <QValidator>

namespace {

using Kind = PXRenameCriterion::Kind;
namespace C = PXRenameConstant;

// Indentation of a nested row, per level.
constexpr int nestingIndent = 28;

// The range field refuses what is no range while the user types, and says why.
class RangeValidator : public QValidator
{
public:
    using QValidator::QValidator;
    State validate(QString &input, int &) const override
    {
        if (input.isEmpty())
            return Intermediate;
        for (const QChar c : std::as_const(input)) {
            if (!c.isDigit() && c != QLatin1Char('-') && c != QLatin1Char(':'))
                return Invalid;
        }
        return PXRangeFormatter().getObjectValue(input) ? Acceptable : Intermediate;
    }
};

int depthOf(const RenameRuleRowWidget *row)
{
    int depth = 0;
    for (const RenameRuleRowWidget *parent = row->parentRow(); parent; parent = parent->parentRow())
        ++depth;
    return depth;
}

} // namespace

// MARK: row

RenameRuleRowWidget::RenameRuleRowWidget(RenameRuleEditor *editor, int rowType, RenameRuleRowWidget *parentRow)
    : QWidget(editor)
    , m_editor(editor)
    , m_rowType(rowType)
    , m_parentRow(parentRow)
{
    setObjectName(rowType == PXRenameRow::compound ? QStringLiteral("compoundRow") : QStringLiteral("simpleRow"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(nestingIndent * depthOf(this), 2, 0, 2);
    m_controlsLayout = new QHBoxLayout;
    m_controlsLayout->setSpacing(6);
    layout->addLayout(m_controlsLayout);
    layout->addStretch(1);

    auto *remove = new QToolButton(this);
    remove->setObjectName(QStringLiteral("removeRow"));
    remove->setText(QStringLiteral("−"));
    remove->setToolTip(tr("Remove this rule"));
    connect(remove, &QToolButton::clicked, m_editor, [this] { m_editor->removeRow(this); });
    auto *add = new QToolButton(this);
    add->setObjectName(QStringLiteral("addRow"));
    add->setText(QStringLiteral("+"));
    if (rowType == PXRenameRow::compound) {
        add->setToolTip(tr("Add a rule to this part of the name"));
        connect(add, &QToolButton::clicked, m_editor, [this] { m_editor->addNestedRow(this); });
    } else {
        add->setToolTip(tr("Add a rule below this one"));
        connect(add, &QToolButton::clicked, m_editor, [this] { m_editor->addRowAfter(this); });
    }
    layout->addWidget(remove);
    layout->addWidget(add);
}

void RenameRuleRowWidget::setSteps(const QList<PXRenameCriterion::Step> &steps)
{
    m_steps = steps;
    rebuildControls();
}

QList<PXRenameRule> RenameRuleRowWidget::savedRules() const
{
    return PXRenameCriterion::rulesForSteps(m_steps);
}

QWidget *RenameRuleRowWidget::controlAt(int step) const
{
    return m_controls.value(step);
}

void RenameRuleRowWidget::rebuildControls()
{
    // Later: the pop-up menu whose choice rebuilds the row is still sending its signal.
    for (QWidget *control : std::as_const(m_controls)) {
        m_controlsLayout->removeWidget(control);
        control->hide();
        control->deleteLater();
    }
    m_controls.clear();
    for (int i = 0; i < m_steps.size(); ++i) {
        const PXRenameCriterion::Step &step = m_steps[i];
        const QList<PXRenameCriterionPtr> &choices =
            i == 0 ? PXRenameCriterion::rootCriteria(m_rowType) : m_steps[i - 1].criterion->childCriteria();
        const Kind kind = step.criterion->kind();
        QWidget *control = nullptr;
        if (choices.size() > 1 || kind == Kind::menuItem) {
            // A pop-up menu: each item carries its criterion's operation constant.
            auto *menu = new QComboBox(this);
            for (const PXRenameCriterionPtr &choice : choices)
                menu->addItem(choice->displayValue(), choice->operationConstant());
            menu->setCurrentIndex(int(choices.indexOf(step.criterion)));
            connect(menu, &QComboBox::activated, this, [this, i](int index) { choiceMade(i, index); });
            control = menu;
        } else if (kind == Kind::label) {
            control = new QLabel(step.criterion->displayValue(), this);
        } else if (kind == Kind::helpButton) {
            auto *help = new QToolButton(this);
            help->setText(QStringLiteral("?"));
            const bool date = step.criterion->operationConstant() == C::dateFormatHelp;
            help->setToolTip(date ? tr("Date patterns") : tr("Ranges"));
            connect(help, &QToolButton::clicked, m_editor,
                    date ? &RenameRuleEditor::dateFormatHelpRequested : &RenameRuleEditor::rangeFormatHelpRequested);
            control = help;
        } else {
            auto *field = new QLineEdit(step.text, this);
            field->setObjectName(QStringLiteral("field%1").arg(step.criterion->operationConstant()));
            if (kind == Kind::integerField) {
                field->setValidator(new QIntValidator(field));
                field->setMaximumWidth(70);
            } else if (kind == Kind::rangeField) {
                field->setValidator(new RangeValidator(field));
                field->setMaximumWidth(70);
                field->setToolTip(PXRangeFormatter::invalidRangeMessage());
            } else {
                // Room for a few words ("Lisbon trip with Ana") without scrolling them.
                field->setMinimumWidth(20 * field->fontMetrics().averageCharWidth());
            }
            field->setProperty("defaultToolTip", field->toolTip());
            connect(field, &QLineEdit::textEdited, this, [this, i](const QString &text) {
                m_steps[i].text = text;
                Q_EMIT edited();
            });
            control = field;
        }
        control->setProperty("operationConstant", step.criterion->operationConstant());
        m_controlsLayout->addWidget(control);
        m_controls.append(control);
    }
}

void RenameRuleRowWidget::choiceMade(int step, int index)
{
    const QList<PXRenameCriterionPtr> &choices =
        step == 0 ? PXRenameCriterion::rootCriteria(m_rowType) : m_steps[step - 1].criterion->childCriteria();
    if (index < 0 || index >= choices.size() || choices[index] == m_steps[step].criterion)
        return;
    // Later steps are kept where they still fit the new choice: switching At Beginning to At End
    // keeps the inserted value and its fields.
    const auto defaultText = [this](const PXRenameCriterion &c) { return m_editor->defaultTextFor(c); };
    QList<PXRenameCriterion::Step> head = m_steps.mid(0, step);
    head.append({choices[index], choices[index]->isField() ? defaultText(*choices[index]) : QString()});
    const QList<PXRenameRule> rules =
        PXRenameCriterion::rulesForSteps(head) + PXRenameCriterion::rulesForSteps(m_steps.mid(step + 1));
    QList<PXRenameCriterion::Step> steps = PXRenameCriterion::stepsForRules(m_rowType, rules, defaultText);
    if (steps.size() <= step || steps[step].criterion != choices[index])
        steps = PXRenameCriterion::completedSteps(head, defaultText);
    setSteps(steps);
    Q_EMIT edited();
}

bool RenameRuleRowWidget::chooseConstant(int step, int constant)
{
    auto *menu = qobject_cast<QComboBox *>(controlAt(step));
    if (!menu)
        return false;
    const int index = menu->findData(constant);
    if (index < 0)
        return false;
    menu->setCurrentIndex(index);
    choiceMade(step, index);
    return true;
}

void RenameRuleRowWidget::setFieldText(int step, const QString &text)
{
    auto *field = qobject_cast<QLineEdit *>(controlAt(step));
    if (!field)
        return;
    field->setText(text);
    m_steps[step].text = text;
    Q_EMIT edited();
}

// MARK: editor

RenameRuleEditor::RenameRuleEditor(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_rowsLayout = new QVBoxLayout;
    m_rowsLayout->setSpacing(0);
    layout->addLayout(m_rowsLayout);
    m_problemLabel = new QLabel(this);
    m_problemLabel->setObjectName(QStringLiteral("ruleProblem"));
    m_problemLabel->setStyleSheet(QStringLiteral("color: #c0392b;"));
    m_problemLabel->setWordWrap(true);
    m_problemLabel->hide();
    layout->addWidget(m_problemLabel);
    auto *buttons = new QHBoxLayout;
    auto *addTarget = new QPushButton(tr("Add Part of Name"), this);
    addTarget->setObjectName(QStringLiteral("addCompoundRow"));
    connect(addTarget, &QPushButton::clicked, this, &RenameRuleEditor::addCompoundRow);
    buttons->addWidget(addTarget);
    buttons->addStretch(1);
    layout->addLayout(buttons);
    layout->addStretch(1);
}

RenameRuleEditor::~RenameRuleEditor() = default;

void RenameRuleEditor::setDefaultText(std::function<QString(const PXRenameCriterion &)> defaultText)
{
    m_defaultText = std::move(defaultText);
}

QString RenameRuleEditor::defaultTextFor(const PXRenameCriterion &criterion) const
{
    return m_defaultText ? m_defaultText(criterion) : QString();
}

QList<RenameRuleRowWidget *> RenameRuleEditor::rows() const
{
    QList<RenameRuleRowWidget *> list;
    for (int i = 0; i < m_rowsLayout->count(); ++i) {
        if (auto *row = qobject_cast<RenameRuleRowWidget *>(m_rowsLayout->itemAt(i)->widget()))
            list.append(row);
    }
    return list;
}

PXRenameRules RenameRuleEditor::rules() const
{
    const QList<RenameRuleRowWidget *> all = rows();
    // Rows are laid out parent first, nested rows after it: gather each parent's rows in order.
    const std::function<PXRenameRules(const RenameRuleRowWidget *)> rowsUnder = [&](const RenameRuleRowWidget *parent) {
        PXRenameRules saved;
        for (const RenameRuleRowWidget *row : all) {
            if (row->parentRow() == parent)
                saved.append(PXRenameRow{row->rowType(), row->savedRules(), rowsUnder(row)});
        }
        return saved;
    };
    return rowsUnder(nullptr);
}

RenameRuleRowWidget *RenameRuleEditor::makeRow(int rowType, RenameRuleRowWidget *parentRow,
                                               const QList<PXRenameRule> &rules)
{
    auto *row = new RenameRuleRowWidget(this, rowType, parentRow);
    bool complete = true;
    row->setSteps(PXRenameCriterion::stepsForRules(
        rowType, rules, [this](const PXRenameCriterion &c) { return defaultTextFor(c); }, &complete));
    if (!rules.isEmpty() && !complete)
        m_restoredCompletely = false;
    connect(row, &RenameRuleRowWidget::edited, this, &RenameRuleEditor::edited);
    return row;
}

void RenameRuleEditor::insertRow(RenameRuleRowWidget *row, int layoutIndex)
{
    m_rowsLayout->insertWidget(layoutIndex, row);
    row->show();
}

void RenameRuleEditor::setRules(const PXRenameRules &rules)
{
    m_restoring = true;
    for (RenameRuleRowWidget *row : rows()) {
        m_rowsLayout->removeWidget(row);
        delete row;
    }
    m_restoredCompletely = true;
    const std::function<void(const PXRenameRules &, RenameRuleRowWidget *)> addRows = [&](const PXRenameRules &list,
                                                                                          RenameRuleRowWidget *parent) {
        for (const PXRenameRow &stored : list) {
            RenameRuleRowWidget *row = makeRow(stored.rowType, parent, stored.rules);
            insertRow(row, m_rowsLayout->count());
            addRows(stored.subRules, row);
        }
    };
    addRows(rules, nullptr);
    m_restoring = false;
    if (rows().isEmpty())
        addComplexRow();
    else
        edited();
}

void RenameRuleEditor::addComplexRow()
{
    RenameRuleRowWidget *compound = makeRow(PXRenameRow::compound, nullptr, {});
    insertRow(compound, m_rowsLayout->count());
    insertRow(makeRow(PXRenameRow::simple, compound, {}), m_rowsLayout->count());
    edited();
}

void RenameRuleEditor::addCompoundRow()
{
    addComplexRow();
}

void RenameRuleEditor::addRowAfter(RenameRuleRowWidget *row)
{
    // After the row and everything nested under it.
    const QList<RenameRuleRowWidget *> all = rows();
    int index = int(all.indexOf(row));
    while (index + 1 < all.size()) {
        bool nested = false;
        for (const RenameRuleRowWidget *p = all[index + 1]->parentRow(); p; p = p->parentRow())
            nested = nested || p == row;
        if (!nested)
            break;
        ++index;
    }
    insertRow(makeRow(PXRenameRow::simple, row->parentRow(), {}), index + 1);
    edited();
}

void RenameRuleEditor::addNestedRow(RenameRuleRowWidget *compound)
{
    const QList<RenameRuleRowWidget *> all = rows();
    int index = int(all.indexOf(compound));
    while (index + 1 < all.size()) {
        bool nested = false;
        for (const RenameRuleRowWidget *p = all[index + 1]->parentRow(); p; p = p->parentRow())
            nested = nested || p == compound;
        if (!nested)
            break;
        ++index;
    }
    insertRow(makeRow(PXRenameRow::simple, compound, {}), index + 1);
    edited();
}

void RenameRuleEditor::removeRow(RenameRuleRowWidget *row)
{
    QList<RenameRuleRowWidget *> doomed;
    for (RenameRuleRowWidget *candidate : rows()) {
        for (const RenameRuleRowWidget *p = candidate; p; p = p->parentRow()) {
            if (p == row) {
                doomed.append(candidate);
                break;
            }
        }
    }
    // The editor always keeps a row to build on.
    if (doomed.size() == rows().size())
        return;
    for (RenameRuleRowWidget *gone : std::as_const(doomed)) {
        m_rowsLayout->removeWidget(gone);
        gone->deleteLater();
        gone->setParent(nullptr);
    }
    edited();
}

QString RenameRuleEditor::problemText() const
{
    return m_problemLabel->isHidden() ? QString() : m_problemLabel->text();
}

void RenameRuleEditor::checkProblems()
{
    QStringList problems;
    for (RenameRuleRowWidget *row : rows()) {
        const QList<PXRenameCriterion::Step> &steps = row->steps();
        for (int i = 0; i < steps.size(); ++i) {
            QWidget *control = row->controlAt(i);
            const int constant = steps[i].criterion->operationConstant();
            QString problem;
            if (constant == C::regexSearchValue && !steps[i].text.isEmpty()) {
                QString error;
                if (!regexReplacingAll(QString(), steps[i].text, QString(), &error))
                    problem = tr("The regular expression \"%1\" is not valid (%2): names stay as they are.")
                                  .arg(steps[i].text, error);
            } else if (constant == C::dateFormatValue) {
                if (steps[i].text.isEmpty() || !formattedDateWithPattern(QDateTime::currentDateTime(), steps[i].text))
                    problem = tr("The date pattern \"%1\" gives no date: names stay as they are.").arg(steps[i].text);
            }
            if (control && qobject_cast<QLineEdit *>(control)) {
                control->setStyleSheet(problem.isEmpty() ? QString() : QStringLiteral("color: #c0392b;"));
                control->setToolTip(problem.isEmpty() ? control->property("defaultToolTip").toString() : problem);
            }
            if (!problem.isEmpty())
                problems.append(problem);
        }
    }
    m_problemLabel->setText(problems.join(QLatin1Char('\n')));
    m_problemLabel->setVisible(!problems.isEmpty());
}

void RenameRuleEditor::edited()
{
    if (m_restoring)
        return;
    checkProblems();
    Q_EMIT rulesChanged();
}
