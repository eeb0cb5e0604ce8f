#include "core/app/PluralForms.h"
#include "core/imaging/ImageSource.h"

#include <QGuiApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

// One application object for every test; offscreen so that no display is needed.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QStandardPaths::setTestModeEnabled(true);
    QGuiApplication app(argc, argv);
    ImageSource::install();
    PluralForms::install();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
