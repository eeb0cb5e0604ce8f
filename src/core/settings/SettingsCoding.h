#pragma once

#include "core/model/PXFileForward.h"
#include "core/settings/ObservableSettings.h"
#include "core/settings/SettingsValueSets.h"

#include <QColor>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMetaEnum>
#include <QMetaProperty>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

// The JSON forms shared by every settings object, and the coding of the settings objects
// themselves: every stored property of an ObservableSettings, under its name, in the form of its
// type.
//
// Reading is strict and "read if present": an absent key, or an explicit null, leaves the value
// as it was (the default); a present key of the wrong type, an unknown raw value or an unreadable
// nested object fails the whole object, with a message naming the key's path
// ("windowSettings[0].sidebarInfo: 9 is not a raw value of SidebarInfoOptions"). The first
// failure wins; later reads do nothing.
//
// Forms: enumerations as their integer raw values, bit sets as their integer, a colour as one
// base64 string of its QDataStream form, a date as seconds since 1 January 2001 00:00 UTC, a file
// reference as a ZQFileRecord object (a file that is gone comes back as a placeholder), a set of
// them as an array of records, a dictionary as base64 of the QDataStream form of a QVariantMap.

class SettingsReader
{
public:
    // `keyPath` prefixes the keys in messages: "windowSettings[0]" for a nested object.
    explicit SettingsReader(const QJsonObject &object, const QString &keyPath = {});

    bool failed() const { return m_failed; }
    const QString &error() const { return m_error; }
    // The path of `key` for messages and nested readers.
    QString pathOf(const QString &key) const;
    void fail(const QString &key, const QString &reason);

    // The key's value; undefined when it is absent or null (or the reader failed already).
    QJsonValue value(const QString &key) const;

    void read(const QString &key, bool &value);
    void read(const QString &key, int &value);
    void read(const QString &key, double &value);
    void read(const QString &key, QString &value);
    void read(const QString &key, QColor &value);
    void read(const QString &key, QDateTime &value);
    // A file reference; a present record that names no file at all fails.
    void read(const QString &key, PXFilePtr &file);
    // A set of file references: duplicates dropped, placeholders kept.
    void read(const QString &key, QList<PXFilePtr> &files);
    void read(const QString &key, std::optional<QVariantMap> &dictionary);
    void read(const QString &key, AlertsAndWarnings &warnings);

    // A choice of a value set (a meta-enum) as its raw value, which must be one of the set's.
    // Answers whether `raw` was read.
    bool readRawValue(const QString &key, int &raw, const QMetaEnum &valueSet);

    template<typename E>
    void read(const QString &key, QFlags<E> &flags)
    {
        int raw = flags.toInt();
        if (readInteger(key, raw))
            flags = QFlags<E>::fromInt(raw);
    }

    // A list whose elements `decode(const QJsonValue &, const QString &path, QString *error)`
    // turns into std::optional<T>.
    template<typename T, typename Decode>
    void readList(const QString &key, QList<T> &list, Decode decode)
    {
        const QJsonValue json = value(key);
        if (json.isUndefined())
            return;
        if (!json.isArray())
            return failType(key, "an array", json);
        const QJsonArray array = json.toArray();
        QList<T> decoded;
        decoded.reserve(array.size());
        for (qsizetype i = 0; i < array.size(); ++i) {
            QString error;
            std::optional<T> element = decode(array.at(i), QStringLiteral("%1[%2]").arg(pathOf(key)).arg(i), &error);
            if (!element) {
                m_failed = true;
                m_error = error;
                return;
            }
            decoded.append(std::move(*element));
        }
        list = std::move(decoded);
    }

    // A nested object, decoded like a list element.
    template<typename T, typename Decode>
    void readNested(const QString &key, T &target, Decode decode)
    {
        const QJsonValue json = value(key);
        if (json.isUndefined())
            return;
        QString error;
        std::optional<T> decoded = decode(json, pathOf(key), &error);
        if (!decoded) {
            m_failed = true;
            m_error = error;
            return;
        }
        target = std::move(*decoded);
    }

    // For a nested decoder: `json` must be an object.
    static std::optional<QJsonObject> objectAt(const QJsonValue &json, const QString &path, QString *error);

private:
    bool readInteger(const QString &key, int &value);
    void failType(const QString &key, const char *expected, const QJsonValue &found);

    QJsonObject m_object;
    QString m_keyPath;
    bool m_failed = false;
    QString m_error;
};

class SettingsWriter
{
public:
    explicit SettingsWriter(const QString &keyPath = {});

    bool failed() const { return m_failed; }
    const QString &error() const { return m_error; }
    QString pathOf(const QString &key) const;
    void fail(const QString &key, const QString &reason);
    const QJsonObject &object() const { return m_object; }

