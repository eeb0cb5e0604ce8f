#include "core/rename/PXFileRenameItem.h"

#include "core/app/Log.h"
#include "core/model/PXFile.h"
#include "core/model/TextHelpers.h"
#include "core/rename/RenameTextHelpers.h"

#include <QFile>
#include <QStringList>

#include <unistd.h>

namespace C = PXRenameConstant;

namespace {

int constantOf(const PXRenameRule *rule)
{
    return rule ? rule->operationConstant : C::label;
}

QString describe(const PXRenameRule *rule)
{
    if (!rule)
        return QStringLiteral("(none)");
    return QStringLiteral("{operationConstant = %1; stringValue = \"%2\"}")
        .arg(rule->operationConstant)
        .arg(rule->stringValue);
}

// The text of the next significant criterion when it has the expected constant.
std::optional<QString> fieldText(PXRenameRuleQueue &rules, int expectedConstant)
{
    const PXRenameRule *field = PXFileRenameItem::popNextSignificantOperationFromRules(rules);
    if (constantOf(field) != expectedConstant)
        return std::nullopt;
    return field->stringValue;
}

// A name split at its last full stop. Without a full stop (or with one at the very end) the
// whole name is the base; ".profile" has no base and the extension "profile".
struct SplitName
{
    QString base;
    QString extension;
};

SplitName split(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot < 0 || dot == name.size() - 1)
        return {name, QString()};
    return {name.left(dot), name.mid(dot + 1)};
}

QString joinedPath(const QString &folder, const QString &name)
{
    if (folder.endsWith(QLatin1Char('/')))
        return folder + name;
    return folder + QLatin1Char('/') + name;
}

} // namespace

PXFileRenameItem::PXFileRenameItem(PXFilePtr file, bool isContainer)
    : PXBatchItem(std::move(file), isContainer)
{
    setExpanded(true);
    if (representedObject()) {
        m_potentialName = representedObject()->name();
        m_potentialPath = representedObject()->path();
    }
}

bool PXFileRenameItem::isRenamable() const
{
    const PXFilePtr &file = representedObject();
    if (!file || isContainer() || file->isPlaceholder() || file->parentPath().isEmpty())
        return false;
    const ZQFilePtr folder = file->parentItem();
    return folder && ::access(folder->nativePath().constData(), W_OK | X_OK) == 0;
}

void PXFileRenameItem::updateForRenameRules(const PXRenameRules &rules)
{
    if (representedObject())
        applyProposal(proposalForRenameRules(rules));
}

PXFileRenameItem::Proposal PXFileRenameItem::proposalForRenameRules(const PXRenameRules &rules) const
{
    Proposal proposal;
    const PXFilePtr &file = representedObject();
    if (!file)
        return proposal;
    proposal.renamable = isRenamable();
    const QString fileName = file->name();
    if (rules.isEmpty() || itemIndex() == notFound) {
        proposal.potentialName = fileName;
        proposal.potentialPath = file->path();
        return proposal;
    }
    QString proposed = applyRules(rules, fileName);
    if (proposed.size() >= maximumNameLength)
        proposed = fileName;
    proposed = cleanedFilename(proposed);
    // The disk counts bytes: a name of 100 CJK characters is 300 of them. The file keeps its name.
    if (QFile::encodeName(proposed).size() > maximumNameBytes) {
        proposed = fileName;
        proposal.nameTooLong = true;
    }
    proposal.potentialName = proposed;
    proposal.potentialPath = joinedPath(file->parentPath(), proposed).toLower();
    if (proposed != fileName) {
        proposal.nameHasChanged = true;
        proposal.caseChange = proposed.compare(fileName, Qt::CaseInsensitive) == 0;
    }
    return proposal;
}

PXFileRenameItem::Proposal PXFileRenameItem::proposal() const
{
    return {m_potentialName, m_potentialPath, m_nameHasChanged, m_caseChange, m_nameTooLong, m_lastKnownRenamable};
}

void PXFileRenameItem::applyProposal(Proposal proposal)
{
    const bool changed = m_potentialName != proposal.potentialName || m_nameTooLong != proposal.nameTooLong;
    m_potentialName = std::move(proposal.potentialName);
    m_potentialPath = std::move(proposal.potentialPath);
    m_nameHasChanged = proposal.nameHasChanged;
    m_caseChange = proposal.caseChange;
    m_nameTooLong = proposal.nameTooLong;
    m_lastKnownRenamable = proposal.renamable;
    m_hasProposal = true;
    if (m_delegate && changed)
        m_delegate->renameItemDidChange(this);
}

