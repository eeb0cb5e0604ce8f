#include "cli/ThumbsCommand.h"

#include "cli/CliSupport.h"

#include "core/model/PXFile.h"
#include "core/thumbnails/SystemThumbnailer.h"
#include "core/thumbnails/ThumbnailGenerator.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace {

constexpr char usage[] = "pixcove-cli thumbs [--size POINTS] [--scale S] [--jobs N] [--no-cache] [--decode] PATH...";
constexpr char help[] = "pixcove-cli thumbs [--size POINTS] [--scale S] [--jobs N] [--no-cache] [--decode] PATH...\n"
                        "Makes the thumbnail that a grid cell of POINTS (default 400) shows on a screen of scale S\n"
                        "(default 2) for every file (folders: their files, one level), through the thumbnail\n"
                        "generator and the system thumbnailer, filling the freedesktop thumbnail cache.\n"
                        "Prints SOURCE PATH per file (SOURCE: embedded, cached, rendered or failed), then\n"
                        "\"N thumbnails in T s (R per second)\".\n"
                        "  --jobs N     thumbnails made at once (default 6)\n"
                        "  --no-cache   neither read nor write the thumbnail cache\n"
                        "  --decode     decode thumbnails found in the cache as a grid does (by default they are\n"
                        "               checked, not decoded: the command only needs them to exist)\n";

struct ThumbsOptions
{
    int size = 400; // the grid's cell, in points
    double scale = 2; // a high-density screen
    int jobs = ThumbnailGenerator::defaultConcurrentRequestsCount;
    bool cache = true;
    bool decode = false;
    QStringList paths;
};

QString parse(const QStringList &args, ThumbsOptions &options)
{
    QString error;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args.at(i);
        if (arg == QLatin1String("--size")) {
            const auto value = Cli::intOption(args, i, 16, 4096, &error);
            if (!value)
                return error;
            options.size = *value;
        } else if (arg == QLatin1String("--scale")) {
            const auto value = Cli::textOption(args, i, &error);
            if (!value)
                return error;
            bool ok = false;
            options.scale = value->toDouble(&ok);
            if (!ok || options.scale < 0.5 || options.scale > 8)
                return QStringLiteral("--scale takes a number from 0.5 to 8, not \"%1\"").arg(*value);
        } else if (arg == QLatin1String("--jobs")) {
            const auto value = Cli::intOption(args, i, 1, 64, &error);
            if (!value)
                return error;
            options.jobs = *value;
        } else if (arg == QLatin1String("--no-cache")) {
            options.cache = false;
        } else if (arg == QLatin1String("--decode")) {
            options.decode = true;
        } else if (arg.startsWith(QLatin1String("--"))) {
            return QStringLiteral("unknown option %1").arg(arg);
        } else {
            options.paths.append(arg);
        }
    }
    if (options.paths.isEmpty())
        return QStringLiteral("no PATH given");
    return {};
}

// Files as given; folders one level deep, by name, without hidden files and subfolders.
QList<PXFilePtr> filesForPaths(const QStringList &paths, bool *missing)
{
    QList<PXFilePtr> files;
    for (const QString &path : paths) {
        const QFileInfo info(path);
        if (info.isDir()) {
            const QFileInfoList entries = QDir(path).entryInfoList(QDir::Files, QDir::Name | QDir::LocaleAware);
            for (const QFileInfo &entry : entries)
                files.append(PXFile::fileForPath(entry.absoluteFilePath()));
        } else if (info.exists()) {
            files.append(PXFile::fileForPath(info.absoluteFilePath()));
        } else {
            Cli::printError(QStringLiteral("%1: no such file or folder").arg(path));
            *missing = true;
        }
    }
    return files;
}

} // namespace

int runThumbsCommand(const QStringList &args)
{
    if (args.contains(QLatin1String("--help")) || args.contains(QLatin1String("-h"))) {
        std::fputs(help, stdout);
        return Cli::exitOk;
    }
    ThumbsOptions options;
    const QString error = parse(args, options);
    if (!error.isEmpty())
        return Cli::usageError(error, usage);

    bool missing = false;
    const QList<PXFilePtr> files = filesForPaths(options.paths, &missing);

    SystemThumbnailer thumbnailer;
    thumbnailer.setCacheEnabled(options.cache);
    thumbnailer.setMaxThreadCount(options.jobs);
    ThumbnailGenerator generator(&thumbnailer);
    generator.setScreenScale(options.scale);
    generator.setConcurrentRequestsCount(options.jobs);

    Cli::Output out;
    qsizetype done = 0;
    int made = 0;
    int failed = 0;
    QElapsedTimer timer;
    timer.start();
    QList<ThumbnailGenerator::RequestPtr> requests;
    requests.reserve(files.size());
    for (const PXFilePtr &file : files) {
        auto request = std::make_shared<ThumbnailGenerator::Request>(file, QSizeF(options.size, options.size),
                                                                     ThumbnailGenerator::Priority::medium, nullptr);
        request->setWantsImage(options.decode);
        std::weak_ptr<ThumbnailGenerator::Request> weakRequest = request;
        request->setUpdateHandler([&, weakRequest, file](const QImage &image, bool final,
                                                         std::optional<ThumbnailError> error) {
            if (!final && !error)
                return; // a preliminary picture: the final one follows
            const auto request = weakRequest.lock();
            // Without --decode the thumbnailer answers without an image; an error says it failed.
            const bool ok = !error && request && (!image.isNull() || !options.decode);
            const QString source = ok && request ? thumbnailSourceName(request->source()) : QStringLiteral("failed");
            if (ok)
                ++made;
            else
                ++failed;
            if (error)
                Cli::printError(QStringLiteral("%1: %2").arg(file->path(), error->description));
            out.line((source + QLatin1Char(' ') + file->path()).toUtf8());
            if (++done == files.size())
                QCoreApplication::quit();
        });
        requests.append(request);
    }
    for (const auto &request : std::as_const(requests))
        generator.add(request);
    if (!files.isEmpty())
        QCoreApplication::exec();
    thumbnailer.waitForDone();

    const double seconds = timer.nsecsElapsed() / 1e9;
    out.line(QStringLiteral("%1 thumbnails in %2 s (%3 per second)")
                 .arg(made)
                 .arg(seconds, 0, 'f', 3)
                 .arg(seconds > 0 ? made / seconds : 0.0, 0, 'f', 1)
                 .toUtf8());
    out.flush();
    return failed || missing ? Cli::exitFailure : Cli::exitOk;
}
