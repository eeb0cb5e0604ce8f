#pragma once

#include "core/rename/PXRenameRules.h"

#include <QJsonObject>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

class QSettings;

// Keys of a settings dictionary: one rule set with its options, the unit of presets and of the
// recent settings. Stored in the user's settings: never rename.
namespace PXRenameSettingsKey {
inline const QString rules = QStringLiteral("rules");
inline const QString dateSaved = QStringLiteral("dateSaved");
inline const QString depth = QStringLiteral("depth");
inline const QString sortType = QStringLiteral("sortType");
inline const QString sortAscending = QStringLiteral("sortAscending");
inline const QString listType = QStringLiteral("listType");
inline const QString sequenceType = QStringLiteral("sequenceType");
inline const QString predicate = QStringLiteral("predicate");
inline const QString presetName = QStringLiteral("presetName");
inline const QString groupIdentifier = QStringLiteral("groupIdentifier");
inline const QString altered = QStringLiteral("altered");
inline const QString dragIndex = QStringLiteral("dragIndex");
} // namespace PXRenameSettingsKey

// The renamer's saved presets and recent settings, and the field values it remembers, in the
// user's settings (organisation "tallowmere", application "Pixcove3"; lists as JSON text).
//
// Without saved presets the defaults come from the "presets.json" resource. Recent settings are
// kept newest first, at most 10, never two equal ones; they are written when the renamer closes.
// Two settings dictionaries are equal when every key but the name, the group, the date and the
// "altered" mark holds equal values in both.
class PXRenamePresets
{
public:
    static constexpr qsizetype maximumRecentSettings = 10;
    static inline const QString savedPresetsGroup = QStringLiteral("savedPresets");
    static inline const QString recentSettingsGroup = QStringLiteral("recentSettings");

    // `settings` is not owned; without one the application's own settings are used.
    explicit PXRenamePresets(QSettings *settings = nullptr);
    ~PXRenamePresets();
    PXRenamePresets(const PXRenamePresets &) = delete;
    PXRenamePresets &operator=(const PXRenamePresets &) = delete;

    QSettings &settings() const { return *m_settings; }

    static bool settingsAreEqual(const QJsonObject &settings, const QJsonObject &other);
    // The presets of the "presets.json" resource.
    static QList<QJsonObject> defaultPresets();
    // The saved presets as stored, or the defaults when none are (for menus and the command line).
    QList<QJsonObject> availablePresets() const;
    std::optional<QJsonObject> presetNamed(const QString &name) const;

    // Loads both groups. Without recent settings, one is made from `currentSettings` (not written
    // back unless it is still the current settings on closing).
    void buildPresetList(const QJsonObject &currentSettings);
    QList<QJsonObject> &savedPresets() { return m_savedPresets; }
    const QList<QJsonObject> &recentSettings() const { return m_recentSettings; }
    // Appends "New Preset" with the current settings; answers its index.
    qsizetype newPreset(const QJsonObject &currentSettings);
    void removePresets(QList<qsizetype> indexes);
    // Writes the saved presets, and the recent settings with `currentSettings` added as the newest.
    void savePresets(const QJsonObject &currentSettings);

    // What fresh fields are filled with: the last values the user entered.
    QString lastDateFormat() const; // the locale's pattern when none was entered
    QString lastSequenceStart() const;
    QString lastRange() const; // "1-3" when none was entered
    QString filterPredicate() const;
    void setFilterPredicate(const QString &predicate);
    // Remembers the date pattern, sequence start and range entered in `rules`.
    void rememberFieldValues(const PXRenameRules &rules);
    // The locale's short date and time pattern, without "/" and ":", in square brackets.
    static QString localeDatePattern();

private:
    QList<QJsonObject> readList(const QString &key) const;
    void writeList(const QString &key, const QList<QJsonObject> &list);
    void nameRecentSettings();

    std::unique_ptr<QSettings> m_ownSettings;
    QSettings *m_settings = nullptr;
    QList<QJsonObject> m_savedPresets;
    QList<QJsonObject> m_recentSettings;
};
