#include "core/app/LaunchRequest.h"

#include "core/app/Translate.h"

#include <QDir>
#include <QJsonArray>
#include <QUrl>

namespace {

constexpr Translator tr("LaunchRequest");

QString kindName(LaunchRequest::Kind kind)
{
    switch (kind) {
    case LaunchRequest::Kind::plain: return QStringLiteral("plain");
    case LaunchRequest::Kind::open: return QStringLiteral("open");
    case LaunchRequest::Kind::rename: return QStringLiteral("rename");
    case LaunchRequest::Kind::slideshow: return QStringLiteral("slideshow");
    }
    return {};
}

// File managers may hand over file:// URLs (the desktop entry's %U).
QString absolutePath(const QString &argument, const QDir &base)
{
    const QUrl url(argument);
    if (url.isLocalFile())
        return QDir::cleanPath(url.toLocalFile());
    return QDir::cleanPath(base.absoluteFilePath(argument));
}

} // namespace

std::optional<LaunchRequest> LaunchRequest::parse(const QStringList &arguments, const QString &workingDirectory,
                                                  QString *error)
{
    LaunchRequest request;
    const QDir base(workingDirectory);
    bool optionsEnded = false;
    for (const QString &argument : arguments) {
        if (!optionsEnded && argument.startsWith(QLatin1Char('-'))) {
            if (argument == QLatin1String("--")) {
                optionsEnded = true;
                continue;
            }
            const Kind service = argument == QLatin1String("--rename") ? Kind::rename
                : argument == QLatin1String("--slideshow")             ? Kind::slideshow
                                                                       : Kind::plain;
            if (service == Kind::plain || request.kind == Kind::rename || request.kind == Kind::slideshow) {
                if (error)
                    *error = tr("Unknown option: %1").arg(argument);
                return std::nullopt;
            }
            request.kind = service;
            continue;
        }
        request.paths.append(absolutePath(argument, base));
    }
    if (request.kind == Kind::plain && !request.paths.isEmpty())
        request.kind = Kind::open;
    return request;
}

QJsonObject LaunchRequest::toJson() const
{
    return QJsonObject{{QStringLiteral("kind"), kindName(kind)},
                       {QStringLiteral("paths"), QJsonArray::fromStringList(paths)}};
}

std::optional<LaunchRequest> LaunchRequest::fromJson(const QJsonObject &json)
{
    LaunchRequest request;
    const QString name = json.value(QStringLiteral("kind")).toString();
    bool known = false;
    for (Kind kind : {Kind::plain, Kind::open, Kind::rename, Kind::slideshow}) {
        if (kindName(kind) == name) {
            request.kind = kind;
            known = true;
        }
    }
    if (!known || !json.value(QStringLiteral("paths")).isArray())
        return std::nullopt;
    for (const QJsonValue &path : json.value(QStringLiteral("paths")).toArray()) {
        if (!path.isString())
            return std::nullopt;
        request.paths.append(path.toString());
    }
    return request;
}
