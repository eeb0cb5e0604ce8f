#include "core/settings/SettingsCoding.h"

#include "core/fs/ZQFileRecord.h"
#include "core/model/PXFile.h"
#include "core/settings/FileBookmark.h"
#include "core/settings/HotkeyBindings.h"
#include "core/settings/SlideshowSettings.h"
#include "core/settings/WindowSettings.h"

#include <QDataStream>
#include <QHash>
#include <QIODevice>
#include <QLocale>
#include <QMetaProperty>
#include <QMetaType>

#include <cmath>
#include <limits>

namespace {

// Archives are read with the stream version they were written with, whatever Qt reads them later.
constexpr QDataStream::Version archiveVersion = QDataStream::Qt_6_4;

// 1 January 2001 00:00:00 UTC in milliseconds since 1 January 1970.
constexpr qint64 referenceDateMSecs = 978307200000LL;

// About three million years either way: beyond it a date is a corrupt number, not a date.
constexpr double largestReferenceSeconds = 1e14;

QString jsonTypeName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool: return QStringLiteral("a Boolean");
    case QJsonValue::Double: return QStringLiteral("a number");
    case QJsonValue::String: return QStringLiteral("a string");
    case QJsonValue::Array: return QStringLiteral("an array");
    case QJsonValue::Object: return QStringLiteral("an object");
    case QJsonValue::Null:
    case QJsonValue::Undefined: break;
    }
    return QStringLiteral("null");
}

std::optional<QByteArray> fromBase64(const QString &text)
{
    const auto decoded = QByteArray::fromBase64Encoding(text.toUtf8(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return std::nullopt;
    return decoded.decoded;
}

// What a property list may hold; answers the name of the first type that it may not.
QString nonPropertyListType(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
    case QMetaType::QStringList:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QDateTime:
    case QMetaType::QByteArray: return {};
    case QMetaType::QVariantList:
        for (const QVariant &element : value.toList()) {
            if (QString type = nonPropertyListType(element); !type.isEmpty())
                return type;
        }
        return {};
    case QMetaType::QVariantMap:
        for (const QVariant &element : value.toMap()) {
            if (QString type = nonPropertyListType(element); !type.isEmpty())
                return type;
        }
        return {};
    default: break;
    }
    return value.isValid() ? QString::fromLatin1(value.metaType().name()) : QStringLiteral("an empty value");
}

} // namespace

// MARK: reading

SettingsReader::SettingsReader(const QJsonObject &object, const QString &keyPath)
    : m_object(object)
    , m_keyPath(keyPath)
{ }

QString SettingsReader::pathOf(const QString &key) const
{
    return m_keyPath.isEmpty() ? key : m_keyPath + QLatin1Char('.') + key;
}

void SettingsReader::fail(const QString &key, const QString &reason)
{
    if (m_failed)
        return;
    m_failed = true;
    m_error = pathOf(key) + QStringLiteral(": ") + reason;
}

void SettingsReader::failType(const QString &key, const char *expected, const QJsonValue &found)
{
    fail(key, QStringLiteral("expected %1, found %2").arg(QLatin1String(expected), jsonTypeName(found)));
}

QJsonValue SettingsReader::value(const QString &key) const
{
    if (m_failed)
        return QJsonValue(QJsonValue::Undefined);
    const QJsonValue value = m_object.value(key);
    return value.isNull() ? QJsonValue(QJsonValue::Undefined) : value;
}

std::optional<QJsonObject> SettingsReader::objectAt(const QJsonValue &json, const QString &path, QString *error)
{
    if (json.isObject())
        return json.toObject();
    *error = QStringLiteral("%1: expected an object, found %2").arg(path, jsonTypeName(json));
    return std::nullopt;
}

void SettingsReader::read(const QString &key, bool &value)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    if (!json.isBool())
        return failType(key, "a Boolean", json);
    value = json.toBool();
}

bool SettingsReader::readInteger(const QString &key, int &value)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return false;
    if (!json.isDouble()) {
        failType(key, "a whole number", json);
        return false;
    }
    const double number = json.toDouble();
    if (std::floor(number) != number || number < double(std::numeric_limits<int>::min())
        || number > double(std::numeric_limits<int>::max())) {
        fail(key, QStringLiteral("expected a whole number, found %1").arg(SettingsCoding::doubleText(number)));
        return false;
    }
    value = int(number);
    return true;
}

