#include "core/fs/TypeIdentifiers.h"

#include "core/app/Translate.h"

#include <QFile>
#include <QHash>
#include <QMimeDatabase>
#include <QReadWriteLock>
#include <QSet>
#include <QStandardPaths>
#include <QStringTokenizer>

#include <iterator>

namespace {

constexpr Translator tr("TypeIdentifiers");

struct KnownType
{
    const char *identifier;
    const char *mimeType; // the MIME type it is looked up from; null for abstract types
    const char *parents; // comma-separated
};

// The types the program tells apart. Abstract types first, then concrete ones by MIME type.
constexpr KnownType knownTypes[] = {
    {"public.item", nullptr, ""},
    {"public.content", nullptr, ""},
    {"public.data", "application/octet-stream", "public.item"},
    {"public.directory", nullptr, "public.item"},
    {"public.folder", "inode/directory", "public.directory"},
    {"public.volume", nullptr, "public.folder"},
    {"public.symlink", "inode/symlink", "public.item"},
    {"com.apple.application", nullptr, "public.data"},
    {"com.apple.application-bundle", nullptr, "com.apple.application,public.directory"},
    {"org.freedesktop.desktop-entry", "application/x-desktop", "com.apple.application"},
    {"public.executable", nullptr, "public.data"},
    {"public.unix-executable", "application/x-executable", "public.executable"},
    {"com.appimage.appimage", "application/vnd.appimage", "com.apple.application,public.executable"},

    {"public.image", nullptr, "public.data,public.content"},
    {"public.jpeg", "image/jpeg", "public.image"},
    {"public.png", "image/png", "public.image"},
    {"com.compuserve.gif", "image/gif", "public.image"},
    {"public.tiff", "image/tiff", "public.image"},
    {"com.microsoft.bmp", "image/bmp", "public.image"},
    {"com.microsoft.ico", "image/vnd.microsoft.icon", "public.image"},
    {"org.webmproject.webp", "image/webp", "public.image"},
    {"public.heif-standard", nullptr, "public.image"},
    {"public.heic", "image/heic", "public.heif-standard"},
    {"public.heif", "image/heif", "public.heif-standard"},
    {"public.avif", "image/avif", "public.image"},
    {"public.jpeg-2000", "image/jp2", "public.image"},
    {"public.svg-image", "image/svg+xml", "public.image"},
    {"com.adobe.photoshop-image", "image/vnd.adobe.photoshop", "public.image"},
    {"com.truevision.tga-image", "image/x-tga", "public.image"},
    {"public.camera-raw-image", "image/x-dcraw", "public.image"},
    {"com.adobe.raw-image", "image/x-adobe-dng", "public.camera-raw-image"},
    {"com.canon.cr2-raw-image", "image/x-canon-cr2", "public.camera-raw-image"},
    {"com.canon.cr3-raw-image", "image/x-canon-cr3", "public.camera-raw-image"},
    {"com.canon.crw-raw-image", "image/x-canon-crw", "public.camera-raw-image"},
    {"com.nikon.raw-image", "image/x-nikon-nef", "public.camera-raw-image"},
    {"com.nikon.nrw-raw-image", "image/x-nikon-nrw", "public.camera-raw-image"},
    {"com.sony.arw-raw-image", "image/x-sony-arw", "public.camera-raw-image"},
    {"com.sony.sr2-raw-image", "image/x-sony-sr2", "public.camera-raw-image"},
    {"com.olympus.raw-image", "image/x-olympus-orf", "public.camera-raw-image"},
    {"com.panasonic.rw2-raw-image", "image/x-panasonic-rw2", "public.camera-raw-image"},
    {"com.panasonic.raw-image", "image/x-panasonic-raw", "public.camera-raw-image"},
    {"com.fuji.raw-image", "image/x-fuji-raf", "public.camera-raw-image"},
    {"com.pentax.raw-image", "image/x-pentax-pef", "public.camera-raw-image"},
    {"com.samsung.raw-image", "image/x-samsung-srw", "public.camera-raw-image"},
    {"com.adobe.postscript", "application/postscript", "public.data,public.content"},
    {"com.adobe.encapsulated-postscript", "image/x-eps", "com.adobe.postscript"},
    {"com.adobe.pdf", "application/pdf", "public.data,public.content"},

    {"public.audiovisual-content", nullptr, "public.data,public.content"},
    {"public.movie", nullptr, "public.audiovisual-content"},
    {"public.video", nullptr, "public.movie"},
    {"public.mpeg-4", "video/mp4", "public.movie"},
    {"com.apple.quicktime-movie", "video/quicktime", "public.movie"},
    {"public.avi", "video/x-msvideo", "public.movie"},
    {"org.matroska.mkv", "video/x-matroska", "public.movie"},
    {"org.webmproject.webm", "video/webm", "public.movie"},
    {"public.mpeg", "video/mpeg", "public.movie"},
    {"public.mpeg-2-transport-stream", "video/mp2t", "public.movie"},
    {"public.3gpp", "video/3gpp", "public.movie"},
    {"com.microsoft.windows-media-wmv", "video/x-ms-wmv", "public.movie"},
    {"public.audio", nullptr, "public.audiovisual-content"},
    {"public.mp3", "audio/mpeg", "public.audio"},
    {"public.mpeg-4-audio", "audio/mp4", "public.audio"},
    {"com.microsoft.waveform-audio", "audio/x-wav", "public.audio"},
    {"org.xiph.flac", "audio/flac", "public.audio"},
    {"org.xiph.ogg-audio", "audio/x-vorbis+ogg", "public.audio"},
    {"public.aiff-audio", "audio/x-aiff", "public.audio"},

    {"public.text", nullptr, "public.data,public.content"},
    {"public.plain-text", "text/plain", "public.text"},
    {"public.html", "text/html", "public.text"},
    {"public.xml", "application/xml", "public.text"},
    {"public.json", "application/json", "public.text"},
    {"public.rtf", "text/rtf", "public.text"},
    {"public.source-code", nullptr, "public.plain-text"},

    {"public.archive", nullptr, "public.data"},
    {"public.zip-archive", "application/zip", "public.archive"},
    {"org.gnu.gnu-zip-archive", "application/gzip", "public.archive"},
    {"public.tar-archive", "application/x-tar", "public.archive"},
};

// Where a MIME type's top-level media type says more than nothing.
QString familyOfMediaType(const QString &mimeName)
{
    if (mimeName.startsWith(QLatin1String("image/")))
        return QStringLiteral("public.image");
    if (mimeName.startsWith(QLatin1String("video/")))
        return QStringLiteral("public.movie");
    if (mimeName.startsWith(QLatin1String("audio/")))
        return QStringLiteral("public.audio");
    if (mimeName.startsWith(QLatin1String("text/")))
        return QStringLiteral("public.text");
    return {};
}

// The last few extensions this thread looked up and their types: the per-extension cache
// without its lock and without making a string of the extension. Entries never go stale, as
// the cache they come from only grows.
class RecentExtensions
{
public:
    const QString *find(QStringView extension) const
    {
        for (const Entry &entry : m_entries) {
            if (!entry.extension.isNull() && entry.extension == extension)
                return &entry.type;
        }
        return nullptr;
    }

