#include "core/rename/PXRenameCriterion.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/rename/PXRenameRules.h"

#include <QHash>

#include <mutex>
#include <utility>

namespace {

constexpr Translator tr("PXRenameCriterion");

struct CatalogueEntry
{
    const char *name;
    const char *title;
    int constant;
};

// The catalogue in the rule editor's order. The misspelt "replace charaters with -label" is the
// key presets were saved with: keep it.
constexpr CatalogueEntry catalogue[] = {
    {"in -label", QT_TRANSLATE_NOOP("PXRenameCriterion", "In"), PXRenameConstant::label},
    {"search filename", QT_TRANSLATE_NOOP("PXRenameCriterion", "Filename"), PXRenameConstant::searchFilename},
    {"search extension", QT_TRANSLATE_NOOP("PXRenameCriterion", "Extension"), PXRenameConstant::searchExtension},
    {"search filename and extension", QT_TRANSLATE_NOOP("PXRenameCriterion", "Both Filename and Extension"),
     PXRenameConstant::searchFilenameAndExtension},
    {"insert", QT_TRANSLATE_NOOP("PXRenameCriterion", "Insert"), PXRenameConstant::insert},
    {"replace", QT_TRANSLATE_NOOP("PXRenameCriterion", "Replace"), PXRenameConstant::replace},
    {"regex", QT_TRANSLATE_NOOP("PXRenameCriterion", "Regex Search"), PXRenameConstant::regex},
    {"replace range", QT_TRANSLATE_NOOP("PXRenameCriterion", "Range"), PXRenameConstant::replaceRange},
    {"replace characters", QT_TRANSLATE_NOOP("PXRenameCriterion", "Characters"), PXRenameConstant::replaceCharacters},
    {"replace characters case sensitive", QT_TRANSLATE_NOOP("PXRenameCriterion", "Characters (Case Sensitive)"),
     PXRenameConstant::replaceCharactersCaseSensitive},
    {"replace entirely", QT_TRANSLATE_NOOP("PXRenameCriterion", "Entirely"), PXRenameConstant::replaceEntirely},
    {"insert at beginning", QT_TRANSLATE_NOOP("PXRenameCriterion", "At Beginning"),
     PXRenameConstant::insertAtBeginning},
    {"insert at end", QT_TRANSLATE_NOOP("PXRenameCriterion", "At End"), PXRenameConstant::insertAtEnd},
    {"insert at location", QT_TRANSLATE_NOOP("PXRenameCriterion", "At Location"), PXRenameConstant::insertAtLocation},
    {"add characters", QT_TRANSLATE_NOOP("PXRenameCriterion", "Characters"), PXRenameConstant::addCharacters},
    {"add sequence", QT_TRANSLATE_NOOP("PXRenameCriterion", "Sequence"), PXRenameConstant::addSequence},
    {"add creation date", QT_TRANSLATE_NOOP("PXRenameCriterion", "Creation Date"), PXRenameConstant::addCreationDate},
    {"add modification date", QT_TRANSLATE_NOOP("PXRenameCriterion", "Modification Date"),
     PXRenameConstant::addModificationDate},
    {"make uppercase", QT_TRANSLATE_NOOP("PXRenameCriterion", "Uppercase"), PXRenameConstant::makeUppercase},
    {"make lowercase", QT_TRANSLATE_NOOP("PXRenameCriterion", "Lowercase"), PXRenameConstant::makeLowercase},
    {"add parent folder name", QT_TRANSLATE_NOOP("PXRenameCriterion", "Parent Folder Name"),
     PXRenameConstant::addParentFolderName},
    {"add grandparent folder name", QT_TRANSLATE_NOOP("PXRenameCriterion", "Grandparent Folder Name"),
     PXRenameConstant::addGrandparentFolderName},
    {"add date taken", QT_TRANSLATE_NOOP("PXRenameCriterion", "Date Taken"), PXRenameConstant::addDateTaken},
    {"location to insert", QT_TRANSLATE_NOOP("PXRenameCriterion", "integer field"), PXRenameConstant::locationToInsert},
    {"range to replace", QT_TRANSLATE_NOOP("PXRenameCriterion", "range field"), PXRenameConstant::rangeToReplace},
    {"characters to replace", QT_TRANSLATE_NOOP("PXRenameCriterion", "string field"),
     PXRenameConstant::charactersToReplace},
    {"date format value", QT_TRANSLATE_NOOP("PXRenameCriterion", "string field"), PXRenameConstant::dateFormatValue},
    {"initial sequence value", QT_TRANSLATE_NOOP("PXRenameCriterion", "integer field"),
     PXRenameConstant::initialSequenceValue},
    {"regex search value", QT_TRANSLATE_NOOP("PXRenameCriterion", "string field"), PXRenameConstant::regexSearchValue},
    {"replacement characters", QT_TRANSLATE_NOOP("PXRenameCriterion", "string field"),
     PXRenameConstant::replacementCharacters},
    {"regex replace value", QT_TRANSLATE_NOOP("PXRenameCriterion", "string field"),
     PXRenameConstant::regexReplaceValue},
    {"sequence format 1", "1", PXRenameConstant::sequenceFormat1},
    {"sequence format 01", "01", PXRenameConstant::sequenceFormat01},
    {"sequence format 001", "001", PXRenameConstant::sequenceFormat001},
    {"sequence format 0001", "0001", PXRenameConstant::sequenceFormat0001},
    {"sequence format 00001", "00001", PXRenameConstant::sequenceFormat00001},
    {"regex replace -label", QT_TRANSLATE_NOOP("PXRenameCriterion", "and replace"), PXRenameConstant::label},
    {"at the location -label", QT_TRANSLATE_NOOP("PXRenameCriterion", "the"), PXRenameConstant::label},
    {"replace charaters with -label", QT_TRANSLATE_NOOP("PXRenameCriterion", "with"), PXRenameConstant::label},
    {"date format -label", QT_TRANSLATE_NOOP("PXRenameCriterion", "in unicode date format"), PXRenameConstant::label},
    {"sequence start -label", QT_TRANSLATE_NOOP("PXRenameCriterion", "starting with"), PXRenameConstant::label},
    {"sequence format -label", QT_TRANSLATE_NOOP("PXRenameCriterion", "in format"), PXRenameConstant::label},
    {"date format help", "?", PXRenameConstant::dateFormatHelp},
    {"range format help", "?", PXRenameConstant::rangeFormatHelp},
};

struct DisplayTable
{
    QHash<QString, QString> titles;
    QHash<QString, int> constants;
};

DisplayTable &displayTable()
{
    static DisplayTable table;
    return table;
}

std::once_flag displayValuesBuilt;

} // namespace

