#include "core/settings/SettingsManager.h"
#include "core/settings/AppSettings.h"

#include "core/app/Log.h"
#include "core/fs/FileOperationsSupport.h"
#include "core/model/PXFile.h"
#include "core/settings/SettingsCoding.h"
#include "support/LogCapture.h"
#include "support/TestDir.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QStandardPaths>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class SettingsManagerTest : public ::testing::Test
{
protected:
    QString writeSettings(const QByteArray &bytes)
    {
        return dir.write(QStringLiteral("com.tallowmere.Pixcove3.json"), bytes);
    }

    QJsonObject savedObject() const
    {
        QFile saved(file);
        EXPECT_TRUE(saved.open(QIODevice::ReadOnly));
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(saved.readAll(), &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << qPrintable(error.errorString());
        return document.object();
    }

    // The settings as the file's text, for comparisons that print readably.
    static std::string jsonText(const AppSettings &settings)
    {
        QString error;
        const std::optional<QJsonObject> json = settings.toJson(&error);
        EXPECT_TRUE(json) << qPrintable(error);
        return QJsonDocument(json.value_or(QJsonObject())).toJson(QJsonDocument::Indented).toStdString();
    }

    TestDir dir;
    const QString file = dir.filePath(QStringLiteral("com.tallowmere.Pixcove3.json"));
};

} // namespace

TEST_F(SettingsManagerTest, NoFileMeansDefaultsAndTheFirstChangeWritesEveryKey)
{
    SettingsManager manager(file);
    EXPECT_EQ(manager.loadOutcome(), SettingsManager::LoadOutcome::noFile);
    AppSettings *settings = manager.settings();
    EXPECT_EQ(settings->windowSettings().size(), 1);
    EXPECT_EQ(settings->thumbnailOutlineThickness(), 2);
    EXPECT_EQ(settings->thumbnailBackgroundColor(), QColor::fromRgbF(0.2f, 0.2f, 0.2f));
    EXPECT_EQ(settings->quickviewScreen(), ScreenOption::alternateScreen);
    EXPECT_EQ(settings->slideshowSubfolderInclusionStyle(), SubfolderInclusionStyle::commingled);
    EXPECT_EQ(settings->selectedSettingsSection(), SettingsSection::general);
    EXPECT_LE(qAbs(settings->firstLaunchDate().secsTo(QDateTime::currentDateTimeUtc())), 60);

    QSignalSpy saved(&manager, &SettingsManager::saved);
    settings->setHideOnDeactivate(true);
    ASSERT_TRUE(saved.wait());

    const QJsonObject json = savedObject();
    QStringList keys{
        "windowSettings",
        "slideshowSettings",
        "sidebarAllowsKeyboardControl",
        "sidebarAutoexpandOnSelection",
        "sidebarRenameOnlyOnEnter",
        "thumbnailsRenameOnlyOnEnter",
        "thumbnailsAutoselectFirstItem",
        "thumbnailsAutoselectNextItemAfterMove",
        "thumbnailsHaveOutline",
        "thumbnailOutlineColor",
        "thumbnailOutlineThickness",
        "thumbnailsHaveShadow",
        "thumbnailTextColor",
        "thumbnailBackgroundColor",
        "thumbnailsAlignToBottom",
        "thumbnailsPreviewPauseWhenLosingKey",
        "thumbnailsPreviewAllowsKeyboardControl",
        "slideshowImageScaling",
        "slideshowImageScalingPercentage",
        "slideshowBackgroundColor",
        "slideshowControlsVisibleOnStart",
        "slideshowScreen",
        "slideshowBlackoutOtherScreens",
        "slideshowFolderSearchDepth",
        "slideshowSubfolderInclusionStyle",
        "slideshowIncludeVideos",
        "slideshowAutoplayVideos",
        "slideshowPreventNextWhileVideoPlays",
        "quickviewImageScaling",
        "quickviewImageScalingPercentage",
        "quickviewAutohide",
        "quickviewAutoplayVideo",
        "quickviewMuteVideo",
        "quickviewOpensOnLaunch",
        "quickviewBackgroundColor",
        "quickviewScreen",
        "quickviewRetainZoomBetweenItems",
        "quickviewTransitionDuration",
        "openImageDestination",
        "imageWindowImageScaling",
        "imageWindowImageScalingPercentage",
        "favoriteApps",
        "favoriteFolders",
        "detailedLogging",
        "isFirstLaunch",
        "firstLaunchDate",
        "hideOnDeactivate",
        "automaticallyChecksForUpdates",
        "updateCheckFrequency",
        "lastUpdateCheckDate",
        "settingsVersion",
        "alertsAndWarnings",
        "alwaysUseThirdPartyVideoPlayer",
    };
    // `openImageCustomApp` is left out while there is none.
    keys.sort();
    EXPECT_EQ(json.keys(), keys);
    EXPECT_EQ(json.value("hideOnDeactivate"), QJsonValue(true));
    EXPECT_EQ(json.value("settingsVersion"), QJsonValue(3.0));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"com.tallowmere.Pixcove3.json"});
}