void SettingsReader::read(const QString &key, int &value)
{
    readInteger(key, value);
}

bool SettingsReader::readRawValue(const QString &key, int &raw, const QMetaEnum &valueSet)
{
    int read = raw;
    if (!readInteger(key, read))
        return false;
    if (!valueSet.valueToKey(read)) {
        fail(key, QStringLiteral("%1 is not a raw value of %2").arg(read).arg(QLatin1String(valueSet.enumName())));
        return false;
    }
    raw = read;
    return true;
}

void SettingsReader::read(const QString &key, double &value)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    if (!json.isDouble())
        return failType(key, "a number", json);
    value = json.toDouble();
}

void SettingsReader::read(const QString &key, QString &value)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    if (!json.isString())
        return failType(key, "a string", json);
    value = json.toString();
}

void SettingsReader::read(const QString &key, QColor &value)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    if (!json.isString())
        return failType(key, "a colour archive (a base64 string)", json);
    const std::optional<QColor> color = SettingsCoding::colorFromArchive(json.toString());
    if (!color)
        return fail(key, QStringLiteral("the colour archive cannot be read"));
    // An archive of "no colour" keeps the default.
    if (color->isValid())
        value = *color;
}

void SettingsReader::read(const QString &key, QDateTime &value)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    if (!json.isDouble())
        return failType(key, "a number of seconds", json);
    const QDateTime date = SettingsCoding::dateForReferenceSeconds(json.toDouble());
    if (!date.isValid())
        return fail(key, QStringLiteral("%1 seconds is not a date").arg(SettingsCoding::doubleText(json.toDouble())));
    value = date;
}

void SettingsReader::read(const QString &key, PXFilePtr &file)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    QString error;
    PXFilePtr resolved = SettingsCoding::fileForRecord(json, &error);
    if (!resolved)
        return fail(key, error);
    file = std::move(resolved);
}

void SettingsReader::read(const QString &key, QList<PXFilePtr> &files)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    if (!json.isArray())
        return failType(key, "an array of file records", json);
    const QJsonArray array = json.toArray();
    QList<PXFilePtr> resolved;
    for (qsizetype i = 0; i < array.size(); ++i) {
        QString error;
        PXFilePtr file = SettingsCoding::fileForRecord(array.at(i), &error);
        if (!file)
            return fail(QStringLiteral("%1[%2]").arg(key).arg(i), error);
        if (!resolved.contains(file))
            resolved.append(std::move(file));
    }
    files = std::move(resolved);
}

void SettingsReader::read(const QString &key, std::optional<QVariantMap> &dictionary)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    if (!json.isString())
        return failType(key, "a dictionary archive (a base64 string)", json);
    const std::optional<QByteArray> bytes = fromBase64(json.toString());
    if (!bytes)
        return fail(key, QStringLiteral("the dictionary archive is not base64 text"));
    QDataStream in(*bytes);
    in.setVersion(archiveVersion);
    QVariantMap map;
    in >> map;
    if (in.status() != QDataStream::Ok || !in.atEnd())
        return fail(key, QStringLiteral("the dictionary archive cannot be read"));
    if (const QString type = nonPropertyListType(map); !type.isEmpty())
        return fail(key, QStringLiteral("the dictionary holds a value of type %1").arg(type));
    dictionary = std::move(map);
}

void SettingsReader::read(const QString &key, AlertsAndWarnings &warnings)
{
    const QJsonValue json = this->value(key);
    if (json.isUndefined())
        return;
    if (!json.isArray())
        return failType(key, "an array of strings", json);
    const QJsonArray array = json.toArray();
    AlertsAndWarnings decoded;
    for (qsizetype i = 0; i < array.size(); ++i) {
        const QString elementKey = QStringLiteral("%1[%2]").arg(key).arg(i);
        if (!array.at(i).isString())
            return failType(elementKey, "a string", array.at(i));
        const std::optional<AlertsAndWarning> warning = alertsAndWarningForRawValue(array.at(i).toString());
        if (!warning)
            return fail(elementKey,
                        QStringLiteral("\"%1\" is not a raw value of AlertsAndWarnings").arg(array.at(i).toString()));
        decoded |= *warning;
    }
    warnings = decoded;
}

