#include "ui/settings/SettingsWindow.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "core/settings/SettingsCoding.h"
#include "core/settings/SettingsManager.h"
#include "ui/app/AppDelegate.h"
#include "ui/settings/FavoritesEditor.h"
#include "ui/settings/SettingRows.h"
#include "ui/windows/CommandRegistry.h"
#include "ui/windows/TabbedWindow.h"

#include "support/TestDir.h"
#include "ui/ShellFixture.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSpinBox>

#include <gtest/gtest.h>

TEST(SettingsWindow, EverySettingHasAnEditorOrASectionOfItsOwnAndEveryControlIsNamed)
{
    TestDir dir;
    SettingsManager manager(dir.filePath("settings.json"));
    AppSettings *settings = manager.settings();
    SettingsWindow window(settings, nullptr);

    const auto check = [&](const ObservableSettings &object, SettingRow::Owner owner) {
        for (const QMetaProperty &property : SettingsCoding::storedProperties(object)) {
            const QString name = QLatin1String(property.name());
            bool inRows = false;
            for (const SettingRow &row : SettingRows::all())
                inRows |= row.owner == owner && name == QLatin1String(row.property);
            const bool elsewhere = owner == SettingRow::Owner::app && SettingRows::editedElsewhere().contains(name);
            EXPECT_TRUE(inRows != elsewhere)
                << "rows: " << inRows << ", elsewhere: " << elsewhere << " for " << qPrintable(name);
            if (inRows) {
                EXPECT_TRUE(window.editorFor(property.name())) << "no editor for " << qPrintable(name);
            }
        }
    };
    check(*settings, SettingRow::Owner::app);
    check(*settings->slideshowSettings(), SettingRow::Owner::slideshow);
    for (const QString &name : SettingRows::editedElsewhere())
        EXPECT_GE(settings->metaObject()->indexOfProperty(name.toLatin1().constData()), 0) << qPrintable(name);
    for (const SettingRow &row : SettingRows::all()) {
        const QObject *owner = row.owner == SettingRow::Owner::app ? static_cast<const QObject *>(settings)
                                                                   : settings->slideshowSettings().get();
        if (row.enabledBy) {
            EXPECT_GE(owner->metaObject()->indexOfProperty(row.enabledBy), 0) << row.enabledBy;
        }
    }

    // Every control says what it is, to the eye or to a screen reader.
    EXPECT_FALSE(window.windowTitle().isEmpty());
    for (QWidget *control : window.findChildren<QWidget *>()) {
        // A combo box's popup is a window of its own, named by its combo box.
        if (control->window() != &window)
            continue;
        if (!qobject_cast<QAbstractButton *>(control) && !qobject_cast<QAbstractItemView *>(control)
            && !qobject_cast<QComboBox *>(control) && !qobject_cast<QAbstractSpinBox *>(control))
            continue;
        const auto *button = qobject_cast<QAbstractButton *>(control);
        EXPECT_FALSE(control->accessibleName().isEmpty() && (!button || button->text().isEmpty()))
            << control->metaObject()->className() << " " << qPrintable(control->objectName());
    }
}

TEST(SettingsWindow, AnEditIsAppliedAtOnceAndSavedAndAChangeElsewhereShows)
{
    TestDir dir;
    const QString file = dir.filePath("settings.json");
    SettingsManager manager(file);
    AppSettings *settings = manager.settings();
    SettingsWindow window(settings, nullptr);
    window.show();

    auto *hide = qobject_cast<QCheckBox *>(window.editorFor("hideOnDeactivate"));
    ASSERT_TRUE(hide);
    hide->click();
    EXPECT_TRUE(settings->hideOnDeactivate());
    auto *screen = qobject_cast<QComboBox *>(window.editorFor("quickviewScreen"));
    ASSERT_TRUE(screen);
    screen->setCurrentIndex(screen->findData(int(ScreenOption::primaryScreen)));
    EXPECT_EQ(settings->quickviewScreen(), ScreenOption::primaryScreen);
    auto *thickness = qobject_cast<QSpinBox *>(window.editorFor("thumbnailOutlineThickness"));
    ASSERT_TRUE(thickness);
    thickness->setValue(5);
    EXPECT_EQ(settings->thumbnailOutlineThickness(), 5);
    auto *interval = qobject_cast<QDoubleSpinBox *>(window.editorFor("interval"));
    ASSERT_TRUE(interval);
    interval->setValue(2.5);
    EXPECT_EQ(settings->slideshowSettings()->interval(), 2.5);

    // The fixed zoom counts only with fixed scaling.
    QWidget *zoom = window.editorFor("quickviewImageScalingPercentage");
    auto *scaling = qobject_cast<QComboBox *>(window.editorFor("quickviewImageScaling"));
    ASSERT_TRUE(zoom && scaling);
    EXPECT_FALSE(zoom->isEnabled());
    scaling->setCurrentIndex(scaling->findData(int(ImageDisplayScaling::percentage)));
    EXPECT_EQ(settings->quickviewImageScaling(), ImageDisplayScaling::percentage);
    EXPECT_TRUE(zoom->isEnabled());

    // Changed by a menu or another window: shown at once.
    settings->setQuickviewMuteVideo(false);
    EXPECT_FALSE(qobject_cast<QCheckBox *>(window.editorFor("quickviewMuteVideo"))->isChecked());
    settings->setThumbnailsHaveOutline(false);
    EXPECT_FALSE(window.editorFor("thumbnailOutlineColor")->isEnabled());
    settings->slideshowSettings()->setInterval(7);
    EXPECT_EQ(interval->value(), 7.0);

    ASSERT_TRUE(manager.saveNow());
    SettingsManager reloaded(file);
    EXPECT_TRUE(reloaded.settings()->hideOnDeactivate());
    EXPECT_EQ(reloaded.settings()->quickviewScreen(), ScreenOption::primaryScreen);
    EXPECT_EQ(reloaded.settings()->thumbnailOutlineThickness(), 5);
    EXPECT_EQ(reloaded.settings()->quickviewImageScaling(), ImageDisplayScaling::percentage);
    EXPECT_EQ(reloaded.settings()->slideshowSettings()->interval(), 7.0);
}

