#include "core/rename/PXRenameCriterion.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/rename/PXRenameRules.h"

#include <QHash>

#include <mutex>

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
