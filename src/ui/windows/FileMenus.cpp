#include "ui/windows/FileMenus.h"

#include "core/app/Translate.h"
#include "core/fs/Applications.h"
#include "core/fs/TypeIdentifiers.h"
#include "core/model/ColorLabels.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/FileBookmark.h"
#include "core/settings/SettingsManager.h"
#include "ui/windows/LabelChooserAction.h"

#include <QFileInfo>
#include <QIcon>
#include <QMenu>
#include <QSet>

namespace {

constexpr Translator tr("FileMenus");

QIcon applicationIcon(const QString &icon)
{
    if (icon.isEmpty())
        return {};
    return QFileInfo(icon).isAbsolute() ? QIcon(icon) : QIcon::fromTheme(icon);
}

// The one type the files share; empty when they differ.
QString sharedMimeType(const QList<PXFilePtr> &files)
{
    QString shared;
    for (const PXFilePtr &file : files) {
        if (file->isPlaceholder())
            return {};
        const QString type = TypeIdentifiers::preferredMimeType(file->resolvedTypeIdentifier());
        if (type.isEmpty() || (!shared.isEmpty() && type != shared))
            return {};
        shared = type;
    }
    return shared;
}

} // namespace

namespace FileMenus {

void fillOpenWith(QMenu *menu, const QList<PXFilePtr> &files, const AddItem &add)
{
    QSet<QString> listed;
    if (AppSettings *settings = SettingsManager::shared().settings()) {
        for (const FileBookmark &bookmark : settings->favoriteApps()) {
            if (!bookmark.resolves())
                continue;
            const QString path = bookmark.file->path();
            QAction *item = add(menu, CommandId::openWithMenuAction, path, bookmark.title());
            if (path.endsWith(QLatin1String(".desktop")))
                item->setIcon(applicationIcon(Applications::applicationInfo(path).icon));
            listed.insert(path);
        }
    }
    const QList<Applications::ApplicationInfo> applications = Applications::applicationsForType(sharedMimeType(files));
    bool separated = menu->isEmpty();
    for (const Applications::ApplicationInfo &application : applications) {
        if (listed.contains(application.desktopFile))
            continue;
        if (!separated) {
            menu->addSeparator();
            separated = true;
        }
        QAction *item = add(menu, CommandId::openWithMenuAction, application.desktopFile, application.name);
        item->setIcon(applicationIcon(application.icon));
    }
    if (!menu->isEmpty())
        menu->addSeparator();
    add(menu, CommandId::openWithMenuAction, QString(), tr("Other…"));
}

void fillFolders(QMenu *menu, CommandId id, const AddItem &add)
{
    if (AppSettings *settings = SettingsManager::shared().settings()) {
        for (const FileBookmark &bookmark : settings->favoriteFolders()) {
            if (bookmark.resolves())
                add(menu, id, bookmark.file->path(), bookmark.title());
        }
    }
    if (!menu->isEmpty())
        menu->addSeparator();
    add(menu, id, QString(), tr("Other Folder…"));
}

QAction *addLabelChooser(QMenu *menu, const QString &title, const AddItem &add)
{
    QList<QAction *> values;
    values.append(add(menu, CommandId::changeFinderLabel, 0, tr("No Label")));
    for (int value = 1; value <= 7; ++value)
        values.append(add(menu, CommandId::changeFinderLabel, value, ColorLabels::title(value)));
    for (QAction *value : std::as_const(values))
        menu->removeAction(value);
    auto *chooser = new LabelChooserAction(title, values, menu);
    chooser->setObjectName(QStringLiteral("changeFinderLabel"));
    menu->addAction(chooser);
    return chooser;
}

} // namespace FileMenus
