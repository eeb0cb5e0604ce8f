#include "core/shell/Appcast.h"

#include "core/app/Translate.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace {

constexpr Translator tr("Appcast");

// The namespace of the version elements and attributes; a feed that binds the prefix `sparkle`
// to another address is read all the same.
const QLatin1String sparkleNamespace("http://www.andymatuschak.org/xml-namespaces/sparkle");

bool isSparkle(QStringView namespaceUri, QStringView qualifiedName)
{
    return namespaceUri == sparkleNamespace || qualifiedName.startsWith(QLatin1String("sparkle:"));
}

QString sparkleAttribute(const QXmlStreamAttributes &attributes, QLatin1String name)
{
    for (const QXmlStreamAttribute &attribute : attributes) {
        if (attribute.name() == name && isSparkle(attribute.namespaceUri(), attribute.qualifiedName()))
            return attribute.value().toString().trimmed();
    }
    return {};
}

AppcastItem readItem(QXmlStreamReader &xml)
{
    AppcastItem item;
    while (xml.readNextStartElement()) {
        const QStringView name = xml.name();
        const bool sparkle = isSparkle(xml.namespaceUri(), xml.qualifiedName());
        if (sparkle && name == QLatin1String("version")) {
            item.version = xml.readElementText().trimmed();
        } else if (sparkle && name == QLatin1String("shortVersionString")) {
            item.shortVersion = xml.readElementText().trimmed();
        } else if (sparkle && name == QLatin1String("releaseNotesLink")) {
            item.releaseNotesLink = QUrl(xml.readElementText().trimmed());
        } else if (!sparkle && name == QLatin1String("title")) {
            item.title = xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
        } else if (!sparkle && name == QLatin1String("link")) {
            item.link = QUrl(xml.readElementText().trimmed());
        } else if (!sparkle && name == QLatin1String("description")) {
            item.description = xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
        } else if (!sparkle && name == QLatin1String("pubDate")) {
            item.date = QDateTime::fromString(xml.readElementText().trimmed(), Qt::RFC2822Date);
        } else if (!sparkle && name == QLatin1String("enclosure")) {
            const QXmlStreamAttributes attributes = xml.attributes();
            item.downloadLink = QUrl(attributes.value(QLatin1String("url")).toString().trimmed());
            // The elements of the item win over the enclosure's attributes, whichever comes first.
            if (const QString version = sparkleAttribute(attributes, QLatin1String("version")); item.version.isEmpty())
                item.version = version;
            if (const QString shortVersion = sparkleAttribute(attributes, QLatin1String("shortVersionString"));
                item.shortVersion.isEmpty())
                item.shortVersion = shortVersion;
            xml.skipCurrentElement();
        } else {
            xml.skipCurrentElement();
        }
    }
    if (item.link.isEmpty())
        item.link = item.downloadLink;
    return item;
}

struct VersionPart
{
    enum class Kind { number, text, separator };
    Kind kind;
    QStringView text;
};

QList<VersionPart> versionParts(const QString &version)
{
    QList<VersionPart> parts;
    const auto kindOf = [](QChar c) {
        if (c.isDigit())
            return VersionPart::Kind::number;
        return c.isLetter() ? VersionPart::Kind::text : VersionPart::Kind::separator;
    };
    qsizetype start = 0;
    for (qsizetype i = 1; i <= version.size(); ++i) {
        const VersionPart::Kind kind = kindOf(version.at(start));
        // Each separator stands alone: "1..2" has two of them, like "1.0.2" has.
        if (i == version.size() || kindOf(version.at(i)) != kind || kind == VersionPart::Kind::separator) {
            parts.append({kind, QStringView(version).mid(start, i - start)});
            start = i;
        }
    }
    return parts;
}

// Numbers of any length: without their leading zeros, the longer is the larger.
int compareNumbers(QStringView a, QStringView b)
{
    while (a.size() > 1 && a.front() == QLatin1Char('0'))
        a = a.mid(1);
    while (b.size() > 1 && b.front() == QLatin1Char('0'))
        b = b.mid(1);
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

// A part of one kind against a part of another: a number is newer than a separator, a separator
// newer than a letter ("1.0.1" after "1.0b1").
int kindRank(VersionPart::Kind kind)
{
    switch (kind) {
    case VersionPart::Kind::number: return 2;
    case VersionPart::Kind::separator: return 1;
    case VersionPart::Kind::text: return 0;
    }
    return 0;
}

// What the parts left over on one side make of that side: older when they start a pre-release
// ("b1"), the same when they are only zeros ("2.0.0"), newer otherwise.
int compareRemainder(const QList<VersionPart> &parts, qsizetype from)
{
    for (qsizetype i = from; i < parts.size(); ++i) {
        switch (parts.at(i).kind) {
        case VersionPart::Kind::text: return -1;
        case VersionPart::Kind::separator: break;
        case VersionPart::Kind::number:
            if (compareNumbers(parts.at(i).text, u"0") != 0)
                return 1;
            break;
        }
    }
    return 0;
}

} // namespace

namespace Appcast {

std::optional<QList<AppcastItem>> parse(const QByteArray &document, QString *error)
{
    QXmlStreamReader xml(document);
    QList<AppcastItem> items;
    bool sawChannel = false;
    if (!xml.readNextStartElement()) {
        if (error)
            *error = xml.hasError() ? tr("not XML (%1)").arg(xml.errorString()) : tr("the document is empty");
        return std::nullopt;
    }
    if (xml.name() != QLatin1String("rss")) {
        if (error)
            *error = tr("not an RSS feed (its root element is “%1”)").arg(xml.name());
        return std::nullopt;
    }
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("channel")) {
            xml.skipCurrentElement();
            continue;
        }
        sawChannel = true;
        while (xml.readNextStartElement()) {
            if (xml.name() == QLatin1String("item")) {
                AppcastItem item = readItem(xml);
                if (!item.version.isEmpty())
                    items.append(std::move(item));
            } else {
                xml.skipCurrentElement();
            }
        }
    }
    if (xml.hasError()) {
        if (error)
            *error = tr("not XML (line %1: %2)").arg(xml.lineNumber()).arg(xml.errorString());
        return std::nullopt;
    }
    if (!sawChannel) {
        if (error)
            *error = tr("the feed has no channel");
        return std::nullopt;
    }
    return items;
}

int compareVersions(const QString &a, const QString &b)
{
    const QList<VersionPart> left = versionParts(a);
    const QList<VersionPart> right = versionParts(b);
    const qsizetype common = std::min(left.size(), right.size());
    for (qsizetype i = 0; i < common; ++i) {
        const VersionPart &l = left.at(i);
        const VersionPart &r = right.at(i);
        if (l.kind != r.kind)
            return kindRank(l.kind) < kindRank(r.kind) ? -1 : 1;
        int order = 0;
        if (l.kind == VersionPart::Kind::number)
            order = compareNumbers(l.text, r.text);
        else if (l.kind == VersionPart::Kind::text)
            order = l.text.compare(r.text, Qt::CaseInsensitive);
        if (order != 0)
            return order < 0 ? -1 : 1;
    }
    if (left.size() > common)
        return compareRemainder(left, common);
    if (right.size() > common)
        return -compareRemainder(right, common);
    return 0;
}

std::optional<AppcastItem> newestUpdate(const QList<AppcastItem> &items, const QString &currentVersion)
{
    std::optional<AppcastItem> newest;
    for (const AppcastItem &item : items) {
        if (compareVersions(item.version, currentVersion) <= 0)
            continue;
        if (!newest || compareVersions(item.version, newest->version) > 0)
            newest = item;
    }
    return newest;
}

} // namespace Appcast