TEST_F(SettingsManagerTest, ValuesOfEveryFormSurviveASaveAndALoad)
{
    const QString app = dir.write(QStringLiteral("apps/viewer.desktop"));
    const QString trips = dir.mkdir(QStringLiteral("Trips"));
    const QString gone = dir.filePath(QStringLiteral("Gone")); // an unmounted volume, say
    const QDateTime firstLaunch = QDateTime::fromMSecsSinceEpoch(1700000000123, Qt::UTC);
    std::string written;
    {
        SettingsManager manager(file);
        AppSettings *settings = manager.settings();
        settings->setThumbnailOutlineColor(QColor::fromRgbF(0.1f, 0.25f, 0.5f, 0.75f));
        settings->setThumbnailOutlineThickness(-3);
        settings->setQuickviewImageScalingPercentage(ImageScalePercentage::scale25);
        settings->setSlideshowScreen(ScreenOption::primaryScreen);
        settings->setQuickviewTransitionDuration(0.35);
        settings->setOpenImageDestination(OpenImageDestination::other);
        settings->setOpenImageCustomApp(PXFile::fileForPath(app));
        settings->setFavoriteFolders(
            {{PXFile::fileForPath(trips), QStringLiteral("Holidays")}, {PXFile::fileForPath(gone), QString()}});
        settings->setAlertsAndWarnings(AlertsAndWarning::folderDepthWarning);
        settings->setFirstLaunchDate(firstLaunch);
        settings->setIsFirstLaunch(false);
        settings->slideshowSettings()->setInterval(2.5);
        settings->slideshowSettings()->setTransitionStyle(SlideshowTransitionStyle::slide);
        settings->slideshowSettings()->setInfoVisibility(SlideshowInfoVisibility::showAlways);

        const WindowSettingsPtr second = std::make_shared<WindowSettings>();
        second->setSidebarRootFolder(PXFile::fileForPath(dir.path()));
        second->setSidebarSelection({PXFile::fileForPath(trips), PXFile::fileForPath(gone)});
        second->setThumbnailsFileSort(FileSortType::dateAdded);
        second->setThumbnailInformation(ThumbnailInfoOptions::fromInt(0x40000005)); // bits nobody knows yet
        second->setToolbarConfiguration(QVariantMap{{"items", QStringList{"back", "forward"}}, {"visible", true}});
        settings->setWindowSettings({settings->windowSettings().first(), second});
        settings->setSelectedSettingsSection(SettingsSection::hotkeys);
        ASSERT_TRUE(manager.saveNow());
        written = jsonText(*settings);
    }
    SettingsManager manager(file);
    ASSERT_EQ(manager.loadOutcome(), SettingsManager::LoadOutcome::loaded);
    AppSettings *settings = manager.settings();
    EXPECT_EQ(jsonText(*settings), written);
    EXPECT_EQ(settings->thumbnailOutlineColor(), QColor::fromRgbF(0.1f, 0.25f, 0.5f, 0.75f));
    EXPECT_EQ(settings->firstLaunchDate(), firstLaunch);
    EXPECT_EQ(settings->openImageCustomApp()->path(), app);
    EXPECT_EQ(settings->selectedSettingsSection(), SettingsSection::general);
    ASSERT_EQ(settings->favoriteFolders().size(), 2);
    EXPECT_TRUE(settings->favoriteFolders().at(0).resolves());
    EXPECT_EQ(settings->favoriteFolders().at(0).title(), QStringLiteral("Holidays"));
    // A favourite that is gone stays as a placeholder, titled by its name.
    EXPECT_FALSE(settings->favoriteFolders().at(1).resolves());
    EXPECT_EQ(settings->favoriteFolders().at(1).title(), QStringLiteral("Gone"));
    const WindowSettingsPtr second = settings->windowSettings().value(1);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->sidebarSelection().size(), 2);
    EXPECT_TRUE(second->sidebarSelection().at(1)->isPlaceholder());
    EXPECT_EQ(second->thumbnailInformation().toInt(), 0x40000005);
    EXPECT_EQ(second->toolbarConfiguration()->value("items").toStringList(), (QStringList{"back", "forward"}));
}

