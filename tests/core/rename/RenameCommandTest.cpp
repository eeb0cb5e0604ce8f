#include "core/rename/PXRenameRules.h"

#include "core/rename/RenameRuleRows.h"
#include "support/CliRun.h"
#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>

#include <gtest/gtest.h>

namespace C = PXRenameConstant;

namespace {

class RenameCommand : public ::testing::Test
{
protected:
    // Runs the tool with its settings in a folder of the test's own, so that only default presets exist.
    CliRun rename(QStringList args)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.path());
        environment.insert(QStringLiteral("HOME"), home.path());
        process.setProcessEnvironment(environment);
        args.prepend(QStringLiteral("rename"));
        process.start(QStringLiteral(PIXCOVE_CLI_PATH), args);
        process.waitForFinished(120000);
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    QString rulesFile(const PXRenameRules &rules)
    {
        return dir.write(QStringLiteral("rules.json"), QJsonDocument(jsonFromRenameRules(rules)).toJson());
    }
    QStringList names(const QString &folder) const
    {
        return QDir(folder).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    }

    TestDir dir;
    TestDir files;
    TestDir home;
};

} // namespace

TEST_F(RenameCommand, PrintsOldAndNewPathsAndRefusesCollisions)
{
    for (const char *name : {"Trip/b.jpg", "Trip/a.jpg", "Trip/keep.png", "Trip/Sub/c.jpg"})
        files.write(QString::fromLatin1(name));
    const QString trip = files.filePath(QStringLiteral("Trip"));
    const QString colliding = rulesFile({regexRow(QStringLiteral("^[ab]\\.jpg$"), QStringLiteral("x.jpg"))});

    CliRun run = rename({QStringLiteral("--rules"), colliding, QStringLiteral("--depth"), QStringLiteral("1"), trip});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.out,
              QStringLiteral("%1 -> (not applicable)\n"
                             "%1/a.jpg -> %1/x.jpg\n"
                             "%1/b.jpg -> %1/x.jpg  !collision\n"
                             "%1/keep.png -> %1/keep.png\n"
                             "%1/Sub -> (not applicable)\n")
                  .arg(trip));
    EXPECT_TRUE(run.err.startsWith(QStringLiteral("pixcove-cli: "))) << qPrintable(run.err);
    run = rename({QStringLiteral("--rules"), colliding, QStringLiteral("--depth"), QStringLiteral("1"),
                  QStringLiteral("--apply"), trip});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(names(trip), (QStringList{"Sub", "a.jpg", "b.jpg", "keep.png"}));

    // Flat, descending, numbered per folder, applied.
    const QString numbered = rulesFile(
        {in(C::searchFilename, {insertSequence(C::insertAtBeginning, QStringLiteral("1"), C::sequenceFormat01)})});
    run = rename({QStringLiteral("--rules"), numbered, QStringLiteral("--depth"), QStringLiteral("2"),
                  QStringLiteral("--flat"), QStringLiteral("--descending"), QStringLiteral("--per-folder"),
                  QStringLiteral("--apply"), trip});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_EQ(run.out,
              QStringLiteral("%1/keep.png -> %1/01keep.png\n"
                             "%1/Sub/c.jpg -> %1/Sub/01c.jpg\n"
                             "%1/b.jpg -> %1/02b.jpg\n"
                             "%1/a.jpg -> %1/03a.jpg\n"
                             "renamed 4 of 4 files\n")
                  .arg(trip));
    EXPECT_EQ(names(trip), (QStringList{"01keep.png", "02b.jpg", "03a.jpg", "Sub"}));

    // A default preset by name, on files given one by one.
    run = rename({QStringLiteral("--preset"), QStringLiteral("Spaces to Underscores"),
                  files.write(QStringLiteral("my photo.jpg"))});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_EQ(run.out, QStringLiteral("%1/my photo.jpg -> %1/my_photo.jpg\n").arg(files.path()));
}

// A name the file system would refuse (130 "é" are 260 bytes) is not proposed: the file keeps its
// name and the others are renamed, instead of a rename that stops halfway.
TEST_F(RenameCommand, NamesTooLongForTheFileSystemAreKeptAndTheOthersRenamed)
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        files.write(QString::fromLatin1(name));
    const QString rules = rulesFile({in(C::searchFilename, {insertCharacters(C::insertAtEnd, QStringLiteral("x"))}),
                                     regexRow(QStringLiteral("^b"), QString(130, QChar(0xE9)) + QLatin1Char('b'))});
    const CliRun run =
        rename({QStringLiteral("--rules"), rules, QStringLiteral("--apply"), files.filePath(QStringLiteral("a.jpg")),
                files.filePath(QStringLiteral("b.jpg")), files.filePath(QStringLiteral("c.jpg"))});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_EQ(run.out,
              QStringLiteral("%1/a.jpg -> %1/ax.jpg\n"
                             "%1/b.jpg -> %1/b.jpg\n"
                             "%1/c.jpg -> %1/cx.jpg\n"
                             "renamed 2 of 2 files\n")
                  .arg(files.path()));
    EXPECT_EQ(names(files.path()), (QStringList{"ax.jpg", "b.jpg", "cx.jpg"}));
}

