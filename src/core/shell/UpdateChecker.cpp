#include "core/shell/UpdateChecker.h"

#include "core/app/Dispatch.h"
#include "core/app/Translate.h"
#include "core/shell/SecureEndpoint.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace {

constexpr Translator tr("UpdateChecker");

UpdateCheckResult failure(const QString &message)
{
    return {UpdateCheckResult::Outcome::failed, std::nullopt, message};
}

} // namespace

UpdateChecker::UpdateChecker(const QUrl &feed, const QString &currentVersion, QObject *parent)
    : QObject(parent)
    , m_feed(feed)
    , m_currentVersion(currentVersion)
    , m_network(new QNetworkAccessManager(this))
{ }

UpdateChecker::~UpdateChecker()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
}

QString UpdateChecker::feedError() const
{
    return SecureEndpoint::check(m_feed, m_allowsLoopbackHttp);
}

void UpdateChecker::check()
{
    if (isChecking())
        return;
    if (const QString error = feedError(); !error.isEmpty()) {
        QTimer::singleShot(0, this, [this, error] { finish(failure(error)); });
        return;
    }
    QNetworkRequest request(m_feed);
    request.setTransferTimeout(int(m_timeout.count()));
    // Redirects are followed only to addresses the feed itself could have (HTTPS).
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    QNetworkReply *reply = m_network->get(request);
    m_reply = reply;
    m_abortReason.clear();
    connect(reply, &QNetworkReply::redirected, this, [this, reply](const QUrl &target) {
        if (const QString error = SecureEndpoint::check(target, m_allowsLoopbackHttp); error.isEmpty()) {
            Q_EMIT reply->redirectAllowed();
        } else {
            m_abortReason = tr("The update server sent Pixcove elsewhere: %1").arg(error);
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64 total) {
        if (received > maximumFeedSize || total > maximumFeedSize) {
            m_abortReason = tr("The release feed is larger than %n MB.", nullptr, int(maximumFeedSize >> 20));
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { readReply(reply); });
}

void UpdateChecker::readReply(QNetworkReply *reply)
{
    reply->deleteLater();
    m_reply = nullptr;
    if (!m_abortReason.isEmpty())
        return finish(failure(m_abortReason));
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (reply->error() != QNetworkReply::NoError && (!status.isValid() || status.toInt() == 200)) {
        if (reply->error() == QNetworkReply::OperationCanceledError)
            return finish(failure(tr("The update server did not answer within %n second(s).", nullptr,
                                     int(std::chrono::ceil<std::chrono::seconds>(m_timeout).count()))));
        return finish(failure(tr("The update server could not be reached: %1").arg(reply->errorString())));
    }
    if (status.toInt() != 200)
        return finish(failure(tr("The update server answered with status %1.").arg(status.toInt())));

    // Parsed on a pool: a feed may be long, and the GUI thread has windows to draw.
    m_parsing = true;
    const QPointer<UpdateChecker> self(this);
    runOnPool(QStringLiteral("Updater"), [self, document = reply->readAll(), current = m_currentVersion] {
        QString error;
        const std::optional<QList<AppcastItem>> items = Appcast::parse(document, &error);
        UpdateCheckResult result;
        if (!items) {
            result = failure(tr("The release feed cannot be read: %1.").arg(error));
        } else if (std::optional<AppcastItem> update = Appcast::newestUpdate(*items, current)) {
            result = {UpdateCheckResult::Outcome::updateAvailable, std::move(update), {}};
        } else {
            result = {UpdateCheckResult::Outcome::upToDate, std::nullopt, {}};
        }
        postToGui([self, result] {
            if (!self)
                return;
            self->m_parsing = false;
            self->finish(result);
        });
    });
}

void UpdateChecker::finish(const UpdateCheckResult &result)
{
    Q_EMIT finished(result);
}