TEST_F(SettingsManagerTest, ABadFileIsIgnoredWholeAndReplacedAtTheNextSave)
{
    struct Case
    {
        QByteArray json;
        QString error; // what follows "Error loading settings file: "; a prefix for JSON syntax errors
    };
    const Case cases[] = {
        {R"({"hideOnDeactivate": true, "thumbnailOutlineThick)", "unterminated string at offset"},
        {"hideOnDeactivate = true", "illegal value at offset 1"},
        {"", "illegal value at offset 0"},
        {R"([{"hideOnDeactivate": true}])", "the file does not hold a JSON object"},
        {R"({"hideOnDeactivate": true, "thumbnailOutlineThickness": "2"})",
         "thumbnailOutlineThickness: expected a whole number, found a string"},
        {R"({"hideOnDeactivate": true, "quickviewImageScalingPercentage": 75})",
         "quickviewImageScalingPercentage: 75 is not a raw value of ImageScalePercentage"},
        {R"({"hideOnDeactivate": true, "windowSettings": [{"thumbnailSize": 200}, {"sidebarInfo": 9}]})",
         "windowSettings[1].sidebarInfo: 9 is not a raw value of SidebarInfoOptions"},
        {R"({"hideOnDeactivate": true, "windowSettings": [{"thumbnailSize": 2.5}]})",
         "windowSettings[0].thumbnailSize: expected a whole number, found 2.5"},
        {R"({"hideOnDeactivate": true, "windowSettings": [{"sidebarRootFolder": {"inode": 4}}]})",
         "windowSettings[0].sidebarRootFolder: file record: no path"},
        {R"({"hideOnDeactivate": true, "windowSettings": [{"toolbarConfiguration": "AAAA"}]})",
         "windowSettings[0].toolbarConfiguration: the dictionary archive cannot be read"},
        {R"({"hideOnDeactivate": true, "thumbnailTextColor": "not base64!"})",
         "thumbnailTextColor: the colour archive cannot be read"},
        {R"({"hideOnDeactivate": true, "alertsAndWarnings": ["folderDepthWarning", "nagScreen"]})",
         R"(alertsAndWarnings[1]: "nagScreen" is not a raw value of AlertsAndWarnings)"},
        {R"({"hideOnDeactivate": true, "favoriteFolders": [{"displayName": "Trips"}]})",
         "favoriteFolders[0].file: a bookmark needs a file"},
        {R"({"hideOnDeactivate": true, "slideshowSettings": {"interval": 0}})",
         "slideshowSettings.interval: expected at least 0.1 seconds, found 0.0"},
        {R"({"hideOnDeactivate": true, "slideshowSettings": {"transitionStyle": 7}})",
         "slideshowSettings.transitionStyle: 7 is not a raw value of SlideshowTransitionStyle"},
        {R"({"hideOnDeactivate": true, "windowSettings": [{"thumbnailsFolderSearchDepth": 1e10}]})",
         "windowSettings[0].thumbnailsFolderSearchDepth: expected a whole number, found 1e+10"},
        {R"({"hideOnDeactivate": true, "windowSettings": {"thumbnailSize": 200}})",
         "windowSettings: expected an array, found an object"},
        {R"({"hideOnDeactivate": true, "alertsAndWarnings": [1]})",
         "alertsAndWarnings[0]: expected a string, found a number"},
        {R"({"hideOnDeactivate": true, "firstLaunchDate": "2023-01-01"})",
         "firstLaunchDate: expected a number of seconds, found a string"},
    };
    for (const Case &bad : cases) {
        SCOPED_TRACE(bad.json.toStdString());
        writeSettings(bad.json);
        LogCapture log;
        SettingsManager manager(file);
        EXPECT_EQ(manager.loadOutcome(), SettingsManager::LoadOutcome::ignored);
        EXPECT_FALSE(manager.settings()->hideOnDeactivate());
        ASSERT_EQ(log.lines.size(), 1);
        EXPECT_TRUE(log.lines.first().startsWith("ERROR: Error loading settings file: " + bad.error))
            << qPrintable(log.lines.first());

        ASSERT_TRUE(manager.saveNow());
        EXPECT_FALSE(savedObject().value("hideOnDeactivate").toBool());
    }
}