    void add(const QString &extension, const QString &type)
    {
        m_entries[m_next] = {extension, type};
        m_next = (m_next + 1) % std::size(m_entries);
    }

private:
    struct Entry
    {
        QString extension;
        QString type;
    };
    // Eight: a camera folder mixes ".JPG", ".jpg", ".CR3", ".MOV" and their sidecars.
    Entry m_entries[8];
    size_t m_next = 0;
};

RecentExtensions &recentExtensions()
{
    thread_local RecentExtensions recent;
    return recent;
}

// The last few answers of conformsTo on this thread, by the texts' storage: a listing asks the
// same few questions ("is public.jpeg an image?") for every file, with the same strings.
class RecentConformance
{
public:
    const bool *find(const QString &type, const QString &parent) const
    {
        for (const Entry &entry : m_entries) {
            if (sameText(entry.type, type) && sameText(entry.parent, parent))
                return &entry.answer;
        }
        return nullptr;
    }

    void add(const QString &type, const QString &parent, bool answer)
    {
        m_entries[m_next] = {type, parent, answer};
        m_next = (m_next + 1) % std::size(m_entries);
    }

private:
    // The same characters in the same place: the same text, without reading it.
    static bool sameText(const QString &a, const QString &b)
    {
        return a.constData() == b.constData() && a.size() == b.size() && !a.isEmpty();
    }

    struct Entry
    {
        QString type;
        QString parent;
        bool answer = false;
    };
    Entry m_entries[8];
    size_t m_next = 0;
};

RecentConformance &recentConformance()
{
    thread_local RecentConformance recent;
    return recent;
}

class Table
{
public:
    static Table &shared()
    {
        static Table table;
        return table;
    }

    QString forMime(const QString &mimeName)
    {
        QMimeDatabase db;
        const QMimeType mime = db.mimeTypeForName(mimeName);
        const QString canonical = mime.isValid() ? mime.name() : mimeName;
        if (const auto it = m_typeForMime.constFind(canonical); it != m_typeForMime.cend())
            return *it;
        if (mime.isValid()) {
            for (const QString &alias : mime.aliases()) {
                if (const auto it = m_typeForMime.constFind(alias); it != m_typeForMime.cend())
                    return *it;
            }
        }
        return canonical;
    }

