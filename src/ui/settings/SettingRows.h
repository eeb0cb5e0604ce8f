#pragma once

#include "core/settings/SettingsValueSets.h"

#include <QList>
#include <QMetaEnum>
#include <QString>
#include <QStringList>

// The plain rows of the settings window: which setting each row edits, under which label, in
// which section and group. The editor of a row is chosen by the type of the setting's property
// (SettingEditors), so a row is one line here; the labels are translated in the context
// "SettingRows" when shown.
struct SettingRow
{
    // Whose property it is: the application settings or the slideshow settings they hold.
    enum class Owner { app, slideshow };

    SettingsSection section;
    const char *group; // heading inside the section
    Owner owner;
    const char *property; // the Q_PROPERTY
    const char *label;
    // Enabled only while the property `enabledBy` of the same owner holds `enabledValue` (a
    // Boolean as 0 or 1, a choice as its raw value).
    const char *enabledBy = nullptr;
    int enabledValue = 1;
    // Numbers: range, step and unit.
    double minimum = 0;
    double maximum = 0;
    double step = 1;
    const char *suffix = nullptr;

    SettingRow when(const char *property, int value = 1) const
    {
        SettingRow row = *this;
        row.enabledBy = property;
        row.enabledValue = value;
        return row;
    }
    SettingRow range(double minimum, double maximum, double step, const char *suffix = nullptr) const
    {
        SettingRow row = *this;
        row.minimum = minimum;
        row.maximum = maximum;
        row.step = step;
        row.suffix = suffix;
        return row;
    }

    QString translatedLabel() const;
    QString translatedGroup() const;
    QString translatedSuffix() const;
};

namespace SettingRows {

// Every row, in the order shown.
const QList<SettingRow> &all();
// The stored settings that have no plain row: edited by a section of their own (favourites,
// hotkeys, the alerts' reset button), or not the user's to edit (window settings, version, first
// launch).
const QStringList &editedElsewhere();

// The title of a choice in a value set, as the settings window offers it.
QString valueTitle(const QMetaEnum &valueSet, int raw);
// The section's title ("General", "Browser", "Image Viewing", "Favorites", "Hotkeys").
QString sectionTitle(SettingsSection section);

} // namespace SettingRows
