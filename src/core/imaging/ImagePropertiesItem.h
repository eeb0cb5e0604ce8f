#pragma once

#include "core/model/PXFileForward.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <optional>
#include <utility>

class ImagePropertiesItem;
using ImagePropertiesItemPtr = std::shared_ptr<const ImagePropertiesItem>;

// Why a file gave no record.
enum class LoadingError {
    noURLForFile, // the record has no location that can be opened
    cannotLoadData, // the file cannot be read as an image
};

// A failed read: the file, the kind of failure and the reader's own words for it.
struct ImagePropertiesError
{
    PXFilePtr file;
    LoadingError error = LoadingError::cannotLoadData;
    QString reason;
};

// The size and modification time of a file's bytes, as a read found them: a record read from
// other bytes no longer describes the file.
struct ImageFileStamp
{
    qint64 size = -1; // -1: unknown
    qint64 modifiedNs = 0; // nanoseconds since 1970

    bool isValid() const { return size >= 0; }
    bool operator==(const ImageFileStamp &other) const = default;
    // The stamp of the file (after links) at `nativePath` now; invalid when it cannot be asked.
    static ImageFileStamp of(const QByteArray &nativePath);
};

// The position of a record as the map shows it.
struct GPSInfo
{
    PXFilePtr file;
    std::optional<std::pair<double, double>> coordinate; // latitude, longitude; signed
    std::optional<double> latitude; // as stored, unsigned
    std::optional<double> longitude;
    std::optional<double> altitude;
    std::optional<QString> latitudeReference;
    std::optional<QString> longitudeReference;
    std::optional<qint64> altitudeReference;
    std::optional<qint64> positioningError;

    bool operator==(const GPSInfo &other) const;
};

// The typed metadata of one file, read once from the property dictionary of its first image.
// Every field is absent when the dictionary lacks it or holds a value of another type (an ISO
// stored as one number instead of a list, a positioning error of 5.5). Values are kept as the
// file states them: apertures and shutter speeds as APEX values, dates as the file's texts.
// A record is immutable once made; a changed file gets a new record.
class ImagePropertiesItem
{
public:
    // A record that reads nothing: for files whose metadata is not shown (not images).
    explicit ImagePropertiesItem(PXFilePtr file);
    // A record filled from `properties` (the dictionary of image 0), read at `loadDate` from the
    // bytes of `stamp`; an invalid date stands for "never read".
    ImagePropertiesItem(PXFilePtr file, const QVariantMap &properties, const QDateTime &loadDate,
                        const ImageFileStamp &stamp = {});

    // Reads the file's properties. Answers null and sets `error` (and `reason`, a sentence for
    // the user) when the file has no location or cannot be opened as an image; a file that
    // opens but has no image or no properties gives a record without properties.
    // Safe to call on any thread.
    static ImagePropertiesItemPtr load(const PXFilePtr &file, LoadingError *error = nullptr, QString *reason = nullptr);

    // The "distant past": the load date of a record that was never read.
    static QDateTime distantPast();

    const PXFilePtr &file() const { return m_file; }
    bool hasMetadata() const { return m_hasMetadata; }
    const QVariantMap &originalProperties() const { return m_originalProperties; }
    const QDateTime &lastPropertyLoadDate() const { return m_lastPropertyLoadDate; }
    const ImageFileStamp &sourceStamp() const { return m_sourceStamp; }
    // Whether the file still has the size and modification time it was read with (asks the file
    // system: not on the GUI thread). False for a record whose source is unknown.
    bool isCurrent() const;

    // Signed latitude and longitude: negative in the south and west, (0, 0) without a position.
    std::pair<double, double> signedCoordinate() const;
    GPSInfo gpsInfo() const;

