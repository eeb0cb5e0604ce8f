#include "core/shell/Updater.h"
#include "core/settings/AppSettings.h"
#include "core/shell/Appcast.h"

#include "support/LocalHttpServer.h"
#include "support/LogCapture.h"
#include "support/TestDir.h"

#include <gtest/gtest.h>

#include <optional>

using namespace std::chrono_literals;

namespace {

// A feed as release tools write them: versions as elements of one item and as attributes of the
// enclosure of another, HTML notes in CDATA, and an item without a version (a news entry).
QByteArray feed(const QString &newestVersion)
{
    return QStringLiteral(R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"
     xmlns:dc="http://purl.org/dc/elements/1.1/">
  <channel>
    <title>Pixcove</title>
    <item>
      <title>Pixcove %1</title>
      <link>https://example.org/releases/%1</link>
      <sparkle:version>%1</sparkle:version>
      <sparkle:shortVersionString>%1 “Heron”</sparkle:shortVersionString>
      <description><![CDATA[<h2>New</h2><ul><li>Faster thumbnails</li></ul>]]></description>
      <pubDate>Tue, 03 Nov 2026 10:00:00 +0000</pubDate>
      <enclosure url="https://example.org/pixcove-%1.tar.xz" length="1234" type="application/x-xz"/>
    </item>
    <item>
      <title>Pixcove 0.0.9</title>
      <enclosure url="https://example.org/pixcove-0.0.9.tar.xz" sparkle:version="0.0.9"
                 sparkle:shortVersionString="0.0.9 beta"/>
    </item>
    <item><title>We have a new web site</title><link>https://example.org/news</link></item>
  </channel>
</rss>
)")
        .arg(newestVersion)
        .toUtf8();
}

std::optional<UpdateCheckResult> checkAndWait(UpdateChecker &checker, int timeoutMs = 5000)
{
    std::optional<UpdateCheckResult> result;
    const QMetaObject::Connection connection =
        QObject::connect(&checker, &UpdateChecker::finished, [&](const UpdateCheckResult &r) { result = r; });
    checker.check();
    waitUntil([&] { return result.has_value(); }, timeoutMs);
    QObject::disconnect(connection);
    return result;
}

} // namespace

TEST(Appcast, ReadsVersionsFromItemsAndEnclosuresAndRefusesWhatIsNotAFeed)
{
    QString error;
    const std::optional<QList<AppcastItem>> items = Appcast::parse(feed(QStringLiteral("1.2.0")), &error);
    ASSERT_TRUE(items) << error.toStdString();
    ASSERT_EQ(items->size(), 2);
    const AppcastItem &newest = items->at(0);
    EXPECT_EQ(newest.version, QStringLiteral("1.2.0"));
    EXPECT_EQ(newest.displayVersion(), QStringLiteral("1.2.0 “Heron”"));
    EXPECT_EQ(newest.link, QUrl(QStringLiteral("https://example.org/releases/1.2.0")));
    EXPECT_EQ(newest.downloadLink, QUrl(QStringLiteral("https://example.org/pixcove-1.2.0.tar.xz")));
    EXPECT_EQ(newest.description, QStringLiteral("<h2>New</h2><ul><li>Faster thumbnails</li></ul>"));
    EXPECT_EQ(newest.date, QDateTime(QDate(2026, 11, 3), QTime(10, 0), Qt::UTC));
    const AppcastItem &older = items->at(1);
    EXPECT_EQ(older.version, QStringLiteral("0.0.9"));
    EXPECT_EQ(older.displayVersion(), QStringLiteral("0.0.9 beta"));
    EXPECT_EQ(older.link, older.downloadLink); // no page of its own: the download stands for it

    const QByteArray bad[] = {
        "",
        "not XML at all <<<",
        "<html><body>502 Bad Gateway</body></html>",
        "<rss version=\"2.0\"></rss>",
        "<rss version=\"2.0\"><channel><item><sparkle:version>2</sparkle:version>", // cut off
    };
    for (const QByteArray &document : bad) {
        error.clear();
        EXPECT_FALSE(Appcast::parse(document, &error)) << document.toStdString();
        EXPECT_FALSE(error.isEmpty()) << document.toStdString();
    }
}

