#pragma once

#include <QString>

// The program's two logging functions. Errors always print; debug lines print only when
// detailed logging is on (or when QT_LOGGING_RULES enables "pixcove.debug").
void logError(const QString &message);
void logDebug(const QString &message);

// Mirrors the `detailedLogging` setting; the settings layer keeps it in step.
void setDetailedLogging(bool on);
bool detailedLogging();
