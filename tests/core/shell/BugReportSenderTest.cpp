#include "core/shell/BugReportSender.h"
#include "core/shell/SecureEndpoint.h"

#include "support/LocalHttpServer.h"
#include "support/LogCapture.h"
#include "support/TestDir.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <optional>

using namespace std::chrono_literals;

namespace {

const QString credential = QStringLiteral("tester:pässword");

const BugReport report{QStringLiteral("Crash on “Trash”"), QStringLiteral("Steps:\n1. select\n2. trash"),
                       QStringLiteral("me@example.org"), QStringLiteral("9.8.7")};

// Sends `report` and waits for the outcome.
std::optional<BugReportOutcome> sendAndWait(BugReportSender &sender, int timeoutMs = 5000)
{
    std::optional<BugReportOutcome> outcome;
    const QMetaObject::Connection connection =
        QObject::connect(&sender, &BugReportSender::finished, [&](const BugReportOutcome &o) { outcome = o; });
    sender.send(report);
    waitUntil([&] { return outcome.has_value(); }, timeoutMs);
    QObject::disconnect(connection);
    return outcome;
}

} // namespace

TEST(BugReportSender, PostsTheReportOnceWithItsCredentialAndJudgesEveryKindOfReply)
{
    LocalHttpServer server;
    ASSERT_TRUE(server.isListening());
    BugReportSender sender(server.url(QStringLiteral("/report")), credential);
    sender.setAllowsLoopbackHttp(true);
    sender.setTimeout(300ms);

    // The request: one POST of the four texts as JSON, with the basic credential.
    server.body = "success";
    std::optional<BugReportOutcome> outcome = sendAndWait(sender);
    ASSERT_TRUE(outcome);
    EXPECT_TRUE(outcome->sent) << outcome->message.toStdString();
    ASSERT_EQ(server.requests.size(), 1);
    const LocalHttpServer::Request &request = server.requests.first();
    EXPECT_EQ(request.requestLine(), "POST /report HTTP/1.1");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    EXPECT_EQ(request.header("Authorization"), "Basic " + credential.toUtf8().toBase64());
    const QJsonObject json = QJsonDocument::fromJson(request.body).object();
    EXPECT_EQ(json,
              QJsonObject({{QStringLiteral("subject"), report.subject},
                           {QStringLiteral("description"), report.description},
                           {QStringLiteral("email"), report.email},
                           {QStringLiteral("version"), report.version}}));

    // Every other answer is a failure with its own message and log line, and is never retried.
    struct Case
    {
        LocalHttpServer::Behaviour behaviour;
        int status;
        QByteArray body;
        QString message; // empty: any text, as long as the log says it was the transport
        QString logged;
    };
    const Case cases[] = {
        {LocalHttpServer::Behaviour::answer, 200, "Success", QStringLiteral("Unknown error response from server."),
         QStringLiteral("Did not get success reply from server. Response: \n\nSuccess")},
        {LocalHttpServer::Behaviour::answer, 200, "success\n", QStringLiteral("Unknown error response from server."),
         QStringLiteral("Did not get success reply from server.")},
        {LocalHttpServer::Behaviour::answer, 500, "success",
         QStringLiteral("The server gave us a bad response code: 500."),
         QStringLiteral("Bad response code while sending bug report: 500")},
        {LocalHttpServer::Behaviour::answer, 200, "", QStringLiteral("Empty response from server."),
         QStringLiteral("No data returned by server.")},
        {LocalHttpServer::Behaviour::close, 200, "", QString(), QStringLiteral("Error sending bug report: ")},
        {LocalHttpServer::Behaviour::silent, 200, "", QStringLiteral("The server did not answer within 1 second."),
         QStringLiteral("Error sending bug report: The server did not answer")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.logged.toStdString());
        server.behaviour = c.behaviour;
        server.status = c.status;
        server.body = c.body;
        const qsizetype before = server.requests.size();
        LogCapture log;
        outcome = sendAndWait(sender);
        ASSERT_TRUE(outcome);
        EXPECT_FALSE(outcome->sent);
        if (!c.message.isEmpty()) {
            EXPECT_EQ(outcome->message, c.message);
        }
        EXPECT_FALSE(outcome->message.isEmpty());
        ASSERT_FALSE(log.lines.isEmpty());
        EXPECT_TRUE(log.lines.first().contains(c.logged)) << log.lines.first().toStdString();
        // Qt's HTTP layer sends a request once more on a fresh connection when the first one is
        // closed before any answer; everything else is sent exactly once.
        if (c.behaviour == LocalHttpServer::Behaviour::close) {
            EXPECT_LE(server.requests.size(), before + 2);
        } else {
            EXPECT_EQ(server.requests.size(), before + 1);
        }
        EXPECT_FALSE(sender.isSending());
    }
}

