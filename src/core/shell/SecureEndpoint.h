#pragma once

#include <QString>
#include <QUrl>

// The one rule for the addresses the program sends a credential to or takes releases from: HTTPS
// only, so that neither the bug reporter's password nor a feed can be read or changed on the way.
// Plain HTTP is allowed only to 127.0.0.1, and only when `allowLoopbackHttp` is set (tests talk
// to a server of their own there).
struct SecureEndpoint
{
    // Empty when `url` is acceptable, else the message saying why not.
    static QString check(const QUrl &url, bool allowLoopbackHttp = false);
};
