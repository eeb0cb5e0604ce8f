#pragma once

// Texts with a count are written once with "(s)" ("Renamed %n file(s).") and take their English
// singular and plural ("Renamed 1 file.", "Renamed 3 files.") from a translation built from
// translations/pixcove_en.ts, as Qt keeps plural forms. Installs it in the running application;
// a translation into another language installed later comes first.
namespace PluralForms {

void install();

} // namespace PluralForms
