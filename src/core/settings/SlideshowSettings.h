#pragma once

#include "core/settings/ObservableSettings.h"
#include "core/settings/SettingsValueSets.h"

#include <QJsonObject>
#include <QJsonValue>

#include <memory>
#include <optional>

class SlideshowSettings;
using SlideshowSettingsPtr = std::shared_ptr<SlideshowSettings>;

// How slideshows run: the time each picture stays, whether the show loops or shuffles, the
// transition between pictures and when the file's information is shown. One object lives in the
// application settings; a running slideshow reads it and follows its change signals.
//
// JSON form: an object with the field names as keys, read if present and strictly typed like
// the rest of the settings file. An interval that is not a positive number of seconds, or a
// negative transition duration, fails decoding as a wrong type would.
class SlideshowSettings : public ObservableSettings
{
    Q_OBJECT
    // Seconds each picture stays on screen; the setter brings a shorter one to minimumInterval.
    PIXCOVE_SETTING_WITH_SETTER(double, interval, setInterval, 5.0);
    PIXCOVE_SETTING(bool, loop, setLoop, true);
    PIXCOVE_SETTING(bool, shuffle, setShuffle, false);
    PIXCOVE_SETTING(SlideshowTransitionStyle, transitionStyle, setTransitionStyle, SlideshowTransitionStyle::crossfade);
    // Seconds the transition takes; 0 cuts. The setter brings a negative one to 0.
    PIXCOVE_SETTING_WITH_SETTER(double, transitionDuration, setTransitionDuration, 1.0);
    PIXCOVE_SETTING(SlideshowInfoVisibility, infoVisibility, setInfoVisibility, SlideshowInfoVisibility::showAutomatic);

public:
    // A tenth of a second: the shortest interval a slideshow can still draw in time.
    static constexpr double minimumInterval = 0.1;

    explicit SlideshowSettings(QObject *parent = nullptr);

    std::optional<QJsonObject> toJson(QString *error, const QString &keyPath = {}) const;
    // Null with the reason when `json` is not a readable slideshow settings object.
    static SlideshowSettingsPtr fromJson(const QJsonValue &json, QString *error, const QString &keyPath = {});
};