TEST(SettingsWindow, SectionsResetOfAlertsAndFavorites)
{
    TestDir dir;
    SettingsManager manager(dir.filePath("settings.json"));
    AppSettings *settings = manager.settings();
    auto window = std::make_unique<SettingsWindow>(settings, nullptr);

    // The last section shown is where the window opens next, for this run.
    window->showSection(SettingsSection::hotkeys);
    EXPECT_EQ(settings->selectedSettingsSection(), SettingsSection::hotkeys);
    window = std::make_unique<SettingsWindow>(settings, nullptr);
    EXPECT_EQ(window->currentSection(), SettingsSection::hotkeys);

    // The reset asks first; only a yes clears the warnings the user turned off.
    settings->setAlertsAndWarnings(AlertsAndWarning::folderDepthWarning);
    int asked = 0;
    bool yes = false;
    window->setResetQuestion([&](QWidget *, std::function<void(bool)> reply) {
        ++asked;
        reply(yes);
    });
    auto *reset = window->findChild<QPushButton *>("resetAlertsAndWarnings");
    ASSERT_TRUE(reset);
    EXPECT_TRUE(reset->isEnabled());
    reset->click();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(settings->alertsAndWarnings(), AlertsAndWarnings(AlertsAndWarning::folderDepthWarning));
    yes = true;
    reset->click();
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(settings->alertsAndWarnings(), AlertsAndWarnings());
    EXPECT_FALSE(reset->isEnabled());

    // Favourite folders: added once each, reordered, removed; written at once.
    FavoritesEditor *folders = window->favoriteFoldersEditor();
    const QString trips = dir.mkdir("Trips");
    const QString family = dir.mkdir("Family");
    EXPECT_TRUE(folders->addPath(trips));
    EXPECT_TRUE(folders->addPath(family));
    EXPECT_FALSE(folders->addPath(trips));
    EXPECT_FALSE(folders->addPath(dir.filePath("Gone")));
    folders->selectRow(1);
    folders->moveSelected(-1);
    ASSERT_EQ(settings->favoriteFolders().size(), 2);
    EXPECT_EQ(settings->favoriteFolders().at(0).file->path(), family);
    folders->removeSelected();
    ASSERT_EQ(settings->favoriteFolders().size(), 1);
    EXPECT_EQ(settings->favoriteFolders().at(0).file->path(), trips);
    settings->setFavoriteFolders({});
    EXPECT_EQ(folders->rowCount(), 0);

    // Applications come from the chooser, named as their .desktop file names them; so does the
    // application that opens images.
    const QString viewer = dir.write("apps/viewer.desktop",
                                     "[Desktop Entry]\nType=Application\nName=Photo Viewer\n"
                                     "Exec=true %F\n");
    window->setApplicationChooser([&](QWidget *, std::function<void(const QString &)> chosen) { chosen(viewer); });
    window->favoriteApplicationsEditor()->findChild<QPushButton *>("add")->click();
    ASSERT_EQ(settings->favoriteApps().size(), 1);
    EXPECT_EQ(settings->favoriteApps().at(0).title(), "Photo Viewer");
    settings->setOpenImageDestination(OpenImageDestination::other);
    auto *custom = qobject_cast<QPushButton *>(window->editorFor("openImageCustomApp"));
    ASSERT_TRUE(custom && custom->isEnabled());
    custom->click();
    ASSERT_TRUE(settings->openImageCustomApp());
    EXPECT_EQ(settings->openImageCustomApp()->path(), viewer);
    EXPECT_EQ(custom->text(), "Photo Viewer");
}

TEST(SettingsWindow, TheCommandsOpenOneWindowAtTheirSection)
{
    ShellFixture shell;
    AppDelegate delegate;
    const CommandRegistry &registry = CommandRegistry::shared();
    ASSERT_TRUE(registry.command(CommandId::openSettings).perform(registry.application()));
    SettingsWindow *window = delegate.settingsWindow();
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->currentSection(), SettingsSection::general);
    ASSERT_TRUE(registry.command(CommandId::openMoveToEditor).perform(registry.application()));
    EXPECT_EQ(delegate.settingsWindow(), window);
    EXPECT_EQ(window->currentSection(), SettingsSection::favorites);
    window->showSection(SettingsSection::browser);
    ASSERT_TRUE(registry.command(CommandId::openOpenWithEditor).perform(registry.application()));
    EXPECT_EQ(window->currentSection(), SettingsSection::favorites);
}
