#pragma once

#include <QJsonArray>
#include <QList>
#include <QString>

#include <optional>

// The rename rules as the rule editor saves them: an ordered list of rows, each with its criteria
// left to right and the rows nested under it. Presets, recent settings and `pixcove-cli rename
// --rules` store them as JSON arrays of row objects with the keys "rowType", "rules" (objects
// with "operationConstant" and "stringValue") and "subRules".

// The operation constant of every criterion of the rule editor. Stored in presets: never renumber.
namespace PXRenameConstant {
enum : int {
    label = 0, // "In", "with", "and replace", "starting with", ...

    searchFilename = 1,
    searchExtension = 2,
    searchFilenameAndExtension = 3,

    replaceRange = 4,
    insertAtLocation = 5,
    replaceCharacters = 6,
    replaceEntirely = 7,
    insertAtBeginning = 8,
    insertAtEnd = 9,
    replaceCharactersCaseSensitive = 10,

    insert = 101,
    replace = 102,
    addCreationDate = 104,
    addModificationDate = 105,
    addSequence = 106,
    addCharacters = 107,
    regex = 108,
    makeUppercase = 109,
    makeLowercase = 110,
    addParentFolderName = 111,
    addGrandparentFolderName = 112,
    // The date the picture was taken (EXIF), or the creation date of a file without one.
    addDateTaken = 113,

    locationToInsert = 201,
    rangeToReplace = 202,
    charactersToReplace = 203,
    dateFormatValue = 204,
    initialSequenceValue = 205,
    regexSearchValue = 207,
    replacementCharacters = 208,
    regexReplaceValue = 209,

    sequenceFormat1 = 1001,
    sequenceFormat01 = 1002,
    sequenceFormat001 = 1003,
    sequenceFormat0001 = 1004,
    sequenceFormat00001 = 1005,

    // Help buttons beside the date-format and range fields; never stored in rules.
    dateFormatHelp = 2500,
    rangeFormatHelp = 2501,
};

// Operations, targets, kinds and values: what the engine looks for next. Labels (0) and
// formats (1000 and above) are passed over.
constexpr bool isSignificant(int constant)
{
    return constant >= 1 && constant <= 999;
}
} // namespace PXRenameConstant

struct PXRenameRule
{
    int operationConstant = PXRenameConstant::label;
    QString stringValue; // the text of the criterion's field, or the title of its menu item

    bool operator==(const PXRenameRule &) const = default;
};

struct PXRenameRow
{
    enum RowType : int { simple = 0, compound = 1 };

    int rowType = simple;
    QList<PXRenameRule> rules;
    QList<PXRenameRow> subRules;

    bool operator==(const PXRenameRow &) const = default;
};

using PXRenameRules = QList<PXRenameRow>;

// The criteria of a row that are still to be read, front first. Reading never copies the row:
// the engine walks thousands of files through the same rows.
class PXRenameRuleQueue
{
public:
    PXRenameRuleQueue() = default;
    explicit PXRenameRuleQueue(const QList<PXRenameRule> &rules)
        : m_next(rules.constData())
        , m_end(rules.constData() + rules.size())
    { }

    bool isEmpty() const { return m_next == m_end; }
    qsizetype size() const { return m_end - m_next; }
    const PXRenameRule *takeFirst() { return isEmpty() ? nullptr : m_next++; }

private:
    const PXRenameRule *m_next = nullptr;
    const PXRenameRule *m_end = nullptr;
};

QJsonArray jsonFromRenameRules(const PXRenameRules &rules);
// Reads rows as stored; answers nothing (with the reason in `error`) for JSON of another shape.
// A missing "subRules" or "stringValue" reads as empty; a number as "stringValue" as its text.
std::optional<PXRenameRules> renameRulesFromJson(const QJsonValue &json, QString *error = nullptr);
