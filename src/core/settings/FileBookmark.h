#pragma once

#include "core/model/PXFileForward.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

// A favourite application or folder: the file, remembered as a file record, and the name the user
// gave it (empty: the file's own name). A bookmark whose file is gone keeps its placeholder, so
// that it comes back when the volume is mounted again; menus skip it while it does not resolve.
//
// JSON form: {"file": <file record>, "displayName": "..."}. "file" is required; "displayName" is
// read if present.
struct FileBookmark
{
    PXFilePtr file;
    QString displayName;

    // The name shown in menus and lists.
    QString title() const;
    // Whether the file is on disk now.
    bool resolves() const;

    std::optional<QJsonObject> toJson(const QString &keyPath, QString *error) const;
    static std::optional<FileBookmark> fromJson(const QJsonValue &json, const QString &keyPath, QString *error);

    bool operator==(const FileBookmark &other) const = default;
};
