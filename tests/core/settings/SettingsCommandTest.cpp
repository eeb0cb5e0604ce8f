#include "support/TestDir.h"

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

namespace {

struct CliRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

CliRun runSettings(const QStringList &args, const QString &configHome)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PIXCOVE_CLI_PATH), QStringList{QStringLiteral("settings")} + args);
    EXPECT_TRUE(process.waitForFinished(30000));
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

TEST(SettingsCommand, PrintsThePathAndChecksFilesAsStartUpReadsThem)
{
    TestDir dir;
    const QString expectedPath = dir.path() + QStringLiteral("/com.tallowmere.Pixcove3.json\n");
    EXPECT_EQ(runSettings({QStringLiteral("--path")}, dir.path()).out, expectedPath);
    EXPECT_EQ(runSettings({}, dir.path()).out, expectedPath);

    const QString older = dir.write(QStringLiteral("older.json"), R"({"settingsVersion": 2, "thumbnailSize": 3})");
    const CliRun olderRun = runSettings({QStringLiteral("--check"), older}, dir.path());
    EXPECT_EQ(olderRun.exitCode, 0);
    EXPECT_EQ(olderRun.out, QStringLiteral("DEBUG: Updating settings from 2.0 to 3.0\n"));

    const QByteArray badBytes = R"({"settingsVersion": 4, "thumbnailOutlineThickness": "2"})";
    const QString bad = dir.write(QStringLiteral("bad.json"), badBytes);
    const CliRun badRun = runSettings({QStringLiteral("--check"), bad}, dir.path());
    EXPECT_EQ(badRun.exitCode, 1);
    EXPECT_EQ(badRun.out,
              QStringLiteral("ERROR: Settings version 4.0 is newer than 3.0, some data may be lost\n"
                             "ERROR: Error loading settings file: thumbnailOutlineThickness: expected a "
                             "whole number, found a string\n"));
    QFile checked(bad);
    ASSERT_TRUE(checked.open(QIODevice::ReadOnly));
    EXPECT_EQ(checked.readAll(), badBytes); // checking never writes

    const CliRun missing =
        runSettings({QStringLiteral("--check"), dir.filePath(QStringLiteral("none.json"))}, dir.path());
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.err.startsWith(QStringLiteral("pixcove-cli: "))) << qPrintable(missing.err);

    for (const QStringList &wrong : {QStringList{"--check"}, QStringList{"--bogus"}, QStringList{"--path", "x"},
                                     QStringList{"--check", bad, "extra"}}) {
        const CliRun usage = runSettings(wrong, dir.path());
        EXPECT_EQ(usage.exitCode, 2) << qPrintable(wrong.join(' '));
        EXPECT_TRUE(usage.err.startsWith(QStringLiteral("pixcove-cli: "))) << qPrintable(usage.err);
    }
}
