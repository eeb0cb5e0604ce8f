#pragma once

#include "core/rename/PXRenameRules.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class PXRenameCriterion;
using PXRenameCriterionPtr = std::shared_ptr<PXRenameCriterion>;

// A named node of the rule editor's criterion catalogue ("insert", "search filename",
// "date format value", ...): its children are the criteria that may follow it in a row. Names
// are the catalogue's keys; `displayValue` is the localised title shown in the editor, from a
// table shared by every criterion and built on first use.
//
// The editor's layout is a tree of criteria (`rootCriteria`): a row shows one control per step,
// a pop-up menu where a step offers several menu items, else the one label, field or help button
// of that step. Saving a row writes one rule per step (help buttons excepted); restoring walks
// the tree again along the stored constants.
class PXRenameCriterion
{
public:
    // How the editor shows a criterion.
    enum class Kind { menuItem, label, stringField, integerField, rangeField, helpButton };

    static PXRenameCriterionPtr criterionWithName(const QString &name);

    const QString &name() const { return m_name; }
    QList<PXRenameCriterionPtr> &childCriteria() { return m_childCriteria; }
    const QList<PXRenameCriterionPtr> &childCriteria() const { return m_childCriteria; }

    // The title for the name; the empty text (and a logged error) for a name not in the catalogue.
    QString displayValue() const;
    Kind kind() const;
    // The constant this criterion carries in saved rules (a help button's never reaches them).
    int operationConstant() const { return operationConstantForName(m_name); }
    bool isField() const;

    // Builds the shared table of titles; idempotent.
    static void setDisplayValues();
    // The operation constant a criterion of this name carries; -1 for an unknown name.
    static int operationConstantForName(const QString &name);
    // Every name of the catalogue, in the catalogue's order.
    static QStringList allNames();

    // The choices of the first step of a row: the targets of a compound row ("In" then
    // Filename / Extension / Both), the operations of a simple one (Insert / Replace / Regex
    // Search). Built once; shared, never changed.
    static const QList<PXRenameCriterionPtr> &rootCriteria(int rowType);

    // One step of a row as the editor shows it: the criterion chosen there and, for a field, its text.
    struct Step
    {
        PXRenameCriterionPtr criterion;
        QString text;
    };
    // The steps of a row restored from saved rules: each stored constant picks the menu item of
    // that constant, a field takes the stored text, labels and help buttons are passed through.
    // A rule the tree does not expect ends the walk: the row is completed with each step's first
    // choice and `complete` is false. Fields left without a stored value take `defaultText`.
    static QList<Step> stepsForRules(int rowType, const QList<PXRenameRule> &rules,
                                     const std::function<QString(const PXRenameCriterion &)> &defaultText,
                                     bool *complete = nullptr);
    // The rules a row of these steps saves: one per step, help buttons left out.
    static QList<PXRenameRule> rulesForSteps(const QList<Step> &steps);
    // The steps after `steps[index]` changed its choice: those before kept, then the first choice
    // of every later step, fields filled by `defaultText`.
    static QList<Step> completedSteps(QList<Step> steps,
                                      const std::function<QString(const PXRenameCriterion &)> &defaultText);

private:
    explicit PXRenameCriterion(QString name);

    QString m_name;
    QList<PXRenameCriterionPtr> m_childCriteria;
};
