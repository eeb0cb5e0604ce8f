#include "ui/browser/FileDropPerformer.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/model/PXFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QPointer>

namespace {
constexpr Translator tr("FileDropPerformer");

bool copyRecursively(const QString &source, const QString &target, QString *error)
{
    const QFileInfo info(source);
    if (info.isSymLink())
        return QFile::link(info.symLinkTarget(), target) || (*error = tr("The link could not be copied."), false);
    if (!info.isDir()) {
        QFile file(source);
        if (file.copy(target))
            return true;
        *error = file.errorString();
        return false;
    }
    if (!QDir().mkdir(target)) {
        *error = tr("The folder could not be made.");
        return false;
    }
    const QDir dir(source);
    for (const QString &name : dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        if (!copyRecursively(dir.filePath(name), QDir(target).filePath(name), error))
            return false;
    }
    return true;
}
} // namespace

QStringList FileDropPerformer::performNow(FileDropOperation operation, const QStringList &sourcePaths,
                                          const QString &destinationFolder)
{
    QStringList errors;
    for (const QString &source : sourcePaths) {
        const QString name = QFileInfo(source).fileName();
        const QString target = QDir(destinationFolder).filePath(name);
        if (QFileInfo::exists(target) || QFileInfo(target).isSymLink()) {
            errors.append(tr("\"%1\" is already in \"%2\".").arg(name, QFileInfo(destinationFolder).fileName()));
            continue;
        }
        QString error;
        bool ok = false;
        switch (operation) {
        case FileDropOperation::move:
            ok = QFile::rename(source, target);
            // Across volumes rename cannot work: copy, then remove the original.
            if (!ok && copyRecursively(source, target, &error)) {
                ok = QFileInfo(source).isDir() && !QFileInfo(source).isSymLink() ? QDir(source).removeRecursively()
                                                                                 : QFile::remove(source);
                if (!ok)
                    error = tr("The original could not be removed.");
            }
            break;
        case FileDropOperation::copy: ok = copyRecursively(source, target, &error); break;
        case FileDropOperation::link: ok = QFile::link(source, target); break;
        case FileDropOperation::none:
        case FileDropOperation::open: ok = true; break;
        }
        if (!ok)
            errors.append(tr("\"%1\" could not be placed in \"%2\". %3").arg(name, destinationFolder, error).trimmed());
    }
    return errors;
}

void FileDropPerformer::perform(FileDropOperation operation, const QList<PXFilePtr> &sources,
                                const PXFilePtr &destination, QObject *context,
                                std::function<void(const QStringList &errors)> done)
{
    QStringList paths;
    for (const PXFilePtr &source : sources)
        paths.append(source->path());
    const QString folder = destination->resolvedPath();
    QPointer<QObject> guard(context);
    runOnPool(QStringLiteral("Browser Disk Work"), [operation, paths, folder, guard, done = std::move(done)] {
        const QStringList errors = performNow(operation, paths, folder);
        for (const QString &error : errors)
            logError(error);
        postToGui([guard, errors, done] {
            if (guard && done)
                done(errors);
        });
    });
}
