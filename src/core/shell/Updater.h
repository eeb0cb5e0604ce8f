#pragma once

#include "core/settings/SettingsValueSets.h"
#include "core/shell/UpdateChecker.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>

#include <chrono>
#include <memory>

class AppSettings;
class QTimer;

// Looks for new releases on its own at the frequency the settings choose (hourly, daily, weekly,
// monthly, counted from the last look, which the settings keep across runs) while
// `automaticallyChecksForUpdates` holds, and on demand. Without a feed address (a distribution's
// package) it does nothing at all. It never installs anything: it tells the user, through
// `updateFound`, and the user downloads.
//
// Scheduled checks say nothing unless they find a release; a check the user asked for reports
// every outcome through `userCheckFinished`. A change of either setting reschedules at once.
class Updater : public QObject
{
    Q_OBJECT
public:
    // A first look waits this long after start, so that start-up has the machine to itself.
    static constexpr std::chrono::seconds firstCheckDelay{10};

    // `feed` empty: the updater stays off.
    Updater(AppSettings *settings, const QUrl &feed, const QString &currentVersion, QObject *parent = nullptr);
    ~Updater() override;

    bool isConfigured() const { return m_checker != nullptr; }
    // Arms the schedule. False with the reason for a feed that cannot be used (not HTTPS, not an
    // address); the caller logs it and goes on. True without a feed: there is nothing to start.
    bool start(QString *error);
    bool isStarted() const { return m_started; }

    // A check with an answer for the user, whatever it finds.
    void checkForUpdates();
    bool isChecking() const { return m_checker && m_checker->isChecking(); }

    // When the next scheduled check is due; invalid when none is scheduled.
    QDateTime nextCheckDate() const;

    UpdateChecker *checker() const { return m_checker.get(); }
    // How long the first look waits when it is already due at start (tests shorten it).
    void setFirstCheckDelay(std::chrono::milliseconds delay) { m_firstCheckDelay = delay; }

Q_SIGNALS:
    void updateFound(const AppcastItem &item);
    void userCheckFinished(const UpdateCheckResult &result);

private:
    void schedule();
    void checkFinished(const UpdateCheckResult &result);

    AppSettings *m_settings;
    std::unique_ptr<UpdateChecker> m_checker;
    QTimer *m_timer;
    std::chrono::milliseconds m_firstCheckDelay = firstCheckDelay;
    bool m_started = false;
    bool m_firstSchedule = false;
    bool m_userAsked = false;
};

// The time between two scheduled checks.
std::chrono::seconds updateCheckInterval(UpdateCheckFrequency frequency);