// The credential must never travel in the clear: not to a plain address, not to a name that only
// looks local, and not after a redirect to another server.
TEST(BugReportSender, NeverSendsTheCredentialOverPlainHttpOrToARedirect)
{
    LocalHttpServer server;
    server.body = "success";
    const QUrl plain = server.url(QStringLiteral("/report"));
    {
        BugReportSender sender(plain, credential);
        const std::optional<BugReportOutcome> outcome = sendAndWait(sender);
        ASSERT_TRUE(outcome);
        EXPECT_FALSE(outcome->sent);
        EXPECT_TRUE(outcome->message.contains(QLatin1String("HTTPS"))) << outcome->message.toStdString();
    }
    {
        QUrl named = plain;
        named.setHost(QStringLiteral("localhost"));
        BugReportSender sender(named, credential);
        sender.setAllowsLoopbackHttp(true);
        const std::optional<BugReportOutcome> outcome = sendAndWait(sender);
        ASSERT_TRUE(outcome);
        EXPECT_FALSE(outcome->sent);
    }
    EXPECT_EQ(server.connections, 0);

    LocalHttpServer elsewhere;
    elsewhere.body = "success";
    server.status = 307; // a redirect that keeps the method and the body
    server.body.clear();
    server.headers = {{"Location", elsewhere.url(QStringLiteral("/collect")).toEncoded()}};
    BugReportSender sender(plain, credential);
    sender.setAllowsLoopbackHttp(true);
    const std::optional<BugReportOutcome> outcome = sendAndWait(sender);
    ASSERT_TRUE(outcome);
    EXPECT_FALSE(outcome->sent);
    EXPECT_EQ(outcome->message, QStringLiteral("The server gave us a bad response code: 307."));
    QCoreApplication::processEvents();
    EXPECT_EQ(elsewhere.connections, 0);

    // Addresses in general.
    EXPECT_TRUE(SecureEndpoint::check(QUrl(QStringLiteral("https://reports.example.org/bug"))).isEmpty());
    EXPECT_FALSE(SecureEndpoint::check(QUrl(QStringLiteral("HTTP://reports.example.org/bug")), true).isEmpty());
    EXPECT_FALSE(SecureEndpoint::check(QUrl(QStringLiteral("ftp://reports.example.org/bug")), true).isEmpty());
    EXPECT_FALSE(SecureEndpoint::check(QUrl(QStringLiteral("https:///bug"))).isEmpty());
}

TEST(BugReportSender, ABuildWithoutAnEndpointSendsNothingAndSaysSo)
{
    BugReportSender sender(QUrl(), credential);
    EXPECT_FALSE(sender.isConfigured());
    const std::optional<BugReportOutcome> outcome = sendAndWait(sender);
    ASSERT_TRUE(outcome);
    EXPECT_FALSE(outcome->sent);
    EXPECT_FALSE(outcome->message.isEmpty());
    EXPECT_FALSE(BugReportSender(QUrl(QStringLiteral("https://example.org/")), QString()).isConfigured());
}