QString PXFileRenameItem::applyRules(const PXRenameRules &rows, const QString &string) const
{
    QString result = string;
    for (const PXRenameRow &row : rows) {
        PXRenameRuleQueue rules(row.rules);
        if (const PXRenameRule *operation = popNextSignificantOperationFromRules(rules))
            result = performOperation(*operation, result, rules, row.subRules);
    }
    return result;
}

QString PXFileRenameItem::performOperation(const PXRenameRule &operation, const QString &string,
                                           PXRenameRuleQueue &rules, const PXRenameRules &subRules) const
{
    switch (operation.operationConstant) {
    case C::searchFilename: {
        const SplitName name = split(string);
        const QString base = applyRules(subRules, name.base);
        if (base.isEmpty())
            return string;
        return name.extension.isEmpty() ? base : base + QLatin1Char('.') + name.extension;
    }
    case C::searchExtension: {
        const SplitName name = split(string);
        const QString extension = applyRules(subRules, name.extension);
        if (extension.isEmpty() || name.base.isEmpty())
            return string;
        return name.base + QLatin1Char('.') + extension;
    }
    case C::insert: return applyRules(subRules, insertUsingRules(rules, string));
    case C::replace: return applyRules(subRules, replaceUsingRules(rules, string));
    case C::regex:
        // The rows nested under a regular expression are not applied.
        return regexUsingRules(rules, string);
    default:
        // "Both Filename and Extension" and any other criterion: the nested rows on the whole name.
        return applyRules(subRules, string);
    }
}

QString PXFileRenameItem::replaceUsingRules(PXRenameRuleQueue &rules, const QString &string) const
{
    const PXRenameRule *kind = popNextSignificantOperationFromRules(rules);
    switch (constantOf(kind)) {
    case C::replaceRange: {
        const std::optional<QString> range = fieldText(rules, C::rangeToReplace);
        if (!range)
            return string;
        QStringList parts = range->split(QLatin1Char('-'));
        if (parts.size() != 2)
            parts = range->split(QLatin1Char(':'));
        if (parts.size() != 2)
            return string;
        const qint64 first = leadingIntegerValue(parts[0]);
        const qint64 end = leadingIntegerValue(parts[1]);
        const qint64 start = std::max<qint64>(first, 1) - 1;
        const qint64 length = string.size();
        // Out-of-bounds ranges are not clamped: they leave the name alone.
        if (!(start < length && end >= 0 && start <= end && end <= length))
            return string;
        const std::optional<QString> replacement =
            replacementStringValueUsingRules(rules, string.mid(start, end - start));
        if (!replacement)
            return string;
        QString result = string;
        return result.replace(start, end - start, *replacement);
    }
    case C::replaceCharacters:
    case C::replaceCharactersCaseSensitive: {
        const std::optional<QString> search = fieldText(rules, C::charactersToReplace);
        const std::optional<QString> replacement = replacementStringValueUsingRules(rules, search);
        if (!search || search->isEmpty() || !replacement)
            return string;
        if (kind->operationConstant == C::replaceCharacters)
            return replacingOccurrencesIgnoringCaseDiacriticsAndWidth(string, *search, *replacement);
        QString result = string;
        return result.replace(*search, *replacement, Qt::CaseSensitive);
    }
    case C::replaceEntirely: return replacementStringValueUsingRules(rules, string).value_or(string);
    default:
        logError(QStringLiteral("Error, tried to perform replace operation with type %1").arg(describe(kind)));
        return string;
    }
}

QString PXFileRenameItem::insertUsingRules(PXRenameRuleQueue &rules, const QString &string) const
{
    const PXRenameRule *where = popNextSignificantOperationFromRules(rules);
    qsizetype position = 0;
    switch (constantOf(where)) {
    case C::insertAtBeginning: position = 0; break;
    case C::insertAtEnd: position = string.size(); break;
    case C::insertAtLocation: {
        const std::optional<QString> location = fieldText(rules, C::locationToInsert);
        if (!location)
            return string;
        const qint64 index = std::max<qint64>(leadingIntegerValue(*location), 1) - 1;
        if (index > string.size())
            return string;
        position = qsizetype(index);
        break;
    }
    default: return string;
    }
    const std::optional<QString> inserted = replacementStringValueUsingRules(rules, std::nullopt);
    if (!inserted)
        return string;
    QString result = string;
    return result.insert(position, *inserted);
}

