#include "core/rename/PXRenamePresets.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>
#include <QSet>
#include <QSettings>

#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <memory>

namespace {
constexpr Translator tr("PXFileRenamer");
}

// Resources of a static library are registered by hand, outside any namespace.
static void initialisePresetsResource()
{
    Q_INIT_RESOURCE(rename_presets);
}

namespace {

namespace Key = PXRenameSettingsKey;

const QString savedPresetsKey = QStringLiteral("savedFileRenames");
const QString recentSettingsKey = QStringLiteral("recentFileRenames");
const QString dateFormatKey = QStringLiteral("fileRenamerDateFormat");
const QString sequenceStartKey = QStringLiteral("fileRenamerSequenceStart");
const QString rangeKey = QStringLiteral("fileRenamerRange");
const QString filterPredicateKey = QStringLiteral("fileRenamerFilterPredicate");
const QString presetsResource = QStringLiteral(":/rename/presets.json");

QList<QJsonObject> objectsOf(const QJsonArray &array)
{
    QList<QJsonObject> objects;
    for (const QJsonValue &value : array) {
        if (value.isObject())
            objects.append(value.toObject());
    }
    return objects;
}

QDateTime dateSavedOf(const QJsonObject &settings)
{
    return QDateTime::fromString(settings.value(Key::dateSaved).toString(), Qt::ISODateWithMs);
}

QString now()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
}

} // namespace

PXRenamePresets::PXRenamePresets(QSettings *settings)
    : m_settings(settings)
{
    if (!m_settings) {
        m_ownSettings = std::make_unique<QSettings>(QStringLiteral("tallowmere"), QStringLiteral("Pixcove3"));
        m_settings = m_ownSettings.get();
    }
}

PXRenamePresets::~PXRenamePresets() = default;

bool PXRenamePresets::settingsAreEqual(const QJsonObject &settings, const QJsonObject &other)
{
    static const QSet<QString> ignored = {Key::presetName, Key::groupIdentifier, Key::dateSaved, Key::altered};
    const QStringList ownKeys = settings.keys();
    QSet<QString> keys(ownKeys.cbegin(), ownKeys.cend());
    for (const QString &key : other.keys())
        keys.insert(key);
    for (const QString &key : std::as_const(keys)) {
        if (!ignored.contains(key) && settings.value(key) != other.value(key))
            return false;
    }
    return true;
}

QList<QJsonObject> PXRenamePresets::defaultPresets()
{
    initialisePresetsResource();
    QFile file(presetsResource);
    if (!file.open(QIODevice::ReadOnly)) {
        logError(QStringLiteral("Could not open the default rename presets %1").arg(presetsResource));
        return {};
    }
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.isArray()) {
        logError(QStringLiteral("Could not read the default rename presets: %1").arg(error.errorString()));
        return {};
    }
    return objectsOf(document.array());
}

QList<QJsonObject> PXRenamePresets::readList(const QString &key) const
{
    const QByteArray text = m_settings->value(key).toString().toUtf8();
    if (text.isEmpty())
        return {};
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (!document.isArray()) {
        logError(QStringLiteral("Could not read the setting %1: %2").arg(key, error.errorString()));
        return {};
    }
    return objectsOf(document.array());
}

void PXRenamePresets::writeList(const QString &key, const QList<QJsonObject> &list)
{
    QJsonArray array;
    for (const QJsonObject &object : list)
        array.append(object);
    m_settings->setValue(key, QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact)));
}

QList<QJsonObject> PXRenamePresets::availablePresets() const
{
    QList<QJsonObject> presets = readList(savedPresetsKey);
    return presets.isEmpty() ? defaultPresets() : presets;
}

std::optional<QJsonObject> PXRenamePresets::presetNamed(const QString &name) const
{
    for (const QJsonObject &preset : availablePresets()) {
        if (preset.value(Key::presetName).toString() == name)
            return preset;
    }
    return std::nullopt;
}

void PXRenamePresets::nameRecentSettings()
{
    for (qsizetype i = 0; i < m_recentSettings.size(); ++i) {
        m_recentSettings[i].insert(Key::groupIdentifier, recentSettingsGroup);
        m_recentSettings[i].insert(Key::presetName, tr("Recent Setting %1").arg(i + 1));
    }
}

void PXRenamePresets::buildPresetList(const QJsonObject &currentSettings)
{
    m_savedPresets = availablePresets();
    for (QJsonObject &preset : m_savedPresets) {
        preset.insert(Key::groupIdentifier, savedPresetsGroup);
        preset.remove(Key::altered);
    }
    m_recentSettings = readList(recentSettingsKey);
    if (m_recentSettings.isEmpty()) {
        QJsonObject current = currentSettings;
        current.remove(Key::dateSaved);
        m_recentSettings.append(current);
    }
    nameRecentSettings();
}