TEST_F(SettingsManagerTest, KeysAreReadIfPresentAndTheVersionIsLogged)
{
    struct Case
    {
        QByteArray json;
        QStringList lines;
    };
    const Case cases[] = {
        {R"({"settingsVersion": 3, "hideOnDeactivate": true, "thumbnailOutlineThickness": null})", {}},
        // An archive of "no colour" keeps the default colour.
        {R"({"hideOnDeactivate": true, "thumbnailTextColor": ")" + SettingsCoding::colorArchive(QColor()).toLatin1()
             + "\"}",
         {}},
        {R"({"settingsVersion": 2, "hideOnDeactivate": true})", {"DEBUG: Updating settings from 2.0 to 3.0"}},
        {R"({"settingsVersion": 2.5, "hideOnDeactivate": true})", {"DEBUG: Updating settings from 2.5 to 3.0"}},
        {R"({"settingsVersion": 4.0, "hideOnDeactivate": true, "cloudSync": {"on": true}})",
         {"ERROR: Settings version 4.0 is newer than 3.0, some data may be lost"}},
    };
    for (const Case &good : cases) {
        SCOPED_TRACE(good.json.toStdString());
        writeSettings(good.json);
        LogCapture log;
        SettingsManager manager(file);
        EXPECT_EQ(manager.loadOutcome(), SettingsManager::LoadOutcome::loaded);
        EXPECT_EQ(log.lines, good.lines);
        EXPECT_TRUE(manager.settings()->hideOnDeactivate());
        EXPECT_EQ(manager.settings()->thumbnailOutlineThickness(), 2);
        EXPECT_EQ(manager.settings()->settingsVersion(), 3.0);
        EXPECT_EQ(manager.settings()->thumbnailTextColor(), QColor(Qt::white));

        ASSERT_TRUE(manager.saveNow());
        const QJsonObject saved = savedObject();
        EXPECT_EQ(saved.value("settingsVersion"), QJsonValue(3.0));
        EXPECT_FALSE(saved.contains("cloudSync"));
    }
}

TEST_F(SettingsManagerTest, ABurstOfChangesIsWrittenOnceAtOnceAndOnceAtTheEndOfTheInterval)
{
    constexpr auto interval = 400ms;
    SettingsManager manager(file);
    manager.setSaveInterval(interval);
    QSignalSpy saved(&manager, &SettingsManager::saved);
    QElapsedTimer clock;
    clock.start();

    for (int thickness = 3; thickness <= 12; ++thickness) {
        manager.settings()->setThumbnailOutlineThickness(thickness);
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(waitUntil([&] { return saved.count() >= 1; }));
    EXPECT_EQ(saved.count(), 1);
    EXPECT_EQ(savedObject().value("thumbnailOutlineThickness"), QJsonValue(3));

    ASSERT_TRUE(saved.wait(5000));
    EXPECT_GE(clock.elapsed(), interval.count() - 50);
    EXPECT_EQ(savedObject().value("thumbnailOutlineThickness"), QJsonValue(12));
    EXPECT_FALSE(saved.wait(int(interval.count()) * 2));
    EXPECT_EQ(saved.count(), 2);

    // A change after a quiet interval is written at once again; so are changes to the slideshow.
    clock.restart();
    manager.settings()->slideshowSettings()->setShuffle(true);
    ASSERT_TRUE(saved.wait(5000));
    EXPECT_LT(clock.elapsed(), interval.count());
    EXPECT_TRUE(savedObject().value("slideshowSettings").toObject().value("shuffle").toBool());
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"com.tallowmere.Pixcove3.json"});
}

TEST_F(SettingsManagerTest, ChangesInsideTheListedWindowSettingsAreSavedAndThoseOfReplacedOnesAreNot)
{
    writeSettings(R"({"windowSettings": [{"thumbnailSize": 120}]})");
    SettingsManager manager(file);
    ASSERT_EQ(manager.loadOutcome(), SettingsManager::LoadOutcome::loaded);
    AppSettings *settings = manager.settings();
    const WindowSettingsPtr loaded = settings->windowSettings().first();
    QSignalSpy saved(&manager, &SettingsManager::saved);

    // A window's change is written like any other, without the list being set again.
    loaded->setThumbnailsFileSort(FileSortType::modificationDate);
    ASSERT_TRUE(saved.wait());
    const QJsonObject window = savedObject().value("windowSettings").toArray().at(0).toObject();
    EXPECT_EQ(window.value("thumbnailsFileSort"), QJsonValue(int(FileSortType::modificationDate)));
    EXPECT_EQ(window.value("thumbnailSize"), QJsonValue(120));

    // An object listed twice tells once; one that left the list no longer tells.
    const WindowSettingsPtr other = std::make_shared<WindowSettings>();
    settings->setWindowSettings({other, other});
    QSignalSpy changed(settings, &ObservableSettings::changed);
    QSignalSpy willChange(settings, &ObservableSettings::willChange);
    loaded->setThumbnailSize(300);
    EXPECT_EQ(changed.count(), 0);
    other->setThumbnailSize(300);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(willChange.count(), 1);
}

