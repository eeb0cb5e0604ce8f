#include "core/settings/FileBookmark.h"

#include "core/model/PXFile.h"
#include "core/settings/SettingsCoding.h"

namespace {
const QString fileKey = QStringLiteral("file");
const QString displayNameKey = QStringLiteral("displayName");
} // namespace

QString FileBookmark::title() const
{
    if (!displayName.isEmpty() || !file)
        return displayName;
    return file->displayName();
}

bool FileBookmark::resolves() const
{
    return file && !file->isPlaceholder();
}

std::optional<QJsonObject> FileBookmark::toJson(const QString &keyPath, QString *error) const
{
    SettingsWriter writer(keyPath);
    if (!file)
        writer.fail(fileKey, QStringLiteral("a bookmark needs a file"));
    writer.write(fileKey, file);
    writer.write(displayNameKey, displayName);
    if (writer.failed()) {
        *error = writer.error();
        return std::nullopt;
    }
    return writer.object();
}

std::optional<FileBookmark> FileBookmark::fromJson(const QJsonValue &json, const QString &keyPath, QString *error)
{
    const std::optional<QJsonObject> object = SettingsReader::objectAt(json, keyPath, error);
    if (!object)
        return std::nullopt;
    SettingsReader reader(*object, keyPath);
    FileBookmark bookmark;
    if (reader.value(fileKey).isUndefined())
        reader.fail(fileKey, QStringLiteral("a bookmark needs a file"));
    reader.read(fileKey, bookmark.file);
    reader.read(displayNameKey, bookmark.displayName);
    if (reader.failed()) {
        *error = reader.error();
        return std::nullopt;
    }
    return bookmark;
}
