#pragma once

#include "core/shell/Updater.h"

#include <QObject>
#include <QPointer>

#include <functional>

class AppSettings;
class UpdateWindowController;

// Shows what the updater finds. A newer release opens the update window (one at a time: a later
// find refreshes it); a check the user asked for ("Check for Updates…") also answers when there
// is nothing new or the check failed. Scheduled checks that find nothing stay silent.
class UpdateController : public QObject
{
    Q_OBJECT
public:
    // `feed` empty: the updater stays off and a check says so.
    UpdateController(AppSettings *settings, const QUrl &feed, const QString &currentVersion, QObject *parent = nullptr);
    ~UpdateController() override;

    Updater *updater() { return &m_updater; }
    // See Updater::start.
    bool start(QString *error) { return m_updater.start(error); }
    void checkForUpdates();
    bool isChecking() const { return m_updater.isChecking(); }

    UpdateWindowController *updateWindow() const;

    // Tells the user the answer of a check they asked for (default: a message box).
    std::function<void(bool failed, const QString &title, const QString &text)> showMessage;

private:
    void showUpdate(const AppcastItem &item);
    void userCheckFinished(const UpdateCheckResult &result);

    QString m_currentVersion;
    Updater m_updater;
    QPointer<UpdateWindowController> m_updateWindow;
};
