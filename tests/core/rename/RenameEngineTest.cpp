#include "core/rename/PXFileRenameItem.h"
#include "core/rename/PXRangeFormatter.h"
#include "core/rename/PXRenameCriterion.h"

#include "core/model/PXFile.h"
#include "core/rename/RenameLogCapture.h"
#include "core/rename/RenameRuleRows.h"
#include "support/TestDir.h"

#include <gtest/gtest.h>

namespace C = PXRenameConstant;

namespace {

// A numbered file item (the first of its folder and of the batch) for `name` in a fresh folder.
class RenameEngine : public ::testing::Test
{
protected:
    PXFileRenameItemPtr itemFor(const QString &name, quint64 index = 0)
    {
        auto item = std::make_shared<PXFileRenameItem>(PXFile::fileForPath(dir.write(name)));
        quint64 overall = index;
        item->setOverallIndex(overall, index);
        return item;
    }
    QString proposed(const QString &name, const PXRenameRules &rules)
    {
        const PXFileRenameItemPtr item = itemFor(name);
        item->updateForRenameRules(rules);
        return item->potentialName();
    }

    TestDir dir;
};

PXRenameRow replaceRange(const QString &range, const PXRenameRule &value, const PXRenameRule &text = {})
{
    return simple(
        {rule(C::replace), rule(C::replaceRange), rule(C::rangeToReplace, range), rule(C::label), value, text});
}

} // namespace

TEST_F(RenameEngine, TargetsSplitTheNameAtItsLastFullStop)
{
    const PXRenameRules upper = {
        simple({rule(C::replace), rule(C::replaceEntirely), rule(C::label), rule(C::makeUppercase)})};
    EXPECT_EQ(proposed(QStringLiteral("holiday.tar.gz"), {in(C::searchFilename, upper)}),
              QStringLiteral("HOLIDAY.TAR.gz"));
    EXPECT_EQ(proposed(QStringLiteral("holiday.jpeg"), {in(C::searchExtension, upper)}),
              QStringLiteral("holiday.JPEG"));
    EXPECT_EQ(proposed(QStringLiteral("holiday.jpeg"), {in(C::searchFilenameAndExtension, upper)}),
              QStringLiteral("HOLIDAY.JPEG"));
    // A base made empty keeps the old name.
    const PXRenameRules erase = {replaceCharacters(QStringLiteral("photo"), QString())};
    EXPECT_EQ(proposed(QStringLiteral("photo.jpg"), {in(C::searchFilename, erase)}), QStringLiteral("photo.jpg"));
    // A name without an extension gets one; one without a base keeps its extension.
    const PXRenameRules addTxt = {insertCharacters(C::insertAtEnd, QStringLiteral("txt"))};
    EXPECT_EQ(proposed(QStringLiteral("README"), {in(C::searchExtension, addTxt)}), QStringLiteral("README.txt"));
    EXPECT_EQ(proposed(QStringLiteral(".profile"), {in(C::searchExtension, addTxt)}), QStringLiteral(".profile"));
    // Rows run in order, each on the result of the one before; a row without an operation is skipped.
    const PXRenameRules chain = {simple({rule(C::label), rule(1000)}),
                                 insertCharacters(C::insertAtBeginning, QStringLiteral("a-")),
                                 replaceCharacters(QStringLiteral("-"), QStringLiteral("+"))};
    EXPECT_EQ(proposed(QStringLiteral("b.jpg"), chain), QStringLiteral("a+b.jpg"));
}

