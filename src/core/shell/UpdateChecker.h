#pragma once

#include "core/shell/Appcast.h"

#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

class QNetworkAccessManager;

// What one look at the release feed found.
struct UpdateCheckResult
{
    enum class Outcome { updateAvailable, upToDate, failed };
    Outcome outcome = Outcome::failed;
    std::optional<AppcastItem> update; // with updateAvailable
    QString message; // with failed: what went wrong, for the user
};

// Reads the release feed once per check() over HTTPS (SecureEndpoint), parses it off the GUI
// thread and compares its newest release with the running version. A feed that is not XML, a
// server error, a feed larger than 4 MB and a server that says nothing within the time-out all
// end as `failed` with a message; the GUI thread never waits on the network.
class UpdateChecker : public QObject
{
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds defaultTimeout{30000};
    static constexpr qint64 maximumFeedSize = 4 * 1024 * 1024;

    UpdateChecker(const QUrl &feed, const QString &currentVersion, QObject *parent = nullptr);
    ~UpdateChecker() override;

    const QUrl &feed() const { return m_feed; }
    // Empty when the feed may be read; else why not (not HTTPS, not an address).
    QString feedError() const;

    void setTimeout(std::chrono::milliseconds timeout) { m_timeout = timeout; }
    void setAllowsLoopbackHttp(bool allow) { m_allowsLoopbackHttp = allow; }

    bool isChecking() const { return m_reply != nullptr || m_parsing; }
    // Starts a check; `finished` follows (queued when the feed is refused). Ignored while one runs.
    void check();

Q_SIGNALS:
    void finished(const UpdateCheckResult &result);

private:
    void readReply(QNetworkReply *reply);
    void finish(const UpdateCheckResult &result);

    QUrl m_feed;
    QString m_currentVersion;
    std::chrono::milliseconds m_timeout = defaultTimeout;
    bool m_allowsLoopbackHttp = false;
    bool m_parsing = false;
    QString m_abortReason; // why the running request was stopped, when it was
    QNetworkAccessManager *m_network;
    QPointer<QNetworkReply> m_reply;
};