// MARK: writing

SettingsWriter::SettingsWriter(const QString &keyPath)
    : m_keyPath(keyPath)
{ }

QString SettingsWriter::pathOf(const QString &key) const
{
    return m_keyPath.isEmpty() ? key : m_keyPath + QLatin1Char('.') + key;
}

void SettingsWriter::fail(const QString &key, const QString &reason)
{
    if (m_failed)
        return;
    m_failed = true;
    m_error = pathOf(key) + QStringLiteral(": ") + reason;
}

void SettingsWriter::write(const QString &key, const QJsonValue &value)
{
    if (!m_failed)
        m_object.insert(key, value);
}

void SettingsWriter::writeRawValue(const QString &key, int raw, const QMetaEnum &valueSet)
{
    if (!valueSet.valueToKey(raw))
        return fail(key,
                    QStringLiteral("%1 is not a raw value of %2").arg(raw).arg(QLatin1String(valueSet.enumName())));
    write(key, QJsonValue(raw));
}

void SettingsWriter::write(const QString &key, const QColor &color)
{
    write(key, SettingsCoding::colorArchive(color));
}

void SettingsWriter::write(const QString &key, const QDateTime &date)
{
    if (!date.isValid())
        return fail(key, QStringLiteral("not a valid date"));
    write(key, SettingsCoding::referenceDateSeconds(date));
}

void SettingsWriter::write(const QString &key, const PXFilePtr &file)
{
    if (file)
        write(key, QJsonValue(SettingsCoding::fileRecord(file)));
}

void SettingsWriter::write(const QString &key, const QList<PXFilePtr> &files)
{
    QJsonArray array;
    for (const PXFilePtr &file : files) {
        if (file)
            array.append(SettingsCoding::fileRecord(file));
    }
    write(key, QJsonValue(array));
}

void SettingsWriter::write(const QString &key, const std::optional<QVariantMap> &dictionary)
{
    if (!dictionary)
        return;
    if (const QString type = nonPropertyListType(*dictionary); !type.isEmpty())
        return fail(key, QStringLiteral("the dictionary holds a value of type %1").arg(type));
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(archiveVersion);
    out << *dictionary;
    write(key, QString::fromLatin1(bytes.toBase64()));
}

void SettingsWriter::write(const QString &key, AlertsAndWarnings warnings)
{
    QJsonArray array;
    for (const AlertsAndWarning warning : allAlertsAndWarnings) {
        if (warnings.testFlag(warning))
            array.append(alertsAndWarningRawValue(warning));
    }
    write(key, QJsonValue(array));
}

// MARK: properties

