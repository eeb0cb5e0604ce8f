#include "ui/app/ImageWindowsManager.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/fs/Applications.h"
#include "core/fs/TypeIdentifiers.h"
#include "core/imaging/ImagePropertiesItem.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "ui/browser/FileOpener.h"
#include "ui/windows/ImageWindowController.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QWidget>

namespace {

ImageWindowsManager *installedManager = nullptr;

// The software a file names as its maker: the TIFF block's, else the IPTC originating program.
QString creatorOf(const ImagePropertiesItemPtr &item)
{
    if (!item)
        return {};
    if (item->tiffSoftwareInfo)
        return *item->tiffSoftwareInfo;
    return item->originatingSoftware.value_or(QString());
}

} // namespace

ImageWindowsManager::ImageWindowsManager(AppSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
{
    showMessage = [](const QString &title, const QString &text) {
        QMessageBox::warning(QApplication::activeWindow(), title, text);
    };
}

ImageWindowsManager::~ImageWindowsManager()
{
    closeAll();
}

ImageWindowsManager &ImageWindowsManager::shared()
{
    if (installedManager)
        return *installedManager;
    static auto *own = new ImageWindowsManager(SettingsManager::shared().settings());
    return *own;
}

void ImageWindowsManager::setShared(ImageWindowsManager *manager)
{
    installedManager = manager;
}

void ImageWindowsManager::openFile(const PXFilePtr &file, const QList<PXFilePtr> &set)
{
    if (!file)
        return;
    const QList<PXFilePtr> files = set.contains(file) ? set : QList<PXFilePtr>{file};
    switch (m_settings->openImageDestination()) {
    case OpenImageDestination::pixcove: openWindow(files, file); return;
    case OpenImageDestination::creator: openWithCreator(file, files); return;
    case OpenImageDestination::other:
        if (const PXFilePtr application = m_settings->openImageCustomApp();
            application && !application->isPlaceholder()) {
            openWithApplication(application, file, files);
            return;
        }
        logError(QStringLiteral("No application is chosen to open images; showing %1 in Pixcove").arg(file->path()));
        openWindow(files, file);
        return;
    }
}

// Reading the file's creator opens it: that is done on a pool, the window or the launch follows.
void ImageWindowsManager::openWithCreator(const PXFilePtr &file, const QList<PXFilePtr> &set)
{
    const QPointer<ImageWindowsManager> self(this);
    runOnPool(QStringLiteral("Open in Creator"), [self, file, set] {
        const QString creator = file->isImage() ? creatorOf(ImagePropertiesItem::load(file)) : QString();
        postToGui([self, file, set, creator] {
            if (!self)
                return;
            const QString mimeType = TypeIdentifiers::preferredMimeType(file->resolvedTypeIdentifier());
            const QString application = Applications::creatorApplicationFile(mimeType, creator);
            if (application.isEmpty()) {
                logDebug(QStringLiteral("No installed application made %1 (%2); showing it in Pixcove")
                             .arg(file->path(), creator.isEmpty() ? QStringLiteral("no creator") : creator));
                self->openWindow(set, file);
                return;
            }
            self->openWithApplication(PXFile::fileForPath(application), file, set);
        });
    });
}

void ImageWindowsManager::openWithApplication(const PXFilePtr &application, const PXFilePtr &file,
                                              const QList<PXFilePtr> &set)
{
    if (FileOpener::openWith(application, {file}))
        return;
    logError(QStringLiteral("Cannot start %1 for %2").arg(application->path(), file->path()));
    showMessage(tr("The file could not be opened"),
                tr("“%1” could not be started; “%2” is shown in Pixcove instead.")
                    .arg(application->displayName(), file->displayName()));
    openWindow(set, file);
}

ImageWindowController *ImageWindowsManager::openWindow(const QList<PXFilePtr> &files, const PXFilePtr &current)
{
    if (files.isEmpty())
        return nullptr;
    auto *controller = new ImageWindowController(m_settings, this, files, current);
    m_controllers.append(controller);
    controller->show();
    Q_EMIT imageWindowControllersChanged();
    return controller;
}

int ImageWindowsManager::frontIndex() const
{
    const QWidget *active = QApplication::activeWindow();
    for (int i = 0; i < m_controllers.size(); ++i) {
        if (m_controllers[i]->window() == active)
            return i;
    }
    return -1;
}

void ImageWindowsManager::nextImageWindow()
{
    if (m_controllers.isEmpty())
        return;
    const int front = frontIndex();
    m_controllers[(front + 1) % m_controllers.size()]->raise();
}

void ImageWindowsManager::previousImageWindow()
{
    if (m_controllers.isEmpty())
        return;
    const int front = frontIndex();
    const int count = int(m_controllers.size());
    m_controllers[front < 0 ? count - 1 : (front - 1 + count) % count]->raise();
}

QList<PXFilePtr> ImageWindowsManager::shownFiles() const
{
    QList<PXFilePtr> files;
    for (ImageWindowController *controller : m_controllers) {
        if (const PXFilePtr file = controller->currentFile())
            files.append(file);
    }
    return files;
}

void ImageWindowsManager::closeAll()
{
    const QList<ImageWindowController *> controllers = m_controllers;
    for (ImageWindowController *controller : controllers)
        controller->close();
}

void ImageWindowsManager::windowControllerWillClose(QObject *controller)
{
    if (m_controllers.removeIf([controller](ImageWindowController *entry) { return entry == controller; }) > 0)
        Q_EMIT imageWindowControllersChanged();
}
