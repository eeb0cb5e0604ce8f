#include "cli/RenameCommand.h"

#include "cli/CliSupport.h"

#include "core/model/PXFile.h"
#include "core/rename/PXFileRenamer.h"
#include "core/rename/PXFileRenamerQuestions.h"
#include "core/rename/PXRenamePresets.h"

#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QTextStream>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace {

constexpr char usage[] =
    "pixcove-cli rename (--rules FILE | --preset NAME) [--depth N] [--sort TAG] [--descending] [--flat] "
    "[--per-folder] [--apply] PATH...\n"
    "  --rules FILE   a JSON array of rule rows (\"rowType\", \"rules\" of {\"operationConstant\", \"stringValue\"},\n"
    "                 \"subRules\"); - reads standard input\n"
    "  --preset NAME  a saved preset, or a default one when none are saved; it brings its own options,\n"
    "                 which the options below override\n"
    "  --depth N      folder levels listed: 0 (default) shows a folder as itself, never renamed; 1 its files ...\n"
    "  --sort TAG     0 name (default), 1 modification date, 2 creation date, 3 kind, 4 size, 5 EXIF date\n"
    "  --descending   reverse the sort\n"
    "  --flat         one list of all files instead of a tree of folders\n"
    "  --per-folder   sequences count within each folder instead of across all files\n"
    "  --apply        rename; without it nothing is touched\n"
    "Prints one line per listed item in display order, as full paths: \"OLD -> NEW\", \"OLD -> OLD\" when\n"
    "the name stays, \"OLD -> (not applicable)\" for a folder, \"OLD -> (not renamable)\" for a file that\n"
    "cannot be renamed; \"  !collision\" ends the line of an item whose new name is taken. With --apply a\n"
    "last line \"renamed K of M files\" follows.\n"
    "Exit status: 0 done, 1 a path could not be read or a rename failed (files renamed before it keep\n"
    "their names), 2 usage, 3 collisions (nothing renamed).";

constexpr int exitCollisions = 3;
// The deepest walk a command line may ask for; deeper trees are a mistake more often than not.
constexpr int maximumDepth = 100;

struct RenameOptions
{
    QString rulesFile;
    QString presetName;
    std::optional<int> depth;
    std::optional<int> sort;
    bool descending = false;
    bool flat = false;
    bool perFolder = false;
    bool apply = false;
    QStringList paths;
};

QString parse(const QStringList &args, RenameOptions &options)
{
    QString error;
    bool optionsEnded = false;
    bool sawRules = false;
    bool sawPreset = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (optionsEnded || !arg.startsWith(QLatin1String("--"))) {
            options.paths.append(arg);
            continue;
        }
        if (arg == QLatin1String("--")) {
            optionsEnded = true;
        } else if (arg == QLatin1String("--rules")) {
            const auto value = Cli::textOption(args, i, &error);
            if (!value)
                return error;
            options.rulesFile = *value;
            sawRules = true;
        } else if (arg == QLatin1String("--preset")) {
            const auto value = Cli::textOption(args, i, &error);
            if (!value)
                return error;
            options.presetName = *value;
            sawPreset = true;
        } else if (arg == QLatin1String("--depth")) {
            options.depth = Cli::intOption(args, i, 0, maximumDepth, &error);
            if (!options.depth)
                return error;
        } else if (arg == QLatin1String("--sort")) {
            options.sort = Cli::intOption(args, i, 0, PXFileRenamer::sortSettingCount - 1, &error);
            if (!options.sort)
                return error;
        } else if (arg == QLatin1String("--descending")) {
            options.descending = true;
        } else if (arg == QLatin1String("--flat")) {
            options.flat = true;
        } else if (arg == QLatin1String("--per-folder")) {
            options.perFolder = true;
        } else if (arg == QLatin1String("--apply")) {
            options.apply = true;
        } else {
            return QStringLiteral("unknown option %1").arg(arg);
        }
    }
    if (sawRules == sawPreset)
        return QStringLiteral("give either --rules FILE or --preset NAME");
    if (options.paths.isEmpty())
        return QStringLiteral("no path given");
    return {};
}

std::optional<PXRenameRules> readRules(const QString &fileName, QString *error)
{
    QFile file;
    const bool opened = fileName == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                       : (file.setFileName(fileName), file.open(QIODevice::ReadOnly));
    if (!opened) {
        *error = QStringLiteral("cannot read rules from %1: %2").arg(fileName, file.errorString());
        return std::nullopt;
    }
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = QStringLiteral("cannot read rules from %1: %2 at offset %3")
                     .arg(fileName, parseError.errorString())
                     .arg(parseError.offset);
        return std::nullopt;
    }
    QString shapeError;
    auto rules = renameRulesFromJson(document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object()),
                                     &shapeError);
    if (!rules)
        *error = QStringLiteral("cannot read rules from %1: %2").arg(fileName, shapeError);
    return rules;
}

