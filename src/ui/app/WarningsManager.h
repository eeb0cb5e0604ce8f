#pragma once

#include <QObject>

#include <functional>

class AppSettings;
class QWidget;

// Shows the one warning the user can turn off: the folder-depth warning when a window starts
// scanning deeper into subfolders. The alert opens with its "Do not show this message again"
// box ticked; closed ticked, the warning is stored in `alertsAndWarnings` and never shows again
// until that set is cleared in the settings.
class WarningsManager : public QObject
{
    Q_OBJECT
public:
    // Shows the alert (as a window-modal sheet of `window`, or application-modal) and answers
    // whether the suppression box was ticked when it closed.
    using Presenter = std::function<bool(QWidget *window, const QString &title, const QString &text)>;

    explicit WarningsManager(AppSettings *settings, QObject *parent = nullptr);

    static WarningsManager &shared();
    static void setShared(WarningsManager *manager); // not owned

    void setPresenter(Presenter presenter) { m_presenter = std::move(presenter); }
    // Answers whether the alert was shown.
    bool showFolderDepthWarning(QWidget *window);

    static QString folderDepthWarningTitle();
    static QString folderDepthWarningText();

private:
    static bool presentAlert(QWidget *window, const QString &title, const QString &text);

    AppSettings *m_settings;
    Presenter m_presenter;
};