TEST_F(RenameEngine, RangesSelectOneBasedCharactersAndNeverClamp)
{
    const PXRenameRule upper = rule(C::makeUppercase);
    const PXFileRenameItemPtr item = itemFor(QStringLiteral("abcdef.jpg"));
    const auto apply = [&](const PXRenameRow &row) { return item->applyRules({row}, QStringLiteral("abcdef.jpg")); };
    EXPECT_EQ(apply(replaceRange(QStringLiteral("1-3"), upper)), QStringLiteral("ABCdef.jpg"));
    EXPECT_EQ(apply(replaceRange(QStringLiteral("2:4"), upper)), QStringLiteral("aBCDef.jpg"));
    EXPECT_EQ(apply(replaceRange(QStringLiteral("0-2"), upper)), QStringLiteral("ABcdef.jpg"));
    EXPECT_EQ(apply(replaceRange(QStringLiteral("5-20"), upper)), QStringLiteral("abcdef.jpg"));
    EXPECT_EQ(apply(replaceRange(QStringLiteral("-1-3"), upper)), QStringLiteral("abcdef.jpg"));
    // An empty range is a place: "3-2" is before the third character, "x-y" reads as 0-0.
    const PXRenameRule characters = rule(C::addCharacters);
    const PXRenameRule star = rule(C::replacementCharacters, QStringLiteral("*"));
    EXPECT_EQ(apply(replaceRange(QStringLiteral("3-2"), characters, star)), QStringLiteral("ab*cdef.jpg"));
    EXPECT_EQ(apply(replaceRange(QStringLiteral("x-y"), characters, star)), QStringLiteral("*abcdef.jpg"));
    EXPECT_EQ(apply(replaceRange(QStringLiteral("8-10"), rule(C::makeUppercase))), QStringLiteral("abcdef.JPG"));
    // The field refuses what is no range while the user types; the engine reads the stored text itself.
    PXRangeFormatter formatter;
    EXPECT_EQ(formatter.getObjectValue(QStringLiteral("2-4")), (PXRange{1, 3}));
    EXPECT_EQ(formatter.getObjectValue(QStringLiteral("2:2")), (PXRange{1, 1}));
    for (const char *refused : {"0-2", "3-2", "x-y", "5", "1-2-3"}) {
        QString message;
        EXPECT_FALSE(formatter.getObjectValue(QString::fromLatin1(refused), &message)) << refused;
        EXPECT_EQ(message, PXRangeFormatter::invalidRangeMessage());
    }
    EXPECT_EQ(formatter.stringForObjectValue(PXRange{1, 3}), QStringLiteral("2-4"));
    EXPECT_EQ(formatter.stringForObjectValue(PXRange{4, 0}), QString());
    EXPECT_EQ(formatter.stringForObjectValue(QVariant(QStringLiteral("1:3"))), QStringLiteral("1:3"));
    EXPECT_EQ(formatter.stringForObjectValue(QVariant(7)), QString());
}

TEST_F(RenameEngine, CharactersMatchIgnoringCaseDiacriticsAndWidth)
{
    // a, A, á composed and decomposed, and the full-width A.
    const QString name = QStringLiteral("aA\u00E1a\u0301\uFF21-b.jpg");
    const PXFileRenameItemPtr item = itemFor(QStringLiteral("x.jpg"));
    EXPECT_EQ(item->applyRules({replaceCharacters(QStringLiteral("A"), QStringLiteral("x"))}, name),
              QStringLiteral("xxxxx-b.jpg"));
    EXPECT_EQ(item->applyRules({replaceCharacters(QStringLiteral("\u00C1"), QStringLiteral("x"))}, name),
              QStringLiteral("xxxxx-b.jpg"));
    EXPECT_EQ(item->applyRules({replaceCharacters(QStringLiteral("A"), QStringLiteral("x"), true)}, name),
              QStringLiteral("ax\u00E1a\u0301\uFF21-b.jpg"));
    // Only whole characters match: the "s" of a folded "ß" is not found.
    EXPECT_EQ(item->applyRules({replaceCharacters(QStringLiteral("s"), QStringLiteral("t"))}, QStringLiteral("Straße")),
              QStringLiteral("ttraße"));
    // The value is computed once, from the search text: "Uppercase" writes ABC over every abc.
    const PXRenameRow upper =
        simple({rule(C::replace), rule(C::replaceCharacters), rule(C::charactersToReplace, QStringLiteral("abc")),
                rule(C::label), rule(C::makeUppercase)});
    EXPECT_EQ(item->applyRules({upper}, QStringLiteral("abc-Abc-äbc")), QStringLiteral("ABC-ABC-ABC"));
    // An empty search text and a missing value change nothing.
    EXPECT_EQ(item->applyRules({replaceCharacters(QString(), QStringLiteral("x"))}, QStringLiteral("abc")),
              QStringLiteral("abc"));
    EXPECT_EQ(item->applyRules({simple({rule(C::replace), rule(C::replaceCharacters),
                                        rule(C::charactersToReplace, QStringLiteral("a"))})},
                               QStringLiteral("abc")),
              QStringLiteral("abc"));
}

