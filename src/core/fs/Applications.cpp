#include "core/fs/Applications.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QUrl>

#include <algorithm>

// GLib's headers use "signals" as a member name, which Qt's keyword macro would break.
#undef signals
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

namespace {

QString fileOf(GAppInfo *info)
{
    if (!info || !G_IS_DESKTOP_APP_INFO(info))
        return {};
    const char *file = g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(info));
    return file ? QFile::decodeName(file) : QString();
}

} // namespace

namespace Applications {

QString defaultApplicationFile(const QString &mimeType, bool forEditing)
{
    if (mimeType.isEmpty())
        return {};
    const QByteArray type = mimeType.toUtf8();
    GAppInfo *preferred = g_app_info_get_default_for_type(type.constData(), FALSE);
    QString result = fileOf(preferred);
    if (forEditing) {
        GList *recommended = g_app_info_get_recommended_for_type(type.constData());
        for (GList *item = recommended; item; item = item->next) {
            auto *info = static_cast<GAppInfo *>(item->data);
            if (!preferred || !g_app_info_equal(info, preferred)) {
                const QString file = fileOf(info);
                if (!file.isEmpty()) {
                    result = file;
                    break;
                }
            }
        }
        g_list_free_full(recommended, g_object_unref);
    }
    if (preferred)
        g_object_unref(preferred);
    return result;
}

QString creatorApplicationFile(const QString &mimeType, const QString &creator)
{
    if (mimeType.isEmpty() || creator.trimmed().isEmpty())
        return {};
    const QByteArray type = mimeType.toUtf8();
    QString result;
    GList *applications = g_app_info_get_all_for_type(type.constData());
    for (GList *item = applications; item && result.isEmpty(); item = item->next) {
        auto *info = static_cast<GAppInfo *>(item->data);
        const QString file = fileOf(info);
        if (file.isEmpty() || file.endsWith(QLatin1String("/pixcove.desktop")))
            continue;
        const char *name = g_app_info_get_name(info);
        const char *executable = g_app_info_get_executable(info);
        QStringList names;
        if (name)
            names.append(QString::fromUtf8(name));
        if (executable)
            names.append(QFileInfo(QFile::decodeName(executable)).fileName());
        for (const QString &candidate : std::as_const(names)) {
            // Three letters at least: a program called "rt" is not named by "Sport".
            if (candidate.size() >= 3 && creator.contains(candidate, Qt::CaseInsensitive)) {
                result = file;
                break;
            }
        }
    }
    g_list_free_full(applications, g_object_unref);
    return result;
}

} // namespace Applications

namespace Applications {

bool launch(const QString &desktopFile, const QStringList &paths, QString *error)
{
    GDesktopAppInfo *info = g_desktop_app_info_new_from_filename(QFile::encodeName(desktopFile).constData());
    if (!info) {
        if (error)
            *error = QStringLiteral("not an application");
        return false;
    }
    GList *uris = nullptr;
    QList<QByteArray> uriBytes;
    for (const QString &path : paths)
        uriBytes.append(QUrl::fromLocalFile(path).toEncoded());
    for (const QByteArray &uri : uriBytes)
        uris = g_list_append(uris, const_cast<char *>(uri.constData()));
    GError *failure = nullptr;
    const bool launched = g_app_info_launch_uris(G_APP_INFO(info), uris, nullptr, &failure);
    if (!launched && error)
        *error = failure ? QString::fromUtf8(failure->message) : QStringLiteral("unknown error");
    if (failure)
        g_error_free(failure);
    g_list_free(uris);
    g_object_unref(info);
    return launched;
}

} // namespace Applications

namespace {

bool isOurs(const QString &desktopFile)
{
    return desktopFile.endsWith(QLatin1String("/pixcove.desktop"));
}

Applications::ApplicationInfo infoOf(GAppInfo *app)
{
    Applications::ApplicationInfo info;
    info.desktopFile = fileOf(app);
    if (info.desktopFile.isEmpty())
        return info;
    if (const char *name = g_app_info_get_display_name(app))
        info.name = QString::fromUtf8(name);
    if (GIcon *icon = g_app_info_get_icon(app)) {
        // A themed icon names itself ("gimp"); a file icon is a path.
        if (G_IS_THEMED_ICON(icon)) {
            const gchar *const *names = g_themed_icon_get_names(G_THEMED_ICON(icon));
            if (names && names[0])
                info.icon = QString::fromUtf8(names[0]);
        } else if (G_IS_FILE_ICON(icon)) {
            if (char *path = g_file_get_path(g_file_icon_get_file(G_FILE_ICON(icon)))) {
                info.icon = QFile::decodeName(path);
                g_free(path);
            }
        }
    }
    return info;
}

bool nameLess(const Applications::ApplicationInfo &a, const Applications::ApplicationInfo &b)
{
    return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
}

} // namespace

namespace Applications {

QList<ApplicationInfo> applicationsForType(const QString &mimeType)
{
    if (mimeType.isEmpty())
        return {};
    const QByteArray type = mimeType.toUtf8();
    GAppInfo *preferred = g_app_info_get_default_for_type(type.constData(), FALSE);
    QList<ApplicationInfo> result;
    GList *applications = g_app_info_get_all_for_type(type.constData());
    for (GList *item = applications; item; item = item->next) {
        auto *app = static_cast<GAppInfo *>(item->data);
        ApplicationInfo info = infoOf(app);
        if (info.desktopFile.isEmpty() || isOurs(info.desktopFile))
            continue;
        const bool isDefault = preferred && g_app_info_equal(app, preferred);
        if (isDefault)
            result.prepend(std::move(info));
        else
            result.append(std::move(info));
    }
    g_list_free_full(applications, g_object_unref);
    const bool defaultFirst = preferred && !result.isEmpty() && fileOf(preferred) == result.first().desktopFile;
    std::stable_sort(result.begin() + (defaultFirst ? 1 : 0), result.end(), nameLess);
    if (preferred)
        g_object_unref(preferred);
    return result;
}

QList<ApplicationInfo> allApplications()
{
    QList<ApplicationInfo> result;
    GList *applications = g_app_info_get_all();
    for (GList *item = applications; item; item = item->next) {
        auto *app = static_cast<GAppInfo *>(item->data);
        if (!g_app_info_should_show(app))
            continue;
        ApplicationInfo info = infoOf(app);
        if (!info.desktopFile.isEmpty() && !isOurs(info.desktopFile))
            result.append(std::move(info));
    }
    g_list_free_full(applications, g_object_unref);
    std::stable_sort(result.begin(), result.end(), nameLess);
    return result;
}

ApplicationInfo applicationInfo(const QString &desktopFile)
{
    GDesktopAppInfo *app = g_desktop_app_info_new_from_filename(QFile::encodeName(desktopFile).constData());
    if (!app)
        return {};
    ApplicationInfo info = infoOf(G_APP_INFO(app));
    g_object_unref(app);
    return info;
}

QList<ApplicationInfo> installedApplications(const QStringList &mimeTypes)
{
    if (mimeTypes.isEmpty())
        return allApplications();
    QList<ApplicationInfo> result;
    QStringList seen;
    for (const QString &mimeType : mimeTypes) {
        for (ApplicationInfo &info : applicationsForType(mimeType)) {
            if (seen.contains(info.desktopFile))
                continue;
            seen.append(info.desktopFile);
            result.append(std::move(info));
        }
    }
    std::stable_sort(result.begin(), result.end(), nameLess);
    return result;
}

} // namespace Applications