namespace {

// The nested objects: window and slideshow settings, bookmarks.
void writeValue(SettingsWriter &writer, const QString &key, const QList<WindowSettingsPtr> &windows)
{
    writer.writeList(key, windows, [](const WindowSettingsPtr &window, const QString &path, QString *error) {
        return window->toJson(error, path);
    });
}

void readValue(SettingsReader &reader, const QString &key, QList<WindowSettingsPtr> &windows)
{
    reader.readList(key, windows,
                    [](const QJsonValue &value, const QString &path,
                       QString *error) -> std::optional<WindowSettingsPtr> {
                        if (WindowSettingsPtr window = WindowSettings::fromJson(value, error, path))
                            return window;
                        return std::nullopt;
                    });
}

void writeValue(SettingsWriter &writer, const QString &key, const SlideshowSettingsPtr &slideshow)
{
    writer.writeNested(key, slideshow, [](const SlideshowSettingsPtr &slideshow, const QString &path, QString *error) {
        return slideshow->toJson(error, path);
    });
}

void readValue(SettingsReader &reader, const QString &key, SlideshowSettingsPtr &slideshow)
{
    reader.readNested(key, slideshow,
                      [](const QJsonValue &value, const QString &path,
                         QString *error) -> std::optional<SlideshowSettingsPtr> {
                          if (SlideshowSettingsPtr slideshow = SlideshowSettings::fromJson(value, error, path))
                              return slideshow;
                          return std::nullopt;
                      });
}

void writeValue(SettingsWriter &writer, const QString &key, const QList<FileBookmark> &bookmarks)
{
    writer.writeList(key, bookmarks, [](const FileBookmark &bookmark, const QString &path, QString *error) {
        return bookmark.toJson(path, error);
    });
}

void readValue(SettingsReader &reader, const QString &key, QList<FileBookmark> &bookmarks)
{
    reader.readList(key, bookmarks, &FileBookmark::fromJson);
}

// The user's hotkeys: read entry by entry, so that one bad binding never fails the settings file.
void writeValue(SettingsWriter &writer, const QString &key, const HotkeyBindings &bindings)
{
    if (!bindings.isEmpty())
        writer.write(key, QJsonValue(bindings.toJson()));
}

void readValue(SettingsReader &reader, const QString &key, HotkeyBindings &bindings)
{
    const QJsonValue json = reader.value(key);
    if (!json.isUndefined())
        bindings = HotkeyBindings::fromJson(json, reader.pathOf(key));
}

// The other forms are the reader's and the writer's own.
template<typename T>
void writeValue(SettingsWriter &writer, const QString &key, const T &value)
{
    writer.write(key, value);
}

template<typename T>
void readValue(SettingsReader &reader, const QString &key, T &value)
{
    reader.read(key, value);
}

// How the values of one property type are written and read, through the QVariant of a property.
struct PropertyForm
{
    void (*write)(SettingsWriter &writer, const QString &key, const QVariant &value);
    void (*read)(SettingsReader &reader, const QString &key, QVariant &value);
};

template<typename T>
std::pair<int, PropertyForm> formOf()
{
    return {QMetaType::fromType<T>().id(),
            {[](SettingsWriter &writer, const QString &key, const QVariant &value) {
                 writeValue(writer, key, value.value<T>());
             },
             [](SettingsReader &reader, const QString &key, QVariant &value) {
                 T typed = value.value<T>();
                 readValue(reader, key, typed);
                 value = QVariant::fromValue(std::move(typed));
             }}};
}

// Every type of setting but the value sets, which are read and written through their meta-enums.
const QHash<int, PropertyForm> &propertyForms()
{
    static const QHash<int, PropertyForm> forms{
        formOf<bool>(),
        formOf<int>(),
        formOf<double>(),
        formOf<QColor>(),
        formOf<QDateTime>(),
        formOf<PXFilePtr>(),
        formOf<QList<PXFilePtr>>(),
        formOf<std::optional<QVariantMap>>(),
        formOf<ThumbnailInfoOptions>(),
        formOf<AlertsAndWarnings>(),
        formOf<QList<WindowSettingsPtr>>(),
        formOf<SlideshowSettingsPtr>(),
        formOf<QList<FileBookmark>>(),
        formOf<HotkeyBindings>(),
    };
    return forms;
}

// The value set of an enumeration declared with Q_ENUM or Q_ENUM_NS; invalid for other types.
QMetaEnum valueSetOf(QMetaType type)
{
    const QMetaObject *scope = type.metaObject();
    if (!(type.flags() & QMetaType::IsEnumeration) || !scope || type.sizeOf() != sizeof(int))
        return {};
    for (int i = scope->enumeratorOffset(); i < scope->enumeratorCount(); ++i) {
        const QMetaEnum valueSet = scope->enumerator(i);
        if (QByteArray(valueSet.scope()) + "::" + valueSet.enumName() == type.name())
            return valueSet;
    }
    return {};
}

QString noFormReason(QMetaType type)
{
    return QStringLiteral("the settings file has no form for values of type %1").arg(QLatin1String(type.name()));
}

void writeProperties(const ObservableSettings &settings, SettingsWriter &writer)
{
    const QHash<int, PropertyForm> &forms = propertyForms();
    for (const QMetaProperty &property : SettingsCoding::storedProperties(settings)) {
        const QString key = QString::fromLatin1(property.name());
        const QMetaType type = property.metaType();
        const QVariant value = property.read(&settings);
        if (const auto form = forms.constFind(type.id()); form != forms.cend())
            form->write(writer, key, value);
        else if (const QMetaEnum valueSet = valueSetOf(type); valueSet.isValid())
            writer.writeRawValue(key, *static_cast<const int *>(value.constData()), valueSet);
        else
            writer.fail(key, noFormReason(type));
    }
}

} // namespace

