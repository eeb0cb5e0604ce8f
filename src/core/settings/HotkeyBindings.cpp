#include "core/settings/HotkeyBindings.h"

#include "core/app/Log.h"

#include <QJsonArray>

QJsonObject HotkeyBindings::toJson() const
{
    QJsonObject object;
    for (auto entry = keys.cbegin(); entry != keys.cend(); ++entry) {
        QJsonArray texts;
        for (const QKeySequence &key : entry.value())
            texts.append(textOf(key));
        object.insert(entry.key(), texts);
    }
    return object;
}

HotkeyBindings HotkeyBindings::fromJson(const QJsonValue &json, const QString &keyPath, QStringList *problems)
{
    HotkeyBindings bindings;
    const auto ignore = [problems](const QString &line) {
        logError(line);
        if (problems)
            problems->append(line);
    };
    if (json.isUndefined() || json.isNull())
        return bindings;
    if (!json.isObject()) {
        ignore(QStringLiteral("Ignoring %1: it is not an object of hotkey bindings").arg(keyPath));
        return bindings;
    }
    const QJsonObject object = json.toObject();
    for (auto entry = object.constBegin(); entry != object.constEnd(); ++entry) {
        const QString path = keyPath + QLatin1Char('.') + entry.key();
        if (!entry.value().isArray()) {
            ignore(QStringLiteral("Ignoring %1: expected an array of keys").arg(path));
            continue;
        }
        const QJsonArray texts = entry.value().toArray();
        QList<QKeySequence> read;
        bool dropped = false;
        for (qsizetype i = 0; i < texts.size(); ++i) {
            const std::optional<QKeySequence> key =
                texts.at(i).isString() ? keyFromText(texts.at(i).toString()) : std::nullopt;
            if (!key) {
                const QString shown = texts.at(i).isString() ? QStringLiteral("\"%1\"").arg(texts.at(i).toString())
                                                             : QStringLiteral("a value that is not a text");
                ignore(QStringLiteral("Ignoring %1[%2]: %3 is not a key").arg(path).arg(i).arg(shown));
                dropped = true;
                continue;
            }
            if (!read.contains(*key))
                read.append(*key);
        }
        // An entry whose keys were all unreadable would leave the command without keys: the
        // defaults are the better guess of what the user wanted.
        if (dropped && read.isEmpty()) {
            ignore(QStringLiteral("Ignoring %1: none of its keys can be read").arg(path));
            continue;
        }
        bindings.keys.insert(entry.key(), read);
    }
    return bindings;
}

std::optional<QKeySequence> HotkeyBindings::keyFromText(const QString &text)
{
    if (text.trimmed().isEmpty())
        return std::nullopt;
    const QKeySequence key = QKeySequence::fromString(text, QKeySequence::PortableText);
    if (key.count() != 1)
        return std::nullopt;
    const Qt::Key code = key[0].key();
    if (code == Qt::Key_unknown || code == 0)
        return std::nullopt;
    return key;
}
