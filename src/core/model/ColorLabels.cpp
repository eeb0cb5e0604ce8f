#include "core/model/ColorLabels.h"

#include "core/app/Translate.h"
#include "core/fs/ExtendedAttributes.h"

namespace {

constexpr Translator tr("ColorLabels");

bool isColourTag(const QString &tag, const char *name)
{
    return tag.trimmed().compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

} // namespace

namespace ColorLabels {

const QList<Label> &labels()
{
    // The colours file managers draw these tags in.
    static const QList<Label> all = {
        {6, "Red", QColor(0xfc, 0x3d, 0x39)},    {7, "Orange", QColor(0xfd, 0x95, 0x27)},
        {5, "Yellow", QColor(0xfe, 0xcb, 0x2f)}, {2, "Green", QColor(0x53, 0xd7, 0x69)},
        {4, "Blue", QColor(0x14, 0x7e, 0xfb)},   {3, "Purple", QColor(0xbf, 0x57, 0xda)},
        {1, "Gray", QColor(0x8e, 0x8e, 0x93)},
    };
    return all;
}

const Label *labelForValue(int value)
{
    for (const Label &label : labels()) {
        if (label.value == value)
            return &label;
    }
    return nullptr;
}

QString title(int value)
{
    const Label *label = labelForValue(value);
    return label ? tr(label->name) : QString();
}

QStringList tagsFromAttribute(const QByteArray &value)
{
    return QString::fromUtf8(value).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

QByteArray attributeFromTags(const QStringList &tags)
{
    return tags.join(QLatin1Char(',')).toUtf8();
}

int labelValueOfTags(const QStringList &tags)
{
    for (const QString &tag : tags) {
        for (const Label &label : labels()) {
            if (isColourTag(tag, label.name))
                return label.value;
        }
    }
    return 0;
}

QStringList tagsWithLabel(const QStringList &tags, int value)
{
    QStringList result;
    result.reserve(tags.size() + 1);
    for (const QString &tag : tags) {
        bool colour = false;
        for (const Label &label : labels())
            colour = colour || isColourTag(tag, label.name);
        if (!colour)
            result.append(tag);
    }
    if (const Label *label = labelForValue(value))
        result.append(QLatin1String(label->name));
    return result;
}

int readLabel(const QByteArray &nativePath)
{
    const std::optional<QByteArray> value = ExtendedAttributes::read(nativePath, tagsAttribute);
    return value ? labelValueOfTags(tagsFromAttribute(*value)) : 0;
}

bool writeLabel(const QByteArray &nativePath, int value, QString *error)
{
    const std::optional<QByteArray> before = ExtendedAttributes::read(nativePath, tagsAttribute);
    const QStringList current = before ? tagsFromAttribute(*before) : QStringList();
    const qsizetype colourTags = current.size() - tagsWithLabel(current, 0).size();
    // Already so: the attribute stays as it is, byte for byte.
    if (labelValueOfTags(current) == value && colourTags == (value ? 1 : 0))
        return true;
    const QStringList tags = tagsWithLabel(current, value);
    std::optional<QByteArray> after;
    if (!tags.isEmpty())
        after = attributeFromTags(tags);
    const ExtendedAttributes::WriteResult result = ExtendedAttributes::write(nativePath, tagsAttribute, after);
    if (!result.ok() && error)
        *error = result.message;
    return result.ok();
}

} // namespace ColorLabels
