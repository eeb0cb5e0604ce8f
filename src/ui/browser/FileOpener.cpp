#include "ui/browser/FileOpener.h"

#include "core/app/Log.h"
#include "core/model/PXFile.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QProcess>
#include <QUrl>

bool FileOpener::openWith(const PXFilePtr &application, const QList<PXFilePtr> &files)
{
    QStringList arguments;
    QString program;
    if (application->name().endsWith(QLatin1String(".desktop"))) {
        program = QStringLiteral("gio");
        arguments << QStringLiteral("launch") << application->path();
    } else {
        program = application->path();
    }
    for (const PXFilePtr &file : files)
        arguments << file->path();
    return QProcess::startDetached(program, arguments);
}

void FileOpener::showItems(const QStringList &uris, const QUrl &folder, QObject *context, const QDBusConnection &bus,
                           const std::function<void(const QUrl &)> &openFolder)
{
    if (!bus.isConnected()) {
        openFolder(folder);
        return;
    }
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                       QStringLiteral("/org/freedesktop/FileManager1"),
                                       QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << uris << QString();
    // A file manager that is started for the call may take a few seconds to answer.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 10000), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, folder, openFolder] {
        if (watcher->isError()) {
            logDebug(QStringLiteral("The file manager did not show the items: %1").arg(watcher->error().message()));
            openFolder(folder);
        }
        watcher->deleteLater();
    });
}

void FileOpener::reveal(const QList<PXFilePtr> &files, QObject *context)
{
    if (files.isEmpty())
        return;
    QStringList uris;
    for (const PXFilePtr &file : files)
        uris.append(file->url().toString(QUrl::FullyEncoded));
    showItems(uris, QUrl::fromLocalFile(files.first()->parentPath()), context, QDBusConnection::sessionBus(),
              [](const QUrl &folder) { QDesktopServices::openUrl(folder); });
}