// Rules files take the date-taken criterion like any other; saved presets bring their filter.
TEST_F(RenameCommand, ReadsDateTakenRulesAndAppliesAPresetsFilter)
{
    TestImages::JpegOptions options;
    options.dateTimeOriginal = QStringLiteral("2022:12:24 18:05:00");
    const QString photo = TestImages::writeJpeg(files.filePath(QStringLiteral("DSC_0101.JPG")), QSize(16, 16), options);
    const QString notes = files.write(QStringLiteral("notes.txt"));
    const PXRenameRules dated{in(C::searchFilename,
                                 {simple({rule(C::insert), rule(C::insertAtBeginning), rule(C::addDateTaken),
                                          rule(C::label), rule(C::dateFormatValue, QStringLiteral("yyyyMMdd_"))})})};
    CliRun run = rename({QStringLiteral("--rules"), rulesFile(dated), photo});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_EQ(run.out, QStringLiteral("%1/DSC_0101.JPG -> %1/20221224_DSC_0101.JPG\n").arg(files.path()));

    QSettings settings(home.filePath(QStringLiteral("tallowmere/Pixcove3.conf")), QSettings::IniFormat);
    const QJsonObject preset{{QStringLiteral("presetName"), QStringLiteral("Only JPEGs")},
                             {QStringLiteral("predicate"), QStringLiteral("extension ==[c] \"jpg\"")},
                             {QStringLiteral("rules"), jsonFromRenameRules(dated)}};
    settings.setValue(QStringLiteral("savedFileRenames"),
                      QString::fromUtf8(QJsonDocument(QJsonArray{preset}).toJson(QJsonDocument::Compact)));
    settings.sync();
    run = rename({QStringLiteral("--preset"), QStringLiteral("Only JPEGs"), QStringLiteral("--apply"), photo, notes});
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_EQ(run.out,
              QStringLiteral("%1/DSC_0101.JPG -> %1/20221224_DSC_0101.JPG\n"
                             "renamed 1 of 1 files\n")
                  .arg(files.path()));
    EXPECT_EQ(names(files.path()), (QStringList{"20221224_DSC_0101.JPG", "notes.txt"}));
}

TEST_F(RenameCommand, RejectsBadUsageAndMissingPaths)
{
    const QString path = files.write(QStringLiteral("a.jpg"));
    const QString rules = rulesFile({});
    const QString notJson = dir.write(QStringLiteral("bad.json"), "[{");
    const QString wrongShape =
        dir.write(QStringLiteral("shape.json"), R"([{"rowType": 0, "rules": {"operationConstant": 1}}])");
    const QString noConstant =
        dir.write(QStringLiteral("constant.json"), R"([{"rowType": 0, "rules": [{"stringValue": "x"}]}])");
    for (const QStringList &args :
         {QStringList{path}, QStringList{"--rules", rules, "--preset", "Sequence Renumbering", path},
          QStringList{"--rules", rules}, QStringList{"--rules", notJson, path},
          QStringList{"--rules", wrongShape, path}, QStringList{"--rules", noConstant, path},
          QStringList{"--rules", dir.filePath(QStringLiteral("none.json")), path},
          QStringList{"--preset", "No Such Preset", path}, QStringList{"--rules", rules, "--sort", "6", path},
          QStringList{"--rules", rules, "--depth", "x", path}, QStringList{"--rules", rules, "--bogus", path}}) {
        const CliRun run = rename(args);
        EXPECT_EQ(run.exitCode, 2) << qPrintable(args.join(' '));
        EXPECT_TRUE(run.err.startsWith(QStringLiteral("pixcove-cli: "))) << qPrintable(run.err);
        EXPECT_TRUE(run.out.isEmpty());
    }
    const CliRun run = rename({QStringLiteral("--rules"), rules, path, files.filePath(QStringLiteral("missing.jpg"))});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.out.isEmpty());
    // Empty rules leave every name as it is.
    EXPECT_EQ(rename({QStringLiteral("--rules"), rules, path}).out, QStringLiteral("%1 -> %1\n").arg(path));
}
