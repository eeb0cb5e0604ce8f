#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

// Shared pieces of the command-line tool: messages in the tool's voice and strict option values.
namespace Cli {

inline constexpr int exitOk = 0;
inline constexpr int exitFailure = 1;
inline constexpr int exitUsage = 2;

// "pixcove-cli: MESSAGE" on stderr.
void printError(const QString &message);
// Prints `message` and the command's usage on stderr; answers exitUsage.
int usageError(const QString &message, const char *usage);

// Ends the process with `status` once stdout and stderr are written out, without freeing what
// the command built: a listing's 100 000 records take longer to free one by one than to list.
[[noreturn]] void exitWithoutCleanup(int status);

// Reads the value after `args[index]` as a whole number in [min, max]; advances `index`.
std::optional<int> intOption(const QStringList &args, qsizetype &index, int min, int max, QString *error);
std::optional<QString> textOption(const QStringList &args, qsizetype &index, QString *error);

// Writes bytes to stdout through one large buffer.
class Output
{
public:
    ~Output();
    void write(const QByteArray &bytes);
    void line(const QByteArray &bytes);
    void flush();

private:
    QByteArray m_buffer;
};

} // namespace Cli
