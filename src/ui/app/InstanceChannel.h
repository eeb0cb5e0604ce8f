#pragma once

#include "app/LaunchRequest.h"

#include <QObject>
#include <QString>

class QLocalServer;

// Keeps Pixcove to one instance per user: the first start listens on a local socket named after
// the user; a later start hands its request to it and exits.
//
// listen() answers false when another instance already listens (the caller then forwards); a
// socket file left behind by a crashed instance is removed and listening is tried again.
class InstanceChannel : public QObject
{
    Q_OBJECT
public:
    explicit InstanceChannel(const QString &name = defaultName(), QObject *parent = nullptr);
    ~InstanceChannel() override;

    // "pixcove-<user id>": one instance per user and per display session is what users expect.
    static QString defaultName();

    bool listen();
    // Sends `request` to the listening instance; answers whether it was delivered within `timeoutMs`.
    bool forward(const LaunchRequest &request, int timeoutMs = 2000) const;

signals:
    void requestReceived(const LaunchRequest &request);

private:
    void acceptConnections();

    QString m_name;
    QLocalServer *m_server = nullptr;
};
