#include "ui/browser/FileOpener.h"

#include "support/TestDir.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

// A file manager on the bus: records what it was asked to show, answers or refuses.
class FakeFileManager : public QDBusVirtualObject
{
public:
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() != QLatin1String("ShowItems"))
            return false;
        shown = message.arguments().value(0).toStringList();
        connection.send(refuse ? message.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.Failed"),
                                                          QStringLiteral("no window"))
                               : message.createReply());
        return true;
    }

    QStringList shown;
    bool refuse = false;
};

// A session bus of the test's own (dbus-daemon), so that no real file manager is asked.
class PrivateBus
{
public:
    PrivateBus()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty())
            return;
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
        if (!m_daemon.waitForReadyRead(5000))
            return;
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }
    ~PrivateBus()
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("pixcove-test-client"));
        QDBusConnection::disconnectFromBus(QStringLiteral("pixcove-test-service"));
        m_daemon.kill();
        m_daemon.waitForFinished(5000);
    }
    bool isRunning() const { return !m_address.isEmpty(); }
    QDBusConnection connect(const QString &name) { return QDBusConnection::connectToBus(m_address, name); }

private:
    QProcess m_daemon;
    QString m_address;
};

} // namespace

// The file manager is asked without waiting; the folder opens instead when there is none on the
// bus, when it refuses, or when there is no bus at all.
TEST(FileOpener, RevealAsksTheFileManagerAndOpensTheFolderWhenItCannot)
{
    QObject context;
    const QStringList uris{QStringLiteral("file:///home/anna/Pictures/IMG_0001.JPG"),
                           QStringLiteral("file:///home/anna/Pictures/photo%20(2).jpeg")};
    const QUrl folder = QUrl::fromLocalFile(QStringLiteral("/home/anna/Pictures"));
    QList<QUrl> opened;
    const auto openFolder = [&opened](const QUrl &url) { opened.append(url); };

    const QDBusConnection none = QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"),
                                                               QStringLiteral("pixcove-test-none"));
    FileOpener::showItems(uris, folder, &context, none, openFolder);
    EXPECT_EQ(opened, QList<QUrl>{folder});
    QDBusConnection::disconnectFromBus(QStringLiteral("pixcove-test-none"));

    PrivateBus bus;
    if (!bus.isRunning())
        GTEST_SKIP() << "no dbus-daemon here: only the fallback without a bus was tested";
    QDBusConnection client = bus.connect(QStringLiteral("pixcove-test-client"));
    QDBusConnection service = bus.connect(QStringLiteral("pixcove-test-service"));
    ASSERT_TRUE(client.isConnected());

    // Nobody owns the name: the folder opens.
    opened.clear();
    FileOpener::showItems(uris, folder, &context, client, openFolder);
    ASSERT_TRUE(waitUntil([&] { return !opened.isEmpty(); }, 10000));
    EXPECT_EQ(opened, QList<QUrl>{folder});

    FakeFileManager manager;
    ASSERT_TRUE(service.registerVirtualObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager));
    ASSERT_TRUE(service.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    opened.clear();
    FileOpener::showItems(uris, folder, &context, client, openFolder);
    ASSERT_TRUE(waitUntil([&] { return !manager.shown.isEmpty(); }, 10000));
    EXPECT_EQ(manager.shown, uris);
    waitUntil([] { return false; }, 200); // the answer arrives
    EXPECT_TRUE(opened.isEmpty());

    manager.refuse = true;
    manager.shown.clear();
    FileOpener::showItems(uris, folder, &context, client, openFolder);
    ASSERT_TRUE(waitUntil([&] { return !opened.isEmpty(); }, 10000));
    EXPECT_EQ(manager.shown, uris);
    EXPECT_EQ(opened, QList<QUrl>{folder});
    service.unregisterObject(QStringLiteral("/org/freedesktop/FileManager1"));
}
