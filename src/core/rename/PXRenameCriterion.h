#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class PXRenameCriterion;
using PXRenameCriterionPtr = std::shared_ptr<PXRenameCriterion>;

// A named node of the rule editor's criterion catalogue ("insert", "search filename",
// "date format value", ...): its children are the criteria that may follow it in a row. Names
// are the catalogue's keys; `displayValue` is the localised title shown in the editor, from a
// table shared by every criterion and built on first use.
class PXRenameCriterion
{
public:
    static PXRenameCriterionPtr criterionWithName(const QString &name);

    const QString &name() const { return m_name; }
    QList<PXRenameCriterionPtr> &childCriteria() { return m_childCriteria; }
    const QList<PXRenameCriterionPtr> &childCriteria() const { return m_childCriteria; }

    // The title for the name; the empty text (and a logged error) for a name not in the catalogue.
    QString displayValue() const;

    // Builds the shared table of titles; idempotent.
    static void setDisplayValues();
    // The operation constant a criterion of this name carries; -1 for an unknown name.
    static int operationConstantForName(const QString &name);
    // Every name of the catalogue, in the catalogue's order.
    static QStringList allNames();

private:
    explicit PXRenameCriterion(QString name);

    QString m_name;
    QList<PXRenameCriterionPtr> m_childCriteria;
};