TEST_F(SettingsManagerTest, SaveFailuresAreLoggedEachTimeAndAlertedOncePerRun)
{
    // A regular file where the configuration folder should be: no write can succeed, even as root.
    const QString blocker = dir.write(QStringLiteral("config"), "not a folder");
    const QString directory = dir.mkdir(QStringLiteral("settings-is-a-folder"));
    for (const QString &path : {blocker + QStringLiteral("/com.tallowmere.Pixcove3.json"), directory}) {
        SCOPED_TRACE(path.toStdString());
        SettingsManager manager(path);
        QStringList alerts;
        manager.setAlertPresenter([&](const QString &title, const QString &text) { alerts << title << text; });
        QSignalSpy failed(&manager, &SettingsManager::saveFailed);
        LogCapture log;

        EXPECT_FALSE(manager.saveNow());
        manager.settings()->setDetailedLogging(true);
        ASSERT_TRUE(failed.wait());
        ASSERT_EQ(failed.count(), 2);
        const QString error = failed.at(1).at(0).toString();
        EXPECT_FALSE(error.isEmpty());
        EXPECT_EQ(log.lines, QStringList(2, "ERROR: Error saving settings file: " + error));

        ASSERT_EQ(alerts.size(), 2);
        EXPECT_EQ(alerts[0], "There was an error saving the application settings.");
        EXPECT_EQ(alerts[1],
                  "To prevent a flood of error notifications, you won't be warned about this again until you "
                  "restart the app. It's probably a good idea to restart the app anyway. Error: \n\n"
                      + error);
        EXPECT_TRUE(manager.showedSaveError());
    }
    // Nothing half-written was left beside the folder that could not be replaced.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              (QStringList{"config", "settings-is-a-folder"}));
    EXPECT_TRUE(QDir(directory).isEmpty());
}

TEST_F(SettingsManagerTest, ASettingThatCannotBeWrittenLeavesTheFileAsItWas)
{
    writeSettings(R"({"thumbnailSize": 1})");
    SettingsManager manager(file);
    ASSERT_TRUE(manager.saveNow());
    const QJsonObject before = savedObject();

    // A colour is no property-list value: writing it would make a file that never loads again.
    manager.settings()->windowSettings().first()->setToolbarConfiguration(QVariantMap{{"tint", QColor(Qt::red)}});
    QSignalSpy failed(&manager, &SettingsManager::saveFailed);
    EXPECT_FALSE(manager.saveNow());
    ASSERT_EQ(failed.count(), 1);
    EXPECT_EQ(failed.at(0).at(0).toString(),
              "windowSettings[0].toolbarConfiguration: the dictionary holds a value of type QColor");
    EXPECT_EQ(savedObject(), before);
}

// A disk that fills up while the settings are written: the save fails and the file stays whole.
// (Files are limited to fewer bytes than the settings take, in a child process.)
TEST_F(SettingsManagerTest, AFullDiskFailsTheSaveAndKeepsTheLastFile)
{
    writeSettings(R"({"thumbnailSize": 1})");
    {
        SettingsManager manager(file);
        ASSERT_TRUE(manager.saveNow());
    }
    const QByteArray before = [&] {
        QFile saved(file);
        return saved.open(QIODevice::ReadOnly) ? saved.readAll() : QByteArray();
    }();
    ASSERT_GT(before.size(), 1024);

    const QByteArray answer = inChildProcess(
        [&] {
            SettingsManager manager(file);
            manager.settings()->setThumbnailOutlineThickness(5);
            return manager.saveNow() ? QByteArray("saved") : QByteArray("failed");
        },
        0, 1024);
    EXPECT_EQ(answer, "failed");
    QFile after(file);
    ASSERT_TRUE(after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll(), before);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"com.tallowmere.Pixcove3.json"});
}

TEST_F(SettingsManagerTest, TheSharedManagerCanBeReplacedAndKeepsTheLoggingInStep)
{
    EXPECT_EQ(SettingsManager::defaultSettingsFile(),
              QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                  + "/com.tallowmere.Pixcove3.json");
    writeSettings(R"({"detailedLogging": true})");
    const bool wasDetailed = detailedLogging();
    {
        SettingsManager manager(file);
        SettingsManager::setShared(&manager);
        EXPECT_EQ(&SettingsManager::shared(), &manager);
        EXPECT_TRUE(detailedLogging());
        SettingsManager::shared().settings()->setDetailedLogging(false);
        EXPECT_FALSE(detailedLogging());
        SettingsManager::setShared(nullptr);
    }
    setDetailedLogging(wasDetailed);
}
