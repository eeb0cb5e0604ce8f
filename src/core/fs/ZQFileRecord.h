#pragma once

#include "core/fs/ZQStandardFile.h"

#include <QJsonObject>
#include <QString>

#include <optional>

// A file remembered across runs: its path and the device and inode it had, stored as one JSON
// object {"path": ..., "device": ..., "inode": ...}. Resolving finds the file again, also after
// a rename inside its folder; what cannot be found any more comes back as a placeholder.
struct ZQFileRecord
{
    QString path;
    quint64 device = 0;
    quint64 inode = 0;

    static ZQFileRecord forFile(const ZQFilePtr &file);

    QJsonObject toJson() const;
    // Null with a reason when `json` is not such an object (a wrong type, no path).
    static std::optional<ZQFileRecord> fromJson(const QJsonValue &json, QString *error = nullptr);

    // The file now standing for the record; a placeholder (isPlaceholder()) when it is gone.
    ZQFilePtr resolve() const;

    bool operator==(const ZQFileRecord &other) const = default;
};