TEST_F(RenameEngine, InsertsAtOneBasedLocationsWithinTheName)
{
    const PXFileRenameItemPtr item = itemFor(QStringLiteral("x.jpg"));
    const auto atLocation = [](const QString &location) {
        return simple({rule(C::insert), rule(C::insertAtLocation), rule(C::label, QStringLiteral("the")),
                       rule(C::locationToInsert, location), rule(C::addCharacters),
                       rule(C::replacementCharacters, QStringLiteral("_"))});
    };
    EXPECT_EQ(item->applyRules({atLocation(QStringLiteral("3"))}, QStringLiteral("abcd")), QStringLiteral("ab_cd"));
    EXPECT_EQ(item->applyRules({atLocation(QStringLiteral("0"))}, QStringLiteral("abcd")), QStringLiteral("_abcd"));
    EXPECT_EQ(item->applyRules({atLocation(QStringLiteral("5"))}, QStringLiteral("abcd")), QStringLiteral("abcd_"));
    EXPECT_EQ(item->applyRules({atLocation(QStringLiteral("6"))}, QStringLiteral("abcd")), QStringLiteral("abcd"));
    // Nothing to change the case of: an inserted "Uppercase" inserts nothing.
    EXPECT_EQ(item->applyRules({simple({rule(C::insert), rule(C::insertAtEnd), rule(C::makeUppercase)})},
                               QStringLiteral("abcd")),
              QStringLiteral("abcd"));
    // Insert runs the rows nested under it on its result.
    const PXRenameRow nested = simple({rule(C::insert), rule(C::insertAtEnd), rule(C::addCharacters),
                                       rule(C::replacementCharacters, QStringLiteral("e"))},
                                      {replaceCharacters(QStringLiteral("a"), QStringLiteral("A"), true)});
    EXPECT_EQ(item->applyRules({nested}, QStringLiteral("abcd")), QStringLiteral("Abcde"));
}