    // Cached by the name's last extension, as written: "*.C" and "*.c" are different types.
    // A lookup is cached only when the type claims that extension for every name ("*.jpg"), and
    // names that end in a compound suffix ("x.tar.gz") are never answered from the cache.
    QString forFileName(const QString &fileName)
    {
        const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
        QStringView key = dot > 0 ? QStringView(fileName).mid(dot + 1) : QStringView();
        if (!key.isEmpty() && endsInCompoundSuffix(fileName, dot))
            key = QStringView();
        if (!key.isEmpty()) {
            // A folder's names share a few extensions: most lookups end here, without a lock.
            RecentExtensions &recent = recentExtensions();
            if (const QString *type = recent.find(key))
                return *type;
            const QString extension = key.toString();
            QReadLocker locker(&m_lock);
            if (const auto it = m_typeForExtension.constFind(extension); it != m_typeForExtension.cend()) {
                recent.add(extension, *it);
                return *it;
            }
        }
        QMimeDatabase db;
        const QMimeType mime = db.mimeTypeForFile(fileName, QMimeDatabase::MatchExtension);
        const QString type = forMime(mime.name());
        if (!key.isEmpty() && (mime.isDefault() || claimsExtension(mime, key.toString()))) {
            QWriteLocker locker(&m_lock);
            m_typeForExtension.insert(key.toString(), type);
        }
        return type;
    }

    // Whether `parent` is in the chain of `type`, without copying the chain once it is known.
    bool chainContains(const QString &type, const QString &parent)
    {
        {
            QReadLocker locker(&m_lock);
            if (const auto it = m_chains.constFind(type); it != m_chains.cend())
                return it->contains(parent);
        }
        return chain(type).contains(parent);
    }

    QStringList chain(const QString &type)
    {
        {
            QReadLocker locker(&m_lock);
            if (const auto it = m_chains.constFind(type); it != m_chains.cend())
                return *it;
        }
        QStringList result;
        appendChain(type, result);
        QWriteLocker locker(&m_lock);
        m_chains.insert(type, result);
        return result;
    }

    QString mimeFor(const QString &type) const
    {
        return m_mimeForType.value(type, type.contains(QLatin1Char('/')) ? type : QString());
    }

private:
    static bool claimsExtension(const QMimeType &mime, const QString &extension)
    {
        const QString pattern = QLatin1String("*.") + extension;
        for (const QString &glob : mime.globPatterns()) {
            if (glob.compare(pattern, Qt::CaseInsensitive) == 0)
                return true;
        }
        return false;
    }

    // A glob that names a suffix of two or three parts and nothing else ("*.tar.gz").
    static bool isCompoundSuffixGlob(QStringView glob)
    {
        if (!glob.startsWith(QLatin1String("*.")))
            return false;
        const QStringView suffix = glob.mid(2);
        return suffix.contains(QLatin1Char('.')) && !suffix.contains(QLatin1Char('*'))
            && !suffix.contains(QLatin1Char('[')) && !suffix.contains(QLatin1Char('?'));
    }

    // The compound suffixes of the "globs2" files that update-mime-database writes beside the
    // database Qt reads ("weight:type:glob[:flags]" lines). Reading them costs a fraction of a
    // millisecond; asking Qt for every type's globs makes it parse each type's XML file, some
    // 50 ms that every start would pay. Empty when there is no such file.
    static QSet<QString> compoundSuffixesFromGlobFiles()
    {
        QSet<QString> suffixes;
        const QStringList folders = QStandardPaths::locateAll(QStandardPaths::GenericDataLocation,
                                                              QStringLiteral("mime"), QStandardPaths::LocateDirectory);
        for (const QString &folder : folders) {
            QFile file(folder + QLatin1String("/globs2"));
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QString text = QString::fromUtf8(file.readAll());
            for (const QStringView line : QStringTokenizer(text, QLatin1Char('\n'))) {
                if (line.startsWith(QLatin1Char('#')))
                    continue;
                const qsizetype typeStart = line.indexOf(QLatin1Char(':'));
                const qsizetype globStart = typeStart < 0 ? -1 : line.indexOf(QLatin1Char(':'), typeStart + 1);
                if (globStart < 0)
                    continue;
                const qsizetype globEnd = line.indexOf(QLatin1Char(':'), globStart + 1);
                const QStringView glob =
                    line.mid(globStart + 1, globEnd < 0 ? line.size() - globStart - 1 : globEnd - globStart - 1);
                if (isCompoundSuffixGlob(glob))
                    suffixes.insert(glob.mid(2).toString().toLower());
            }
        }
        return suffixes;
    }

    // The same from every type's globs: the slow way, for a database without glob files.
    static QSet<QString> compoundSuffixesFromDatabase()
    {
        QSet<QString> suffixes;
        QMimeDatabase db;
        for (const QMimeType &mime : db.allMimeTypes()) {
            for (const QString &glob : mime.globPatterns()) {
                if (isCompoundSuffixGlob(glob))
                    suffixes.insert(glob.mid(2).toLower());
            }
        }
        return suffixes;
    }