TEST(Appcast, OrdersVersionsAsReleasesAreOrdered)
{
    const std::pair<const char *, const char *> older[] = {
        {"1.9", "1.10"},
        {"0.1.0", "0.1.1"},
        {"2.0b1", "2.0"},
        {"2.0b1", "2.0b2"},
        {"1.0b9", "1.0.1"},
        {"1", "1.0.1"},
        {"0.9.99", "0.10"},
        {"1.0", "1.0.0.1"},
        {"2.0rc1", "2.0"},
        {"9", "10"},
        {"99999999999999999998", "99999999999999999999"},
    };
    for (const auto &[a, b] : older) {
        EXPECT_LT(Appcast::compareVersions(QLatin1String(a), QLatin1String(b)), 0) << a << " < " << b;
        EXPECT_GT(Appcast::compareVersions(QLatin1String(b), QLatin1String(a)), 0) << b << " > " << a;
    }
    for (const auto &[a, b] : {std::pair{"2.0", "2.0.0"}, {"1.01", "1.1"}, {"3", "3"}})
        EXPECT_EQ(Appcast::compareVersions(QLatin1String(a), QLatin1String(b)), 0) << a << " = " << b;

    QList<AppcastItem> items(3);
    items[0].version = QStringLiteral("1.1");
    items[1].version = QStringLiteral("1.3");
    items[2].version = QStringLiteral("1.2");
    EXPECT_EQ(Appcast::newestUpdate(items, QStringLiteral("1.0"))->version, QStringLiteral("1.3"));
    EXPECT_FALSE(Appcast::newestUpdate(items, QStringLiteral("1.3")));
    EXPECT_FALSE(Appcast::newestUpdate(items, QStringLiteral("2.0b1")));
}

TEST(UpdateChecker, FindsTheNewestReleaseAndFailsCleanlyOnBadFeedsAndSilentServers)
{
    LocalHttpServer server;
    UpdateChecker checker(server.url(QStringLiteral("/appcast.xml")), QStringLiteral("1.0.0"));
    checker.setAllowsLoopbackHttp(true);
    checker.setTimeout(300ms);

    server.body = feed(QStringLiteral("1.2.0"));
    std::optional<UpdateCheckResult> result = checkAndWait(checker);
    ASSERT_TRUE(result);
    ASSERT_EQ(result->outcome, UpdateCheckResult::Outcome::updateAvailable) << result->message.toStdString();
    EXPECT_EQ(result->update->version, QStringLiteral("1.2.0"));
    EXPECT_EQ(server.requests.last().requestLine(), "GET /appcast.xml HTTP/1.1");

    // A feed whose releases are all older than ours (a downgrade is no update).
    server.body = feed(QStringLiteral("0.9.0"));
    result = checkAndWait(checker);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->outcome, UpdateCheckResult::Outcome::upToDate);

    struct Case
    {
        LocalHttpServer::Behaviour behaviour;
        int status;
        QByteArray body;
        const char *says;
    };
    const Case failures[] = {
        {LocalHttpServer::Behaviour::answer, 200, "<<< not XML", "cannot be read"},
        {LocalHttpServer::Behaviour::answer, 200, "{\"version\": \"9.0\"}", "cannot be read"},
        {LocalHttpServer::Behaviour::answer, 404, "", "status 404"},
        {LocalHttpServer::Behaviour::silent, 200, "", "did not answer"},
    };
    for (const Case &c : failures) {
        server.behaviour = c.behaviour;
        server.status = c.status;
        server.body = c.body;
        result = checkAndWait(checker);
        ASSERT_TRUE(result) << c.says;
        EXPECT_EQ(result->outcome, UpdateCheckResult::Outcome::failed) << c.says;
        EXPECT_TRUE(result->message.contains(QLatin1String(c.says))) << result->message.toStdString();
        EXPECT_FALSE(checker.isChecking());
    }

    // Plain HTTP elsewhere than the test's own address is refused before anything is sent, and so
    // is a redirect that leaves HTTPS.
    LocalHttpServer other;
    other.body = feed(QStringLiteral("5.0"));
    UpdateChecker plain(other.url(), QStringLiteral("1.0.0"));
    result = checkAndWait(plain);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->outcome, UpdateCheckResult::Outcome::failed);
    QUrl named = other.url();
    named.setHost(QStringLiteral("localhost"));
    server.behaviour = LocalHttpServer::Behaviour::answer;
    server.status = 302;
    server.body.clear();
    server.headers = {{"Location", named.toEncoded()}};
    result = checkAndWait(checker);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->outcome, UpdateCheckResult::Outcome::failed);
    QCoreApplication::processEvents();
    EXPECT_EQ(other.connections, 0);
}

