#include "thumbnails/ThumbnailCache.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QBuffer>
#include <QHash>
#include <QtEndian>
#include <QImageWriter>
#include <QSaveFile>
#include <QUrl>

#include <sys/stat.h>

#include <array>

namespace {

const char uriKey[] = "Thumb::URI";
const char mtimeKey[] = "Thumb::MTime";

QString md5Name(const QString &uri)
{
    return QString::fromLatin1(QCryptographicHash::hash(uri.toUtf8(), QCryptographicHash::Md5).toHex())
           + QStringLiteral(".png");
}

bool makeFolder(const QString &path, QString *error)
{
    if (QDir().mkpath(path)) {
        ::chmod(QFile::encodeName(path).constData(), 0700);
        return true;
    }
    if (error)
        *error = QStringLiteral("cannot create the thumbnail folder %1").arg(path);
    return false;
}

quint32 crc32(const QByteArray &bytes)
{
    static const auto table = [] {
        std::array<quint32, 256> values{};
        for (quint32 n = 0; n < 256; ++n) {
            quint32 c = n;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            values[n] = c;
        }
        return values;
    }();
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : bytes)
        crc = table[(crc ^ quint8(byte)) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

QByteArray pngChunk(const QByteArray &type, const QByteArray &data)
{
    QByteArray chunk(4, Qt::Uninitialized);
    qToBigEndian<quint32>(quint32(data.size()), chunk.data());
    const QByteArray body = type + data;
    QByteArray crc(4, Qt::Uninitialized);
    qToBigEndian<quint32>(crc32(body), crc.data());
    return chunk + body + crc;
}

// The text chunks before the pixel data, read straight from the PNG's bytes. (QImageReader's
// text() splits keys at the first colon, which "Thumb::URI" does not survive.) zTXt is read
// too: Qt-based file managers compress texts longer than 40 bytes.
QHash<QByteArray, QByteArray> pngTexts(const QByteArray &bytes)
{
    QHash<QByteArray, QByteArray> texts;
    if (!bytes.startsWith("\x89PNG\r\n\x1A\n"))
        return texts;
    qsizetype pos = 8;
    while (pos + 8 <= bytes.size()) {
        const quint32 length = qFromBigEndian<quint32>(bytes.constData() + pos);
        const QByteArray type = bytes.mid(pos + 4, 4);
        if (type == "IDAT" || type == "IEND" || length > quint32(bytes.size() - pos - 8))
            break;
        if (type == "tEXt" || type == "zTXt") {
            const QByteArray chunk = bytes.mid(pos + 8, length);
            const qsizetype separator = chunk.indexOf('\0');
            if (separator > 0 && type == "tEXt") {
                texts.insert(chunk.left(separator), chunk.mid(separator + 1));
            } else if (separator > 0 && separator + 2 < chunk.size()) {
                // qUncompress wants the expected size first; it grows its buffer when that is short.
                QByteArray compressed(4, '\0');
                qToBigEndian<quint32>(4096, compressed.data());
                compressed += chunk.mid(separator + 2);
                texts.insert(chunk.left(separator), qUncompress(compressed));
            }
        }
        pos += 12 + qsizetype(length);
    }
    return texts;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

} // namespace

ThumbnailCache::ThumbnailCache(QString root)
    : m_root(root.isEmpty() ? defaultRoot() : std::move(root))
{
}

QString ThumbnailCache::defaultRoot()
{
    QString base = qEnvironmentVariable("XDG_CACHE_HOME");
    if (base.isEmpty() || !QDir::isAbsolutePath(base))
        base = QDir::homePath() + QStringLiteral("/.cache");
    return base + QStringLiteral("/thumbnails");
}

ThumbnailCache::Flavor ThumbnailCache::flavorForPixels(int pixels)
{
    for (Flavor flavor : {Flavor::normal, Flavor::large, Flavor::xLarge, Flavor::xxLarge}) {
        if (flavorPixels(flavor) >= pixels)
            return flavor;
    }
    return Flavor::xxLarge;
}

int ThumbnailCache::flavorPixels(Flavor flavor)
{
    switch (flavor) {
    case Flavor::normal:
        return 128;
    case Flavor::large:
        return 256;
    case Flavor::xLarge:
        return 512;
    case Flavor::xxLarge:
        return 1024;
    }
    return 1024;
}

QString ThumbnailCache::flavorFolder(Flavor flavor)
{
    switch (flavor) {
    case Flavor::normal:
        return QStringLiteral("normal");
    case Flavor::large:
        return QStringLiteral("large");
    case Flavor::xLarge:
        return QStringLiteral("x-large");
    case Flavor::xxLarge:
        return QStringLiteral("xx-large");
    }
    return QStringLiteral("xx-large");
}

QString ThumbnailCache::uriForNativePath(const QByteArray &nativePath)
{
    // Every byte outside the unreserved set and "/" is escaped, as file managers do.
    return QStringLiteral("file://") + QString::fromLatin1(nativePath.toPercentEncoding("/", {}));
}

QString ThumbnailCache::entryPath(const QString &uri, Flavor flavor) const
{
    return m_root + QLatin1Char('/') + flavorFolder(flavor) + QLatin1Char('/') + md5Name(uri);
}

QString ThumbnailCache::failurePath(const QString &uri) const
{
    return m_root + QStringLiteral("/fail/pixcove/") + md5Name(uri);
}

QImage ThumbnailCache::lookup(const QString &uri, qint64 mtime, Flavor flavor, QString *error) const
{
    const QByteArray wantedTime = QByteArray::number(mtime);
    const QByteArray wantedUri = uri.toUtf8();
    for (int f = int(flavor); f <= int(Flavor::xxLarge); ++f) {
        const QString path = entryPath(uri, Flavor(f));
        const QByteArray bytes = readAll(path);
        if (bytes.isEmpty())
            continue;
        // The text chunks come before the pixels: a stale entry costs no decoding.
        const auto texts = pngTexts(bytes);
        if (texts.value(mtimeKey) != wantedTime || texts.value(uriKey) != wantedUri) {
            if (texts.isEmpty() && error)
                *error = QStringLiteral("damaged thumbnail %1").arg(path);
            continue;
        }
        QImage image;
        if (!image.loadFromData(bytes, "PNG")) {
            if (error)
                *error = QStringLiteral("damaged thumbnail %1").arg(path);
            continue;
        }
        return image;
    }
    return {};
}

bool ThumbnailCache::store(const QString &uri, qint64 mtime, Flavor flavor, const QImage &image, QString *error) const
{
    const QString folder = m_root + QLatin1Char('/') + flavorFolder(flavor);
    if (!makeFolder(folder, error))
        return false;
    return writeAtomically(entryPath(uri, flavor), image, uri, mtime, error);
}

bool ThumbnailCache::hasFailure(const QString &uri, qint64 mtime) const
{
    const QByteArray bytes = readAll(failurePath(uri));
    return !bytes.isEmpty() && pngTexts(bytes).value(mtimeKey) == QByteArray::number(mtime);
}

bool ThumbnailCache::storeFailure(const QString &uri, qint64 mtime, QString *error) const
{
    if (!makeFolder(m_root + QStringLiteral("/fail/pixcove"), error))
        return false;
    QImage mark(1, 1, QImage::Format_ARGB32);
    mark.fill(Qt::transparent);
    return writeAtomically(failurePath(uri), mark, uri, mtime, error);
}

bool ThumbnailCache::writeAtomically(const QString &path, const QImage &image, const QString &uri, qint64 mtime,
                                     QString *error) const
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    // Light compression: entries are written once per file but read on every visit, and
    // inflating a lightly deflated PNG is what keeps cache hits cheap.
    writer.setQuality(80);
    if (!writer.write(image) || png.size() < 33) {
        if (error)
            *error = QStringLiteral("cannot encode the thumbnail %1: %2").arg(path, writer.errorString());
        return false;
    }
    // Plain tEXt chunks right after the header (signature 8 bytes, IHDR 25), where every reader
    // of the cache looks for them.
    const QByteArray texts = pngChunk("tEXt", QByteArray(mtimeKey) + '\0' + QByteArray::number(mtime))
                             + pngChunk("tEXt", QByteArray(uriKey) + '\0' + uri.toUtf8());
    png.insert(33, texts);

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = QStringLiteral("cannot write the thumbnail %1: %2").arg(path, file.errorString());
        return false;
    }
    ::fchmod(file.handle(), 0600);
    if (file.write(png) != png.size() || !file.commit()) {
        if (error)
            *error = QStringLiteral("cannot write the thumbnail %1: %2").arg(path, file.errorString());
        file.cancelWriting();
        return false;
    }
    return true;
}
