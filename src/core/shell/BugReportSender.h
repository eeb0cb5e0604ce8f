#pragma once

#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <chrono>

class QNetworkAccessManager;

// What the bug reporter sends: the user's subject, description and (optional) e-mail address,
// and the program's version.
struct BugReport
{
    QString subject;
    QString description;
    QString email;
    QString version;

    // {"subject", "description", "email", "version"}: four texts.
    QByteArray toJson() const;
};

// How a report went: `sent`, or the message the error alert shows. The details go to the log.
struct BugReportOutcome
{
    bool sent = false;
    QString message;
};

// Sends one bug report as a POST of JSON with a basic-authentication credential, and judges the
// reply in this order: a transport error (its description); no HTTP response ("Unable to read
// response from server."); a status other than 200 ("The server gave us a bad response code:
// N."); an empty body ("Empty response from server."); a body other than exactly "success"
// ("Unknown error response from server."). Only "success" counts as sent.
//
// The credential goes only to an HTTPS endpoint (SecureEndpoint): a plain address is refused
// before anything is sent, and redirects are not followed, so that no server can bounce the
// credential elsewhere. One request at a time, sent once without retry; a request that hears
// nothing for the time-out (15 s) fails as a transport error. Runs on the GUI thread without
// blocking it; the reply arrives through `finished`.
class BugReportSender : public QObject
{
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds defaultTimeout{15000};

    // The endpoint and credential of this build (BuildConfiguration).
    explicit BugReportSender(QObject *parent = nullptr);
    BugReportSender(const QUrl &endpoint, const QString &credential, QObject *parent = nullptr);
    ~BugReportSender() override;

    // Whether this build has an endpoint and a credential to report to.
    bool isConfigured() const;
    const QUrl &endpoint() const { return m_endpoint; }

    void setTimeout(std::chrono::milliseconds timeout) { m_timeout = timeout; }
    // Lets tests report to a plain HTTP server on 127.0.0.1.
    void setAllowsLoopbackHttp(bool allow) { m_allowsLoopbackHttp = allow; }

    bool isSending() const { return m_reply != nullptr; }
    // Starts sending `report`; `finished` follows, at once (queued) when the endpoint is refused
    // or missing. Ignored while a report is on its way.
    void send(const BugReport &report);

Q_SIGNALS:
    void finished(const BugReportOutcome &outcome);

private:
    void judgeReply(QNetworkReply *reply);
    void finish(const BugReportOutcome &outcome);

    QUrl m_endpoint;
    QString m_credential;
    std::chrono::milliseconds m_timeout = defaultTimeout;
    bool m_allowsLoopbackHttp = false;
    QNetworkAccessManager *m_network;
    QPointer<QNetworkReply> m_reply;
};
