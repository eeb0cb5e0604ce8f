#include "cli/SettingsCommand.h"

#include "cli/CliSupport.h"

#include "core/app/Log.h"
#include "core/settings/SettingsManager.h"

#include <QFileInfo>

#include <cstdio>
#include <cstring>

namespace {

constexpr char usage[] = "pixcove-cli settings [--path | --check FILE]";

constexpr char help[] = "usage: pixcove-cli settings [--path | --check FILE]\n"
                        "  --path        print the path of the settings file (also what no option does)\n"
                        "  --check FILE  load FILE as the program does at start-up and print the lines that loading\n"
                        "                logs; exit 1 when the program would ignore the file and start with its\n"
                        "                defaults, 0 when it would use it\n";

QtMessageHandler s_previousHandler = nullptr;

// The program's own log lines go to stdout, as they are; Qt's messages keep their way.
void printProgramLines(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (context.category && std::strcmp(context.category, "pixcove") == 0) {
        std::fprintf(stdout, "%s\n", qUtf8Printable(message));
        std::fflush(stdout);
        return;
    }
    if (s_previousHandler)
        s_previousHandler(type, context, message);
}

int checkFile(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (!QFileInfo::exists(absolute)) {
        Cli::printError(QStringLiteral("%1: no such file; the program would start with its defaults").arg(path));
        return Cli::exitFailure;
    }
    // Debug lines ("Updating settings from ...") are part of what loading says.
    setDetailedLogging(true);
    s_previousHandler = qInstallMessageHandler(printProgramLines);
    const SettingsManager manager(absolute);
    qInstallMessageHandler(s_previousHandler);
    return manager.loadOutcome() == SettingsManager::LoadOutcome::ignored ? Cli::exitFailure : Cli::exitOk;
}

} // namespace

int runSettingsCommand(const QStringList &args)
{
    if (args.isEmpty() || args == QStringList{QStringLiteral("--path")}) {
        std::fprintf(stdout, "%s\n", qUtf8Printable(SettingsManager::defaultSettingsFile()));
        return Cli::exitOk;
    }
    const QString &option = args.first();
    if (option == QLatin1String("--help") || option == QLatin1String("-h")) {
        std::fputs(help, stdout);
        return Cli::exitOk;
    }
    if (option == QLatin1String("--check")) {
        if (args.size() < 2)
            return Cli::usageError(QStringLiteral("--check needs a file"), usage);
        if (args.size() > 2)
            return Cli::usageError(QStringLiteral("unexpected argument %1").arg(args.at(2)), usage);
        return checkFile(args.at(1));
    }
    if (option == QLatin1String("--path"))
        return Cli::usageError(QStringLiteral("--path takes no argument"), usage);
    return Cli::usageError(QStringLiteral("unknown option %1").arg(option), usage);
}
