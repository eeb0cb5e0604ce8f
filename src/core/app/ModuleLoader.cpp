#include "core/app/ModuleLoader.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>
#include <QStringList>

namespace ModuleLoader {

QLibrary *load(const Location &location, const std::function<bool(QLibrary &)> &resolve, QString *error)
{
    QStringList candidates;
    if (const QString chosen = qEnvironmentVariable(location.environment); !chosen.isEmpty())
        candidates.append(chosen);
    if (QCoreApplication::instance())
        candidates.append(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/pixcove/")
                          + QLatin1String(location.fileName));
    candidates.append(QString::fromUtf8(location.installed));
    candidates.append(QString::fromUtf8(location.build));
    QString failure;
    for (const QString &path : std::as_const(candidates)) {
        if (path.isEmpty() || !QFileInfo::exists(path))
            continue;
        auto *library = new QLibrary(path);
        if (!library->load()) {
            failure = library->errorString();
            delete library;
            continue;
        }
        if (resolve(*library))
            return library; // kept loaded for the rest of the run
        failure = QStringLiteral("%1 lacks its entry points").arg(path);
        library->unload();
        delete library;
    }
    if (error)
        *error = failure;
    return nullptr;
}

} // namespace ModuleLoader
