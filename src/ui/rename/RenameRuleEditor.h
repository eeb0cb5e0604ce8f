#pragma once

#include "core/rename/PXRenameCriterion.h"
#include "core/rename/PXRenameRules.h"

#include <QList>
#include <QWidget>

#include <functional>

class QVBoxLayout;
class RenameRuleRowWidget;

// The rule editor: nested rows built from the criterion catalogue. A compound row ("In
// [Filename]") holds simple rows (Insert, Replace, Regex Search); each row shows one control
// per step of its criteria: a pop-up menu whose items carry the operation constants, a label,
// a text field, or a help button. Rows are added (+) below a row, or inside a compound row, and
// removed (-); the last row cannot be removed.
//
// `rules` saves the rows as the engine reads them; `setRules` restores them, matching each
// stored constant to its menu item and putting stored text back into fields. Every edit emits
// `rulesChanged` (the window coalesces them).
class RenameRuleEditor : public QWidget
{
    Q_OBJECT
public:
    explicit RenameRuleEditor(QWidget *parent = nullptr);
    ~RenameRuleEditor() override;

    // What fresh fields are filled with (the date pattern, sequence start and range last used).
    void setDefaultText(std::function<QString(const PXRenameCriterion &)> defaultText);
    QString defaultTextFor(const PXRenameCriterion &criterion) const;

    PXRenameRules rules() const;
    // Replaces every row; a row the catalogue cannot show is completed with first choices (and
    // `restoredCompletely` answers false).
    void setRules(const PXRenameRules &rules);
    bool restoredCompletely() const { return m_restoredCompletely; }
    // With no rows: one compound row holding one simple row.
    void addComplexRow();

    // The rows, top-level first, each followed by its nested ones (for tests and the help).
    QList<RenameRuleRowWidget *> rows() const;
    void addRowAfter(RenameRuleRowWidget *row);
    void addNestedRow(RenameRuleRowWidget *compound);
    void addCompoundRow();
    void removeRow(RenameRuleRowWidget *row);

    // The message shown under the rows about a rule that cannot work (an invalid regular
    // expression, a date pattern ICU refuses); empty when none.
    QString problemText() const;

Q_SIGNALS:
    void rulesChanged();
    void dateFormatHelpRequested();
    void rangeFormatHelpRequested();

private:
    RenameRuleRowWidget *makeRow(int rowType, RenameRuleRowWidget *parentRow, const QList<PXRenameRule> &rules);
    void insertRow(RenameRuleRowWidget *row, int layoutIndex);
    void checkProblems();
    void edited();

    QVBoxLayout *m_rowsLayout = nullptr;
    class QLabel *m_problemLabel = nullptr;
    std::function<QString(const PXRenameCriterion &)> m_defaultText;
    bool m_restoredCompletely = true;
    bool m_restoring = false;
};

// One row of the rule editor.
class RenameRuleRowWidget : public QWidget
{
    Q_OBJECT
public:
    RenameRuleRowWidget(RenameRuleEditor *editor, int rowType, RenameRuleRowWidget *parentRow);

    int rowType() const { return m_rowType; }
    RenameRuleRowWidget *parentRow() const { return m_parentRow; }
    const QList<PXRenameCriterion::Step> &steps() const { return m_steps; }
    // Shows these steps (rebuilding the controls).
    void setSteps(const QList<PXRenameCriterion::Step> &steps);
    QList<PXRenameRule> savedRules() const;
    // The control of a step (QComboBox, QLabel, QLineEdit or QToolButton).
    QWidget *controlAt(int step) const;
    // Chooses the menu item of `constant` at `step`, as the user would.
    bool chooseConstant(int step, int constant);
    // Sets a field's text at `step`, as the user would type it.
    void setFieldText(int step, const QString &text);

Q_SIGNALS:
    void edited();

private:
    void choiceMade(int step, int index);
    void rebuildControls();

    RenameRuleEditor *m_editor;
    int m_rowType;
    RenameRuleRowWidget *m_parentRow;
    QList<PXRenameCriterion::Step> m_steps;
    QList<QWidget *> m_controls;
    class QHBoxLayout *m_controlsLayout = nullptr;
};
