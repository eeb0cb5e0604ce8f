#include "core/imaging/IccProfile.h"

#include <QtEndian>

namespace {

// The profile header is 128 bytes; the tag count follows it, then 12-byte tag entries.
constexpr qsizetype HeaderSize = 128;
constexpr qsizetype TagEntrySize = 12;

quint32 be32(const QByteArray &bytes, qsizetype offset)
{
    return qFromBigEndian<quint32>(bytes.constData() + offset);
}

bool fits(const QByteArray &bytes, quint64 offset, quint64 length)
{
    return offset <= quint64(bytes.size()) && length <= quint64(bytes.size()) - offset;
}

QString trimmed(QString text)
{
    while (!text.isEmpty() && (text.back() == QChar(0) || text.back().isSpace()))
        text.chop(1);
    return text.trimmed();
}

// Version 2 textDescriptionType: 'desc', 4 reserved bytes, ASCII length (with its NUL), ASCII.
QString textDescription(const QByteArray &bytes, quint32 offset, quint32 size)
{
    if (size < 12)
        return {};
    const quint32 count = be32(bytes, offset + 8);
    if (count == 0 || count > size - 12)
        return {};
    return trimmed(QString::fromLatin1(bytes.constData() + offset + 12, count));
}

// Version 4 multiLocalizedUnicodeType: 'mluc', reserved, record count, record size, then records
// of language, country, byte length and offset (from the tag's start) of UTF-16BE text.
QString multiLocalizedDescription(const QByteArray &bytes, quint32 offset, quint32 size)
{
    if (size < 16)
        return {};
    const quint32 records = be32(bytes, offset + 8);
    const quint32 recordSize = be32(bytes, offset + 12);
    if (recordSize < 12 || !fits(bytes, quint64(offset) + 16, quint64(records) * recordSize))
        return {};
    QString first;
    for (quint32 i = 0; i < records; ++i) {
        const qsizetype record = offset + 16 + qsizetype(i) * recordSize;
        const quint32 length = be32(bytes, record + 4);
        const quint32 textOffset = be32(bytes, record + 8);
        if (!fits(bytes, quint64(offset) + textOffset, length) || textOffset + quint64(length) > size)
            continue;
        QString text;
        text.reserve(length / 2);
        const char *utf16 = bytes.constData() + offset + textOffset;
        for (quint32 c = 0; c + 1 < length; c += 2)
            text.append(QChar(qFromBigEndian<quint16>(utf16 + c)));
        text = trimmed(text);
        if (bytes.mid(record, 2) == "en" && !text.isEmpty())
            return text;
        if (first.isEmpty())
            first = text;
    }
    return first;
}

} // namespace

QString iccProfileDescription(const QByteArray &profile)
{
    if (profile.size() < HeaderSize + 4 || profile.mid(36, 4) != "acsp")
        return {};
    const quint32 tagCount = be32(profile, HeaderSize);
    if (!fits(profile, HeaderSize + 4, quint64(tagCount) * TagEntrySize))
        return {};
    for (quint32 i = 0; i < tagCount; ++i) {
        const qsizetype entry = HeaderSize + 4 + qsizetype(i) * TagEntrySize;
        if (profile.mid(entry, 4) != "desc")
            continue;
        const quint32 offset = be32(profile, entry + 4);
        const quint32 size = be32(profile, entry + 8);
        if (size < 8 || !fits(profile, offset, size))
            return {};
        const QByteArray type = profile.mid(offset, 4);
        if (type == "desc")
            return textDescription(profile, offset, size);
        if (type == "mluc")
            return multiLocalizedDescription(profile, offset, size);
        return {};
    }
    return {};
}
