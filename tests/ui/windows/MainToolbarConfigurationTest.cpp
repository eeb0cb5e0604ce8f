#include "ui/windows/MainToolbarBuilder.h"
#include "ui/windows/ToolbarCustomizationDialog.h"

#include <QDialogButtonBox>
#include <QListWidget>
#include <QPushButton>

#include <gtest/gtest.h>

using MainToolbarBuilder::Arrangement;

TEST(MainToolbarConfiguration, WhatIsWrittenReadsBackAndWhatCannotBeReadGivesTheDefault)
{
    const Arrangement defaults{MainToolbarBuilder::defaultItems(), true};
    QString problem = QStringLiteral("stale");
    EXPECT_EQ(MainToolbarBuilder::arrangement(std::nullopt, &problem), defaults);
    EXPECT_TRUE(problem.isEmpty());
    EXPECT_EQ(MainToolbarBuilder::arrangement(QVariantMap(), &problem), defaults);

    const Arrangement custom{{"thumbnailViewSearch", "separator", "back", "separator", "space"}, false};
    const QVariantMap written = MainToolbarBuilder::configuration(QVariantMap{{"TB Size Mode", 1}}, custom);
    EXPECT_EQ(written.value("TB Size Mode"), QVariant(1));
    EXPECT_EQ(MainToolbarBuilder::arrangement(written, &problem), custom);
    EXPECT_TRUE(problem.isEmpty());
    // The default items are not written: a toolbar left as it came follows later defaults.
    const QVariantMap hidden = MainToolbarBuilder::configuration(written, {defaults.items, false});
    EXPECT_EQ(hidden, (QVariantMap{{"TB Size Mode", 1}, {"TB Is Shown", false}}));

    const std::pair<QVariantMap, QString> unreadable[] = {
        {{{"TB Item Identifiers", "back"}}, "“TB Item Identifiers” holds a value of type QString, not a list"},
        {{{"TB Item Identifiers", QVariantList{"back", 3}}},
         "“TB Item Identifiers” holds a value of type int, not an item's identifier"},
        {{{"TB Item Identifiers", QStringList{"back", "zoomIn"}}},
         "“TB Item Identifiers” names the unknown item “zoomIn”"},
        {{{"TB Item Identifiers", QStringList{"back", "forward", "back"}}},
         "“TB Item Identifiers” names the item “back” twice"},
        {{{"TB Item Identifiers", QStringList()}}, "“TB Item Identifiers” is empty"},
        {{{"TB Item Identifiers", QStringList{"back"}}, {"TB Is Shown", "no"}},
         "“TB Is Shown” holds a value of type QString, not a Boolean"},
    };
    for (const auto &[configuration, reason] : unreadable) {
        SCOPED_TRACE(reason.toStdString());
        EXPECT_EQ(MainToolbarBuilder::arrangement(configuration, &problem), defaults);
        EXPECT_EQ(problem, reason);
        // The next change replaces it whole.
        QVariantMap replaced = configuration;
        replaced.insert("TB Display Mode", 2);
        EXPECT_EQ(MainToolbarBuilder::configuration(replaced, custom), MainToolbarBuilder::configuration({}, custom));
    }

    // The sheet writes no empty toolbar.
    ToolbarCustomizationDialog sheet({"back"});
    QPushButton *ok = sheet.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
    sheet.list()->item(0)->setCheckState(Qt::Unchecked);
    EXPECT_FALSE(ok->isEnabled());
}
