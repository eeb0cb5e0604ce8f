#include "core/model/TextHelpers.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>

TEST(TextHelpers, FinderStyleOrderIsNumericCaseInsensitiveAndForced)
{
    EXPECT_LT(finderStyleCompare(QStringLiteral("file2"), QStringLiteral("file10")), 0);
    EXPECT_LT(finderStyleCompare(QStringLiteral("File2"), QStringLiteral("file10")), 0);
    EXPECT_GT(finderStyleCompare(QStringLiteral("img100.jpg"), QStringLiteral("IMG20.jpg")), 0);
    // Case is ignored by the order but two different texts never compare equal.
    EXPECT_NE(finderStyleCompare(QStringLiteral("photo"), QStringLiteral("Photo")), 0);
    EXPECT_EQ(finderStyleCompare(QStringLiteral("photo"), QStringLiteral("photo")), 0);
    // Diacritics count; full-width letters sort with their plain forms.
    EXPECT_NE(finderStyleCompare(QStringLiteral("resume"), QStringLiteral("résumé")), 0);
    EXPECT_LT(finderStyleCompare(QStringLiteral("\uFF21"), QStringLiteral("B")), 0);
    // A missing other text orders the receiver first.
    EXPECT_LT(finderStyleCompare(QStringLiteral("a"), QString()), 0);
}

TEST(TextHelpers, SortKeysGiveTheSameOrderAsTheComparison)
{
    QStringList names = {QStringLiteral("b10"), QStringLiteral("B2"),     QStringLiteral("a"),     QStringLiteral("É"),
                         QStringLiteral("e"),   QStringLiteral("file 1"), QStringLiteral("file1"), QStringLiteral("Z"),
                         QStringLiteral("10"),  QStringLiteral("9"),      QStringLiteral("\uFF21")};
    QStringList byCompare = names;
    std::sort(byCompare.begin(), byCompare.end(),
              [](const QString &a, const QString &b) { return finderStyleCompare(a, b) < 0; });
    QStringList byKey = names;
    std::sort(byKey.begin(), byKey.end(), [](const QString &a, const QString &b) {
        const int key = finderStyleSortKey(a).compare(finderStyleSortKey(b));
        return key != 0 ? key < 0 : finderStyleTieBreak(a, b) < 0;
    });
    EXPECT_EQ(byCompare, byKey);
    EXPECT_EQ(byCompare.first(), QStringLiteral("9"));
    EXPECT_EQ(byCompare.indexOf(QStringLiteral("B2")) + 1, byCompare.indexOf(QStringLiteral("b10")));
}

TEST(TextHelpers, SearchIgnoresCaseAndDiacritics)
{
    EXPECT_TRUE(containsIgnoringCaseAndDiacritics(QStringLiteral("Café au lait.JPG"), QStringLiteral("CAFE")));
    EXPECT_TRUE(containsIgnoringCaseAndDiacritics(QStringLiteral("Canon EOS 40D"), QStringLiteral("eos")));
    EXPECT_TRUE(containsIgnoringCaseAndDiacritics(QStringLiteral("anything"), QString()));
    EXPECT_FALSE(containsIgnoringCaseAndDiacritics(QStringLiteral("Nikon"), QStringLiteral("canon")));
    EXPECT_FALSE(containsIgnoringCaseAndDiacritics(QString(), QStringLiteral("x")));
}

TEST(TextHelpers, CleanedFilenameAndExposureFractions)
{
    EXPECT_EQ(cleanedFilename(QStringLiteral("a/b:c")), QStringLiteral("a|b.c"));
    EXPECT_EQ(cleanedFilename(QStringLiteral("x") + QChar(u'\0') + QStringLiteral("y/:")), QStringLiteral("xy|."));
    EXPECT_EQ(exposureFractionString(0.004), QStringLiteral("1/250"));
    EXPECT_EQ(exposureFractionString(1.0 / 3), QStringLiteral("1/3"));
    EXPECT_EQ(exposureFractionString(2.5), QStringLiteral("2 1/2"));
    EXPECT_EQ(exposureFractionString(4.0), QStringLiteral("4"));
    EXPECT_EQ(exposureFractionString(0), QStringLiteral("1/0"));
}
