#pragma once

#include "core/settings/SettingsValueSets.h"
#include "ui/settings/SettingEditors.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

#include <functional>

class AppSettings;
class FavoritesEditor;
class HotkeysController;
class HotkeysView;
class QListWidget;
class QStackedWidget;

// The settings window: sections General, Browser, Image Viewing, Favorites and Hotkeys in a list
// on the left, the chosen section on the right. Every application setting is edited here and
// applied at once (each row writes its setting as the user edits, and follows it when it changes
// elsewhere); the settings manager saves them. The section shown last is kept in
// `selectedSettingsSection`, for the run only. One window at a time, made by the application.
//
// General also carries "Reset Alerts and Warnings", which asks first and then lets the one-time
// warnings show again.
class SettingsWindow : public QWidget
{
    Q_OBJECT
public:
    // Asks "Reset Alerts and Warnings?" and calls `answer` with the user's choice (not blocking).
    using ResetQuestion = std::function<void(QWidget *window, std::function<void(bool reset)> answer)>;

    SettingsWindow(AppSettings *settings, HotkeysController *hotkeys, QWidget *parent = nullptr);

    void showSection(SettingsSection section);
    SettingsSection currentSection() const;
    // The Favorites section with its applications, respectively folders, list focused.
    void editFavoriteApplications();
    void editFavoriteFolders();

    // The editor of a plain setting row, by property name; null when there is none.
    QWidget *editorFor(const char *property) const;
    FavoritesEditor *favoriteApplicationsEditor() const { return m_favoriteApps; }
    FavoritesEditor *favoriteFoldersEditor() const { return m_favoriteFolders; }
    HotkeysView *hotkeysView() const { return m_hotkeysView; }

    // Hooks for tests; the defaults show dialogs.
    void setResetQuestion(ResetQuestion question) { m_resetQuestion = std::move(question); }
    void setApplicationChooser(SettingEditors::ApplicationChooser chooser);
    // Runs the reset button's action.
    void resetAlertsAndWarnings();

private:
    QWidget *makeSection(SettingsSection section);
    QWidget *makeRowsPage(SettingsSection section, QWidget *extra = nullptr);
    QWidget *makeResetAlertsRow();

    QPointer<AppSettings> m_settings;
    QPointer<HotkeysController> m_hotkeys;
    QListWidget *m_sections;
    QStackedWidget *m_pages;
    FavoritesEditor *m_favoriteApps = nullptr;
    FavoritesEditor *m_favoriteFolders = nullptr;
    HotkeysView *m_hotkeysView = nullptr;
    ResetQuestion m_resetQuestion;
    SettingEditors::ApplicationChooser m_chooseApplication;
    QHash<QString, QWidget *> m_editors; // by property name
};
