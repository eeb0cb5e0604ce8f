#include "core/model/PXFile.h"

#include "core/app/Log.h"
#include "core/app/Translate.h"
#include "core/fs/Applications.h"
#include "core/fs/TypeIdentifiers.h"
#include "core/fs/ZQFileRegistry.h"
#include "core/fs/ZQFolderLoadOperation.h"
#include "core/fs/ZQFolderSubscription.h"
#include "core/model/ColorLabels.h"
#include "core/model/DisplayFormats.h"
#include "core/model/FlagStore.h"
#include "core/model/ImagePropertyKeys.h"
#include "core/model/MediaTypes.h"
#include "core/model/TextHelpers.h"

#include <QFile>
#include <QLocale>

#include <cmath>
#include <mutex>

namespace {

constexpr Translator tr("PXFile");

std::optional<double> numberValue(const QVariantMap &map, const char *key)
{
    const QVariant value = map.value(QLatin1String(key));
    if (!value.isValid())
        return std::nullopt;
    bool ok = false;
    const double number = value.toDouble(&ok);
    return ok && value.typeId() != QMetaType::QString ? std::optional<double>(number) : std::nullopt;
}

QString stringValue(const QVariantMap &map, const char *key)
{
    const QVariant value = map.value(QLatin1String(key));
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

} // namespace

struct PXFile::ImageFacts
{
    QSizeF trueDimensions;
    QSizeF dimensions;
    double megapixels = 0;
    int generalOrientation = 0;
    QString dimensionsString;
    QString megapixelString;
    QString generalOrientationString;
    QString imageDepthString;
    QString ICCProfileString;
    std::optional<qint64> ISO;
    QString ISOString;
    std::optional<double> exposureTime;
    QString exposureTimeString;
    std::optional<double> fNumber;
    QString fNumberString;
    std::optional<double> focalLength;
    QString focalLengthString;
    QString resolutionString;
    QString cameraModelString;
    QDateTime EXIFDate;
    QString EXIFDateString;
};

class PXFileFactory
{
public:
    static ZQStandardFile *make(const QByteArray &nativePath, ZQEntryKind kind)
    {
        auto *file = new PXFile(nativePath, kind);
        // A listed plain file: whether it is an image follows from its name alone, and working
        // it out now, while the new record is in the cache, costs a fraction of what asking
        // later costs when a folder of 100 000 counts its images.
        if (kind == ZQEntryKind::regular)
            file->isImage();
        return file;
    }
};

PXFile::PXFile(const QByteArray &nativePath, ZQEntryKind kind)
    : ZQStandardFile(nativePath, kind)
{ }

void PXFile::install()
{
    static std::once_flag once;
    std::call_once(once, [] { ZQFileRegistry::shared().setFactory(&PXFileFactory::make); });
}

// Any program that links the file record hands out file records from every listing.
static const bool s_installed = (PXFile::install(), true);

PXFilePtr PXFile::fileForPath(const QString &path)
{
    install();
    return from(newFileForPath(path));
}

PXFilePtr PXFile::fileForNativePath(const QByteArray &nativePath)
{
    install();
    return from(newFileForNativePath(nativePath));
}

PXFilePtr PXFile::from(const ZQFilePtr &file)
{
    return std::static_pointer_cast<PXFile>(file);
}

// MARK: kinds

quint8 PXFile::kindFlag(std::atomic<quint8> &slot, bool (PXFile::*test)() const) const
{
    const quint8 cached = slot.load(std::memory_order_acquire);
    if (cached != notComputed)
        return cached;
    const quint8 value = (!isPlaceholder() && (this->*test)()) ? 1 : 0;
    slot.store(value, std::memory_order_release);
    return value;
}

bool PXFile::testImage() const
{
    static const QStringList types = {QStringLiteral("public.image"),
                                      QStringLiteral("com.adobe.encapsulated-postscript")};
    return utiConformsToUTIs(resolvedTypeIdentifier(), types);
}

bool PXFile::testAudio() const
{
    return TypeIdentifiers::conformsTo(resolvedTypeIdentifier(), QStringLiteral("public.audio"));
}

bool PXFile::testText() const
{
    return TypeIdentifiers::conformsTo(resolvedTypeIdentifier(), QStringLiteral("public.text"));
}

bool PXFile::testVideo() const
{
    // The file's own type: a link to a film is not a film.
    return utiConformsToUTIs(typeIdentifier(), MediaTypes::audiovisualTypes());
}

bool PXFile::isImage() const
{
    return kindFlag(m_isImage, &PXFile::testImage) == 1;
}
bool PXFile::isAudio() const
{
    return kindFlag(m_isAudio, &PXFile::testAudio) == 1;
}
bool PXFile::isVideo() const
{
    return kindFlag(m_isVideo, &PXFile::testVideo) == 1;
}
bool PXFile::isText() const
{
    return kindFlag(m_isText, &PXFile::testText) == 1;
}

bool PXFile::isPanorama() const
{
    const auto facts = imageFacts();
    const double width = facts->dimensions.width();
    const double height = facts->dimensions.height();
    return height > 5 * width || width > 5 * height;
}

QString PXFile::genericTypeString() const
{
    if (isImage())
        return QStringLiteral("image");
    if (isAudio())
        return QStringLiteral("music");
    if (isText())
        return QStringLiteral("text");
    if (isVideo())
        return QStringLiteral("movie");
    if (isDirectory())
        return QStringLiteral("folder");
    if (isApplication())
        return QStringLiteral("application");
    return QStringLiteral("file");
}

QString PXFile::linkTypeString() const
{
    return isRealFile() ? QStringLiteral("file") : QStringLiteral("alias");
}

QString PXFile::kindString() const
{
    return TypeIdentifiers::description(typeIdentifier());
}

// MARK: sizes and dates

qint64 PXFile::fileSize() const
{
    {
        QMutexLocker locker(&m_lock);
        if (m_fileSize)
            return *m_fileSize;
    }
    qint64 size = 0;
    if (!isPlaceholder() && !isPlainDirectory()) {
        size = ZQStandardFile::fileSize();
        if (size < 0) {
            logError(QStringLiteral("Error getting file size for file %1").arg(path()));
            size = 0;
        }
    }
    const QString text = (isPlaceholder() || isPlainDirectory()) ? QString() : byteCountString(size);
    QMutexLocker locker(&m_lock);
    m_fileSize = size;
    m_fileSizeString = text;
    return size;
}

QString PXFile::fileSizeString() const
{
    fileSize();
    QMutexLocker locker(&m_lock);
    return m_fileSizeString;
}

QString PXFile::cachedDateString(std::optional<QString> &slot, QDateTime (ZQStandardFile::*date)() const) const
{
    {
        QMutexLocker locker(&m_lock);
        if (slot)
            return *slot;
    }
    const QString text =
        isPlaceholder() ? QString() : formattedDate((this->*date)(), DateStyle::medium, DateStyle::medium);
    QMutexLocker locker(&m_lock);
    slot = text;
    return text;
}

QString PXFile::modificationDateString() const
{
    return cachedDateString(m_modificationDateString, &ZQStandardFile::modificationDate);
}

QString PXFile::creationDateString() const
{
    return cachedDateString(m_creationDateString, &ZQStandardFile::creationDate);
}

QString PXFile::dateAddedString() const
{
    return cachedDateString(m_dateAddedString, &ZQStandardFile::dateAdded);
}

QString PXFile::accessDateString() const
{
    cachedDateString(m_accessDateString, &ZQStandardFile::accessDate);
    // Answers the creation slot, as this property always has; callers rely on it.
    QMutexLocker locker(&m_lock);
    return m_creationDateString.value_or(QString());
}

QString PXFile::bestCreationDateString() const
{
    const QString exif = EXIFDateString();
    return exif.isEmpty() ? creationDateString() : exif;
}

// MARK: names

QString PXFile::parentDisplayName() const
{
    const ZQFilePtr parent = parentItem();
    return parent ? parent->displayName() : QString();
}

QString PXFile::extensionlessFileName() const
{
    const qsizetype dot = name().lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name().left(dot) : name();
}

QString PXFile::fileNameExtension() const
{
    const qsizetype dot = name().lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name().mid(dot + 1) : QString();
}

const QByteArray &PXFile::nameSortKey() const
{
    {
        QMutexLocker locker(&m_lock);
        if (!m_nameSortKey.isNull())
            return m_nameSortKey;
    }
    QByteArray key = finderStyleSortKey(displayName());
    if (key.isNull())
        key = QByteArray("");
    QMutexLocker locker(&m_lock);
    if (m_nameSortKey.isNull())
        m_nameSortKey = key;
    return m_nameSortKey; // never replaced once set: the display name is constant
}

// MARK: image facts

namespace {
std::atomic<PXFile::ImagePropertiesReader> installedImagePropertiesReader = nullptr;
}

void PXFile::setImagePropertiesReader(ImagePropertiesReader reader)
{
    installedImagePropertiesReader = reader;
}

PXFile::ImagePropertiesReader PXFile::imagePropertiesReader()
{
    return installedImagePropertiesReader;
}

bool PXFile::findAllImageInfo() const
{
    {
        QMutexLocker locker(&m_lock);
        if (m_imageProperties)
            return true;
    }
    QVariantMap properties;
    bool found = false;
    if (!isPlaceholder() && isImage()) {
        const ImagePropertiesReader reader = imagePropertiesReader();
        if (!reader)
            qFatal("No image properties reader is installed: the program must call ImageSource::install() "
                   "at start-up before asking a file for its image facts");
        QString error;
        found = reader(resolvedNativePath(), resolvedTypeIdentifier(), &properties, &error);
        if (!found)
            logDebug(QStringLiteral("Cannot read image properties of %1: %2").arg(path(), error));
    }
    QMutexLocker locker(&m_lock);
    if (!m_imageProperties)
        m_imageProperties = properties;
    return found;
}

void PXFile::cacheImageProperties(const QVariantMap &properties) const
{
    QMutexLocker locker(&m_lock);
    if (!m_imageProperties)
        m_imageProperties = properties;
}

QVariantMap PXFile::imageProperties() const
{
    findAllImageInfo();
    QMutexLocker locker(&m_lock);
    return m_imageProperties ? *m_imageProperties : QVariantMap();
}

int PXFile::orientation() const
{
    {
        QMutexLocker locker(&m_lock);
        if (m_imageOrientation >= 0)
            return m_imageOrientation;
    }
    const QVariant value = imageProperties().value(QLatin1String(ImagePropertyKey::Orientation));
    const int orientation = value.isValid() ? value.toInt() : 1;
    QMutexLocker locker(&m_lock);
    m_imageOrientation = orientation;
    return orientation;
}

std::shared_ptr<const PXFile::ImageFacts> PXFile::imageFacts() const
{
    {
        QMutexLocker locker(&m_lock);
        if (m_imageFacts)
            return m_imageFacts;
    }
    const QVariantMap properties = imageProperties();
    const QVariantMap exif = properties.value(QLatin1String(ImagePropertyKey::ExifDictionary)).toMap();
    const QVariantMap tiff = properties.value(QLatin1String(ImagePropertyKey::TIFFDictionary)).toMap();
    const QLocale locale;
    auto facts = std::make_shared<ImageFacts>();

    const double storedWidth = numberValue(properties, ImagePropertyKey::PixelWidth).value_or(0);
    const double storedHeight = numberValue(properties, ImagePropertyKey::PixelHeight).value_or(0);
    facts->trueDimensions = QSizeF(storedWidth, storedHeight);
    const int turn = orientation();
    const bool quarterTurned = turn == 6 || turn == 8;
    const double width = quarterTurned ? storedHeight : storedWidth;
    const double height = quarterTurned ? storedWidth : storedHeight;
    facts->dimensions = QSizeF(width, height);
    facts->megapixels = width * height / 1000000.0;
    if (width > 0 && height > 0) {
        facts->dimensionsString = QStringLiteral("%1x%2").arg(qint64(width)).arg(qint64(height));
        facts->megapixelString = tr("%1 MP").arg(locale.toString(facts->megapixels, 'f', 1));
        if (width > height) {
            facts->generalOrientation = 3;
            facts->generalOrientationString = tr("Landscape");
        } else if (width < height) {
            facts->generalOrientation = 1;
            facts->generalOrientationString = tr("Portrait");
        } else {
            facts->generalOrientation = 2;
            facts->generalOrientationString = tr("Square");
        }
    }

    const std::optional<double> depth = numberValue(properties, ImagePropertyKey::Depth);
    if (depth && *depth != -1) {
        const QString model = stringValue(properties, ImagePropertyKey::ColorModel);
        const bool alpha = properties.value(QLatin1String(ImagePropertyKey::HasAlpha)).toBool();
        if (model.isEmpty())
            facts->imageDepthString = tr("%1-bit").arg(qint64(*depth));
        else if (alpha)
            facts->imageDepthString = tr("%1-bit %2(A)").arg(qint64(*depth)).arg(model);
        else
            facts->imageDepthString = tr("%1-bit %2").arg(qint64(*depth)).arg(model);
    }
    facts->ICCProfileString = stringValue(properties, ImagePropertyKey::ProfileName);

    const QVariantList isoSpeeds = exif.value(QStringLiteral("ISOSpeedRatings")).toList();
    if (!isoSpeeds.isEmpty()) {
        facts->ISO = isoSpeeds.first().toLongLong();
        facts->ISOString = tr("ISO %1").arg(*facts->ISO);
    }
    facts->exposureTime = numberValue(exif, "ExposureTime");
    if (facts->exposureTime)
        facts->exposureTimeString = exposureFractionString(*facts->exposureTime);
    facts->fNumber = numberValue(exif, "FNumber");
    if (facts->fNumber)
        facts->fNumberString = tr("f%1").arg(locale.toString(*facts->fNumber, 'f', 1));
    facts->focalLength = numberValue(exif, "FocalLength");
    if (facts->focalLength)
        facts->focalLengthString = tr("%1mm").arg(qint64(*facts->focalLength));
    const std::optional<double> dpiWidth = numberValue(properties, ImagePropertyKey::DPIWidth);
    const std::optional<double> dpiHeight = numberValue(properties, ImagePropertyKey::DPIHeight);
    if (dpiWidth && dpiHeight)
        facts->resolutionString = tr("%1x%2 DPI").arg(qRound64(*dpiWidth)).arg(qRound64(*dpiHeight));
    facts->cameraModelString = stringValue(tiff, "Model").trimmed();

    QString dateText = stringValue(exif, "DateTimeOriginal");
    if (dateText.isEmpty())
        dateText = stringValue(tiff, "DateTime");
    if (!dateText.isEmpty()) {
        facts->EXIFDate = parsedDate(dateText, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
        facts->EXIFDateString = formattedDate(facts->EXIFDate, DateStyle::medium, DateStyle::medium);
    }

    QMutexLocker locker(&m_lock);
    if (!m_imageFacts)
        m_imageFacts = std::move(facts);
    return m_imageFacts;
}

QSizeF PXFile::trueDimensions() const
{
    return imageFacts()->trueDimensions;
}
QSizeF PXFile::dimensions() const
{
    return imageFacts()->dimensions;
}
double PXFile::dimensionsWidth() const
{
    return imageFacts()->dimensions.width();
}
double PXFile::dimensionsHeight() const
{
    return imageFacts()->dimensions.height();
}
double PXFile::megapixels() const
{
    return imageFacts()->megapixels;
}
int PXFile::generalOrientation() const
{
    return imageFacts()->generalOrientation;
}
QString PXFile::dimensionsString() const
{
    return imageFacts()->dimensionsString;
}
QString PXFile::megapixelString() const
{
    return imageFacts()->megapixelString;
}
QString PXFile::generalOrientationString() const
{
    return imageFacts()->generalOrientationString;
}
QString PXFile::imageDepthString() const
{
    return imageFacts()->imageDepthString;
}
QString PXFile::ICCProfileString() const
{
    return imageFacts()->ICCProfileString;
}
std::optional<qint64> PXFile::ISO() const
{
    return imageFacts()->ISO;
}
QString PXFile::ISOString() const
{
    return imageFacts()->ISOString;
}
std::optional<double> PXFile::exposureTime() const
{
    return imageFacts()->exposureTime;
}
QString PXFile::exposureTimeString() const
{
    return imageFacts()->exposureTimeString;
}
std::optional<double> PXFile::fNumber() const
{
    return imageFacts()->fNumber;
}
QString PXFile::fNumberString() const
{
    return imageFacts()->fNumberString;
}
std::optional<double> PXFile::focalLength() const
{
    return imageFacts()->focalLength;
}
QString PXFile::focalLengthString() const
{
    return imageFacts()->focalLengthString;
}
QString PXFile::resolutionString() const
{
    return imageFacts()->resolutionString;
}
QString PXFile::cameraModelString() const
{
    return imageFacts()->cameraModelString;
}
QDateTime PXFile::EXIFDate() const
{
    return imageFacts()->EXIFDate;
}
QString PXFile::EXIFDateString() const
{
    return imageFacts()->EXIFDateString;
}

// MARK: labels

int PXFile::finderLabelSortValue() const
{
    {
        QMutexLocker locker(&m_lock);
        if (m_labelValue && !m_labelStale)
            return *m_labelValue;
    }
    const int value = isPlaceholder() ? 0 : ColorLabels::readLabel(nativePath());
    QMutexLocker locker(&m_lock);
    // A label written here while the disk was read wins over what was read.
    if (!m_labelValue || m_labelStale) {
        m_labelValue = value;
        m_labelStale = false;
    }
    return *m_labelValue;
}

QString PXFile::finderLabelTitle() const
{
    return ColorLabels::title(finderLabelSortValue());
}

bool PXFile::setFinderLabel(int value, QString *error)
{
    if (!ColorLabels::writeLabel(nativePath(), value, error))
        return false;
    QMutexLocker locker(&m_lock);
    m_labelValue = value;
    m_labelStale = false;
    return true;
}

// MARK: flags

FileFlag PXFile::storedFlag() const
{
    {
        QMutexLocker locker(&m_lock);
        if (m_storedFlag && !m_storedFlagStale)
            return *m_storedFlag;
    }
    const FileFlag flag = isPlaceholder() ? FileFlag::none : FlagStore::shared().read(nativePath());
    QMutexLocker locker(&m_lock);
    // A mark the user made while the disk was read wins over what was read.
    if (!m_storedFlag || m_storedFlagStale) {
        m_storedFlag = flag;
        m_storedFlagStale = false;
    }
    return *m_storedFlag;
}

void PXFile::setCachedStoredFlag(FileFlag flag) const
{
    QMutexLocker locker(&m_lock);
    m_storedFlag = flag;
    m_storedFlagStale = false;
}

void PXFile::warmAttributes() const
{
    finderLabelSortValue();
    storedFlag();
}

std::optional<int> PXFile::cachedFinderLabelSortValue() const
{
    QMutexLocker locker(&m_lock);
    return m_labelValue;
}

std::optional<FileFlag> PXFile::cachedStoredFlag() const
{
    QMutexLocker locker(&m_lock);
    return m_storedFlag;
}

bool PXFile::hasCachedAttributes() const
{
    QMutexLocker locker(&m_lock);
    return m_labelValue && !m_labelStale && m_storedFlag && !m_storedFlagStale;
}

// MARK: metadata and applications

const QStringList &PXFile::editableMetadataImageTypes()
{
    static const QStringList types = {QStringLiteral("public.jpeg"), QStringLiteral("public.camera-raw-image"),
                                      QStringLiteral("public.png"), QStringLiteral("public.tiff")};
    return types;
}

bool PXFile::hasEditableImageMetadata() const
{
    {
        QMutexLocker locker(&m_lock);
        if (m_imageMetadataEditable != notComputed)
            return m_imageMetadataEditable == 1;
    }
    const bool editable =
        !isPlaceholder() && isWritable() && utiConformsToUTIs(typeIdentifier(), editableMetadataImageTypes());
    QMutexLocker locker(&m_lock);
    m_imageMetadataEditable = editable ? 1 : 0;
    return editable;
}

PXFilePtr PXFile::preferredApplication() const
{
    if (isPlaceholder())
        return nullptr;
    const QString desktopFile =
        Applications::defaultApplicationFile(TypeIdentifiers::preferredMimeType(typeIdentifier()), false);
    return desktopFile.isEmpty() ? nullptr : fileForPath(desktopFile);
}

PXFilePtr PXFile::editorApplication() const
{
    if (isPlaceholder())
        return nullptr;
    const QString desktopFile =
        Applications::defaultApplicationFile(TypeIdentifiers::preferredMimeType(typeIdentifier()), true);
    return desktopFile.isEmpty() ? nullptr : fileForPath(desktopFile);
}

// MARK: counting

bool PXFile::countOfFiles(int *files, int *folders, int *total, const std::function<bool(const PXFile &)> &fileFilter,
                          const std::function<bool(const PXFile &)> &directoryFilter) const
{
    if (!isDirectory())
        return true;
    if (!files && !folders && !total)
        return true;
    const ZQFilePtr folder = newFileForNativePath(resolvedNativePath());
    QList<ZQFilePtr> children;
    if (const auto subscription = ZQFolderSubscription::existingForFolder(folder)) {
        subscription->loadSynchronously();
        children = subscription->files();
    } else {
        const QList<ZQFolderListing> listings = ZQFolderLoadOperation::listSynchronously(folder, {});
        if (!listings.isEmpty())
            children = listings.first().files;
    }
    int fileCount = 0;
    int folderCount = 0;
    for (const ZQFilePtr &child : children) {
        const PXFile &record = *from(child);
        if (record.isDirectory()) {
            if (!directoryFilter || directoryFilter(record))
                ++folderCount;
        } else if (!fileFilter || fileFilter(record)) {
            ++fileCount;
        }
    }
    if (files)
        *files = fileCount;
    if (folders)
        *folders = folderCount;
    if (total)
        *total = fileCount + folderCount;
    return true;
}

// MARK: change events

QStringList PXFile::changedKeysForEvent(const ZQFileEvent &event)
{
    QStringList keys;
    {
        QMutexLocker locker(&m_lock);
        m_modificationDateString.reset();
        keys << QStringLiteral("modificationDateString");
        if (event.changesContentOrIdentity()) {
            if (m_imageProperties)
                keys << QStringLiteral("imageProperties");
            m_imageProperties.reset();
            m_imageFacts.reset();
            m_imageOrientation = -1;
            m_imageMetadataEditable = notComputed;
            m_labelValue.reset();
            m_storedFlag.reset();
            m_labelStale = false;
            m_storedFlagStale = false;
            const auto clearText = [&keys](std::optional<QString> &slot, const char *key) {
                if (slot) {
                    slot.reset();
                    keys << QLatin1String(key);
                }
            };
            clearText(m_creationDateString, "creationDateString");
            clearText(m_dateAddedString, "dateAddedString");
            clearText(m_accessDateString, "accessDateString");
            if (m_fileSize) {
                m_fileSize.reset();
                m_fileSizeString = QString();
                keys << QStringLiteral("fileSize") << QStringLiteral("fileSizeString");
            }
            const auto clearFlag = [&keys](std::atomic<quint8> &slot, const char *key) {
                if (slot.exchange(notComputed) != notComputed)
                    keys << QLatin1String(key);
            };
            clearFlag(m_isImage, "isImage");
            clearFlag(m_isAudio, "isMusic");
            clearFlag(m_isText, "isText");
            clearFlag(m_isVideo, "isMovie");
        } else if (event.type == ZQFileEventType::attributesChanged) {
            // Tags and flags live in extended attributes: read again on next use. Until then the
            // cells keep drawing the last values, which are usually this program's own.
            m_labelStale = true;
            m_storedFlagStale = true;
        }
    }
    ZQStandardFile::updateForEvent(event);
    return keys;
}

void PXFile::updateForEvent(const ZQFileEvent &event)
{
    changedKeysForEvent(event);
}
