#include "core/app/Log.h"

#include <QLoggingCategory>

#include <atomic>

namespace {
// Info and above are on by default; debug lines need detailed logging or a logging rule.
Q_LOGGING_CATEGORY(lcPixcove, "pixcove", QtInfoMsg)
std::atomic<bool> s_detailedLogging{false};
} // namespace

void logError(const QString &message)
{
    qCCritical(lcPixcove, "ERROR: %s", qUtf8Printable(message));
}

void logDebug(const QString &message)
{
    if (s_detailedLogging.load(std::memory_order_relaxed))
        qCInfo(lcPixcove, "DEBUG: %s", qUtf8Printable(message));
    else
        qCDebug(lcPixcove, "DEBUG: %s", qUtf8Printable(message));
}

void setDetailedLogging(bool on)
{
    s_detailedLogging.store(on, std::memory_order_relaxed);
}

bool detailedLogging()
{
    return s_detailedLogging.load(std::memory_order_relaxed);
}
