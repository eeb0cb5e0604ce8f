#include "ui/app/InstanceChannel.h"

#include "core/app/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

InstanceChannel::InstanceChannel(const QString &name, QObject *parent)
    : QObject(parent)
    , m_name(name)
{ }

InstanceChannel::~InstanceChannel() = default;

// The user's runtime folder is private to them (0700), so nobody else can hand us requests;
// without one, the temporary folder with the user id in the name.
QString InstanceChannel::defaultName()
{
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QFileInfo(QFile::decodeName(runtime)).isDir())
        return QFile::decodeName(runtime) + QStringLiteral("/pixcove.socket");
    return QDir::tempPath() + QStringLiteral("/pixcove-%1.socket").arg(getuid());
}

bool InstanceChannel::listen()
{
    if (m_server)
        return true;
    auto *server = new QLocalServer(this);
    // No socket options: with them Qt binds elsewhere and renames over an existing socket, which
    // would take the name from a running instance.
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
                    Q_EMIT requestReceived(*request);
                else
                    logError(QStringLiteral("Ignored a malformed request from another start of Pixcove"));
            }
        });
    }
}