TEST_F(RenameEngine, RegularExpressionsUseTemplatesAndLeaveBadPatternsAlone)
{
    const PXFileRenameItemPtr item = itemFor(QStringLiteral("x.jpg"));
    EXPECT_EQ(item->applyRules({regexRow(QStringLiteral("^img_(\\d+)"), QStringLiteral("photo-$1"))},
                               QStringLiteral("IMG_0042.jpg")),
              QStringLiteral("photo-0042.jpg"));
    // A regex row's nested rows are not applied (unlike Insert and Replace).
    const PXRenameRules nested = {insertCharacters(C::insertAtEnd, QStringLiteral("!"))};
    EXPECT_EQ(item->applyRules({regexRow(QStringLiteral("a"), QStringLiteral("b"), nested)}, QStringLiteral("aa")),
              QStringLiteral("bb"));

    RenameLogCapture log;
    EXPECT_EQ(item->applyRules({regexRow(QStringLiteral("("), QStringLiteral("x"))}, QStringLiteral("keep.jpg")),
              QStringLiteral("keep.jpg"));
    EXPECT_TRUE(log.contains(QStringLiteral("doing regex '(' with target 'x' on string 'keep.jpg'")))
        << qPrintable(log.lines.join('\n'));
    EXPECT_EQ(item->applyRules({regexRow(QStringLiteral("(k)"), QStringLiteral("$7"))}, QStringLiteral("keep.jpg")),
              QStringLiteral("keep.jpg"));
    EXPECT_EQ(log.lines.size(), 2);
    // An empty pattern, a missing template and a row without its pattern field leave the name.
    EXPECT_EQ(item->applyRules({regexRow(QString(), QStringLiteral("x"))}, QStringLiteral("keep")),
              QStringLiteral("keep"));
    EXPECT_EQ(item->applyRules({simple({rule(C::regex), rule(C::regexSearchValue, QStringLiteral("e"))})},
                               QStringLiteral("keep")),
              QStringLiteral("keep"));
    EXPECT_EQ(item->applyRules({simple({rule(C::regex), rule(C::regex)})}, QStringLiteral("keep")),
              QStringLiteral("keep"));
    EXPECT_TRUE(log.contains(QStringLiteral("Error, tried to perform regex operation with type")));
    EXPECT_EQ(item->applyRules({simple({rule(C::replace), rule(C::insertAtEnd)})}, QStringLiteral("keep")),
              QStringLiteral("keep"));
    EXPECT_TRUE(log.contains(QStringLiteral("Error, tried to perform replace operation with type")));
}

TEST_F(RenameEngine, ProposedNamesAreCleanedBoundedAndComparedIgnoringCase)
{
    PXFileRenameItemPtr item = itemFor(QStringLiteral("photo.JPG"));
    // Empty rules: the name and the path as they are.
    item->updateForRenameRules({});
    EXPECT_EQ(item->potentialPath(), dir.filePath(QStringLiteral("photo.JPG")));
    EXPECT_FALSE(item->nameHasChanged());

    item->updateForRenameRules(
        {in(C::searchExtension,
            {simple({rule(C::replace), rule(C::replaceEntirely), rule(C::label), rule(C::makeLowercase)})})});
    EXPECT_EQ(item->potentialName(), QStringLiteral("photo.jpg"));
    EXPECT_TRUE(item->nameHasChanged());
    EXPECT_TRUE(item->caseChange());
    EXPECT_EQ(item->potentialPath(), dir.filePath(QStringLiteral("photo.jpg")).toLower());

    item->updateForRenameRules({insertCharacters(C::insertAtBeginning, QStringLiteral("a/b:c") + QChar(u'\0'))});
    EXPECT_EQ(item->potentialName(), QStringLiteral("a|b.cphoto.JPG"));
    EXPECT_FALSE(item->caseChange());

    // 256 UTF-16 units or more: the current name, silently.
    const QString prefix246 = QString(246, QLatin1Char('n'));
    item->updateForRenameRules({insertCharacters(C::insertAtBeginning, prefix246)});
    EXPECT_EQ(item->potentialName().size(), 255);
    item->updateForRenameRules({insertCharacters(C::insertAtBeginning, prefix246 + QLatin1Char('n'))});
    EXPECT_EQ(item->potentialName(), QStringLiteral("photo.JPG"));
    EXPECT_FALSE(item->nameHasChanged());
    item->updateForRenameRules({insertCharacters(C::insertAtBeginning, QString(300, QLatin1Char('x')))});
    EXPECT_EQ(item->potentialName(), QStringLiteral("photo.JPG"));

    // A folder keeps its name whatever the rules.
    auto folder = std::make_shared<PXFileRenameItem>(PXFile::fileForPath(dir.mkdir(QStringLiteral("Sub"))), true);
    quint64 overall = 0, index = 0;
    folder->setOverallIndex(overall, index);
    folder->updateForRenameRules({insertCharacters(C::insertAtBeginning, QStringLiteral("x"))});
    EXPECT_EQ(folder->potentialName(), QStringLiteral("Sub"));
    EXPECT_EQ(overall, 0u);
}

