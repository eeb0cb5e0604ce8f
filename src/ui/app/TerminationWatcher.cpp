#include "ui/app/TerminationWatcher.h"

#include "core/app/Log.h"
#include "core/settings/SettingsManager.h"

#include <QGuiApplication>
#include <QSessionManager>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int handledSignals[] = {SIGHUP, SIGINT, SIGTERM};

// The pipe between the handler and the GUI thread: [0] is read by the notifier, [1] written by
// the handler. -1 while no watcher lives.
int signalPipe[2] = {-1, -1};

// Only async-signal-safe calls here. The write end does not block: with the pipe full, signals
// are already waiting to be read and one more byte adds nothing.
extern "C" void noteSignal(int signal)
{
    const int savedErrno = errno;
    const char byte = char(signal);
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
    errno = savedErrno;
}

} // namespace

TerminationWatcher::TerminationWatcher(SettingsManager *settings, std::function<void()> quit, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_quit(std::move(quit))
{
    if (signalPipe[0] != -1)
        qFatal("Only one TerminationWatcher may watch the signals.");
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        // Without the pipe the signals keep their default actions; the other ways out still save.
        logError(QStringLiteral("Cannot watch for termination signals: %1")
                     .arg(QString::fromLocal8Bit(std::strerror(errno))));
        signalPipe[0] = signalPipe[1] = -1;
    } else {
        m_notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
        connect(m_notifier, &QSocketNotifier::activated, this, &TerminationWatcher::readSignals);
        struct sigaction action = {};
        action.sa_handler = noteSignal;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        for (int signal : handledSignals)
            sigaction(signal, &action, nullptr);
    }

    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, [this] { m_settings->saveNow(); });
    if (auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        connect(application, &QGuiApplication::commitDataRequest, this, &TerminationWatcher::saveForSession);
        connect(application, &QGuiApplication::saveStateRequest, this, &TerminationWatcher::saveForSession);
    }
}

TerminationWatcher::~TerminationWatcher()
{
    if (signalPipe[0] == -1)
        return;
    for (int signal : handledSignals)
        std::signal(signal, SIG_DFL);
    delete m_notifier;
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    signalPipe[0] = signalPipe[1] = -1;
}

void TerminationWatcher::readSignals()
{
    char received[64];
    ssize_t count = 0;
    int first = 0;
    while ((count = ::read(signalPipe[0], received, sizeof received)) > 0) {
        if (!first)
            first = received[0];
    }
    if (!first || m_quitting)
        return;
    m_quitting = true;
    logDebug(QStringLiteral("Quitting on signal %1 (%2)").arg(first).arg(QString::fromLocal8Bit(strsignal(first))));
    Q_EMIT signalReceived(first);
    m_quit();
}

// Nothing is asked of the user and nothing is cancelled: the settings are simply written.
void TerminationWatcher::saveForSession(QSessionManager &)
{
    m_settings->saveNow();
}
