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
    Q_PROPERTY(double interval READ interval WRITE setInterval NOTIFY intervalChanged)
    Q_PROPERTY(bool loop READ loop WRITE setLoop NOTIFY loopChanged)
    Q_PROPERTY(bool shuffle READ shuffle WRITE setShuffle NOTIFY shuffleChanged)
    Q_PROPERTY(SlideshowTransitionStyle transitionStyle READ transitionStyle WRITE setTransitionStyle NOTIFY
                   transitionStyleChanged)
    Q_PROPERTY(
        double transitionDuration READ transitionDuration WRITE setTransitionDuration NOTIFY transitionDurationChanged)
    Q_PROPERTY(
        SlideshowInfoVisibility infoVisibility READ infoVisibility WRITE setInfoVisibility NOTIFY infoVisibilityChanged)

public:
    // A tenth of a second: the shortest interval a slideshow can still draw in time.
    static constexpr double minimumInterval = 0.1;

    explicit SlideshowSettings(QObject *parent = nullptr);

    // Seconds each picture stays on screen.
    double interval() const { return m_interval; }
    bool loop() const { return m_loop; }
    bool shuffle() const { return m_shuffle; }
    SlideshowTransitionStyle transitionStyle() const { return m_transitionStyle; }
    // Seconds the transition takes; 0 cuts.
    double transitionDuration() const { return m_transitionDuration; }
    SlideshowInfoVisibility infoVisibility() const { return m_infoVisibility; }

    // Values out of range are brought to the nearest valid one.
    void setInterval(double interval);
    void setLoop(bool loop);
    void setShuffle(bool shuffle);
    void setTransitionStyle(SlideshowTransitionStyle transitionStyle);
    void setTransitionDuration(double transitionDuration);
    void setInfoVisibility(SlideshowInfoVisibility infoVisibility);

    std::optional<QJsonObject> toJson(QString *error, const QString &keyPath = {}) const;
    // Null with the reason when `json` is not a readable slideshow settings object.
    static SlideshowSettingsPtr fromJson(const QJsonValue &json, QString *error, const QString &keyPath = {});

Q_SIGNALS:
    void intervalChanged(double interval);
    void loopChanged(bool loop);
    void shuffleChanged(bool shuffle);
    void transitionStyleChanged(SlideshowTransitionStyle transitionStyle);
    void transitionDurationChanged(double transitionDuration);
    void infoVisibilityChanged(SlideshowInfoVisibility infoVisibility);

private:
    double m_interval = 5.0;
    bool m_loop = true;
    bool m_shuffle = false;
    SlideshowTransitionStyle m_transitionStyle = SlideshowTransitionStyle::crossfade;
    double m_transitionDuration = 1.0;
    SlideshowInfoVisibility m_infoVisibility = SlideshowInfoVisibility::showAutomatic;
};