    bool endsInCompoundSuffix(const QString &fileName, qsizetype lastDot) const
    {
        qsizetype dot = lastDot;
        for (int parts = 2; parts <= 3; ++parts) {
            dot = dot > 0 ? fileName.lastIndexOf(QLatin1Char('.'), dot - 1) : -1;
            if (dot <= 0)
                return false;
            if (m_compoundSuffixes.contains(fileName.mid(dot + 1).toLower()))
                return true;
        }
        return false;
    }

    Table()
    {
        m_compoundSuffixes = compoundSuffixesFromGlobFiles();
        if (m_compoundSuffixes.isEmpty())
            m_compoundSuffixes = compoundSuffixesFromDatabase();
        for (const KnownType &known : knownTypes) {
            const QString identifier = QString::fromLatin1(known.identifier);
            m_parents.insert(identifier,
                             QString::fromLatin1(known.parents).split(QLatin1Char(','), Qt::SkipEmptyParts));
            if (known.mimeType) {
                m_typeForMime.insert(QString::fromLatin1(known.mimeType), identifier);
                m_mimeForType.insert(identifier, QString::fromLatin1(known.mimeType));
            }
        }
    }

    void appendChain(const QString &type, QStringList &result) const
    {
        if (result.contains(type))
            return;
        result.append(type);
        if (const auto it = m_parents.constFind(type); it != m_parents.cend()) {
            for (const QString &parent : *it)
                appendChain(parent, result);
            return;
        }
        // A type the table does not know: a MIME name. Follow its MIME ancestors.
        QMimeDatabase db;
        const QMimeType mime = db.mimeTypeForName(type);
        if (mime.isValid()) {
            for (const QString &ancestor : mime.allAncestors()) {
                const auto known = m_typeForMime.constFind(ancestor);
                if (known != m_typeForMime.cend() && *known != QLatin1String("public.data"))
                    appendChain(*known, result);
            }
        }
        const QString family = familyOfMediaType(type);
        if (!family.isEmpty())
            appendChain(family, result);
        appendChain(QStringLiteral("public.data"), result);
    }

    QHash<QString, QStringList> m_parents; // constant after construction
    QHash<QString, QString> m_typeForMime; // constant after construction
    QHash<QString, QString> m_mimeForType; // constant after construction
    QSet<QString> m_compoundSuffixes; // constant after construction
    QReadWriteLock m_lock;
    QHash<QString, QString> m_typeForExtension;
    QHash<QString, QStringList> m_chains;
};

} // namespace

namespace TypeIdentifiers {

QString forFileName(const QString &fileName, bool isDirectory)
{
    if (isDirectory) {
        if (fileName.endsWith(QLatin1String(".app"), Qt::CaseInsensitive))
            return QStringLiteral("com.apple.application-bundle");
        return QStringLiteral("public.folder");
    }
    return Table::shared().forFileName(fileName);
}

QString forMimeType(const QString &mimeName)
{
    return Table::shared().forMime(mimeName);
}

QString symlink()
{
    return QStringLiteral("public.symlink");
}

QString volume()
{
    return QStringLiteral("public.volume");
}

bool conformsTo(const QString &type, const QString &parent)
{
    if (type.isEmpty() || parent.isEmpty())
        return false;
    if (type == parent)
        return true;
    RecentConformance &recent = recentConformance();
    if (const bool *answer = recent.find(type, parent))
        return *answer;
    const bool answer = Table::shared().chainContains(type, parent);
    recent.add(type, parent, answer);
    return answer;
}

QStringList conformanceChain(const QString &type)
{
    return Table::shared().chain(type);
}

QString preferredMimeType(const QString &type)
{
    return Table::shared().mimeFor(type);
}

QStringList namedTypesConformingTo(const QString &parent)
{
    QStringList types;
    for (const KnownType &known : knownTypes) {
        const QString identifier = QString::fromLatin1(known.identifier);
        if (conformsTo(identifier, parent))
            types.append(identifier);
    }
    return types;
}

QString description(const QString &type)
{
    if (type == QLatin1String("public.folder"))
        return tr("Folder");
    if (type == QLatin1String("public.volume"))
        return tr("Volume");
    if (type == QLatin1String("public.symlink"))
        return tr("Alias");
    if (type == QLatin1String("com.apple.application-bundle"))
        return tr("Application");
    const QString mimeName = preferredMimeType(type);
    if (mimeName.isEmpty())
        return type;
    QMimeDatabase db;
    const QMimeType mime = db.mimeTypeForName(mimeName);
    return mime.isValid() && !mime.comment().isEmpty() ? mime.comment() : type;
}

} // namespace TypeIdentifiers