namespace SettingsCoding {

QList<QMetaProperty> storedProperties(const ObservableSettings &settings)
{
    const QMetaObject *type = settings.metaObject();
    QList<QMetaProperty> properties;
    for (int i = ObservableSettings::staticMetaObject.propertyCount(); i < type->propertyCount(); ++i) {
        if (type->property(i).isStored())
            properties.append(type->property(i));
    }
    return properties;
}

std::optional<QJsonObject> toJson(const ObservableSettings &settings, QString *error, const QString &keyPath)
{
    SettingsWriter writer(keyPath);
    writeProperties(settings, writer);
    if (writer.failed()) {
        *error = writer.error();
        return std::nullopt;
    }
    return writer.object();
}

void readProperties(ObservableSettings &settings, SettingsReader &reader, const ValueCheck &check)
{
    const QHash<int, PropertyForm> &forms = propertyForms();
    for (const QMetaProperty &property : SettingsCoding::storedProperties(settings)) {
        const QString key = QString::fromLatin1(property.name());
        const QMetaType type = property.metaType();
        QVariant value = property.read(&settings);
        if (const auto form = forms.constFind(type.id()); form != forms.cend()) {
            form->read(reader, key, value);
        } else if (const QMetaEnum valueSet = valueSetOf(type); valueSet.isValid()) {
            int raw = *static_cast<const int *>(value.constData());
            if (reader.readRawValue(key, raw, valueSet))
                value = QVariant(type, &raw);
        } else {
            reader.fail(key, noFormReason(type));
        }
        if (reader.failed())
            return;
        if (check) {
            if (const QString reason = check(key, value); !reason.isEmpty())
                return reader.fail(key, reason);
        }
        property.write(&settings, value);
    }
}

// MARK: forms

QJsonObject fileRecord(const PXFilePtr &file)
{
    return ZQFileRecord::forFile(file).toJson();
}

PXFilePtr fileForRecord(const QJsonValue &json, QString *error)
{
    PXFile::install();
    const std::optional<ZQFileRecord> record = ZQFileRecord::fromJson(json, error);
    if (!record)
        return nullptr;
    const ZQFilePtr file = record->resolve();
    if (!file) {
        *error = QStringLiteral("the file record names no file");
        return nullptr;
    }
    return PXFile::from(file);
}

double referenceDateSeconds(const QDateTime &date)
{
    return double(date.toMSecsSinceEpoch() - referenceDateMSecs) / 1000.0;
}

QDateTime dateForReferenceSeconds(double seconds)
{
    if (!std::isfinite(seconds) || std::fabs(seconds) > largestReferenceSeconds)
        return {};
    return QDateTime::fromMSecsSinceEpoch(std::llround(seconds * 1000.0) + referenceDateMSecs, Qt::UTC);
}

QString colorArchive(const QColor &color)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(archiveVersion);
    out << color;
    return QString::fromLatin1(bytes.toBase64());
}

std::optional<QColor> colorFromArchive(const QString &archive)
{
    const std::optional<QByteArray> bytes = fromBase64(archive);
    if (!bytes)
        return std::nullopt;
    QDataStream in(*bytes);
    in.setVersion(archiveVersion);
    QColor color;
    in >> color;
    if (in.status() != QDataStream::Ok || !in.atEnd())
        return std::nullopt;
    return color;
}

QString doubleText(double value)
{
    QString text = QString::number(value, 'g', QLocale::FloatingPointShortest);
    if (std::isfinite(value) && !text.contains(QLatin1Char('.')) && !text.contains(QLatin1Char('e')))
        text += QStringLiteral(".0");
    return text;
}

} // namespace SettingsCoding