TEST_F(RenameEngine, DatesSequencesAndFolderNamesComeFromTheFile)
{
    const QDateTime modified(QDate(2021, 3, 4), QTime(5, 6, 7));
    auto item = std::make_shared<PXFileRenameItem>(
        PXFile::fileForPath(dir.write(QStringLiteral("Trip/Day 1/a.jpg"), "x", modified)));
    quint64 overall = 41, index = 6;
    item->setOverallIndex(overall, index);
    const auto insertDate = [](int kind, const QString &pattern) {
        return simple({rule(C::insert), rule(C::insertAtBeginning), rule(kind), rule(C::label),
                       rule(C::dateFormatValue, pattern)});
    };
    EXPECT_EQ(item->applyRules({insertDate(C::addModificationDate, QStringLiteral("yyyy-MM-dd HH.mm.ss "))},
                               QStringLiteral("a.jpg")),
              QStringLiteral("2021-03-04 05.06.07 a.jpg"));
    // Unicode patterns, not Qt's: "yy", "D" (day of the year) and quoted text.
    EXPECT_EQ(item->applyRules({insertDate(C::addModificationDate, QStringLiteral("yy 'day' D_"))},
                               QStringLiteral("a")),
              QStringLiteral("21 day 63_a"));
    EXPECT_EQ(item->applyRules({insertDate(C::addModificationDate, QString())}, QStringLiteral("a")),
              QStringLiteral("a"));

    // Across the batch by default, within the folder when asked; widths pad but never cut.
    EXPECT_EQ(item->applyRules({insertSequence(C::insertAtEnd, QStringLiteral("1"), C::sequenceFormat001)},
                               QStringLiteral("a")),
              QStringLiteral("a042"));
    item->updatePerFolderSetting(true);
    EXPECT_EQ(item->applyRules({insertSequence(C::insertAtEnd, QStringLiteral("1"), C::sequenceFormat001)},
                               QStringLiteral("a")),
              QStringLiteral("a007"));
    EXPECT_EQ(item->applyRules({insertSequence(C::insertAtEnd, QString(), C::label)}, QStringLiteral("a")),
              QStringLiteral("a6"));
    EXPECT_EQ(item->stringForSequenceWithBeginning(994, 2), QStringLiteral("1000"));
    EXPECT_EQ(item->stringForSequenceWithBeginning(0, 5), QStringLiteral("00006"));

    const auto insertValue = [](int kind) { return simple({rule(C::insert), rule(C::insertAtEnd), rule(kind)}); };
    EXPECT_EQ(item->applyRules({insertValue(C::addParentFolderName)}, QStringLiteral("a ")), QStringLiteral("a Day 1"));
    EXPECT_EQ(item->applyRules({insertValue(C::addGrandparentFolderName)}, QStringLiteral("a ")),
              QStringLiteral("a Trip"));
}

TEST(RenameCriterion, CatalogueNamesTitlesAndConstants)
{
    EXPECT_EQ(PXRenameCriterion::criterionWithName(QStringLiteral("search filename and extension"))->displayValue(),
              QStringLiteral("Both Filename and Extension"));
    EXPECT_EQ(PXRenameCriterion::criterionWithName(QStringLiteral("replace charaters with -label"))->displayValue(),
              QStringLiteral("with"));
    EXPECT_EQ(PXRenameCriterion::operationConstantForName(QStringLiteral("sequence format 0001")),
              C::sequenceFormat0001);
    EXPECT_EQ(PXRenameCriterion::criterionWithName(QStringLiteral("range to replace"))->displayValue(),
              QStringLiteral("range field"));
    RenameLogCapture log;
    EXPECT_EQ(PXRenameCriterion::criterionWithName(QStringLiteral("bogus"))->displayValue(), QString());
    EXPECT_TRUE(
        log.contains(QStringLiteral("Error: attempted to get display value for unknown rename criterion bogus")));
}