QString PXFileRenameItem::regexUsingRules(PXRenameRuleQueue &rules, const QString &string) const
{
    const PXRenameRule *patternField = popNextSignificantOperationFromRules(rules);
    if (constantOf(patternField) != C::regexSearchValue) {
        logError(QStringLiteral("Error, tried to perform regex operation with type %1").arg(describe(patternField)));
        return string;
    }
    const QString &pattern = patternField->stringValue;
    const PXRenameRule *templateField = popNextSignificantOperationFromRules(rules);
    if (pattern.isEmpty() || constantOf(templateField) != C::regexReplaceValue)
        return string;
    QString error;
    const std::optional<QString> result = regexReplacingAll(string, pattern, templateField->stringValue, &error);
    if (!result) {
        logError(QStringLiteral("Error %1 doing regex '%2' with target '%3' on string '%4'")
                     .arg(error, pattern, templateField->stringValue, string));
        return string;
    }
    return *result;
}

std::optional<QString> PXFileRenameItem::replacementStringValueUsingRules(PXRenameRuleQueue &rules,
                                                                          const std::optional<QString> &input) const
{
    const PXRenameRule *kind = popNextSignificantOperationFromRules(rules);
    switch (constantOf(kind)) {
    case C::addCreationDate:
    case C::addModificationDate:
    case C::addDateTaken: {
        const std::optional<QString> pattern = fieldText(rules, C::dateFormatValue);
        const PXFilePtr &file = representedObject();
        if (!pattern || pattern->isEmpty() || !file)
            return std::nullopt;
        QDateTime date;
        switch (kind->operationConstant) {
        case C::addCreationDate: date = file->creationDate(); break;
        case C::addModificationDate: date = file->modificationDate(); break;
        default:
            // A file without a date taken (a screenshot, a scan, a document) has its creation date.
            date = file->EXIFDate();
            if (!date.isValid())
                date = file->creationDate();
            break;
        }
        return formattedDateWithPattern(date, *pattern);
    }
    case C::addSequence: {
        const std::optional<QString> startText = fieldText(rules, C::initialSequenceValue);
        const qint64 start = startText && !startText->isEmpty() ? leadingIntegerValue(*startText) : 0;
        const int format = constantOf(popNextSignificantOperationFromRules(rules));
        const int places =
            format == 0 ? 0 : std::min(std::max(format, int(C::sequenceFormat1)), int(C::sequenceFormat00001)) - 1000;
        return stringForSequenceWithBeginning(start, places);
    }
    case C::addCharacters: return fieldText(rules, C::replacementCharacters);
    case C::makeUppercase: return input ? std::optional<QString>(input->toUpper()) : std::nullopt;
    case C::makeLowercase: return input ? std::optional<QString>(input->toLower()) : std::nullopt;
    case C::addParentFolderName: return representedObject() ? representedObject()->parentDisplayName() : QString();
    case C::addGrandparentFolderName: {
        const PXFilePtr &file = representedObject();
        const ZQFilePtr parent = file ? file->parentItem() : nullptr;
        if (!parent || !parent->parentItem())
            return QStringLiteral("");
        return PXFile::from(parent)->parentDisplayName();
    }
    default: return std::nullopt;
    }
}

QString PXFileRenameItem::stringForSequenceWithBeginning(qint64 start, int places) const
{
    // Unsigned arithmetic as the number is shown: a negative start below the index wraps around.
    const quint64 number = (m_perFolder ? itemIndex() : itemOverallIndex()) + quint64(start);
    const QString digits = QString::number(number);
    if (places <= 1)
        return digits;
    return digits.rightJustified(places, QLatin1Char('0'));
}

const PXRenameRule *PXFileRenameItem::popNextSignificantOperationFromRules(PXRenameRuleQueue &rules)
{
    const PXRenameRule *rule = nullptr;
    while (!rules.isEmpty()) {
        rule = rules.takeFirst();
        if (C::isSignificant(rule->operationConstant))
            break;
    }
    return rule;
}
