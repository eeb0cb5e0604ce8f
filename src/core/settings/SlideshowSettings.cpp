#include "core/settings/SlideshowSettings.h"

#include "core/settings/SettingsCoding.h"

#include <cmath>

SlideshowSettings::SlideshowSettings(QObject *parent)
    : ObservableSettings(parent)
{ }

void SlideshowSettings::setInterval(double interval)
{
    update(m_interval, std::isfinite(interval) ? std::max(interval, minimumInterval) : m_interval,
           &SlideshowSettings::intervalChanged);
}

void SlideshowSettings::setTransitionDuration(double transitionDuration)
{
    update(m_transitionDuration,
           std::isfinite(transitionDuration) ? std::max(transitionDuration, 0.0) : m_transitionDuration,
           &SlideshowSettings::transitionDurationChanged);
}

std::optional<QJsonObject> SlideshowSettings::toJson(QString *error, const QString &keyPath) const
{
    return SettingsCoding::toJson(*this, error, keyPath);
}

SlideshowSettingsPtr SlideshowSettings::fromJson(const QJsonValue &json, QString *error, const QString &keyPath)
{
    // A value that the setter would bring into range is refused in a file, like a wrong type.
    const auto check = [](const QString &key, const QVariant &value) -> QString {
        using SettingsCoding::doubleText;
        const double seconds = value.toDouble();
        if (key == u"interval" && !(seconds >= minimumInterval))
            return QStringLiteral("expected at least %1 seconds, found %2")
                .arg(doubleText(minimumInterval), doubleText(seconds));
        if (key == u"transitionDuration" && !(seconds >= 0.0))
            return QStringLiteral("expected 0 seconds or more, found %1").arg(doubleText(seconds));
        return {};
    };
    return SettingsCoding::fromJson<SlideshowSettings>(json, error, keyPath, check);
}
