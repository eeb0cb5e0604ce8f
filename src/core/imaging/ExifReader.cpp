#include "core/imaging/ExifReader.h"

#include "core/app/Log.h"

#include <QStringDecoder>
#include <QStringList>
#include <QVariantList>

#include <exiv2/exiv2.hpp>

#include <mutex>

namespace {

enum class Kind {
    Integer,
    Real,
    Text,
    IntegerList,
    RealList,
    IntegerText, // a number shown as text (serial numbers)
    Comment, // an EXIF comment with its character-set prefix
    Degrees, // degrees, minutes, seconds
    Time, // hours, minutes, seconds
};

// One EXIF tag of one IFD and where its value goes.
struct Rule
{
    quint16 tag;
    const char *key;
    Kind kind;
    QVariantMap ImageMetadata::*group;
};

constexpr auto Tiff = &ImageMetadata::tiff;
constexpr auto Exif = &ImageMetadata::exif;
constexpr auto Aux = &ImageMetadata::exifAux;
constexpr auto Gps = &ImageMetadata::gps;

constexpr Rule ImageRules[] = {
    {0x010d, "DocumentName", Kind::Text, Tiff},   {0x010e, "ImageDescription", Kind::Text, Tiff},
    {0x010f, "Make", Kind::Text, Tiff},           {0x0110, "Model", Kind::Text, Tiff},
    {0x0112, "Orientation", Kind::Integer, Tiff}, {0x011a, "XResolution", Kind::Real, Tiff},
    {0x011b, "YResolution", Kind::Real, Tiff},    {0x0128, "ResolutionUnit", Kind::Integer, Tiff},
    {0x0131, "Software", Kind::Text, Tiff},       {0x0132, "DateTime", Kind::Text, Tiff},
    {0x013b, "Artist", Kind::Text, Tiff},         {0x013c, "HostComputer", Kind::Text, Tiff},
    {0x8298, "Copyright", Kind::Text, Tiff},      {0x9211, "ImageNumber", Kind::Integer, Aux},
};

constexpr Rule PhotoRules[] = {
    {0x829a, "ExposureTime", Kind::Real, Exif},
    {0x829d, "FNumber", Kind::Real, Exif},
    {0x8822, "ExposureProgram", Kind::Integer, Exif},
    {0x8827, "ISOSpeedRatings", Kind::IntegerList, Exif},
    {0x9003, "DateTimeOriginal", Kind::Text, Exif},
    {0x9004, "DateTimeDigitized", Kind::Text, Exif},
    {0x9010, "OffsetTime", Kind::Text, Exif},
    {0x9011, "OffsetTimeOriginal", Kind::Text, Exif},
    {0x9012, "OffsetTimeDigitized", Kind::Text, Exif},
    {0x9201, "ShutterSpeedValue", Kind::Real, Exif},
    {0x9202, "ApertureValue", Kind::Real, Exif},
    {0x9204, "ExposureBiasValue", Kind::Real, Exif},
    {0x9207, "MeteringMode", Kind::Integer, Exif},
    {0x9208, "LightSource", Kind::Integer, Exif},
    {0x9209, "Flash", Kind::Integer, Exif},
    {0x920a, "FocalLength", Kind::Real, Exif},
    {0x9286, "UserComment", Kind::Comment, Exif},
    {0xa002, "PixelXDimension", Kind::Integer, Exif},
    {0xa003, "PixelYDimension", Kind::Integer, Exif},
    {0xa300, "FileSource", Kind::Integer, Exif},
    {0xa402, "ExposureMode", Kind::Integer, Exif},
    {0xa403, "WhiteBalance", Kind::Integer, Exif},
    {0xa405, "FocalLenIn35mmFilm", Kind::Integer, Exif},
    {0xa430, "CameraOwnerName", Kind::Text, Exif},
    {0xa431, "BodySerialNumber", Kind::Text, Exif},
    {0xa432, "LensInfo", Kind::RealList, Aux},
    {0xa433, "LensMake", Kind::Text, Exif},
    {0xa434, "LensModel", Kind::Text, Exif},
    {0xa435, "LensSerialNumber", Kind::Text, Exif},
};

constexpr Rule GpsRules[] = {
    {0x0001, "LatitudeRef", Kind::Text, Gps},
    {0x0002, "Latitude", Kind::Degrees, Gps},
    {0x0003, "LongitudeRef", Kind::Text, Gps},
    {0x0004, "Longitude", Kind::Degrees, Gps},
    {0x0005, "AltitudeRef", Kind::Integer, Gps},
    {0x0006, "Altitude", Kind::Real, Gps},
    {0x0007, "TimeStamp", Kind::Time, Gps},
    {0x000c, "SpeedRef", Kind::Text, Gps},
    {0x000d, "Speed", Kind::Real, Gps},
    {0x0010, "ImgDirectionRef", Kind::Text, Gps},
    {0x0011, "ImgDirection", Kind::Real, Gps},
    {0x0017, "DestBearingRef", Kind::Text, Gps},
    {0x0018, "DestBearing", Kind::Real, Gps},
    {0x001d, "DateStamp", Kind::Text, Gps},
    {0x001f, "HPositioningError", Kind::Real, Gps},
};

// Maker notes: only the few facts that the auxiliary group names.
constexpr Rule CanonRules[] = {
    {0x0007, "Firmware", Kind::Text, Aux},
    {0x0008, "ImageNumber", Kind::Integer, Aux},
    {0x000c, "SerialNumber", Kind::IntegerText, Aux},
    {0x0095, "LensModel", Kind::Text, Aux},
};

constexpr Rule NikonRules[] = {
    {0x001d, "SerialNumber", Kind::Text, Aux},
    {0x0084, "LensInfo", Kind::RealList, Aux},
};

// IPTC datasets of record 2 (application), all text.
struct IptcRule
{
    quint16 dataset;
    const char *key;
};

constexpr IptcRule IptcRules[] = {
    {5, "ObjectName"},
    {25, "Keywords"},
    {26, "ContentLocationCode"},
    {27, "ContentLocationName"},
    {65, "OriginatingProgram"},
    {70, "ProgramVersion"},
    {80, "Byline"},
    {85, "BylineTitle"},
    {90, "City"},
    {92, "SubLocation"},
    {95, "Province/State"},
    {100, "Country/PrimaryLocationCode"},
    {101, "Country/PrimaryLocationName"},
    {105, "Headline"},
    {110, "Credit"},
    {115, "Source"},
    {116, "CopyrightNotice"},
    {120, "Caption/Abstract"},
};
constexpr quint16 IptcKeywords = 25;

template<size_t N>
const Rule *findRule(const Rule (&rules)[N], quint16 tag)
{
    for (const Rule &rule : rules) {
        if (rule.tag == tag)
            return &rule;
    }
    return nullptr;
}

// Text as stored: up to the first NUL, without trailing blanks; UTF-8 when it is valid UTF-8,
// else Latin-1 (older cameras and IPTC writers).
QString decodeText(const std::string &bytes)
{
    std::string::size_type length = bytes.find('\0');
    if (length == std::string::npos)
        length = bytes.size();
    while (length > 0
           && (bytes[length - 1] == ' ' || bytes[length - 1] == '\t' || bytes[length - 1] == '\n'
               || bytes[length - 1] == '\r'))
        --length;
    const QByteArrayView view(bytes.data(), qsizetype(length));
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(view);
    if (utf8.hasError())
        text = QString::fromLatin1(view);
    return text;
}

std::optional<QString> textOf(const Exiv2::Value &value)
{
    const auto *string = dynamic_cast<const Exiv2::StringValueBase *>(&value);
    if (!string)
        return std::nullopt;
    QString text = decodeText(string->value_);
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

bool isInteger(Exiv2::TypeId type)
{
    switch (type) {
    case Exiv2::unsignedByte:
    case Exiv2::unsignedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedByte:
    case Exiv2::signedShort:
    case Exiv2::signedLong:
    case Exiv2::undefined: // one-byte enumerations such as FileSource
        return true;
    default: return false;
    }
}

std::optional<qlonglong> integerAt(const Exiv2::Value &value, long index)
{
    if (index >= value.count() || !isInteger(value.typeId()))
        return std::nullopt;
    const long number = value.toLong(index);
    if (!value.ok())
        return std::nullopt;
    return qlonglong(number);
}

template<typename Rational>
std::optional<double> ratio(const Rational &r)
{
    if (r.second == 0)
        return std::nullopt; // 0/0 marks an unknown value
    return double(r.first) / double(r.second);
}

// Rationals are divided in double precision; Exiv2's own conversion goes through float.
std::optional<double> realAt(const Exiv2::Value &value, long index)
{
    if (index >= value.count())
        return std::nullopt;
    switch (value.typeId()) {
    case Exiv2::unsignedRational:
        return ratio(static_cast<const Exiv2::URationalValue &>(value).value_.at(size_t(index)));
    case Exiv2::signedRational: return ratio(static_cast<const Exiv2::RationalValue &>(value).value_.at(size_t(index)));
    case Exiv2::tiffFloat: return double(static_cast<const Exiv2::FloatValue &>(value).value_.at(size_t(index)));
    case Exiv2::tiffDouble: return static_cast<const Exiv2::DoubleValue &>(value).value_.at(size_t(index));
    default:
        if (const auto integer = integerAt(value, index))
            return double(*integer);
        return std::nullopt;
    }
}

std::optional<QVariant> convert(const Exiv2::Value &value, Kind kind)
{
    switch (kind) {
    case Kind::Integer:
        if (const auto integer = integerAt(value, 0))
            return QVariant(int(*integer));
        return std::nullopt;
    case Kind::IntegerText:
        if (const auto integer = integerAt(value, 0))
            return QVariant(QString::number(*integer));
        return textOf(value);
    case Kind::Real:
        if (const auto real = realAt(value, 0))
            return QVariant(*real);
        return std::nullopt;
    case Kind::Text: return textOf(value);
    case Kind::IntegerList:
    case Kind::RealList: {
        QVariantList list;
        for (long i = 0; i < value.count(); ++i) {
            if (kind == Kind::IntegerList) {
                const auto integer = integerAt(value, i);
                if (!integer)
                    return std::nullopt;
                list.append(int(*integer));
            } else {
                const auto real = realAt(value, i);
                if (!real)
                    return std::nullopt;
                list.append(*real);
            }
        }
        if (list.isEmpty())
            return std::nullopt;
        return QVariant(list);
    }
    case Kind::Comment: {
        const auto *comment = dynamic_cast<const Exiv2::CommentValue *>(&value);
        if (!comment)
            return textOf(value);
        // comment() drops the "ASCII\0\0\0" / "UNICODE\0" prefix and converts UCS-2 to UTF-8.
        const QString text = decodeText(comment->comment());
        if (text.trimmed().isEmpty())
            return std::nullopt;
        return QVariant(text);
    }
    case Kind::Degrees: {
        // Some writers store only degrees, or degrees and decimal minutes.
        double degrees = 0;
        double scale = 1;
        for (long i = 0; i < qMin(value.count(), 3L); ++i, scale *= 60) {
            const auto part = realAt(value, i);
            if (!part)
                return std::nullopt;
            degrees += *part / scale;
        }
        if (value.count() == 0)
            return std::nullopt;
        return QVariant(degrees);
    }
    case Kind::Time: {
        const auto hours = realAt(value, 0);
        const auto minutes = realAt(value, 1);
        const auto seconds = realAt(value, 2);
        if (!hours || !minutes || !seconds)
            return std::nullopt;
        return QVariant(QString::asprintf("%02d:%02d:%05.2f", int(*hours), int(*minutes), *seconds));
    }
    }
    return std::nullopt;
}

void apply(const Rule *rule, const Exiv2::Value &value, ImageMetadata *metadata)
{
    if (!rule)
        return;
    QVariantMap &group = metadata->*(rule->group);
    const QLatin1String key(rule->key);
    if (group.contains(key))
        return; // the first readable value wins
    if (auto converted = convert(value, rule->kind))
        group.insert(key, std::move(*converted));
}

void readImageLayout(quint16 tag, const Exiv2::Value &value, ImageMetadata *metadata)
{
    switch (tag) {
    case 0x0102: // BitsPerSample
        metadata->bitsPerSample = int(integerAt(value, 0).value_or(0));
        break;
    case 0x0106: // PhotometricInterpretation
        metadata->photometric = int(integerAt(value, 0).value_or(-1));
        break;
    case 0x0152: // ExtraSamples
        metadata->extraSamples = value.count() > 0;
        break;
    default: break;
    }
}

void readExif(const Exiv2::ExifData &exif, ImageMetadata *metadata)
{
    for (const Exiv2::Exifdatum &datum : exif) {
        const std::string group = datum.groupName();
        const quint16 tag = datum.tag();
        const Exiv2::Value &value = datum.value();
        if (group == "Image") {
            readImageLayout(tag, value, metadata);
            apply(findRule(ImageRules, tag), value, metadata);
        } else if (group == "Photo") {
            apply(findRule(PhotoRules, tag), value, metadata);
        } else if (group == "GPSInfo") {
            apply(findRule(GpsRules, tag), value, metadata);
        } else if (group == "Canon") {
            apply(findRule(CanonRules, tag), value, metadata);
        } else if (group == "Nikon3") {
            apply(findRule(NikonRules, tag), value, metadata);
        }
    }

    const QVariantMap &tiff = metadata->tiff;
    const int orientation = tiff.value(QStringLiteral("Orientation")).toInt();
    if (orientation >= 1 && orientation <= 8)
        metadata->orientation = orientation;
    // ResolutionUnit: 1 none, 2 inch (the default), 3 centimetre.
    const int unit = tiff.value(QStringLiteral("ResolutionUnit"), 2).toInt();
    const double perInch = unit == 2 ? 1.0 : unit == 3 ? 2.54 : 0.0;
    const QVariant x = tiff.value(QStringLiteral("XResolution"));
    const QVariant y = tiff.value(QStringLiteral("YResolution"));
    if (perInch > 0 && x.isValid() && y.isValid() && x.toDouble() > 0 && y.toDouble() > 0) {
        metadata->dpiWidth = x.toDouble() * perInch;
        metadata->dpiHeight = y.toDouble() * perInch;
    }
}

void readIptc(const Exiv2::IptcData &iptc, ImageMetadata *metadata)
{
    QVariantList keywords;
    for (const Exiv2::Iptcdatum &datum : iptc) {
        if (datum.record() != Exiv2::IptcDataSets::application2)
            continue;
        const quint16 dataset = datum.tag();
        for (const IptcRule &rule : IptcRules) {
            if (rule.dataset != dataset)
                continue;
            const auto text = textOf(datum.value());
            if (!text)
                break;
            if (dataset == IptcKeywords)
                keywords.append(*text);
            else if (!metadata->iptc.contains(QLatin1String(rule.key)))
                metadata->iptc.insert(QLatin1String(rule.key), *text);
            break;
        }
    }
    if (!keywords.isEmpty())
        metadata->iptc.insert(QStringLiteral("Keywords"), keywords);
}

// An XMP text: the default language of a language alternative (else its first), the items of a
// bag or sequence joined by commas (several creators), else the value as written.
QString xmpText(const Exiv2::Value &value)
{
    if (const auto *langAlt = dynamic_cast<const Exiv2::LangAltValue *>(&value)) {
        const auto found = langAlt->value_.find("x-default");
        if (found != langAlt->value_.end())
            return decodeText(found->second);
        return langAlt->value_.empty() ? QString() : decodeText(langAlt->value_.begin()->second);
    }
    if (const auto *array = dynamic_cast<const Exiv2::XmpArrayValue *>(&value)) {
        QStringList items;
        for (long i = 0; i < array->count(); ++i) {
            if (const QString text = decodeText(array->toString(i)); !text.isEmpty())
                items.append(text);
        }
        return items.join(QStringLiteral(", "));
    }
    return decodeText(value.toString());
}

// The items of an XMP bag or sequence (one item for a plain text), blanks left out.
QVariantList xmpTexts(const Exiv2::Value &value)
{
    QVariantList texts;
    if (const auto *array = dynamic_cast<const Exiv2::XmpArrayValue *>(&value)) {
        for (long i = 0; i < array->count(); ++i) {
            if (const QString text = decodeText(array->toString(i)); !text.isEmpty())
                texts.append(text);
        }
    } else if (const QString text = xmpText(value); !text.isEmpty()) {
        texts.append(text);
    }
    return texts;
}

// Dublin Core properties that stand for IPTC datasets: many programs write the description,
// keywords, title and creator to XMP only. They fill the IPTC group where the file's IPTC block
// has no value of its own, so the IPTC block wins when both are there.
struct XmpIptcRule
{
    const char *xmpKey;
    const char *iptcKey;
    bool list;
};

// In order of precedence: a headline of its own before the title.
constexpr XmpIptcRule XmpIptcRules[] = {
    {"Xmp.dc.subject", "Keywords", true},  {"Xmp.dc.description", "Caption/Abstract", false},
    {"Xmp.dc.title", "ObjectName", false}, {"Xmp.photoshop.Headline", "Headline", false},
    {"Xmp.dc.title", "Headline", false},   {"Xmp.dc.creator", "Byline", false},
};

void readXmpIptc(const Exiv2::XmpData &xmp, ImageMetadata *metadata)
{
    for (const XmpIptcRule &rule : XmpIptcRules) {
        const QString iptcKey = QLatin1String(rule.iptcKey);
        // The IPTC block is read first; what it (or a rule before) gave stays.
        if (metadata->iptc.contains(iptcKey))
            continue;
        const auto datum = xmp.findKey(Exiv2::XmpKey(rule.xmpKey));
        if (datum == xmp.end())
            continue;
        if (rule.list) {
            if (const QVariantList texts = xmpTexts(datum->value()); !texts.isEmpty())
                metadata->iptc.insert(iptcKey, texts);
        } else if (const QString text = xmpText(datum->value()); !text.isEmpty()) {
            metadata->iptc.insert(iptcKey, text);
        }
    }
}

// The few XMP properties that have a place in the groups.
void readXmp(const Exiv2::XmpData &xmp, ImageMetadata *metadata)
{
    readXmpIptc(xmp, metadata);
    for (const Exiv2::Xmpdatum &datum : xmp) {
        const std::string key = datum.key();
        const Exiv2::Value &value = datum.value();
        if (key == "Xmp.xmp.Rating") {
            const long rating = value.toLong(0);
            if (value.ok())
                metadata->iptc.insert(QStringLiteral("StarRating"), int(rating));
        } else if (key == "Xmp.xmpRights.UsageTerms") {
            const QString usageTerms = xmpText(value);
            if (!usageTerms.isEmpty())
                metadata->iptc.insert(QStringLiteral("RightsUsageTerms"), usageTerms);
        } else if (key == "Xmp.tiff.Orientation" && !metadata->orientation) {
            const long orientation = value.toLong(0);
            if (value.ok() && orientation >= 1 && orientation <= 8)
                metadata->orientation = int(orientation);
        }
    }
}

void logExiv2(int, const char *message)
{
    logDebug(QStringLiteral("Exiv2: ") + QString::fromUtf8(message).trimmed());
}

// The XMP toolkit keeps global state, its table of namespaces among it. Exiv2 takes this lock
// only while it registers namespaces, yet parsing a packet registers the packet's own: two
// threads parsing XMP at once fail now and then ("Schema namespace URI and prefix mismatch") and
// lose the file's XMP. So the readers also hold it while Exiv2 parses anything that may carry
// XMP; recursive, because Exiv2 takes it again inside.
std::recursive_mutex s_xmpToolkitMutex;

void lockXmpToolkit(void *, bool lock)
{
    if (lock)
        s_xmpToolkitMutex.lock();
    else
        s_xmpToolkitMutex.unlock();
}

// Runs `readAll` and turns whatever Exiv2 throws into a false answer and a message.
template<typename ReadAll>
bool guarded(ReadAll readAll, QString *error)
{
    ExifReader::initialize();
    try {
        return readAll();
    } catch (const Exiv2::AnyError &e) {
        *error = QString::fromUtf8(e.what());
    } catch (const std::exception &e) {
        *error = QStringLiteral("metadata reader failed: ") + QString::fromUtf8(e.what());
    } catch (...) {
        *error = QStringLiteral("metadata reader failed");
    }
    return false;
}

// Whether a JPEG's metadata segments hold an XMP packet (standard or extended).
bool holdsXmp(const QByteArray &jpegMetadata)
{
    return jpegMetadata.contains("http://ns.adobe.com/xap/1.0/") || jpegMetadata.contains("http://ns.adobe.com/xmp/");
}

template<typename Open>
bool read(Open open, bool mayHoldXmp, ImageMetadata *metadata, QString *error)
{
    return guarded(
        [&] {
            Exiv2::Image::AutoPtr image = open();
            if (!image.get())
                throw Exiv2::Error(Exiv2::kerFileContainsUnknownImageType);
            {
                const auto lock = mayHoldXmp ? ExifReader::lockXmpParsing() : std::unique_lock<std::recursive_mutex>();
                image->readMetadata();
            }
            readExif(image->exifData(), metadata);
            readIptc(image->iptcData(), metadata);
            readXmp(image->xmpData(), metadata);
            if (image->iccProfileDefined()) {
                const Exiv2::DataBuf *profile = image->iccProfile();
                metadata->iccProfile = QByteArray(reinterpret_cast<const char *>(profile->pData_), profile->size_);
            }
            metadata->mimeType = QString::fromStdString(image->mimeType());
            metadata->pixelWidth = image->pixelWidth();
            metadata->pixelHeight = image->pixelHeight();
            return true;
        },
        error);
}

} // namespace

namespace ExifReader {

void initialize()
{
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::warn);
        Exiv2::LogMsg::setHandler(logExiv2);
        Exiv2::XmpParser::initialize(lockXmpToolkit, nullptr);
        Exiv2::enableBMFF(true);
    });
}

