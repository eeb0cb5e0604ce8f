#include "cli/InfoCommand.h"

#include "cli/CliSupport.h"
#include "core/model/PXFile.h"

#include "core/imaging/ImagePropertiesLoader.h"
#include "core/inspector/InspectorRows.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

constexpr char usage[] = "pixcove-cli info [--tab general|exif|iptc|gps|tiff|nonimage] [--merge] [--json] FILE...";

struct InfoOptions
{
    std::optional<InspectorList> list;
    bool merge = false;
    bool json = false;
    QStringList paths;
};

QString parse(const QStringList &args, InfoOptions &options)
{
    QString error;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (optionsEnded || !arg.startsWith(QLatin1String("--"))) {
            options.paths.append(arg);
        } else if (arg == QLatin1String("--")) {
            optionsEnded = true;
        } else if (arg == QLatin1String("--tab")) {
            const auto value = Cli::textOption(args, i, &error);
            if (!value)
                return error;
            options.list = InspectorCatalogue::listForName(*value);
            if (!options.list)
                return QStringLiteral("unknown tab \"%1\"").arg(*value);
        } else if (arg == QLatin1String("--merge")) {
            options.merge = true;
        } else if (arg == QLatin1String("--json")) {
            options.json = true;
        } else {
            return QStringLiteral("unknown option %1").arg(arg);
        }
    }
    if (options.paths.isEmpty())
        return QStringLiteral("no files given");
    return {};
}

// Reads the records of `files` with the loader, as the inspector does, and waits for them.
ImagePropertiesLoader::CompletionState loadRecords(const QList<PXFilePtr> &files)
{
    ImagePropertiesLoader loader;
    ImagePropertiesLoader::CompletionState state;
    QEventLoop loop;
    loader.load(files, [&](const ImagePropertiesLoader::CompletionState &finished) {
        state = finished;
        loop.quit();
    });
    loop.exec();
    return state;
}

void printRows(Cli::Output &out, const QList<InspectorRow> &rows)
{
    for (const InspectorRow &row : rows) {
        if (row.isHeader)
            out.line(QByteArray('[' + row.label.toUtf8() + ']'));
        else if (row.value.isEmpty())
            out.line(row.label.toUtf8());
        else
            out.line(row.label.toUtf8() + ' ' + row.value.toUtf8());
    }
}

QJsonObject jsonEntry(const QJsonValue &file, const QList<InspectorRow> &rows)
{
    QJsonArray jsonRows;
    for (const InspectorRow &row : rows) {
        jsonRows.append(QJsonObject{{QStringLiteral("id"), row.identifier},
                                    {QStringLiteral("label"), row.label},
                                    {QStringLiteral("section"), row.section},
                                    {QStringLiteral("value"), row.value}});
    }
    return QJsonObject{{QStringLiteral("file"), file}, {QStringLiteral("rows"), jsonRows}};
}

// The list the inspector shows by default: the general one when the selection holds an image.
InspectorList defaultList(const QList<PXFilePtr> &files)
{
    return inspectorListForTab(InspectorTab::general, files);
}

} // namespace

int runInfoCommand(const QStringList &args)
{
    if (args.contains(QLatin1String("--help")) || args.contains(QLatin1String("-h"))) {
        std::printf("usage: %s\n", usage);
        return Cli::exitOk;
    }
    InfoOptions options;
    const QString error = parse(args, options);
    if (!error.isEmpty())
        return Cli::usageError(error, usage);

    int exitCode = Cli::exitOk;
    // The files that can be shown, in the order given; files that do not exist are reported now.
    QList<PXFilePtr> files;
    QStringList shownPaths;
    for (const QString &path : options.paths) {
        const QFileInfo info(path);
        if (!info.exists()) {
            Cli::printError(QStringLiteral("cannot read %1: no such file").arg(path));
            exitCode = Cli::exitFailure;
            continue;
        }
        files.append(PXFile::fileForPath(info.absoluteFilePath()));
        shownPaths.append(path);
    }

    // Only images have properties to read; other files show their file rows.
    QList<PXFilePtr> images;
    for (const PXFilePtr &file : files) {
        if (file->isImage() && !images.contains(file))
            images.append(file);
    }
    const ImagePropertiesLoader::CompletionState state = loadRecords(images);
    QHash<const PXFile *, ImagePropertiesItemPtr> records;
    for (const ImagePropertiesItemPtr &item : state.results)
        records.insert(item->file().get(), item);
    QHash<const PXFile *, QString> failures;
    for (const ImagePropertiesError &failure : state.errors)
        failures.insert(failure.file.get(), failure.reason);

    QList<PXFilePtr> readable;
    QStringList readablePaths;
    for (qsizetype i = 0; i < files.size(); ++i) {
        const auto failed = failures.constFind(files[i].get());
        if (failed != failures.constEnd()) {
            Cli::printError(QStringLiteral("cannot read %1: %2").arg(shownPaths[i], *failed));
            exitCode = Cli::exitFailure;
            continue;
        }
        readable.append(files[i]);
        readablePaths.append(shownPaths[i]);
    }

    Cli::Output out;
    QJsonArray json;
    auto printSelection = [&](const QJsonValue &fileValue, const QList<PXFilePtr> &selection) {
        QList<ImagePropertiesItemPtr> items;
        for (const PXFilePtr &file : selection) {
            if (const ImagePropertiesItemPtr item = records.value(file.get()))
                items.append(item);
        }
        const InspectorList list = options.list.value_or(defaultList(selection));
        const QList<InspectorRow> rows = inspectorRows(list, items, selection);
        if (options.json)
            json.append(jsonEntry(fileValue, rows));
        else
            printRows(out, rows);
    };

    if (options.merge) {
        if (!readable.isEmpty())
            printSelection(QJsonValue::Null, readable);
    } else {
        for (qsizetype i = 0; i < readable.size(); ++i) {
            if (!options.json && i > 0)
                out.line(QByteArray());
            printSelection(readablePaths[i], {readable[i]});
        }
    }
    if (options.json)
        out.write(QJsonDocument(json).toJson(QJsonDocument::Indented));
    out.flush();
    return exitCode;
}
