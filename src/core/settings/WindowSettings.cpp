#include "core/settings/WindowSettings.h"

#include "core/model/PXFile.h"
#include "core/settings/SettingsCoding.h"

#include <QDir>
#include <QStandardPaths>

namespace {

// A set keeps each file once, in the order given.
QList<PXFilePtr> withoutDuplicates(const QList<PXFilePtr> &files)
{
    QList<PXFilePtr> unique;
    unique.reserve(files.size());
    for (const PXFilePtr &file : files) {
        if (file && !unique.contains(file))
            unique.append(file);
    }
    return unique;
}

} // namespace

WindowSettings::WindowSettings(QObject *parent)
    : ObservableSettings(parent)
{
    if (!m_sidebarRootFolder)
        qFatal("Unable to make a file object for the Pictures folder %s", qUtf8Printable(defaultSidebarRootPath()));
}

QString WindowSettings::defaultSidebarRootPath()
{
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return pictures.isEmpty() ? QDir::homePath() + QStringLiteral("/Pictures") : pictures;
}

WindowSettingsPtr WindowSettings::duplicate() const
{
    QString error;
    const std::optional<QJsonObject> json = toJson(&error);
    WindowSettingsPtr copy = json ? fromJson(*json, &error) : nullptr;
    if (!copy)
        qFatal("Unable to duplicate WindowSettings: %s", qUtf8Printable(error));
    return copy;
}

std::optional<QJsonObject> WindowSettings::toJson(QString *error, const QString &keyPath) const
{
    return SettingsCoding::toJson(*this, error, keyPath);
}

WindowSettingsPtr WindowSettings::fromJson(const QJsonValue &json, QString *error, const QString &keyPath)
{
    return SettingsCoding::fromJson<WindowSettings>(json, error, keyPath);
}

// MARK: fields

void WindowSettings::setSidebarRootFolder(const PXFilePtr &sidebarRootFolder)
{
    if (sidebarRootFolder)
        update(m_sidebarRootFolder, sidebarRootFolder, &WindowSettings::sidebarRootFolderChanged);
}

void WindowSettings::setSidebarExpandedFolders(const QList<PXFilePtr> &sidebarExpandedFolders)
{
    update(m_sidebarExpandedFolders, withoutDuplicates(sidebarExpandedFolders),
           &WindowSettings::sidebarExpandedFoldersChanged);
}

void WindowSettings::setSidebarSelection(const QList<PXFilePtr> &sidebarSelection)
{
    update(m_sidebarSelection, withoutDuplicates(sidebarSelection), &WindowSettings::sidebarSelectionChanged);
}
