#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

// One release in a release feed (an "appcast": RSS 2.0 whose items carry the release's version in
// `sparkle:version`, its display version in `sparkle:shortVersionString`, either as elements of
// the item or as attributes of its `enclosure`, and the download in the enclosure's `url`).
struct AppcastItem
{
    QString title;
    QString version; // compared with ours
    QString shortVersion; // shown; the version when the feed gives none
    QUrl downloadLink; // the enclosure's url
    QUrl link; // the release's page (`link`), else the download
    QUrl releaseNotesLink;
    QString description; // release notes, HTML
    QDateTime date;

    QString displayVersion() const { return shortVersion.isEmpty() ? version : shortVersion; }
};

namespace Appcast {

// The items of a feed, in feed order, without those that carry no version. Null, with the reason,
// for a document that is not an RSS feed (not XML, another root element, no channel).
std::optional<QList<AppcastItem>> parse(const QByteArray &document, QString *error);

// Orders two versions as release versions are ordered: by their runs of digits as numbers and
// their other runs as text ("1.10" after "1.9", "2.0b1" before "2.0", "2.0" equal to "2.0.0").
// Negative, zero or positive, as strcmp.
int compareVersions(const QString &a, const QString &b);

// The newest item of `items` that is newer than `currentVersion`; null when none is.
std::optional<AppcastItem> newestUpdate(const QList<AppcastItem> &items, const QString &currentVersion);

} // namespace Appcast
