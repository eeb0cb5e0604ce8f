#include "core/app/PluralForms.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

// Counts read as English does, in the windows and in the questions (the test program installs the
// forms as the application does).
TEST(PluralForms, CountsReadAsEnglishDoes)
{
    PluralForms::install(); // a second call changes nothing
    const auto text = [](const char *context, const char *source, int n) {
        return QCoreApplication::translate(context, source, nullptr, n);
    };
    EXPECT_EQ(text("FileRenamerWindow", "Renamed %n file(s).", 1), QStringLiteral("Renamed 1 file."));
    EXPECT_EQ(text("FileRenamerWindow", "Renamed %n file(s).", 3), QStringLiteral("Renamed 3 files."));
    EXPECT_EQ(text("ThumbnailsActionHandler", "Move %n rejected item(s) to the Trash?", 2),
              QStringLiteral("Move 2 rejected items to the Trash?"));
    EXPECT_EQ(text("MainMenuBar", "%n Level(s) Deep", 1), QStringLiteral("1 Level Deep"));
    EXPECT_EQ(text("ActivitiesManager", "Rotating %n images", 10), QStringLiteral("Rotating 10 images"));
}
