#include "cli/CliSupport.h"
#include "cli/InfoCommand.h"
#include "cli/LsCommand.h"
#include "cli/RenameCommand.h"
#include "cli/SettingsCommand.h"
#include "cli/ThumbsCommand.h"
#include "core/imaging/ImageSource.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr char usage[] = "pixcove-cli COMMAND [OPTIONS]\n"
                         "commands:\n"
                         "  info    the inspector's rows for files, as text or JSON (pixcove-cli info --help)\n"
                         "  ls      list folders as a window shows them, sorted and filtered\n"
                         "  rename  new names for files by rename rules or a preset, as OLD -> NEW paths with\n"
                         "          collisions marked; renames with --apply (pixcove-cli rename --help)\n"
                         "  settings  print the settings file's path (--path, the default) or check a\n"
                         "            settings file as start-up reads it (--check FILE)\n"
                         "  thumbs  make the thumbnails a grid shows and fill the thumbnail cache, printing\n"
                         "          SOURCE PATH per file and the throughput (pixcove-cli thumbs --help)\n";

} // namespace

// The tool proper, loaded and run by the `pixcove-cli` launcher (main.cpp).
extern "C" __attribute__((visibility("default"))) int pixcove_cli_main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("tallowmere"));
    QCoreApplication::setApplicationName(QStringLiteral("Pixcove3"));
    ImageSource::install();

    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty() || args.first() == QLatin1String("--help") || args.first() == QLatin1String("-h")) {
        std::fputs(usage, args.isEmpty() ? stderr : stdout);
        return args.isEmpty() ? Cli::exitUsage : Cli::exitOk;
    }
    const QString command = args.takeFirst();
    if (command == QLatin1String("info"))
        return runInfoCommand(args);
    if (command == QLatin1String("ls"))
        return runLsCommand(args);
    if (command == QLatin1String("rename"))
        return runRenameCommand(args);
    if (command == QLatin1String("settings"))
        return runSettingsCommand(args);
    if (command == QLatin1String("thumbs"))
        return runThumbsCommand(args);
    return Cli::usageError(QStringLiteral("unknown command %1").arg(command), "pixcove-cli COMMAND [OPTIONS]");
}
