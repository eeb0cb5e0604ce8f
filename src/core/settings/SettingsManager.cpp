#include "core/settings/SettingsManager.h"

#include "core/app/Log.h"
#include "core/settings/AppSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

// The file is a few kilobytes; anything this large is not a settings file (or is /dev/zero).
constexpr qint64 maximumFileSize = qint64(16) << 20;

SettingsManager *s_replacement = nullptr;

} // namespace

SettingsManager::SettingsManager(const QString &settingsFile, QObject *parent)
    : QObject(parent)
    , m_settingsFile(settingsFile)
    , m_settings(std::make_unique<AppSettings>())
{
    m_throttle.setSingleShot(true);
    m_throttle.setInterval(defaultSaveInterval);
    connect(&m_throttle, &QTimer::timeout, this, &SettingsManager::throttleIntervalEnded);
    observe();
    load();
    setDetailedLogging(m_settings->detailedLogging());
}

SettingsManager::~SettingsManager() = default;

SettingsManager &SettingsManager::shared()
{
    if (s_replacement)
        return *s_replacement;
    // Made once and never released: windows and observers hold on to its settings until exit.
    static SettingsManager *const instance = new SettingsManager(defaultSettingsFile());
    return *instance;
}

void SettingsManager::setShared(SettingsManager *manager)
{
    s_replacement = manager;
}

QString SettingsManager::defaultSettingsFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/com.tallowmere.Pixcove3.json");
}

// MARK: loading

void SettingsManager::load()
{
    if (!QFileInfo::exists(m_settingsFile)) {
        m_loadOutcome = LoadOutcome::noFile;
        return;
    }
    QFile file(m_settingsFile);
    if (!file.open(QIODevice::ReadOnly))
        return ignoreFile(file.errorString());
    const QByteArray bytes = file.read(maximumFileSize + 1);
    if (file.error() != QFileDevice::NoError)
        return ignoreFile(file.errorString());
    if (bytes.size() > maximumFileSize)
        return ignoreFile(QStringLiteral("the file is larger than %1 MB").arg(maximumFileSize >> 20));

    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return ignoreFile(QStringLiteral("%1 at offset %2").arg(parseError.errorString()).arg(parseError.offset));
    if (!document.isObject())
        return ignoreFile(QStringLiteral("the file does not hold a JSON object"));

    QString error;
    std::unique_ptr<AppSettings> decoded = AppSettings::fromJson(document.object(), &error);
    if (!decoded)
        return ignoreFile(error);
    m_settings = std::move(decoded);
    m_loadOutcome = LoadOutcome::loaded;
    observe();
}

void SettingsManager::ignoreFile(const QString &error)
{
    logError(QStringLiteral("Error loading settings file: ") + error);
    m_loadOutcome = LoadOutcome::ignored;
    m_loadError = error;
}

// The connections end with the settings object when a loaded one replaces the defaults.
void SettingsManager::observe()
{
    connect(m_settings.get(), &ObservableSettings::changed, this, &SettingsManager::settingsChanged);
    connect(m_settings.get(), &AppSettings::detailedLoggingChanged, this, [](bool on) { setDetailedLogging(on); });
}

// MARK: saving

void SettingsManager::settingsChanged()
{
    m_dirty = true;
    if (m_throttle.isActive()) {
        m_trailingSavePending = true;
        return;
    }
    m_throttle.start();
    // Written at the next turn of the event loop, so that the other fields changed together
    // with this one are in the same write.
    QMetaObject::invokeMethod(this, &SettingsManager::throttledSave, Qt::QueuedConnection);
}

void SettingsManager::throttledSave()
{
    if (m_dirty)
        saveNow();
}

void SettingsManager::throttleIntervalEnded()
{
    if (!m_trailingSavePending)
        return;
    m_trailingSavePending = false;
    if (!m_dirty)
        return;
    m_throttle.start();
    saveNow();
}

bool SettingsManager::saveNow()
{
    QString error;
    const std::optional<QJsonObject> json = m_settings->toJson(&error);
    if (!json) {
        reportSaveFailure(error);
        return false;
    }
    // The configuration folder may not exist yet on a new account; a failure here shows as the
    // save's own error below.
    QDir().mkpath(QFileInfo(m_settingsFile).absolutePath());
    QSaveFile file(m_settingsFile);
    // Unbuffered: a buffered write that fails when commit() flushes it (a full disk) is not
    // reported, and the cut-off file would replace the settings.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        reportSaveFailure(file.errorString());
        return false;
    }
    const QByteArray bytes = QJsonDocument(*json).toJson(QJsonDocument::Compact);
    // An unfinished QSaveFile removes its temporary file, and the old settings file stays.
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        reportSaveFailure(file.errorString());
        return false;
    }
    m_dirty = false;
    Q_EMIT saved();
    return true;
}

void SettingsManager::reportSaveFailure(const QString &error)
{
    logError(QStringLiteral("Error saving settings file: ") + error);
    Q_EMIT saveFailed(error);
    // Once per run: a disk that stays full would otherwise bring an alert every few seconds.
    if (m_showedSaveError || !m_alertPresenter)
        return;
    m_showedSaveError = true;
    m_alertPresenter(tr("There was an error saving the application settings."),
                     tr("To prevent a flood of error notifications, you won't be warned about this again until you "
                        "restart the app. It's probably a good idea to restart the app anyway. Error: \n\n")
                         + error);
}
