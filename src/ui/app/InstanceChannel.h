#pragma once

#include "core/app/LaunchRequest.h"

#include <QObject>
#include <QString>

class QLocalServer;

// Keeps Pixcove to one instance per user: the first start listens on a local socket of the
// user's; a later start hands its request to it and exits.
//
// listen() answers false when another instance already listens (the caller then forwards); a
// socket file left behind by a crashed instance is removed and listening is tried again.
class InstanceChannel : public QObject
{
    Q_OBJECT
public:
    explicit InstanceChannel(const QString &name = defaultName(), QObject *parent = nullptr);
    ~InstanceChannel() override;

    // A socket in the user's runtime folder: one instance per user.
    static QString defaultName();

    bool listen();
    // Sends `request` to the listening instance; answers whether it was delivered within `timeoutMs`.
    bool forward(const LaunchRequest &request, int timeoutMs = 2000) const;

Q_SIGNALS:
    void requestReceived(const LaunchRequest &request);

private:
    void acceptConnections();

    QString m_name;
    QLocalServer *m_server = nullptr;
};