std::unique_lock<std::recursive_mutex> lockXmpParsing()
{
    return std::unique_lock(s_xmpToolkitMutex);
}

bool readFile(const QByteArray &nativePath, ImageMetadata *metadata, QString *error)
{
    const std::string path(nativePath.constData(), size_t(nativePath.size()));
    return read([&] { return Exiv2::ImageFactory::open(path); }, true, metadata, error);
}

bool readBuffer(const QByteArray &bytes, ImageMetadata *metadata, QString *error)
{
    return read(
        [&] {
            return Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte *>(bytes.constData()),
                                             long(bytes.size()));
        },
        holdsXmp(bytes), metadata, error);
}

bool readBlocks(const QByteArray &exif, const QByteArray &xmpPacket, ImageMetadata *metadata, QString *error)
{
    return guarded(
        [&] {
            if (!exif.isEmpty()) {
                Exiv2::ExifData exifData;
                Exiv2::ExifParser::decode(exifData, reinterpret_cast<const Exiv2::byte *>(exif.constData()),
                                          uint32_t(exif.size()));
                readExif(exifData, metadata);
            }
            if (!xmpPacket.isEmpty()) {
                Exiv2::XmpData xmpData;
                const auto lock = lockXmpParsing();
                if (Exiv2::XmpParser::decode(xmpData, xmpPacket.toStdString()) == 0)
                    readXmp(xmpData, metadata);
            }
            return true;
        },
        error);
}

} // namespace ExifReader
