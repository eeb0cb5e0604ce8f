#include "cli/LsCommand.h"

#include "cli/CliSupport.h"

#include "core/model/FileCollectionModel.h"
#include "core/model/PXFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtConcurrent/QtConcurrentMap>

#include <cerrno>
#include <cstring>
#include <dirent.h>

namespace {

constexpr char usage[] =
    "pixcove-cli ls [--sort N] [--folder-sort N] [--reverse] [--filter N] [--hide-folders] [--depth N] "
    "[--by-folder] [--search TEXT --search-type filename|kind|tag|camera] [--json] FOLDER...";

// The deepest walk a command line may ask for; deeper trees are a mistake more often than not.
constexpr int maximumDepth = 100;

struct LsOptions
{
    FileSortType sort = FileSortType::name;
    FolderSortType folderSort = FolderSortType::mixed;
    bool reverse = false;
    FileFilterType filter = FileFilterType::visible;
    bool hideFolders = false;
    int depth = 0;
    bool byFolder = false;
    QString search;
    ThumbnailsSearchType searchType = ThumbnailsSearchType::filename;
    bool json = false;
    QStringList folders;
};

std::optional<ThumbnailsSearchType> searchTypeNamed(const QString &name)
{
    if (name == QLatin1String("filename"))
        return ThumbnailsSearchType::filename;
    if (name == QLatin1String("kind"))
        return ThumbnailsSearchType::kind;
    if (name == QLatin1String("tag"))
        return ThumbnailsSearchType::label;
    if (name == QLatin1String("camera"))
        return ThumbnailsSearchType::camera;
    return std::nullopt;
}

// Parses the options; answers an error message for a usage error.
QString parse(const QStringList &args, LsOptions &options)
{
    QString error;
    bool sawSearchType = false;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (optionsEnded || !arg.startsWith(QLatin1String("--")) || arg == QLatin1String("-")) {
            options.folders.append(arg);
            continue;
        }
        if (arg == QLatin1String("--")) {
            optionsEnded = true;
        } else if (arg == QLatin1String("--sort")) {
            const auto value = Cli::intOption(args, i, 0, valueSetCount<FileSortType>() - 1, &error);
            if (!value)
                return error;
            options.sort = FileSortType(*value);
        } else if (arg == QLatin1String("--folder-sort")) {
            const auto value = Cli::intOption(args, i, 0, valueSetCount<FolderSortType>() - 1, &error);
            if (!value)
                return error;
            options.folderSort = FolderSortType(*value);
        } else if (arg == QLatin1String("--filter")) {
            const auto value = Cli::intOption(args, i, 0, valueSetCount<FileFilterType>() - 1, &error);
            if (!value)
                return error;
            options.filter = FileFilterType(*value);
        } else if (arg == QLatin1String("--depth")) {
            const auto value = Cli::intOption(args, i, 0, maximumDepth, &error);
            if (!value)
                return error;
            options.depth = *value;
        } else if (arg == QLatin1String("--search")) {
            const auto value = Cli::textOption(args, i, &error);
            if (!value)
                return error;
            options.search = *value;
        } else if (arg == QLatin1String("--search-type")) {
            const auto value = Cli::textOption(args, i, &error);
            if (!value)
                return error;
            const auto type = searchTypeNamed(*value);
            if (!type)
                return QStringLiteral("--search-type takes filename, kind, tag or camera, not \"%1\"").arg(*value);
            options.searchType = *type;
            sawSearchType = true;
        } else if (arg == QLatin1String("--reverse")) {
            options.reverse = true;
        } else if (arg == QLatin1String("--hide-folders")) {
            options.hideFolders = true;
        } else if (arg == QLatin1String("--by-folder")) {
            options.byFolder = true;
        } else if (arg == QLatin1String("--json")) {
            options.json = true;
        } else {
            return QStringLiteral("unknown option %1").arg(arg);
        }
    }
    if (sawSearchType && options.search.isNull())
        return QStringLiteral("--search-type needs --search TEXT");
    if (options.folders.isEmpty())
        return QStringLiteral("no folder given");
    return {};
}

// Why `path` cannot be listed, or an empty text when it can.
QString unreadableReason(const QString &path)
{
    DIR *dir = ::opendir(QFile::encodeName(path).constData());
    if (!dir)
        return QString::fromLocal8Bit(std::strerror(errno));
    ::closedir(dir);
    return {};
}