PXRenameCriterion::PXRenameCriterion(QString name)
    : m_name(std::move(name))
{
    // Room for the longest menu of the editor.
    m_childCriteria.reserve(20);
}

PXRenameCriterionPtr PXRenameCriterion::criterionWithName(const QString &name)
{
    return PXRenameCriterionPtr(new PXRenameCriterion(name));
}

void PXRenameCriterion::setDisplayValues()
{
    std::call_once(displayValuesBuilt, [] {
        DisplayTable &table = displayTable();
        for (const CatalogueEntry &entry : catalogue) {
            const QString name = QString::fromLatin1(entry.name);
            table.titles.insert(name, tr(entry.title));
            table.constants.insert(name, entry.constant);
        }
    });
}

QString PXRenameCriterion::displayValue() const
{
    setDisplayValues();
    const auto found = displayTable().titles.constFind(m_name);
    if (found == displayTable().titles.constEnd()) {
        logError(QStringLiteral("Error: attempted to get display value for unknown rename criterion %1").arg(m_name));
        return QString();
    }
    return *found;
}

int PXRenameCriterion::operationConstantForName(const QString &name)
{
    setDisplayValues();
    return displayTable().constants.value(name, -1);
}

QStringList PXRenameCriterion::allNames()
{
    QStringList names;
    for (const CatalogueEntry &entry : catalogue)
        names.append(QString::fromLatin1(entry.name));
    return names;
}

PXRenameCriterion::Kind PXRenameCriterion::kind() const
{
    switch (operationConstant()) {
    case PXRenameConstant::label: return Kind::label;
    case PXRenameConstant::locationToInsert:
    case PXRenameConstant::initialSequenceValue: return Kind::integerField;
    case PXRenameConstant::rangeToReplace: return Kind::rangeField;
    case PXRenameConstant::charactersToReplace:
    case PXRenameConstant::dateFormatValue:
    case PXRenameConstant::regexSearchValue:
    case PXRenameConstant::replacementCharacters:
    case PXRenameConstant::regexReplaceValue: return Kind::stringField;
    case PXRenameConstant::dateFormatHelp:
    case PXRenameConstant::rangeFormatHelp: return Kind::helpButton;
    default: return Kind::menuItem;
    }
}

bool PXRenameCriterion::isField() const
{
    const Kind k = kind();
    return k == Kind::stringField || k == Kind::integerField || k == Kind::rangeField;
}

namespace {

using Node = PXRenameCriterionPtr;
using Nodes = QList<PXRenameCriterionPtr>;

Node node(const char *name, const Nodes &children = {})
{
    Node criterion = PXRenameCriterion::criterionWithName(QString::fromLatin1(name));
    criterion->childCriteria() = children;
    return criterion;
}

// The editor's menus. Each node's children are the choices of the next step; the value menus
// are shared by Insert and Replace (Insert has no text to change the case of).
struct CriterionTree
{
    Nodes compoundRoots;
    Nodes simpleRoots;

