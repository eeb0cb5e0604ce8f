#include "ui/browser/FileOpener.h"

#include "core/model/PXFile.h"

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

void FileOpener::reveal(const QList<PXFilePtr> &files, QObject *context)
{
    if (files.isEmpty())
        return;
    QStringList uris;
    for (const PXFilePtr &file : files)
        uris.append(file->url().toString(QUrl::FullyEncoded));
    const QStringList arguments{QStringLiteral("--session"),
                                QStringLiteral("--dest=org.freedesktop.FileManager1"),
                                QStringLiteral("--type=method_call"),
                                QStringLiteral("/org/freedesktop/FileManager1"),
                                QStringLiteral("org.freedesktop.FileManager1.ShowItems"),
                                QStringLiteral("array:string:") + uris.join(QLatin1Char(',')),
                                QStringLiteral("string:")};
    auto *process = new QProcess(context);
    const QString parent = files.first()->parentPath();
    QObject::connect(process, &QProcess::finished, context,
                     [process, parent](int exitCode, QProcess::ExitStatus status) {
                         if (exitCode != 0 || status != QProcess::NormalExit)
                             QDesktopServices::openUrl(QUrl::fromLocalFile(parent));
                         process->deleteLater();
                     });
    QObject::connect(process, &QProcess::errorOccurred, context, [process, parent](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            QDesktopServices::openUrl(QUrl::fromLocalFile(parent));
            process->deleteLater();
        }
    });
    process->start(QStringLiteral("dbus-send"), arguments);
}
