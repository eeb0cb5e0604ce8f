#include <QProcess>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

// Both programs answer --version with one line and success, before anything starts: with no
// display and no usable platform plugin, making an application object would fail the run, and
// the libraries the dynamic loader maps are listed.
TEST(Version, BothProgramsPrintTheirVersionWithoutStarting)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("no-such-platform"));
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    const std::pair<QString, QString> programs[] = {
        {QStringLiteral(PIXCOVE_APP_PATH), QStringLiteral("pixcove")},
        {QStringLiteral(PIXCOVE_CLI_PATH), QStringLiteral("pixcove-cli")},
    };
    for (const auto &[path, name] : programs) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(path, {QStringLiteral("--version")});
        ASSERT_TRUE(process.waitForFinished(30000)) << qPrintable(name);
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << qPrintable(name);
        EXPECT_EQ(process.exitCode(), 0) << qPrintable(name);
        EXPECT_EQ(QString::fromUtf8(process.readAllStandardOutput()),
                  QStringLiteral("%1 %2\n").arg(name, QStringLiteral(PIXCOVE_VERSION)));
        EXPECT_EQ(process.readAllStandardError(), QByteArray()) << qPrintable(name);

        // Nor is Qt or an image library loaded for it: the dynamic loader lists what it loads.
        QProcessEnvironment traced = environment;
        traced.insert(QStringLiteral("LD_DEBUG"), QStringLiteral("libs"));
        process.setProcessEnvironment(traced);
        process.start(path, {QStringLiteral("--version")});
        ASSERT_TRUE(process.waitForFinished(30000)) << qPrintable(name);
        const QString loaded = QString::fromLocal8Bit(process.readAllStandardError());
        EXPECT_TRUE(loaded.contains(QLatin1String("calling init"))) << "no loader trace for " << qPrintable(name);
        for (const char *library : {"libQt6", "libexiv2", "libheif", "libraw", "libavcodec", "pixcove_"})
            EXPECT_FALSE(loaded.contains(QLatin1String(library))) << qPrintable(name) << " loads " << library;
    }
}