    CriterionTree()
    {
        const auto datePattern = [] {
            return Nodes{node("date format -label", {node("date format value", {node("date format help")})})};
        };
        const auto values = [&](bool withCase) {
            Nodes list{
                node("add characters", {node("replacement characters")}),
                node("add sequence",
                     {node("sequence start -label",
                           {node("initial sequence value",
                                 {node("sequence format -label",
                                       {node("sequence format 1"), node("sequence format 01"),
                                        node("sequence format 001"), node("sequence format 0001"),
                                        node("sequence format 00001")})})})}),
                node("add creation date", datePattern()),
                node("add modification date", datePattern()),
                node("add date taken", datePattern()),
            };
            if (withCase)
                list += Nodes{node("make uppercase"), node("make lowercase")};
            list += Nodes{node("add parent folder name"), node("add grandparent folder name")};
            return list;
        };
        const Nodes insertValues = values(false);
        const Nodes replaceValues = values(true);
        const Nodes with{node("replace charaters with -label", replaceValues)};

        const Node insert = node("insert",
                                 {node("insert at beginning", insertValues), node("insert at end", insertValues),
                                  node("insert at location", {node("location to insert", insertValues)})});
        const Node replace = node("replace",
                                  {node("replace characters", {node("characters to replace", with)}),
                                   node("replace characters case sensitive", {node("characters to replace", with)}),
                                   node("replace range", {node("range to replace", {node("range format help", with)})}),
                                   node("replace entirely", with)});
        const Node regex =
            node("regex", {node("regex search value", {node("regex replace -label", {node("regex replace value")})})});
        simpleRoots = {insert, replace, regex};

        const Nodes targets{node("search filename"), node("search extension"), node("search filename and extension")};
        compoundRoots = {node("in -label", targets)};
    }
};

const CriterionTree &criterionTree()
{
    static const CriterionTree tree;
    return tree;
}

PXRenameCriterion::Step firstStep(const Nodes &choices,
                                  const std::function<QString(const PXRenameCriterion &)> &defaultText)
{
    const Node &criterion = choices.first();
    return {criterion, criterion->isField() && defaultText ? defaultText(*criterion) : QString()};
}

} // namespace

const QList<PXRenameCriterionPtr> &PXRenameCriterion::rootCriteria(int rowType)
{
    return rowType == PXRenameRow::compound ? criterionTree().compoundRoots : criterionTree().simpleRoots;
}

QList<PXRenameCriterion::Step>
PXRenameCriterion::completedSteps(QList<Step> steps,
                                  const std::function<QString(const PXRenameCriterion &)> &defaultText)
{
    if (steps.isEmpty())
        return steps;
    for (;;) {
        const Nodes &choices = steps.last().criterion->childCriteria();
        if (choices.isEmpty())
            return steps;
        steps.append(firstStep(choices, defaultText));
    }
}

QList<PXRenameCriterion::Step>
PXRenameCriterion::stepsForRules(int rowType, const QList<PXRenameRule> &rules,
                                 const std::function<QString(const PXRenameCriterion &)> &defaultText, bool *complete)
{
    QList<Step> steps;
    bool matched = true;
    qsizetype next = 0;
    const Nodes *choices = &rootCriteria(rowType);
    while (!choices->isEmpty()) {
        Step step;
        const PXRenameRule *stored = next < rules.size() ? &rules[next] : nullptr;
        if (choices->first()->kind() == Kind::helpButton) {
            step.criterion = choices->first();
        } else if (!stored) {
            // A row saved before its last steps existed: the rest takes first choices.
            step = firstStep(*choices, defaultText);
            matched = false;
        } else {
            for (const Node &choice : *choices) {
                if (choice->operationConstant() == stored->operationConstant) {
                    step.criterion = choice;
                    break;
                }
            }
            if (!step.criterion) {
                matched = false;
                break;
            }
            if (step.criterion->isField())
                step.text = stored->stringValue;
            ++next;
        }
        steps.append(step);
        choices = &step.criterion->childCriteria();
    }
    if (!matched || next < rules.size()) {
        if (complete)
            *complete = false;
        if (steps.isEmpty())
            steps.append(firstStep(rootCriteria(rowType), defaultText));
        return completedSteps(steps, defaultText);
    }
    if (complete)
        *complete = true;
    return steps;
}

QList<PXRenameRule> PXRenameCriterion::rulesForSteps(const QList<Step> &steps)
{
    QList<PXRenameRule> rules;
    rules.reserve(steps.size());
    for (const Step &step : steps) {
        const PXRenameCriterion &criterion = *step.criterion;
        switch (criterion.kind()) {
        case Kind::helpButton: break;
        case Kind::menuItem:
        case Kind::label: rules.append({criterion.operationConstant(), criterion.displayValue()}); break;
        default: rules.append({criterion.operationConstant(), step.text}); break;
        }
    }
    return rules;
}
