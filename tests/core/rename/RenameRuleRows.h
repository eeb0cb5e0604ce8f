#pragma once

#include "core/rename/PXRenameRules.h"

#include <initializer_list>

// Short forms for rule rows in tests: rule(102) is a criterion, simple({...}) a row of them,
// in(1, {...}) the compound row "In [Filename]" holding rows.
inline PXRenameRule rule(int constant, const QString &text = QString())
{
    return PXRenameRule{constant, text};
}

inline PXRenameRow simple(std::initializer_list<PXRenameRule> rules, const PXRenameRules &subRules = {})
{
    return PXRenameRow{PXRenameRow::simple, QList<PXRenameRule>(rules), subRules};
}

inline PXRenameRow in(int target, const PXRenameRules &rows)
{
    return PXRenameRow{PXRenameRow::compound,
                       {rule(PXRenameConstant::label, QStringLiteral("In")), rule(target)},
                       rows};
}

// Replace [Characters] [search] with [Characters] [replacement]
inline PXRenameRow replaceCharacters(const QString &search, const QString &replacement, bool caseSensitive = false)
{
    namespace C = PXRenameConstant;
    return simple({rule(C::replace), rule(caseSensitive ? C::replaceCharactersCaseSensitive : C::replaceCharacters),
                   rule(C::charactersToReplace, search), rule(C::label, QStringLiteral("with")), rule(C::addCharacters),
                   rule(C::replacementCharacters, replacement)});
}

// Insert [where] [Characters] [text]
inline PXRenameRow insertCharacters(int where, const QString &text)
{
    namespace C = PXRenameConstant;
    return simple({rule(C::insert), rule(where), rule(C::addCharacters), rule(C::replacementCharacters, text)});
}

// Insert [where] [Sequence] starting with [start] in format [format]
inline PXRenameRow insertSequence(int where, const QString &start, int format)
{
    namespace C = PXRenameConstant;
    return simple({rule(C::insert), rule(where), rule(C::addSequence), rule(C::label),
                   rule(C::initialSequenceValue, start), rule(C::label), rule(format)});
}

// Regex Search [pattern] and replace [template]
inline PXRenameRow regexRow(const QString &pattern, const QString &replacementTemplate,
                            const PXRenameRules &subRules = {})
{
    namespace C = PXRenameConstant;
    return simple({rule(C::regex), rule(C::regexSearchValue, pattern), rule(C::label, QStringLiteral("and replace")),
                   rule(C::regexReplaceValue, replacementTemplate)},
                  subRules);
}