    void write(const QString &key, const QJsonValue &value);
    void write(const QString &key, bool value) { write(key, QJsonValue(value)); }
    void write(const QString &key, int value) { write(key, QJsonValue(value)); }
    void write(const QString &key, double value) { write(key, QJsonValue(value)); }
    void write(const QString &key, const QString &value) { write(key, QJsonValue(value)); }
    void write(const QString &key, const QColor &color);
    void write(const QString &key, const QDateTime &date);
    // A null file is left out.
    void write(const QString &key, const PXFilePtr &file);
    void write(const QString &key, const QList<PXFilePtr> &files);
    // Only property-list values (texts, numbers, Booleans, dates, bytes, lists and maps of them)
    // are written; anything else fails, so that no file is written that could not be read back.
    void write(const QString &key, const std::optional<QVariantMap> &dictionary);
    void write(const QString &key, AlertsAndWarnings warnings);

    // A raw value outside the set fails: the reader would reject the whole file.
    void writeRawValue(const QString &key, int raw, const QMetaEnum &valueSet);

    template<typename E>
    void write(const QString &key, QFlags<E> flags)
    {
        write(key, QJsonValue(flags.toInt()));
    }

    // Nested objects: `encode(const T &, const QString &path, QString *error)` answers
    // std::optional<QJsonObject>.
    template<typename T, typename Encode>
    void writeList(const QString &key, const QList<T> &list, Encode encode)
    {
        QJsonArray array;
        for (qsizetype i = 0; i < list.size() && !m_failed; ++i) {
            QString error;
            const std::optional<QJsonObject> json =
                encode(list.at(i), QStringLiteral("%1[%2]").arg(pathOf(key)).arg(i), &error);
            if (!json) {
                m_failed = true;
                m_error = error;
                return;
            }
            array.append(*json);
        }
        write(key, QJsonValue(array));
    }

    template<typename T, typename Encode>
    void writeNested(const QString &key, const T &value, Encode encode)
    {
        QString error;
        const std::optional<QJsonObject> json = encode(value, pathOf(key), &error);
        if (!json) {
            m_failed = true;
            m_error = error;
            return;
        }
        write(key, QJsonValue(*json));
    }

private:
    QJsonObject m_object;
    QString m_keyPath;
    bool m_failed = false;
    QString m_error;
};

namespace SettingsCoding {

// The properties of `settings` that the settings file holds, in declaration order.
QList<QMetaProperty> storedProperties(const ObservableSettings &settings);

// The settings objects as JSON objects: the properties that the subclasses of ObservableSettings
// declare, in their order, except the unsaved ones; each under its name, in the form of its type.
//
// Writing fails for a value that could not be read back, and for a type without a form.
std::optional<QJsonObject> toJson(const ObservableSettings &settings, QString *error, const QString &keyPath = {});

// Reading stores each key present through the property's setter. `check`, when given, may refuse
// a value that was read: it answers the reason (reported like a wrong type), or nothing.
using ValueCheck = std::function<QString(const QString &key, const QVariant &value)>;
void readProperties(ObservableSettings &settings, SettingsReader &reader, const ValueCheck &check = {});

// A new settings object of type S read from `json`; null, with the reason, when `json` is not an
// object or one of its keys cannot be read.
template<typename S>
std::shared_ptr<S> fromJson(const QJsonValue &json, QString *error, const QString &keyPath = {},
                            const ValueCheck &check = {})
{
    const std::optional<QJsonObject> object = SettingsReader::objectAt(json, keyPath, error);
    if (!object)
        return nullptr;
    auto settings = std::make_shared<S>();
    SettingsReader reader(*object, keyPath);
    readProperties(*settings, reader, check);
    if (reader.failed()) {
        *error = reader.error();
        return nullptr;
    }
    return settings;
}

// A file reference: the record of a file, and back. Resolving answers a placeholder for a file
// that is gone, and null (with a reason) for a malformed record.
QJsonObject fileRecord(const PXFilePtr &file);
PXFilePtr fileForRecord(const QJsonValue &json, QString *error);

// The date form: seconds since 1 January 2001 00:00:00 UTC.
double referenceDateSeconds(const QDateTime &date);
QDateTime dateForReferenceSeconds(double seconds);

// The colour's base64 archive; reading answers an invalid colour for an archive of "no colour"
// and nothing at all for bytes that are not an archive.
QString colorArchive(const QColor &color);
std::optional<QColor> colorFromArchive(const QString &archive);

// A number printed as a double is printed by the settings' log lines: 2.0, 3.0, 2.5.
QString doubleText(double value);

} // namespace SettingsCoding
