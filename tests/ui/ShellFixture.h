#pragma once

#include "core/settings/AppSettings.h"
#include "core/settings/SettingsManager.h"
#include "support/TestDir.h"
#include "ui/app/AuxiliaryWindowsManager.h"
#include "ui/app/ImageWindowsManager.h"
#include "ui/app/MainWindowsManager.h"
#include "ui/app/SlideshowWindowsManager.h"
#include "ui/app/WarningsManager.h"
#include "ui/windows/MainWindowController.h"

#include <QApplication>

#include <memory>

// A settings file, settings manager and window managers of the test's own, installed as the
// shared ones while the fixture lives, and a folder tree to browse:
// photos/ with a, b (with b/inner) and c.
struct ShellFixture
{
    TestDir dir;
    std::unique_ptr<SettingsManager> settingsManager;
    std::unique_ptr<MainWindowsManager> windows;
    std::unique_ptr<AuxiliaryWindowsManager> auxiliary;
    std::unique_ptr<ImageWindowsManager> imageWindows;
    std::unique_ptr<SlideshowWindowsManager> slideshows;
    QStringList messages; // what the image windows' manager told the user
    std::unique_ptr<WarningsManager> warnings;
    PXFilePtr photos;

    ShellFixture()
    {
        settingsManager = std::make_unique<SettingsManager>(dir.filePath(QStringLiteral("settings.json")));
        SettingsManager::setShared(settingsManager.get());
        windows = std::make_unique<MainWindowsManager>(settings());
        MainWindowsManager::setShared(windows.get());
        auxiliary = std::make_unique<AuxiliaryWindowsManager>(settings());
        AuxiliaryWindowsManager::setShared(auxiliary.get());
        imageWindows = std::make_unique<ImageWindowsManager>(settings());
        imageWindows->showMessage = [this](const QString &, const QString &text) { messages.append(text); };
        ImageWindowsManager::setShared(imageWindows.get());
        slideshows = std::make_unique<SlideshowWindowsManager>(settings());
        SlideshowWindowsManager::setShared(slideshows.get());
        warnings = std::make_unique<WarningsManager>(settings());
        WarningsManager::setShared(warnings.get());
        for (const char *folder : {"photos/a", "photos/b/inner", "photos/c"})
            dir.mkdir(QLatin1String(folder));
        photos = PXFile::fileForPath(dir.filePath(QStringLiteral("photos")));
    }

    ~ShellFixture()
    {
        windows->closeAll();
        slideshows->closeAll();
        imageWindows->closeAll();
        if (auxiliary->quickviewWindowController())
            auxiliary->toggleQuickview();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        WarningsManager::setShared(nullptr);
        SlideshowWindowsManager::setShared(nullptr);
        ImageWindowsManager::setShared(nullptr);
        AuxiliaryWindowsManager::setShared(nullptr);
        MainWindowsManager::setShared(nullptr);
        SettingsManager::setShared(nullptr);
    }

    AppSettings *settings() const { return settingsManager->settings(); }
    PXFilePtr folder(const char *relative) const { return PXFile::fileForPath(dir.filePath(QLatin1String(relative))); }
};
