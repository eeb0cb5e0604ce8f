#include "core/settings/AppSettings.h"

#include "core/app/Log.h"
#include "core/settings/SettingsCoding.h"

AppSettings::AppSettings(QObject *parent)
    : ObservableSettings(parent)
{
    followSlideshowSettings();
    followWindowSettings();
}

void AppSettings::followSlideshowSettings()
{
    disconnect(m_slideshowWillChange);
    disconnect(m_slideshowChanged);
    m_slideshowWillChange =
        connect(m_slideshowSettings.get(), &ObservableSettings::willChange, this, &ObservableSettings::willChange);
    m_slideshowChanged =
        connect(m_slideshowSettings.get(), &ObservableSettings::changed, this, &ObservableSettings::changed);
}

void AppSettings::followWindowSettings()
{
    for (const QMetaObject::Connection &connection : std::as_const(m_windowConnections))
        disconnect(connection);
    m_windowConnections.clear();
    // An object listed twice is followed once.
    for (const WindowSettingsPtr &window : std::as_const(m_windowSettings)) {
        m_windowConnections.append(connect(window.get(), &ObservableSettings::willChange, this,
                                           &ObservableSettings::willChange, Qt::UniqueConnection));
        m_windowConnections.append(connect(window.get(), &ObservableSettings::changed, this,
                                           &ObservableSettings::changed, Qt::UniqueConnection));
    }
}

std::optional<QJsonObject> AppSettings::toJson(QString *error) const
{
    return SettingsCoding::toJson(*this, error);
}

std::unique_ptr<AppSettings> AppSettings::fromJson(const QJsonObject &json, QString *error)
{
    auto settings = std::make_unique<AppSettings>();
    SettingsReader reader(json);

    // The version first: a file of any version is read as far as its keys are understood and is
    // written back in the current one. There is no conversion of single keys between versions.
    double version = currentSettingsVersion;
    reader.read(QStringLiteral("settingsVersion"), version);
    if (!reader.failed()) {
        using SettingsCoding::doubleText;
        if (version < currentSettingsVersion)
            logDebug(QStringLiteral("Updating settings from %1 to %2")
                         .arg(doubleText(version), doubleText(currentSettingsVersion)));
        else if (version > currentSettingsVersion)
            logError(QStringLiteral("Settings version %1 is newer than %2, some data may be lost")
                         .arg(doubleText(version), doubleText(currentSettingsVersion)));
    }
    SettingsCoding::readProperties(*settings, reader);
    if (reader.failed()) {
        *error = reader.error();
        return nullptr;
    }
    settings->m_settingsVersion = currentSettingsVersion;
    return settings;
}

// MARK: fields

void AppSettings::setWindowSettings(const QList<WindowSettingsPtr> &windowSettings)
{
    QList<WindowSettingsPtr> windows = windowSettings;
    windows.removeAll(nullptr);
    update(m_windowSettings, windows, &AppSettings::windowSettingsChanged);
    followWindowSettings();
}

void AppSettings::setSlideshowSettings(const SlideshowSettingsPtr &slideshowSettings)
{
    if (!slideshowSettings || slideshowSettings == m_slideshowSettings)
        return;
    Q_EMIT willChange();
    m_slideshowSettings = slideshowSettings;
    followSlideshowSettings();
    Q_EMIT slideshowSettingsChanged(m_slideshowSettings);
    Q_EMIT changed();
}