qsizetype PXRenamePresets::newPreset(const QJsonObject &currentSettings)
{
    QJsonObject preset = currentSettings;
    preset.insert(Key::presetName, tr("New Preset"));
    preset.insert(Key::groupIdentifier, savedPresetsGroup);
    preset.insert(Key::dateSaved, now());
    preset.remove(Key::altered);
    m_savedPresets.append(preset);
    return m_savedPresets.size() - 1;
}

void PXRenamePresets::removePresets(QList<qsizetype> indexes)
{
    std::sort(indexes.begin(), indexes.end(), std::greater<>());
    indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
    for (qsizetype index : std::as_const(indexes)) {
        if (index >= 0 && index < m_savedPresets.size())
            m_savedPresets.removeAt(index);
    }
}

void PXRenamePresets::savePresets(const QJsonObject &currentSettings)
{
    QList<QJsonObject> saved = m_savedPresets;
    for (QJsonObject &preset : saved) {
        preset.remove(Key::altered);
        preset.remove(Key::groupIdentifier);
    }
    writeList(savedPresetsKey, saved);

    QJsonObject current = currentSettings;
    current.insert(Key::dateSaved, now());
    QList<QJsonObject> recent{current};
    // An entry without a date is the stand-in made when there were none: not a setting the user ran.
    for (const QJsonObject &settings : std::as_const(m_recentSettings)) {
        if (settings.contains(Key::dateSaved))
            recent.append(settings);
    }
    std::stable_sort(recent.begin(), recent.end(),
                     [](const QJsonObject &a, const QJsonObject &b) { return dateSavedOf(a) > dateSavedOf(b); });
    QList<QJsonObject> kept;
    for (QJsonObject settings : std::as_const(recent)) {
        const bool seen = std::any_of(kept.cbegin(), kept.cend(),
                                      [&](const QJsonObject &other) { return settingsAreEqual(settings, other); });
        if (seen)
            continue;
        settings.remove(Key::presetName);
        settings.remove(Key::groupIdentifier);
        kept.append(settings);
        if (kept.size() == maximumRecentSettings)
            break;
    }
    writeList(recentSettingsKey, kept);
    m_recentSettings = kept;
    nameRecentSettings();
}

QString PXRenamePresets::lastDateFormat() const
{
    const QString pattern = m_settings->value(dateFormatKey).toString();
    return pattern.isEmpty() ? localeDatePattern() : pattern;
}

QString PXRenamePresets::lastSequenceStart() const
{
    return m_settings->value(sequenceStartKey).toString();
}

QString PXRenamePresets::lastRange() const
{
    const QString range = m_settings->value(rangeKey).toString();
    return range.isEmpty() ? QStringLiteral("1-3") : range;
}

QString PXRenamePresets::filterPredicate() const
{
    return m_settings->value(filterPredicateKey).toString();
}

void PXRenamePresets::setFilterPredicate(const QString &predicate)
{
    m_settings->setValue(filterPredicateKey, predicate);
}

void PXRenamePresets::rememberFieldValues(const PXRenameRules &rules)
{
    for (const PXRenameRow &row : rules) {
        for (const PXRenameRule &rule : row.rules) {
            switch (rule.operationConstant) {
            case PXRenameConstant::dateFormatValue:
                m_settings->setValue(dateFormatKey,
                                     rule.stringValue.isEmpty() ? localeDatePattern() : rule.stringValue);
                break;
            case PXRenameConstant::initialSequenceValue:
                m_settings->setValue(sequenceStartKey, rule.stringValue);
                break;
            case PXRenameConstant::rangeToReplace: m_settings->setValue(rangeKey, rule.stringValue); break;
            default: break;
            }
        }
        rememberFieldValues(row.subRules);
    }
}

QString PXRenamePresets::localeDatePattern()
{
    const QLocale system = QLocale::system();
    const icu::Locale locale =
        system.language() == QLocale::C ? icu::Locale("en_US") : icu::Locale(system.name().toLatin1().constData());
    std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateTimeInstance(icu::DateFormat::kShort, icu::DateFormat::kShort, locale));
    QString pattern = QStringLiteral("yyyy-MM-dd HH.mm");
    if (auto *simple = dynamic_cast<icu::SimpleDateFormat *>(format.get())) {
        icu::UnicodeString text;
        simple->toPattern(text);
        pattern = QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
    }
    pattern.replace(QLatin1Char('/'), QLatin1Char('|'));
    pattern.replace(QLatin1Char(':'), QLatin1Char('.'));
    return QStringLiteral("[%1]").arg(pattern);
}
