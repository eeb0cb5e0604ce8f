#include "core/shell/SecureEndpoint.h"

#include "core/app/Translate.h"

namespace {
constexpr Translator tr("SecureEndpoint");
} // namespace

QString SecureEndpoint::check(const QUrl &url, bool allowLoopbackHttp)
{
    if (!url.isValid() || url.host().isEmpty())
        return tr("“%1” is not a web address.").arg(url.toDisplayString());
    const QString scheme = url.scheme().toLower();
    if (scheme == QLatin1String("https"))
        return {};
    // Only the literal address: "localhost" is a name, which a hosts file may send anywhere.
    if (allowLoopbackHttp && scheme == QLatin1String("http") && url.host() == QLatin1String("127.0.0.1"))
        return {};
    return tr("“%1” is not an HTTPS address: Pixcove sends nothing to it.").arg(url.toDisplayString());
}
