#pragma once

#include <QByteArray>
#include <QString>

// Reads the human-readable name of an ICC colour profile: its 'desc' tag, either the version 2
// text description (ASCII) or the version 4 multi-localised Unicode record (English preferred).
// Answers an empty string when the bytes are not a profile or carry no description.
QString iccProfileDescription(const QByteArray &profile);
