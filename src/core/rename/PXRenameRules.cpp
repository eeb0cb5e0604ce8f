#include "core/rename/PXRenameRules.h"

#include <QJsonObject>

#include <cmath>

namespace {

const QString rowTypeKey = QStringLiteral("rowType");
const QString rulesKey = QStringLiteral("rules");
const QString subRulesKey = QStringLiteral("subRules");
const QString constantKey = QStringLiteral("operationConstant");
const QString stringValueKey = QStringLiteral("stringValue");

bool isWholeNumber(const QJsonValue &value)
{
    if (!value.isDouble())
        return false;
    const double number = value.toDouble();
    return std::floor(number) == number && std::abs(number) < 2147483648.0;
}

std::optional<PXRenameRule> ruleFromJson(const QJsonValue &json, const QString &where, QString *error)
{
    if (!json.isObject()) {
        *error = QStringLiteral("%1 is not an object").arg(where);
        return std::nullopt;
    }
    const QJsonObject object = json.toObject();
    PXRenameRule rule;
    const QJsonValue constant = object.value(constantKey);
    if (!isWholeNumber(constant)) {
        *error = QStringLiteral("%1 needs a whole number as \"operationConstant\"").arg(where);
        return std::nullopt;
    }
    rule.operationConstant = constant.toInt();
    const QJsonValue text = object.value(stringValueKey);
    if (text.isString()) {
        rule.stringValue = text.toString();
    } else if (isWholeNumber(text)) {
        rule.stringValue = QString::number(text.toInteger());
    } else if (!text.isUndefined() && !text.isNull()) {
        *error = QStringLiteral("%1 has a \"stringValue\" that is not a text").arg(where);
        return std::nullopt;
    }
    return rule;
}

std::optional<PXRenameRules> rowsFromJson(const QJsonValue &json, const QString &where, QString *error)
{
    if (!json.isArray()) {
        *error = QStringLiteral("%1 is not an array").arg(where);
        return std::nullopt;
    }
    PXRenameRules rows;
    const QJsonArray array = json.toArray();
    for (qsizetype i = 0; i < array.size(); ++i) {
        const QString rowWhere = QStringLiteral("%1[%2]").arg(where).arg(i);
        if (!array[i].isObject()) {
            *error = QStringLiteral("%1 is not an object").arg(rowWhere);
            return std::nullopt;
        }
        const QJsonObject object = array[i].toObject();
        PXRenameRow row;
        const QJsonValue rowType = object.value(rowTypeKey);
        if (!rowType.isUndefined()) {
            if (!isWholeNumber(rowType)) {
                *error = QStringLiteral("%1 has a \"rowType\" that is not a whole number").arg(rowWhere);
                return std::nullopt;
            }
            row.rowType = rowType.toInt();
        }
        const QJsonValue rules = object.value(rulesKey);
        if (!rules.isArray()) {
            *error = QStringLiteral("%1 needs an array as \"rules\"").arg(rowWhere);
            return std::nullopt;
        }
        const QJsonArray ruleArray = rules.toArray();
        for (qsizetype r = 0; r < ruleArray.size(); ++r) {
            auto rule = ruleFromJson(ruleArray[r], QStringLiteral("%1.rules[%2]").arg(rowWhere).arg(r), error);
            if (!rule)
                return std::nullopt;
            row.rules.append(*rule);
        }
        const QJsonValue subRules = object.value(subRulesKey);
        if (!subRules.isUndefined() && !subRules.isNull()) {
            auto nested = rowsFromJson(subRules, rowWhere + QStringLiteral(".subRules"), error);
            if (!nested)
                return std::nullopt;
            row.subRules = std::move(*nested);
        }
        rows.append(std::move(row));
    }
    return rows;
}

} // namespace

QJsonArray jsonFromRenameRules(const PXRenameRules &rules)
{
    QJsonArray rows;
    for (const PXRenameRow &row : rules) {
        QJsonArray criteria;
        for (const PXRenameRule &rule : row.rules)
            criteria.append(QJsonObject{{constantKey, rule.operationConstant}, {stringValueKey, rule.stringValue}});
        rows.append(QJsonObject{{rowTypeKey, row.rowType},
                                {rulesKey, criteria},
                                {subRulesKey, jsonFromRenameRules(row.subRules)}});
    }
    return rows;
}

std::optional<PXRenameRules> renameRulesFromJson(const QJsonValue &json, QString *error)
{
    QString ignored;
    return rowsFromJson(json, QStringLiteral("rules"), error ? error : &ignored);
}
