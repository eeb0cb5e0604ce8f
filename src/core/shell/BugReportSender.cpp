#include "core/shell/BugReportSender.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/shell/BuildConfiguration.h"
#include "core/shell/SecureEndpoint.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QTimer>

namespace {

constexpr Translator tr("BugReportSender");

// What the log keeps of an unexpected reply: enough to see what the server said.
constexpr qsizetype loggedReplyLength = 2000;

} // namespace

QByteArray BugReport::toJson() const
{
    const QJsonObject object{
        {QStringLiteral("subject"), subject},
        {QStringLiteral("description"), description},
        {QStringLiteral("email"), email},
        {QStringLiteral("version"), version},
    };
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

BugReportSender::BugReportSender(QObject *parent)
    : BugReportSender(QUrl(BuildConfiguration::bugReportLink()), BuildConfiguration::bugReportAuth(), parent)
{ }

BugReportSender::BugReportSender(const QUrl &endpoint, const QString &credential, QObject *parent)
    : QObject(parent)
    , m_endpoint(endpoint)
    , m_credential(credential)
    , m_network(new QNetworkAccessManager(this))
{ }

// A report still on its way is dropped without an answer: nobody is left to hear it.
BugReportSender::~BugReportSender()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
}

bool BugReportSender::isConfigured() const
{
    return !m_endpoint.isEmpty() && !m_credential.isEmpty();
}

void BugReportSender::send(const BugReport &report)
{
    if (m_reply)
        return;
    QString refusal;
    if (!isConfigured())
        refusal = tr("Bug reporting is not set up in this build of Pixcove.");
    else
        refusal = SecureEndpoint::check(m_endpoint, m_allowsLoopbackHttp);
    if (!refusal.isEmpty()) {
        logError(QStringLiteral("Error sending bug report: ") + refusal);
        QTimer::singleShot(0, this, [this, refusal] { finish({false, refusal}); });
        return;
    }

    QNetworkRequest request(m_endpoint);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/json"));
    request.setRawHeader(QByteArrayLiteral("Authorization"), "Basic " + m_credential.toUtf8().toBase64());
    // Without a byte for this long the request fails: the server is down or overwhelmed.
    request.setTransferTimeout(int(m_timeout.count()));
    // A redirect is judged as the status it is and never followed, so the credential goes nowhere
    // but the endpoint.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    QNetworkReply *reply = m_network->post(request, report.toJson());
    m_reply = reply;
    connect(reply, &QNetworkReply::finished, this, [this, reply] { judgeReply(reply); });
}

// Judged in this order: transport, response, status, body.
void BugReportSender::judgeReply(QNetworkReply *reply)
{
    reply->deleteLater();
    m_reply = nullptr;
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const QNetworkReply::NetworkError error = reply->error();
    // Qt turns statuses such as 404 or 500 into errors of its own (from ContentAccessDenied on):
    // those are the server's answer, judged by their code below, not a transport failure.
    const bool transportError =
        error != QNetworkReply::NoError && (!status.isValid() || error < QNetworkReply::ContentAccessDenied);
    if (transportError) {
        const QString description = error == QNetworkReply::OperationCanceledError
            ? tr("The server did not answer within %n second(s).", nullptr,
                 int(std::chrono::ceil<std::chrono::seconds>(m_timeout).count()))
            : reply->errorString();
        logError(QStringLiteral("Error sending bug report: ") + description);
        return finish({false, description});
    }
    if (!status.isValid()) {
        logError(QStringLiteral("Unable to get HTTP response while sending bug report"));
        return finish({false, tr("Unable to read response from server.")});
    }
    const int code = status.toInt();
    if (code != 200) {
        logError(QStringLiteral("Bad response code while sending bug report: %1").arg(code));
        return finish({false, tr("The server gave us a bad response code: %1.").arg(code)});
    }
    const QByteArray body = reply->readAll();
    if (body.isEmpty()) {
        logError(QStringLiteral("No data returned by server."));
        return finish({false, tr("Empty response from server.")});
    }
    const QString text = QString::fromUtf8(body);
    if (text != QLatin1String("success")) {
        logError(QStringLiteral("Did not get success reply from server. Response: \n\n")
                 + text.left(loggedReplyLength));
        return finish({false, tr("Unknown error response from server.")});
    }
    finish({true, {}});
}

void BugReportSender::finish(const BugReportOutcome &outcome)
{
    Q_EMIT finished(outcome);
}
