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

void SlideshowSettings::setLoop(bool loop)
{
    update(m_loop, loop, &SlideshowSettings::loopChanged);
}

void SlideshowSettings::setShuffle(bool shuffle)
{
    update(m_shuffle, shuffle, &SlideshowSettings::shuffleChanged);
}

void SlideshowSettings::setTransitionStyle(SlideshowTransitionStyle transitionStyle)
{
    update(m_transitionStyle, transitionStyle, &SlideshowSettings::transitionStyleChanged);
}

void SlideshowSettings::setTransitionDuration(double transitionDuration)
{
    update(m_transitionDuration,
           std::isfinite(transitionDuration) ? std::max(transitionDuration, 0.0) : m_transitionDuration,
           &SlideshowSettings::transitionDurationChanged);
}

void SlideshowSettings::setInfoVisibility(SlideshowInfoVisibility infoVisibility)
{
    update(m_infoVisibility, infoVisibility, &SlideshowSettings::infoVisibilityChanged);
}

std::optional<QJsonObject> SlideshowSettings::toJson(QString *error, const QString &keyPath) const
{
    SettingsWriter writer(keyPath);
    writer.write(QStringLiteral("interval"), m_interval);
    writer.write(QStringLiteral("loop"), m_loop);
    writer.write(QStringLiteral("shuffle"), m_shuffle);
    writer.write(QStringLiteral("transitionStyle"), m_transitionStyle);
    writer.write(QStringLiteral("transitionDuration"), m_transitionDuration);
    writer.write(QStringLiteral("infoVisibility"), m_infoVisibility);
    if (writer.failed()) {
        *error = writer.error();
        return std::nullopt;
    }
    return writer.object();
}

SlideshowSettingsPtr SlideshowSettings::fromJson(const QJsonValue &json, QString *error, const QString &keyPath)
{
    const std::optional<QJsonObject> object = SettingsReader::objectAt(json, keyPath, error);
    if (!object)
        return nullptr;
    auto settings = std::make_shared<SlideshowSettings>();
    SettingsReader reader(*object, keyPath);
    reader.read(QStringLiteral("interval"), settings->m_interval);
    if (!reader.failed() && !(settings->m_interval >= minimumInterval))
        reader.fail(QStringLiteral("interval"),
                    QStringLiteral("expected at least %1 seconds, found %2")
                        .arg(SettingsCoding::doubleText(minimumInterval),
                             SettingsCoding::doubleText(settings->m_interval)));
    reader.read(QStringLiteral("loop"), settings->m_loop);
    reader.read(QStringLiteral("shuffle"), settings->m_shuffle);
    reader.read(QStringLiteral("transitionStyle"), settings->m_transitionStyle);
    reader.read(QStringLiteral("transitionDuration"), settings->m_transitionDuration);
    if (!reader.failed() && !(settings->m_transitionDuration >= 0.0))
        reader.fail(QStringLiteral("transitionDuration"),
                    QStringLiteral("expected 0 seconds or more, found %1")
                        .arg(SettingsCoding::doubleText(settings->m_transitionDuration)));
    reader.read(QStringLiteral("infoVisibility"), settings->m_infoVisibility);
    if (reader.failed()) {
        *error = reader.error();
        return nullptr;
    }
    return settings;
}
