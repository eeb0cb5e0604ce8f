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

Applications::Application describe(GAppInfo *info, const QString &file)
{
    Applications::Application application;
    application.desktopFile = file;
    if (const char *name = g_app_info_get_name(info))
        application.name = QString::fromUtf8(name);
    GIcon *icon = g_app_info_get_icon(info); // not ours
    if (icon && G_IS_THEMED_ICON(icon)) {
        const gchar *const *names = g_themed_icon_get_names(G_THEMED_ICON(icon));
        if (names && names[0])
            application.iconName = QString::fromUtf8(names[0]);
    } else if (icon && G_IS_FILE_ICON(icon)) {
        if (char *path = g_file_get_path(g_file_icon_get_file(G_FILE_ICON(icon)))) {
            application.iconName = QFile::decodeName(path);
            g_free(path);
        }
    }
    return application;
}

} // namespace

namespace Applications {

QList<Application> installedApplications(const QStringList &mimeTypes)
{
    QList<Application> result;
    QStringList seen;
    const auto take = [&](GList *applications) {
        for (GList *item = applications; item; item = item->next) {
            auto *info = static_cast<GAppInfo *>(item->data);
            const QString file = fileOf(info);
            if (file.isEmpty() || seen.contains(file) || file.endsWith(QLatin1String("/pixcove.desktop"))
                || !g_app_info_should_show(info))
                continue;
            seen.append(file);
            result.append(describe(info, file));
        }
        g_list_free_full(applications, g_object_unref);
    };
    if (mimeTypes.isEmpty())
        take(g_app_info_get_all());
    for (const QString &mimeType : mimeTypes)
        take(g_app_info_get_all_for_type(mimeType.toUtf8().constData()));
    std::sort(result.begin(), result.end(), [](const Application &a, const Application &b) {
        return QString::localeAwareCompare(a.name, b.name) < 0;
    });
    return result;
}

Application applicationForFile(const QString &desktopFile)
{
    GDesktopAppInfo *info = g_desktop_app_info_new_from_filename(QFile::encodeName(desktopFile).constData());
    if (!info)
        return {};
    const Application application = describe(G_APP_INFO(info), desktopFile);
    g_object_unref(info);
    return application;
}

} // namespace Applications
