#pragma once

#include "core/app/Log.h"

#include <QStringList>

// Collects the program's log lines (debug lines included) while it lives.
class LogCapture
{
public:
    LogCapture()
        : m_wasDetailed(detailedLogging())
    {
        s_current = this;
        setDetailedLogging(true);
        m_previous = qInstallMessageHandler(&LogCapture::handle);
    }
    ~LogCapture()
    {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
        setDetailedLogging(m_wasDetailed);
    }
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    QStringList lines;

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (qstrcmp(context.category, "pixcove") == 0)
            s_current->lines.append(message);
        else if (s_current->m_previous)
            s_current->m_previous(type, context, message);
    }

    static inline LogCapture *s_current = nullptr;
    QtMessageHandler m_previous = nullptr;
    bool m_wasDetailed;
};
