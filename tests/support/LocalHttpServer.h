#pragma once

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

// A plain HTTP server on 127.0.0.1 that answers every complete request as the test says: with a
// status, headers and a body; by closing the connection; or not at all. It keeps every request it
// was sent (head and body, as received) and counts the connections made to it.
class LocalHttpServer : public QObject
{
public:
    enum class Behaviour { answer, close, silent };

    Behaviour behaviour = Behaviour::answer;
    int status = 200;
    QByteArray body;
    QList<std::pair<QByteArray, QByteArray>> headers; // added to the answer

    struct Request
    {
        QByteArray head; // request line and headers
        QByteArray body;

        QByteArray header(const QByteArray &name) const
        {
            for (const QByteArray &line : head.split('\n')) {
                const qsizetype colon = line.indexOf(':');
                if (colon > 0 && line.left(colon).trimmed().compare(name, Qt::CaseInsensitive) == 0)
                    return line.mid(colon + 1).trimmed();
            }
            return {};
        }
        QByteArray requestLine() const { return head.left(head.indexOf('\r')); }
    };
    QList<Request> requests;
    int connections = 0;

    LocalHttpServer()
    {
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                ++connections;
                m_sockets.append(socket);
                QObject::connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
            }
        });
    }

    ~LocalHttpServer() override
    {
        for (const QPointer<QTcpSocket> &socket : std::as_const(m_sockets)) {
            if (socket)
                socket->abort();
        }
    }

    bool isListening() const { return m_server.isListening(); }
    QUrl url(const QString &path = QStringLiteral("/")) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
    }

private:
    void read(QTcpSocket *socket)
    {
        QByteArray &buffer = m_buffers[socket];
        buffer += socket->readAll();
        const qsizetype headEnd = buffer.indexOf("\r\n\r\n");
        if (headEnd < 0)
            return;
        Request request{buffer.left(headEnd + 2), {}};
        const qsizetype length = request.header("Content-Length").toLongLong();
        if (buffer.size() < headEnd + 4 + length)
            return;
        request.body = buffer.mid(headEnd + 4, length);
        requests.append(request);
        m_buffers.remove(socket);
        switch (behaviour) {
        case Behaviour::silent: return;
        case Behaviour::close: socket->abort(); return;
        case Behaviour::answer: break;
        }
        QByteArray answer = "HTTP/1.1 " + QByteArray::number(status) + " Status\r\n";
        answer += "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n";
        for (const auto &[name, value] : std::as_const(headers))
            answer += name + ": " + value + "\r\n";
        answer += "\r\n" + body;
        socket->write(answer);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QList<QPointer<QTcpSocket>> m_sockets;
    QHash<QTcpSocket *, QByteArray> m_buffers;
};