    // Values built from several fields; absent when their inputs are.
    std::optional<QString> colorInformation() const;
    std::optional<qint64> iso() const;
    std::optional<QString> fullDateTaken() const;
    std::optional<QString> fullDateDigitized() const;
    std::optional<QString> keywordsText() const;
    std::optional<QString> bylineInformation() const;
    std::optional<QString> textualLocation() const;
    std::optional<QString> softwareInformation() const;
    std::optional<QString> latLongInformation() const;
    std::optional<QString> altitudeInformation() const;
    std::optional<QString> positioningErrorInformation() const;
    std::optional<QString> speedInformation() const;

    // Top level.
    std::optional<qint64> orientation;
    std::optional<qint64> pixelWidth;
    std::optional<qint64> pixelHeight;
    std::optional<qint64> colorDepth;
    std::optional<bool> hasAlpha;
    std::optional<QString> colorSpace;
    std::optional<QString> colorProfile;
    std::optional<QString> colorModel;
    // Exif.
    std::optional<double> fNumber;
    std::optional<double> shutterSpeed;
    std::optional<double> aperture;
    std::optional<double> focalLength;
    std::optional<QList<qint64>> isoSpeeds;
    std::optional<qint64> meteringMode;
    std::optional<qint64> exposureMode;
    std::optional<double> exposureTime;
    std::optional<qint64> lightSource;
    std::optional<qint64> flashStatus;
    std::optional<qint64> whiteBalance;
    std::optional<qint64> exposureProgram;
    std::optional<QString> dateTimeOriginal;
    std::optional<QString> dateTimeDigitized;
    std::optional<QString> offsetTimeOriginal;
    std::optional<QString> offsetTimeDigitized;
    std::optional<QString> offsetTime;
    std::optional<QString> lensModel;
    std::optional<QString> lensSerialNumber;
    std::optional<QString> cameraUserComment;
    std::optional<QString> cameraOwnerName;
    std::optional<QString> cameraSerialNumber;
    std::optional<qint64> fileSource;
    // Exif auxiliary.
    std::optional<QString> firmwareVersion;
    std::optional<qint64> imageNumber;
    // IPTC.
    std::optional<QStringList> keywords;
    std::optional<QString> locationCode;
    std::optional<QString> locationName;
    std::optional<QString> caption;
    std::optional<QString> headline;
    std::optional<QString> credit;
    std::optional<qint64> starRating;
    std::optional<QString> copyrightNotice;
    std::optional<QString> rightsUsageTerms;
    std::optional<QString> byline;
    std::optional<QString> bylineTitle;
    std::optional<QString> sourceOwner;
    std::optional<QString> city;
    std::optional<QString> subLocation;
    std::optional<QString> state;
    std::optional<QString> country;
    std::optional<QString> countryCode;
    std::optional<QString> originatingSoftware;
    std::optional<QString> originatingSoftwareVersion;
    // GPS.
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::optional<double> altitude;
    std::optional<QString> latitudeReference;
    std::optional<QString> longitudeReference;
    std::optional<qint64> altitudeReference;
    std::optional<qint64> positioningError;
    std::optional<double> destinationBearing;
    std::optional<QString> destinationBearingReference;
    std::optional<double> imageDirection;
    std::optional<QString> imageDirectionReference;
    std::optional<double> speed;
    std::optional<QString> speedReference;
    std::optional<QString> gpsTimeStamp;
    std::optional<QString> gpsDateStamp;
    // TIFF.
    std::optional<QString> documentName;
    std::optional<QString> imageDescription;
    std::optional<QString> artist;
    std::optional<QString> tiffCopyright;
    std::optional<QString> tiffDateTime;
    std::optional<QString> tiffHardwareManufacturer;
    std::optional<QString> tiffHardwareModel;
    std::optional<QString> tiffSoftwareInfo;
    std::optional<QString> tiffHostComputer;

private:
    void readProperties(const QVariantMap &properties);

    PXFilePtr m_file;
    bool m_hasMetadata = false;
    QVariantMap m_originalProperties;
    QDateTime m_lastPropertyLoadDate;
    ImageFileStamp m_sourceStamp;
};