TEST(Updater, LooksAtTheChosenFrequencyRemembersTheLastLookAndStaysOffWithoutAFeed)
{
    LocalHttpServer server;
    server.body = feed(QStringLiteral("2.0"));
    AppSettings settings;
    settings.setUpdateCheckFrequency(UpdateCheckFrequency::hourly);
    const QDateTime twoHoursAgo = QDateTime::currentDateTimeUtc().addSecs(-2 * 3600);
    settings.setLastUpdateCheckDate(twoHoursAgo);

    Updater updater(&settings, server.url(), QStringLiteral("1.0"));
    updater.checker()->setAllowsLoopbackHttp(true);
    updater.setFirstCheckDelay(50ms);
    EXPECT_FALSE(updater.nextCheckDate().isValid()); // not started
    QList<AppcastItem> found;
    QList<UpdateCheckResult> answered;
    QObject::connect(&updater, &Updater::updateFound, [&](const AppcastItem &item) { found.append(item); });
    QObject::connect(&updater, &Updater::userCheckFinished,
                     [&](const UpdateCheckResult &result) { answered.append(result); });
    QString error;
    ASSERT_TRUE(updater.start(&error)) << error.toStdString();

    // Overdue at start: one look soon after, which is remembered; the next is an hour later.
    ASSERT_TRUE(waitUntil([&] { return !found.isEmpty(); }));
    EXPECT_EQ(found.first().version, QStringLiteral("2.0"));
    EXPECT_EQ(server.requests.size(), 1);
    EXPECT_GT(settings.lastUpdateCheckDate(), twoHoursAgo.addSecs(3600));
    EXPECT_NEAR(double(QDateTime::currentDateTimeUtc().secsTo(updater.nextCheckDate())), 3600.0, 5.0);
    settings.setUpdateCheckFrequency(UpdateCheckFrequency::monthly);
    EXPECT_NEAR(double(QDateTime::currentDateTimeUtc().secsTo(updater.nextCheckDate())), 30 * 86400.0, 5.0);
    // A clock set back does not postpone the next look for years.
    settings.setLastUpdateCheckDate(QDateTime::currentDateTimeUtc().addYears(3));
    EXPECT_LE(QDateTime::currentDateTimeUtc().secsTo(updater.nextCheckDate()), 30 * 86400 + 5);
    settings.setAutomaticallyChecksForUpdates(false);
    EXPECT_FALSE(updater.nextCheckDate().isValid());

    // Asked by the user: answered whatever the outcome, and not as a silent find.
    server.body = feed(QStringLiteral("0.5"));
    updater.checkForUpdates();
    ASSERT_TRUE(waitUntil([&] { return !answered.isEmpty(); }));
    EXPECT_EQ(answered.first().outcome, UpdateCheckResult::Outcome::upToDate);
    EXPECT_EQ(found.size(), 1);

    // Without a feed (a distribution's package) nothing runs, and a check says why.
    Updater off(&settings, QUrl(), QStringLiteral("1.0"));
    EXPECT_FALSE(off.isConfigured());
    EXPECT_TRUE(off.start(&error));
    std::optional<UpdateCheckResult> offAnswer;
    QObject::connect(&off, &Updater::userCheckFinished, [&](const UpdateCheckResult &r) { offAnswer = r; });
    off.checkForUpdates();
    ASSERT_TRUE(waitUntil([&] { return offAnswer.has_value(); }));
    EXPECT_EQ(offAnswer->outcome, UpdateCheckResult::Outcome::failed);
    EXPECT_FALSE(offAnswer->message.isEmpty());

    // A feed that may not be used fails to start, with the reason, and never asks.
    Updater plain(&settings, QUrl(QStringLiteral("http://updates.example.org/appcast.xml")), QStringLiteral("1.0"));
    error.clear();
    EXPECT_FALSE(plain.start(&error));
    EXPECT_TRUE(error.contains(QLatin1String("HTTPS"))) << error.toStdString();
}
