#include "core/thumbnails/DesktopThumbnailers.h"

#include "core/thumbnails/ThumbnailCache.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

// A thumbnail program that has not finished after this long is stuck on its input.
constexpr int programTimeoutMs = 15000;

QStringList defaultFolders()
{
    QStringList folders;
    const QStringList dataFolders = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (const QString &folder : dataFolders)
        folders.append(folder + QStringLiteral("/thumbnailers"));
    return folders;
}

// Splits a desktop-entry command line into arguments (double quotes group, backslash escapes).
QStringList splitCommand(const QString &command)
{
    QStringList arguments;
    QString current;
    bool quoted = false;
    bool any = false;
    for (qsizetype i = 0; i < command.size(); ++i) {
        const QChar c = command.at(i);
        if (c == QLatin1Char('\\') && i + 1 < command.size()) {
            current.append(command.at(++i));
            any = true;
        } else if (c == QLatin1Char('"')) {
            quoted = !quoted;
            any = true;
        } else if (c.isSpace() && !quoted) {
            if (any)
                arguments.append(current);
            current.clear();
            any = false;
        } else {
            current.append(c);
            any = true;
        }
    }
    if (any)
        arguments.append(current);
    return arguments;
}

} // namespace

DesktopThumbnailers::DesktopThumbnailers(const QStringList &folders)
{
    QStringList seen;
    for (const QString &folder : folders.isEmpty() ? defaultFolders() : folders) {
        const QStringList names = QDir(folder).entryList({QStringLiteral("*.thumbnailer")}, QDir::Files, QDir::Name);
        for (const QString &name : names) {
            // The first folder that has an entry of a name wins, as with every XDG data file.
            if (seen.contains(name))
                continue;
            seen.append(name);
            QString error;
            if (auto entry = parseEntry(folder + QLatin1Char('/') + name, &error))
                m_entries.append(*entry);
        }
    }
}

DesktopThumbnailers &DesktopThumbnailers::shared()
{
    static DesktopThumbnailers thumbnailers;
    return thumbnailers;
}

std::optional<DesktopThumbnailers::Entry> DesktopThumbnailers::parseEntry(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        *error = file.errorString();
        return std::nullopt;
    }
    Entry entry;
    entry.name = QFileInfo(path).completeBaseName();
    bool inGroup = false;
    QTextStream stream(&file);
    while (!stream.atEnd()) {
        const QString line = stream.readLine().trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('['))) {
            inGroup = line == QLatin1String("[Thumbnailer Entry]");
            continue;
        }
        if (!inGroup)
            continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals < 0)
            continue;
        const QString key = line.left(equals).trimmed();
        const QString value = line.mid(equals + 1).trimmed();
        if (key == QLatin1String("MimeType"))
            entry.mimeTypes = value.split(QLatin1Char(';'), Qt::SkipEmptyParts);
        else if (key == QLatin1String("TryExec"))
            entry.tryExec = value;
        else if (key == QLatin1String("Exec"))
            entry.exec = value;
    }
    if (entry.exec.isEmpty() || entry.mimeTypes.isEmpty()) {
        *error = QStringLiteral("%1 has no Exec or MimeType").arg(path);
        return std::nullopt;
    }
    return entry;
}

const DesktopThumbnailers::Entry *DesktopThumbnailers::entryFor(const QMimeType &mime) const
{
    QStringList names = {mime.name()};
    names += mime.aliases();
    names += mime.allAncestors();
    for (const QString &name : std::as_const(names)) {
        for (const Entry &entry : m_entries) {
            if (!entry.mimeTypes.contains(name))
                continue;
            const QString program = entry.tryExec.isEmpty() ? splitCommand(entry.exec).value(0) : entry.tryExec;
            if (!QStandardPaths::findExecutable(program).isEmpty() || QFile::exists(program))
                return &entry;
        }
    }
    return nullptr;
}

QImage DesktopThumbnailers::render(const QByteArray &nativePath, const QMimeType &mime, int pixels,
                                   QString *error) const
{
    const Entry *entry = entryFor(mime);
    if (!entry) {
        *error = QStringLiteral("No thumbnailer knows %1 files.").arg(mime.name());
        return {};
    }
    QTemporaryDir folder;
    if (!folder.isValid()) {
        *error = QStringLiteral("cannot make a temporary folder for %1").arg(entry->name);
        return {};
    }
    const QString output = folder.filePath(QStringLiteral("thumbnail.png"));
    const QString input = QFile::decodeName(nativePath);
    QStringList arguments;
    for (const QString &argument : splitCommand(entry->exec)) {
        QString expanded;
        for (qsizetype i = 0; i < argument.size(); ++i) {
            if (argument.at(i) != QLatin1Char('%') || i + 1 == argument.size()) {
                expanded.append(argument.at(i));
                continue;
            }
            switch (argument.at(++i).unicode()) {
            case 'i': expanded += input; break;
            case 'u': expanded += ThumbnailCache::uriForNativePath(nativePath); break;
            case 'o': expanded += output; break;
            case 's': expanded += QString::number(pixels); break;
            case '%': expanded += QLatin1Char('%'); break;
            default: break;
            }
        }
        arguments.append(expanded);
    }
    if (arguments.isEmpty()) {
        *error = QStringLiteral("%1 has an empty command").arg(entry->name);
        return {};
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(arguments.takeFirst(), arguments);
    if (!process.waitForFinished(programTimeoutMs)) {
        process.kill();
        process.waitForFinished(1000);
        *error = QStringLiteral("%1 did not finish on %2").arg(entry->name, input);
        return {};
    }
    QImage image(output);
    if (image.isNull() || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        *error = QStringLiteral("%1 made no thumbnail of %2").arg(entry->name, input);
        return {};
    }
    return image;
}
