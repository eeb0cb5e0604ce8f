#include "app/InstanceChannel.h"

#include "app/Log.h"

#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

InstanceChannel::InstanceChannel(const QString &name, QObject *parent)
    : QObject(parent)
    , m_name(name)
{
}

InstanceChannel::~InstanceChannel() = default;

QString InstanceChannel::defaultName()
{
    return QStringLiteral("pixcove-%1").arg(getuid());
}

bool InstanceChannel::listen()
{
    if (m_server)
        return true;
    auto *server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(m_name)) {
        // Somebody answering means a running instance; silence means a stale socket file.
        QLocalSocket probe;
        probe.connectToServer(m_name);
        if (probe.waitForConnected(500)) {
            delete server;
            return false;
        }
        QLocalServer::removeServer(m_name);
        if (!server->listen(m_name)) {
            logError(QStringLiteral("Cannot listen for other starts of Pixcove: %1").arg(server->errorString()));
            delete server;
            return true; // run on our own rather than not at all
        }
    }
    m_server = server;
    connect(m_server, &QLocalServer::newConnection, this, &InstanceChannel::acceptConnections);
    return true;
}

bool InstanceChannel::forward(const LaunchRequest &request, int timeoutMs) const
{
    QLocalSocket socket;
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(QJsonDocument(request.toJson()).toJson(QJsonDocument::Compact));
    socket.write("\n");
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    socket.disconnectFromServer();
    if (socket.state() != QLocalSocket::UnconnectedState)
        socket.waitForDisconnected(timeoutMs);
    return true;
}

// One request per connection, a line of JSON; read when the line is complete.
void InstanceChannel::acceptConnections()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            while (socket->canReadLine()) {
                const QByteArray line = socket->readLine();
                const QJsonDocument document = QJsonDocument::fromJson(line);
                const std::optional<LaunchRequest> request =
                    document.isObject() ? LaunchRequest::fromJson(document.object()) : std::nullopt;
                if (request)
                    emit requestReceived(*request);
                else
                    logError(QStringLiteral("Ignored a malformed request from another start of Pixcove"));
            }
        });
    }
}
