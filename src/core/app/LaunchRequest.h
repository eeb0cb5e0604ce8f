#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

// What one start of `pixcove` asks for, read from its command line: a plain start, files and
// folders to open, or one of the two services (`--rename FILES...`, `--slideshow FILES...`).
// A second start hands its request to the running instance as JSON, with paths made absolute
// against its own working folder so that they mean the same thing there.
struct LaunchRequest
{
    enum class Kind { plain, open, rename, slideshow };

    Kind kind = Kind::plain;
    QStringList paths; // absolute

    // Null with the reason for an unknown option or a service without files.
    static std::optional<LaunchRequest> parse(const QStringList &arguments, const QString &workingDirectory,
                                              QString *error);

    QJsonObject toJson() const;
    static std::optional<LaunchRequest> fromJson(const QJsonObject &json);

    bool operator==(const LaunchRequest &) const = default;
};
