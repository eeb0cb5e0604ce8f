#include "ui/app/ApplicationMain.h"

#include "core/app/LaunchRequest.h"
#include "core/app/Log.h"
#include "core/app/PluralForms.h"
#include "core/settings/SettingsManager.h"
#include "ui/app/AppDelegate.h"
#include "ui/app/InstanceChannel.h"
#include "ui/app/ServicesProvider.h"
#include "ui/app/TerminationWatcher.h"
#include "ui/viewer/DisplayProfile.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QIcon>
#include <QMessageBox>

#include <cstdio>

namespace {

void printError(const QString &text)
{
    std::fprintf(stderr, "pixcove: %s\n", qPrintable(text));
}

} // namespace

int runPixcove(int argc, char **argv)
{
    QElapsedTimer startup;
    startup.start();
    Q_INIT_RESOURCE(pixcove_ui);
    QApplication::setOrganizationName(QStringLiteral("tallowmere"));
    QApplication::setApplicationName(QStringLiteral("Pixcove3"));
    QApplication::setApplicationDisplayName(QStringLiteral("Pixcove"));
    QApplication::setApplicationVersion(QStringLiteral(PIXCOVE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("pixcove"));
    QApplication app(argc, argv);
    PluralForms::install();
    // Without a desktop session (a bare X server, a minimal window manager) Qt finds no icon theme.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    DisplayProfile::install();
    logDebug(QStringLiteral("Start-up: application object after %1 ms").arg(startup.elapsed()));
    QApplication::setWindowIcon(
        QIcon::fromTheme(QStringLiteral("pixcove"), QIcon(QStringLiteral(":/pixcove/pixcove.svg"))));

    QString error;
    const std::optional<LaunchRequest> request =
        LaunchRequest::parse(QApplication::arguments().mid(1), QDir::currentPath(), &error);
    if (!request) {
        printError(error);
        std::fprintf(stderr, "usage: pixcove [FILE_OR_FOLDER...] | --rename FILES... | --slideshow FILES...\n");
        return 2;
    }
    // A service without usable files fails here, before any other instance is bothered.
    if (request->kind == LaunchRequest::Kind::rename || request->kind == LaunchRequest::Kind::slideshow) {
        const ServicesProvider check([](const QList<PXFilePtr> &) {}, [](const QList<PXFilePtr> &) {});
        const QString serviceError = request->kind == LaunchRequest::Kind::rename
            ? check.performRenameService(request->paths)
            : check.performSlideshowService(request->paths);
        if (!serviceError.isEmpty()) {
            printError(serviceError);
            QMessageBox::warning(nullptr, QApplication::applicationDisplayName(), serviceError);
            return 1;
        }
    }

    InstanceChannel channel;
    if (!channel.listen()) {
        if (channel.forward(*request))
            return 0;
        printError(QStringLiteral("another Pixcove is running but does not answer; starting anyway"));
    }

    logDebug(QStringLiteral("Start-up: instance channel after %1 ms").arg(startup.elapsed()));
    SettingsManager &settings = SettingsManager::shared();
    settings.setAlertPresenter(
        [](const QString &title, const QString &text) { QMessageBox::critical(nullptr, title, text); });
    // The delegate decides when the last window has gone (hidden windows do not count as gone),
    // and quits through the activities, which may still need the program.
    QApplication::setQuitOnLastWindowClosed(false);

    AppDelegate delegate;
    // Changes are saved a moment after they are made; these are the last saves, however the
    // program ends: a quit, a signal, the session's end.
    const TerminationWatcher termination(&settings, [&delegate] { delegate.terminateForSystem(); });
    QObject::connect(&channel, &InstanceChannel::requestReceived, &delegate, &AppDelegate::handleRequest);
    delegate.applicationWillFinishLaunching();
    logDebug(QStringLiteral("Start-up: settings and managers after %1 ms").arg(startup.elapsed()));
    delegate.applicationDidFinishLaunching(*request);
    logDebug(QStringLiteral("Start-up: launched after %1 ms").arg(startup.elapsed()));
    return QApplication::exec();
}
