#pragma once

#include <QObject>

#include <functional>

class QSessionManager;
class QSocketNotifier;
class SettingsManager;

// Makes sure the settings reach the disk however the program is told to end.
//
// - SIGTERM, SIGINT and SIGHUP (a logout or a shutdown, `kill`, Ctrl+C, a closed terminal) run
//   the program's own quit path, which closes the windows so that they put their state into
//   their settings, and then quits the event loop.
// - The application's last moment (aboutToQuit) writes the settings, after the windows have.
// - The session manager's commit and save requests write the settings at once: the session may
//   end without the program ever being asked to quit.
//
// A signal handler can do almost nothing safely: it writes the signal's number into a pipe, and
// the GUI thread reads it through a QSocketNotifier and runs the quit path there. Later signals
// of the same run are noted and ignored, so a SIGHUP that follows a logout's SIGTERM cannot kill
// the program before it has saved. One watcher at a time; it needs the application object.
class TerminationWatcher : public QObject
{
    Q_OBJECT
public:
    // `quit` runs once, on the GUI thread, for the first signal.
    TerminationWatcher(SettingsManager *settings, std::function<void()> quit, QObject *parent = nullptr);
    // Gives the signals back their default actions.
    ~TerminationWatcher() override;

Q_SIGNALS:
    // After the quit path has started for `signal`.
    void signalReceived(int signal);

private:
    void readSignals();
    void saveForSession(QSessionManager &);

    SettingsManager *m_settings;
    std::function<void()> m_quit;
    QSocketNotifier *m_notifier = nullptr;
    bool m_quitting = false;
};
