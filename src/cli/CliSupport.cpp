#include "cli/CliSupport.h"

#include <cstdio>
#include <cstdlib>

namespace Cli {

namespace {
// Large enough that printing 100 000 paths takes a handful of writes.
constexpr qsizetype outputBufferSize = 1 << 20;
} // namespace

void printError(const QString &message)
{
    std::fprintf(stderr, "pixcove-cli: %s\n", qUtf8Printable(message));
}

int usageError(const QString &message, const char *usage)
{
    printError(message);
    std::fprintf(stderr, "usage: %s\n", usage);
    return exitUsage;
}

void exitWithoutCleanup(int status)
{
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(status);
}

std::optional<int> intOption(const QStringList &args, qsizetype &index, int min, int max, QString *error)
{
    const QString name = args[index];
    if (index + 1 >= args.size()) {
        *error = QStringLiteral("%1 needs a value").arg(name);
        return std::nullopt;
    }
    bool ok = false;
    const int value = args[++index].toInt(&ok);
    if (!ok || value < min || value > max) {
        *error = QStringLiteral("%1 takes a whole number from %2 to %3, not \"%4\"")
                     .arg(name)
                     .arg(min)
                     .arg(max)
                     .arg(args[index]);
        return std::nullopt;
    }
    return value;
}

std::optional<QString> textOption(const QStringList &args, qsizetype &index, QString *error)
{
    if (index + 1 >= args.size()) {
        *error = QStringLiteral("%1 needs a value").arg(args[index]);
        return std::nullopt;
    }
    return args[++index];
}

Output::~Output()
{
    flush();
}

void Output::write(const QByteArray &bytes)
{
    m_buffer += bytes;
    if (m_buffer.size() >= outputBufferSize)
        flush();
}

void Output::line(const QByteArray &bytes)
{
    m_buffer += bytes;
    m_buffer += '\n';
    if (m_buffer.size() >= outputBufferSize)
        flush();
}

void Output::flush()
{
    if (!m_buffer.isEmpty())
        std::fwrite(m_buffer.constData(), 1, size_t(m_buffer.size()), stdout);
    m_buffer.clear();
    std::fflush(stdout);
}

} // namespace Cli
