#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

class AppSettings;

// Owns the one AppSettings of the process: reads it from the settings file when it is made and
// writes it back a moment after each change and once more at quit.
//
// Loading happens in the constructor, so no reader ever sees defaults that the file would have
// replaced. A missing file is silent; a file that cannot be read, is not JSON or holds one bad
// key is logged ("Error loading settings file: ...") and ignored whole: the defaults stand, and
// the next save replaces it.
//
// Saving is throttled to one write per interval (3 s): the first change of a quiet period is
// written at the next turn of the event loop, later ones at the end of the interval with the
// latest values. Writes are atomic (QSaveFile): a failed write leaves the old file as it was and
// no temporary file behind. A failure is logged each time and shown once per run through the
// alert presenter that the user interface installs. Main thread only.
class SettingsManager : public QObject
{
    Q_OBJECT
public:
    enum class LoadOutcome { noFile, loaded, ignored };
    using AlertPresenter = std::function<void(const QString &title, const QString &text)>;

    // Three seconds: bursts of changes (a slider drag) cost one write at once and one at the end.
    static constexpr std::chrono::milliseconds defaultSaveInterval{3000};

    // Loads `settingsFile` before it returns.
    explicit SettingsManager(const QString &settingsFile, QObject *parent = nullptr);
    ~SettingsManager() override;

    // The process's manager, made (and loaded) on first use from defaultSettingsFile(), never
    // released; or the one installed by setShared(). Needs the application object.
    static SettingsManager &shared();
    // Makes `manager` the shared one (not owned); null goes back to the process's own.
    static void setShared(SettingsManager *manager);
    // $XDG_CONFIG_HOME/com.tallowmere.Pixcove3.json
    static QString defaultSettingsFile();

    AppSettings *settings() const { return m_settings.get(); }
    const QString &settingsFile() const { return m_settingsFile; }
    LoadOutcome loadOutcome() const { return m_loadOutcome; }
    // Why the file was ignored; empty unless loadOutcome() is ignored.
    const QString &loadError() const { return m_loadError; }

    // Writes the settings file now; answers whether it was written. The application calls it
    // when it quits, so that a change less than an interval old is not lost.
    bool saveNow();

    void setAlertPresenter(AlertPresenter presenter) { m_alertPresenter = std::move(presenter); }
    bool showedSaveError() const { return m_showedSaveError; }

    // For tests: a shorter throttle interval.
    void setSaveInterval(std::chrono::milliseconds interval) { m_throttle.setInterval(interval); }

Q_SIGNALS:
    void saved();
    void saveFailed(const QString &error);

private:
    void load();
    void ignoreFile(const QString &error);
    void observe();
    void settingsChanged();
    void throttledSave();
    void throttleIntervalEnded();
    void reportSaveFailure(const QString &error);

    QString m_settingsFile;
    std::unique_ptr<AppSettings> m_settings;
    LoadOutcome m_loadOutcome = LoadOutcome::noFile;
    QString m_loadError;

    QTimer m_throttle;
    bool m_trailingSavePending = false;
    bool m_dirty = false;

    AlertPresenter m_alertPresenter;
    bool m_showedSaveError = false;
};