QJsonValue textOrNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QJsonObject describe(const PXFile &file)
{
    QJsonObject object;
    object.insert(QStringLiteral("path"), file.path());
    object.insert(QStringLiteral("name"), file.displayName());
    object.insert(QStringLiteral("kind"), file.kindString());
    object.insert(QStringLiteral("type"), file.typeIdentifier());
    object.insert(QStringLiteral("isDirectory"), file.isDirectory());
    object.insert(QStringLiteral("size"), double(file.fileSize()));
    const bool image = file.isImage();
    object.insert(QStringLiteral("dimensions"), image ? textOrNull(file.dimensionsString()) : QJsonValue());
    object.insert(QStringLiteral("width"), image ? QJsonValue(file.dimensionsWidth()) : QJsonValue());
    object.insert(QStringLiteral("height"), image ? QJsonValue(file.dimensionsHeight()) : QJsonValue());
    object.insert(QStringLiteral("megapixels"), image ? QJsonValue(file.megapixels()) : QJsonValue());
    object.insert(QStringLiteral("orientation"), image ? QJsonValue(file.orientation()) : QJsonValue());
    object.insert(QStringLiteral("generalOrientation"),
                  image ? textOrNull(file.generalOrientationString()) : QJsonValue());
    const QDateTime exifDate = image ? file.EXIFDate() : QDateTime();
    object.insert(QStringLiteral("exifDate"),
                  exifDate.isValid() ? QJsonValue(exifDate.toString(Qt::ISODate)) : QJsonValue());
    object.insert(QStringLiteral("camera"), image ? textOrNull(file.cameraModelString()) : QJsonValue());
    return object;
}

} // namespace

int runLsCommand(const QStringList &args)
{
    LsOptions options;
    if (const QString error = parse(args, options); !error.isEmpty())
        return Cli::usageError(error, usage);

    int status = Cli::exitOk;
    QList<PXFilePtr> roots;
    for (const QString &folder : std::as_const(options.folders)) {
        const QString reason = unreadableReason(folder);
        if (!reason.isEmpty()) {
            Cli::printError(QStringLiteral("cannot read %1: %2").arg(folder, reason));
            status = Cli::exitFailure;
            continue;
        }
        roots.append(PXFile::fileForPath(folder));
    }
    if (roots.isEmpty())
        return status;

    FileCollectionModel collection;
    collection.setFileSort(options.sort);
    collection.setFolderSort(options.folderSort);
    collection.setReverseSort(options.reverse);
    collection.setFileFilter(options.filter);
    collection.setExcludeFolders(options.hideFolders);
    collection.setSearch(options.searchType, options.search);
    collection.setFolderDepth(options.depth);
    QObject::connect(&collection, &FileCollectionModel::folderFailed,
                     [&status](const QString &path, const QString &reason) {
                         Cli::printError(QStringLiteral("cannot read %1: %2").arg(path, reason));
                         status = Cli::exitFailure;
                     });
    QObject::connect(&collection, &FileCollectionModel::representationsPublished, [&collection] {
        if (collection.isSettled())
            QCoreApplication::quit();
    });
    collection.setCollectionRoots(roots);
    QCoreApplication::exec();

    Cli::Output out;
    if (options.json) {
        QList<FileModelPtr> shown = collection.flatRepresentation();
        if (options.byFolder)
            shown = collection.byFolderFlatRepresentation();
        // Image facts read the disk: fill them on every core before writing in order.
        QtConcurrent::blockingMap(shown, [](const FileModelPtr &node) { node->file()->megapixels(); });
        QJsonArray array;
        for (const FileModelPtr &node : std::as_const(shown))
            array.append(describe(*node->file()));
        out.write(QJsonDocument(array).toJson(QJsonDocument::Indented));
    } else if (options.byFolder) {
        for (const FileCollectionModel::FolderGroup &group : collection.folderGroups()) {
            out.line("# " + group.folder->file()->nativePath());
            for (const FileModelPtr &node : group.files)
                out.line(node->file()->nativePath());
        }
    } else {
        for (const FileModelPtr &node : collection.flatRepresentation())
            out.line(node->file()->nativePath());
    }
    out.flush();
    Cli::exitWithoutCleanup(status);
}
