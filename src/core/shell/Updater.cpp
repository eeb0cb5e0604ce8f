#include "core/shell/Updater.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/settings/AppSettings.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace {

constexpr Translator tr("Updater");

// A QTimer counts in int milliseconds, under 25 days: longer waits (a monthly check) are taken in
// steps of a day, each of which reads the schedule again.
constexpr std::chrono::milliseconds longestWait = std::chrono::hours(24);
// A timer with a whole-second grain may fire a little early: a check this close to due is due.
constexpr std::chrono::milliseconds dueTolerance = std::chrono::seconds(2);

} // namespace

std::chrono::seconds updateCheckInterval(UpdateCheckFrequency frequency)
{
    using namespace std::chrono_literals;
    switch (frequency) {
    case UpdateCheckFrequency::hourly: return 1h;
    case UpdateCheckFrequency::daily: return 24h;
    case UpdateCheckFrequency::weekly: return 7 * 24h;
    case UpdateCheckFrequency::monthly: return 30 * 24h;
    }
    return 24h;
}

Updater::Updater(AppSettings *settings, const QUrl &feed, const QString &currentVersion, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_timer(new QTimer(this))
{
    if (!feed.isEmpty()) {
        m_checker = std::make_unique<UpdateChecker>(feed, currentVersion);
        connect(m_checker.get(), &UpdateChecker::finished, this, &Updater::checkFinished);
    }
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, [this] {
        // A check the user started is running: its end schedules the next.
        if (!m_checker || m_checker->isChecking())
            return;
        const QDateTime due = nextCheckDate();
        if (due.isValid() && QDateTime::currentDateTimeUtc().msecsTo(due) <= dueTolerance.count())
            m_checker->check();
        else
            schedule();
    });
}

Updater::~Updater() = default;

bool Updater::start(QString *error)
{
    if (!m_checker) {
        logDebug(QStringLiteral("No release feed in this build: updates are left to the package manager."));
        return true;
    }
    if (const QString feedError = m_checker->feedError(); !feedError.isEmpty()) {
        if (error)
            *error = feedError;
        return false;
    }
    if (m_started)
        return true;
    m_started = true;
    m_firstSchedule = true;
    connect(m_settings, &AppSettings::automaticallyChecksForUpdatesChanged, this, &Updater::schedule);
    connect(m_settings, &AppSettings::updateCheckFrequencyChanged, this, &Updater::schedule);
    schedule();
    return true;
}

QDateTime Updater::nextCheckDate() const
{
    if (!m_started || !m_settings->automaticallyChecksForUpdates())
        return {};
    const QDateTime now = QDateTime::currentDateTimeUtc();
    // A last check in the future means the clock was set back: count from now.
    const QDateTime last = std::min(m_settings->lastUpdateCheckDate().toUTC(), now);
    return last.addSecs(updateCheckInterval(m_settings->updateCheckFrequency()).count());
}

void Updater::schedule()
{
    m_timer->stop();
    const QDateTime due = nextCheckDate();
    if (!due.isValid())
        return;
    qint64 wait = QDateTime::currentDateTimeUtc().msecsTo(due);
    if (m_firstSchedule)
        wait = std::max<qint64>(wait, m_firstCheckDelay.count());
    m_firstSchedule = false;
    // Long waits need no precision; whole seconds let the system wake up less often.
    m_timer->setTimerType(wait > 60000 ? Qt::VeryCoarseTimer : Qt::CoarseTimer);
    m_timer->start(int(std::clamp<qint64>(wait, 0, longestWait.count())));
}

void Updater::checkForUpdates()
{
    if (!m_checker) {
        QTimer::singleShot(0, this, [this] {
            Q_EMIT userCheckFinished({UpdateCheckResult::Outcome::failed, std::nullopt,
                                      tr("This build of Pixcove does not look for updates: the package manager "
                                         "that installed it keeps it up to date.")});
        });
        return;
    }
    // A check already running answers the user when it ends.
    m_userAsked = true;
    if (!m_checker->isChecking())
        m_checker->check();
}

// Every look counts, failed ones too: the server is asked at most once per interval, however it
// answers, and the next scheduled look comes a whole interval later.
void Updater::checkFinished(const UpdateCheckResult &result)
{
    m_settings->setLastUpdateCheckDate(QDateTime::currentDateTimeUtc());
    if (result.outcome == UpdateCheckResult::Outcome::failed)
        logError(QStringLiteral("Update check failed: ") + result.message);
    if (std::exchange(m_userAsked, false))
        Q_EMIT userCheckFinished(result);
    else if (result.outcome == UpdateCheckResult::Outcome::updateAvailable && result.update)
        Q_EMIT updateFound(*result.update);
    schedule();
}
