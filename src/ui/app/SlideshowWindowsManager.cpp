#include "ui/app/SlideshowWindowsManager.h"

#include "core/settings/SettingsManager.h"
#include "ui/windows/SlideshowWindowController.h"

namespace {
SlideshowWindowsManager *installedManager = nullptr;
}

SlideshowWindowsManager::SlideshowWindowsManager(AppSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
{ }

SlideshowWindowsManager::~SlideshowWindowsManager()
{
    closeAll();
}

SlideshowWindowsManager &SlideshowWindowsManager::shared()
{
    if (installedManager)
        return *installedManager;
    static auto *own = new SlideshowWindowsManager(SettingsManager::shared().settings());
    return *own;
}

void SlideshowWindowsManager::setShared(SlideshowWindowsManager *manager)
{
    installedManager = manager;
}

SlideshowWindowController *SlideshowWindowsManager::startSlideshow(const QList<PXFilePtr> &sources)
{
    if (sources.isEmpty())
        return nullptr;
    auto *controller = new SlideshowWindowController(m_settings, this, sources);
    m_controllers.append(controller);
    controller->start();
    return controller;
}

void SlideshowWindowsManager::closeAll()
{
    const QList<SlideshowWindowController *> controllers = m_controllers;
    for (SlideshowWindowController *controller : controllers)
        controller->close();
}

void SlideshowWindowsManager::windowControllerWillClose(QObject *controller)
{
    if (m_controllers.removeIf([controller](SlideshowWindowController *entry) { return entry == controller; }) > 0)
        Q_EMIT slideshowWindowControllersChanged();
}
