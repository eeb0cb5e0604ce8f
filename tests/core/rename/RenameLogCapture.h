#pragma once

#include <QStringList>
#include <QtGlobal>

#include <algorithm>

#include <cstring>

// Collects the program's error lines while it lives.
class RenameLogCapture
{
public:
    RenameLogCapture() { m_previous = qInstallMessageHandler(&RenameLogCapture::handle), s_current = this; }
    ~RenameLogCapture()
    {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }

    bool contains(const QString &text) const
    {
        return std::any_of(lines.cbegin(), lines.cend(), [&](const QString &line) { return line.contains(text); });
    }

    QStringList lines;

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (context.category && std::strcmp(context.category, "pixcove") == 0)
            s_current->lines.append(message);
        else if (s_current->m_previous)
            s_current->m_previous(type, context, message);
    }

    static inline RenameLogCapture *s_current = nullptr;
    QtMessageHandler m_previous = nullptr;
};