// Nobody is there to answer: a question stops the rename before anything more is done.
class CommandLineQuestions : public PXFileRenamerQuestions
{
public:
    ZQFileOperationResolution queryUserWithError(const ZQFileOperationError &error, bool *) override
    {
        Cli::printError(
            QStringLiteral("cannot rename %1: %2 %3").arg(error.path, error.description, error.failureReason));
        return ZQFileOperationResolution::cancel;
    }
    void showRenameError(const QString &message, const QString &informativeText) override
    {
        Cli::printError(QStringLiteral("rename stopped: %1 %2").arg(message, informativeText));
    }
    PXUnsavedPresetAnswer askToSaveChangesToPreset(const QJsonObject &) override
    {
        return PXUnsavedPresetAnswer::discardChanges;
    }
};

QByteArray newPathOf(const PXFileRenameItem &item)
{
    const PXFilePtr &file = item.representedObject();
    if (item.isContainer())
        return "(not applicable)";
    if (!item.isRenamable())
        return "(not renamable)";
    if (!item.nameHasChanged())
        return file->nativePath();
    QByteArray folder = file->parentItem()->nativePath();
    if (!folder.endsWith('/'))
        folder += '/';
    return folder + QFile::encodeName(item.potentialName());
}

} // namespace

int runRenameCommand(const QStringList &args)
{
    if (args.contains(QLatin1String("--help"))) {
        std::printf("usage: %s\n", usage);
        return Cli::exitOk;
    }
    RenameOptions options;
    if (const QString error = parse(args, options); !error.isEmpty())
        return Cli::usageError(error, usage);

    PXRenamePresets presets;
    std::optional<QJsonObject> preset;
    PXRenameRules rules;
    if (!options.presetName.isNull()) {
        preset = presets.presetNamed(options.presetName);
        if (!preset)
            return Cli::usageError(QStringLiteral("no preset named \"%1\"").arg(options.presetName), usage);
        QString error;
        const auto presetRules = renameRulesFromJson(preset->value(PXRenameSettingsKey::rules), &error);
        if (!presetRules)
            return Cli::usageError(
                QStringLiteral("preset \"%1\" has unreadable rules: %2").arg(options.presetName, error), usage);
    } else {
        QString error;
        const auto fileRules = readRules(options.rulesFile, &error);
        if (!fileRules)
            return Cli::usageError(error, usage);
        rules = *fileRules;
    }

    QList<PXFilePtr> files;
    for (const QString &path : std::as_const(options.paths)) {
        struct stat info
        { };
        if (::lstat(QFile::encodeName(path).constData(), &info) != 0) {
            Cli::printError(
                QStringLiteral("cannot read %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
            return Cli::exitFailure;
        }
        files.append(PXFile::fileForPath(path));
    }

    CommandLineQuestions questions;
    PXFileRenamer renamer(&presets);
    renamer.setWatchesFiles(false);
    renamer.setQuestions(&questions);
    if (preset)
        renamer.updateWithPreset(*preset);
    else
        renamer.setRenameRules(rules);
    if (options.depth)
        renamer.setFolderScanDepth(*options.depth);
    if (options.sort || options.descending)
        renamer.setSortSetting(options.sort.value_or(renamer.sortSetting()),
                               !options.descending && renamer.sortAscending());
    if (options.flat)
        renamer.setFlatList(true);
    if (options.perFolder)
        renamer.setPerFolder(true);

    renamer.addFilesToRename(files);
    if (renamer.workInProgress()) {
        QEventLoop loop;
        QObject::connect(&renamer, &PXFileRenamer::scanFinished, &loop, &QEventLoop::quit);
        loop.exec();
    }
    renamer.updateNow();

    Cli::Output out;
    qsizetype collisions = 0;
    for (const PXFileRenameItemPtr &item : renamer.arrangedItems()) {
        QByteArray line = item->representedObject()->nativePath() + " -> " + newPathOf(*item);
        if (item->hasCollision()) {
            line += "  !collision";
            ++collisions;
        }
        out.line(line);
    }
    out.flush();
    if (collisions > 0) {
        Cli::printError(QStringLiteral("%1 of the new names are taken%2")
                            .arg(collisions)
                            .arg(options.apply ? QStringLiteral(", nothing renamed") : QString()));
        return exitCollisions;
    }
    if (!options.apply)
        return Cli::exitOk;

    qsizetype planned = 0;
    for (const PXFileRenameItemPtr &item : renamer.arrangedItems())
        planned += item->isRenamable() && item->representedObject()->name() != item->potentialName() ? 1 : 0;
    qsizetype renamed = 0;
    ZQFileOperationError error;
    switch (renamer.rename()) {
    case PXFileRenamer::RenameStart::refused:
        Cli::printError(QStringLiteral("the rename was refused"));
        return Cli::exitFailure;
    case PXFileRenamer::RenameStart::nothingToRename: break;
    case PXFileRenamer::RenameStart::started: {
        QEventLoop loop;
        QObject::connect(&renamer, &PXFileRenamer::renameFinished, &loop,
                         [&](qsizetype count, const ZQFileOperationError &stoppedBy) {
                             renamed = count;
                             error = stoppedBy;
                             loop.quit();
                         });
        loop.exec();
        break;
    }
    }
    out.line(QStringLiteral("renamed %1 of %2 files").arg(renamed).arg(planned).toUtf8());
    return error.isError() ? Cli::exitFailure : Cli::exitOk;
}
