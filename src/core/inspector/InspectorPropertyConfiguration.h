#pragma once

#include "core/imaging/ImagePropertiesItem.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

// Every property the inspector knows, by the name its value cache uses (identifierName()).
enum class InspectorIdentifier {
    none,
    filename,
    fileKind,
    fileSize,
    fileUTI,
    fileTags,
    fileCreationDate,
    fileModificationDate,
    fileAddedDate,
    portraitLandscapeInformation,
    dimensions,
    megapixels,
    colorInformation,
    colorProfile,
    hasAlphaChannel,
    orientation,
    fNumber,
    shutterSpeed,
    aperture,
    focalLength,
    iso,
    exposureProgram,
    meteringMode,
    exposureMode,
    exposureTime,
    lightSource,
    flashStatus,
    whiteBalance,
    fullDateTaken,
    fullDateDigitized,
    lensModel,
    lensSerialNumber,
    cameraUserComment,
    cameraOwnerName,
    cameraSerialNumber,
    firmwareVersion,
    imageNumber,
    fileSource,
    keywords,
    locationCode,
    locationName,
    caption,
    headline,
    credit,
    starRating,
    copyrightNotice,
    rightsUsageTerms,
    bylineInformation,
    sourceOwner,
    subLocation,
    city,
    state,
    country,
    countryCode,
    textualLocation,
    softwareInformation,
    gpsInformation,
    latLongInformation,
    altitudeInformation,
    positioningError,
    imageDirection,
    speedInformation,
    gpsTimestamp,
    gpsDateStamp,
    documentName,
    imageDescription,
    artist,
    tiffCopyright,
    tiffDateTime,
    tiffHardwareManufacturer,
    tiffHardwareModel,
    tiffSoftwareInfo,
    tiffHostComputer,
};

// The case name: "filename", "tiffHardwareModel", ...
QString identifierName(InspectorIdentifier identifier);

enum class InspectorRowType { header, text, map };

enum class InspectorFormat {
    string,
    IPTCDate,
    IPTCTime,
    TIFFDate,
    EXIFDate,
    EXIFDateWithOffset,
    stringArray,
    boolean,
    integer,
    orientation,
    meteringMode,
    exposureProgram,
    exposureMode,
    lightSource,
    flashStatus,
    whiteBalance,
    fileSource,
    decimal,
    oneDecimal,
    twoDecimals,
    noDecimals,
    exposureTime,
};

// How a row reads its value from a record: one accessor per kind of value, or none for a header.
struct InspectorProperty
{
    struct Header
    { };
    using String = std::optional<QString> (*)(const ImagePropertiesItem &);
    using Integer = std::optional<qint64> (*)(const ImagePropertiesItem &);
    using Real = std::optional<double> (*)(const ImagePropertiesItem &);
    using Boolean = std::optional<bool> (*)(const ImagePropertiesItem &);
    using StringArray = std::optional<QStringList> (*)(const ImagePropertiesItem &);
    using Gps = std::optional<GPSInfo> (*)(const ImagePropertiesItem &);

    std::variant<Header, String, Integer, Real, Boolean, StringArray, Gps> accessor;
};

// One row the inspector can show: its label (ending in a colon; a header's title), how it is
// drawn, how its value is printed and where the value comes from.
struct InspectorPropertyConfiguration
{
    InspectorIdentifier identifier = InspectorIdentifier::none;
    QString label;
    InspectorRowType rowType = InspectorRowType::text;
    InspectorFormat format = InspectorFormat::string;
    InspectorProperty property;

    bool isHeader() const { return rowType == InspectorRowType::header; }
};
