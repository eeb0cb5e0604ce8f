#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

// Runs the command-line tool built beside the tests and collects what it printed.
struct CliRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

inline CliRun runCli(const QStringList &args, const QByteArray &input = {})
{
    QProcess process;
    process.start(QStringLiteral(PIXCOVE_CLI_PATH), args);
    if (!input.isEmpty())
        process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(120000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}
