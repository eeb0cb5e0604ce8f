#include "core/inspector/InspectorCatalogue.h"

#include "core/app/Translate.h"
#include "core/model/PXFile.h"

#include <QHash>

#include <array>

namespace {

using Id = InspectorIdentifier;
using F = InspectorFormat;
using Item = ImagePropertiesItem;
using Config = InspectorPropertyConfiguration;

constexpr Translator tr("InspectorCatalogue");

// Accessors for the stored fields of a record.
template<auto Field>
auto field()
{
    return +[](const Item &item) { return item.*Field; };
}

// Accessors for the values a record computes.
template<auto Method>
auto computed()
{
    return +[](const Item &item) { return (item.*Method)(); };
}

// Accessors for the texts of the record's file.
template<auto Method>
InspectorProperty::String fileText()
{
    return +[](const Item &item) -> std::optional<QString> {
        if (!item.file())
            return std::nullopt;
        return ((*item.file()).*Method)();
    };
}

std::optional<QString> fileName(const Item &item)
{
    if (!item.file())
        return std::nullopt;
    return item.file()->name();
}

std::optional<QString> fileUTI(const Item &item)
{
    if (!item.file())
        return std::nullopt;
    return item.file()->typeIdentifier();
}

std::optional<GPSInfo> gpsInfo(const Item &item)
{
    return item.gpsInfo();
}

Config text(Id id, const char *label, F format, InspectorProperty property)
{
    return Config{id, tr(label), InspectorRowType::text, format, property};
}

QList<Config> buildCatalogue()
{
    return {
        text(Id::filename, "File Name:", F::string, {&fileName}),
        text(Id::fileKind, "Kind:", F::string, {fileText<&PXFile::kindString>()}),
        text(Id::fileSize, "File Size:", F::string, {fileText<&PXFile::fileSizeString>()}),
        text(Id::fileUTI, "UTI:", F::string, {&fileUTI}),
        text(Id::fileTags, "Tags:", F::string, {fileText<&PXFile::finderLabelTitle>()}),
        text(Id::fileCreationDate, "Date Created:", F::string, {fileText<&PXFile::creationDateString>()}),
        text(Id::fileModificationDate, "Date Modified:", F::string, {fileText<&PXFile::modificationDateString>()}),
        text(Id::fileAddedDate, "Date Added:", F::string, {fileText<&PXFile::dateAddedString>()}),
        text(Id::portraitLandscapeInformation, "Orientation:", F::string,
             {fileText<&PXFile::generalOrientationString>()}),
        text(Id::dimensions, "Dimensions:", F::string, {fileText<&PXFile::dimensionsString>()}),
        text(Id::megapixels, "Megapixels:", F::string, {fileText<&PXFile::megapixelString>()}),
        text(Id::colorInformation, "Color:", F::string, {computed<&Item::colorInformation>()}),
        text(Id::colorProfile, "Profile:", F::string, {field<&Item::colorProfile>()}),
        text(Id::orientation, "Rotation:", F::orientation, {field<&Item::orientation>()}),
        text(Id::fNumber, "F Stop:", F::oneDecimal, {field<&Item::fNumber>()}),
        text(Id::focalLength, "Focal Length:", F::noDecimals, {field<&Item::focalLength>()}),
        text(Id::iso, "ISO:", F::stringArray, {computed<&Item::iso>()}),
        text(Id::exposureProgram, "Exposure Program:", F::exposureProgram, {field<&Item::exposureProgram>()}),
        text(Id::meteringMode, "Metering Mode:", F::meteringMode, {field<&Item::meteringMode>()}),
        text(Id::exposureMode, "Exposure Mode:", F::exposureMode, {field<&Item::exposureMode>()}),
        text(Id::exposureTime, "Exposure:", F::exposureTime, {field<&Item::exposureTime>()}),
        text(Id::lightSource, "Light Source:", F::lightSource, {field<&Item::lightSource>()}),
        text(Id::flashStatus, "Flash:", F::flashStatus, {field<&Item::flashStatus>()}),
        text(Id::whiteBalance, "White Balance:", F::whiteBalance, {field<&Item::whiteBalance>()}),
        text(Id::fullDateTaken, "Date Taken:", F::EXIFDateWithOffset, {computed<&Item::fullDateTaken>()}),
        text(Id::fullDateDigitized, "Date Digitized:", F::EXIFDateWithOffset, {computed<&Item::fullDateDigitized>()}),
        text(Id::lensModel, "Lens:", F::string, {field<&Item::lensModel>()}),
        text(Id::lensSerialNumber, "Lens Serial:", F::string, {field<&Item::lensSerialNumber>()}),
        text(Id::cameraOwnerName, "Camera Owner:", F::string, {field<&Item::cameraOwnerName>()}),
        text(Id::cameraSerialNumber, "Camera Serial:", F::string, {field<&Item::cameraSerialNumber>()}),
        text(Id::firmwareVersion, "Camera Firmware:", F::string, {field<&Item::firmwareVersion>()}),
        text(Id::imageNumber, "Image Number:", F::integer, {field<&Item::imageNumber>()}),
        text(Id::fileSource, "File Source:", F::fileSource, {field<&Item::fileSource>()}),
        text(Id::keywords, "Keywords:", F::stringArray, {computed<&Item::keywordsText>()}),
        text(Id::locationCode, "Location Code:", F::string, {field<&Item::locationCode>()}),
        text(Id::locationName, "Location Name:", F::string, {field<&Item::locationName>()}),
        text(Id::caption, "Caption:", F::string, {field<&Item::caption>()}),
        text(Id::headline, "Headline:", F::string, {field<&Item::headline>()}),
        text(Id::credit, "Credit:", F::string, {field<&Item::credit>()}),
        text(Id::starRating, "Star Rating:", F::integer, {field<&Item::starRating>()}),
        text(Id::copyrightNotice, "Copyright Notice:", F::string, {field<&Item::copyrightNotice>()}),
        text(Id::rightsUsageTerms, "Usage Terms:", F::string, {field<&Item::rightsUsageTerms>()}),
        text(Id::bylineInformation, "Byline:", F::string, {computed<&Item::bylineInformation>()}),
        text(Id::sourceOwner, "Owner:", F::string, {field<&Item::sourceOwner>()}),
        text(Id::subLocation, "Location:", F::string, {field<&Item::subLocation>()}),
        text(Id::city, "City:", F::string, {field<&Item::city>()}),
        text(Id::state, "State:", F::string, {field<&Item::state>()}),
        text(Id::country, "Country:", F::string, {field<&Item::country>()}),
        text(Id::countryCode, "Country Code:", F::string, {field<&Item::countryCode>()}),
        text(Id::textualLocation, "Location:", F::string, {computed<&Item::textualLocation>()}),
        text(Id::softwareInformation, "Software:", F::string, {computed<&Item::softwareInformation>()}),
        Config{Id::gpsInformation, tr("GPS:"), InspectorRowType::map, F::string, {&gpsInfo}},
        text(Id::latLongInformation, "Coordinates:", F::string, {computed<&Item::latLongInformation>()}),
        text(Id::altitudeInformation, "Altitude:", F::string, {computed<&Item::altitudeInformation>()}),
        text(Id::positioningError, "Error:", F::string, {computed<&Item::positioningErrorInformation>()}),
        // A real shown with the text format: printed with six decimals.
        text(Id::imageDirection, "Direction:", F::string, {field<&Item::imageDirection>()}),
        text(Id::speedInformation, "Speed:", F::string, {computed<&Item::speedInformation>()}),
        text(Id::gpsTimestamp, "Time:", F::string, {field<&Item::gpsTimeStamp>()}),
        text(Id::gpsDateStamp, "Date:", F::string, {field<&Item::gpsDateStamp>()}),
        text(Id::documentName, "Document Name:", F::string, {field<&Item::documentName>()}),
        text(Id::imageDescription, "Description:", F::string, {field<&Item::imageDescription>()}),
        text(Id::artist, "Artist:", F::string, {field<&Item::artist>()}),
        text(Id::tiffCopyright, "Copyright Notice:", F::string, {field<&Item::tiffCopyright>()}),
        text(Id::tiffDateTime, "Date:", F::TIFFDate, {field<&Item::tiffDateTime>()}),
        text(Id::tiffHardwareManufacturer, "Make:", F::string, {field<&Item::tiffHardwareManufacturer>()}),
        text(Id::tiffHardwareModel, "Model:", F::string, {field<&Item::tiffHardwareModel>()}),
        text(Id::tiffSoftwareInfo, "Software:", F::string, {field<&Item::tiffSoftwareInfo>()}),
        text(Id::tiffHostComputer, "Computer:", F::string, {field<&Item::tiffHostComputer>()}),
    };
}

const QHash<Id, qsizetype> &catalogueIndex()
{
    static const QHash<Id, qsizetype> index = [] {
        QHash<Id, qsizetype> map;
        const auto &all = InspectorCatalogue::allConfigurations();
        for (qsizetype i = 0; i < all.size(); ++i)
            map.insert(all[i].identifier, i);
        return map;
    }();
    return index;
}

Config header(const char *title)
{
    return Config{Id::none, tr(title), InspectorRowType::header, F::string, {InspectorProperty::Header{}}};
}

// A list: a title opens a section, an identifier adds its row.
QList<Config> buildList(std::initializer_list<std::variant<const char *, Id>> entries)
{
    QList<Config> list;
    for (const auto &entry : entries) {
        if (const auto *title = std::get_if<const char *>(&entry))
            list.append(header(*title));
        else
            list.append(*InspectorCatalogue::configuration(std::get<Id>(entry)));
    }
    return list;
}

QList<Config> fileInformation()
{
    return buildList({"File Information", Id::filename, Id::fileSize, Id::fileKind, Id::fileUTI, Id::fileCreationDate,
                      Id::fileModificationDate, Id::fileAddedDate, Id::fileTags});
}

std::array<QList<Config>, 6> buildLists()
{
    QList<Config> general = fileInformation();
    general += buildList({"Image Information", Id::fullDateTaken, Id::portraitLandscapeInformation, Id::dimensions,
                          Id::megapixels, Id::colorInformation, Id::colorProfile, Id::orientation, "Hardware",
                          Id::tiffHardwareModel, Id::lensModel, Id::focalLength, Id::fNumber, Id::exposureTime, Id::iso,
                          "Other", Id::caption, Id::textualLocation, Id::credit});
    return {
        fileInformation(),
        general,
        buildList({"Settings",
                   Id::fNumber,
                   Id::exposureTime,
                   Id::focalLength,
                   Id::iso,
                   Id::exposureMode,
                   Id::exposureProgram,
                   Id::meteringMode,
                   Id::lightSource,
                   Id::flashStatus,
                   Id::whiteBalance,
                   "Dates",
                   Id::fullDateTaken,
                   Id::fullDateDigitized,
                   "Hardware",
                   Id::lensModel,
                   Id::lensSerialNumber,
                   Id::cameraSerialNumber,
                   Id::firmwareVersion,
                   Id::cameraOwnerName,
                   "Other",
                   Id::fileSource,
                   Id::imageNumber}),
        buildList({"Description",    Id::headline,        Id::caption,
                   Id::keywords,     "Copyright",         Id::bylineInformation,
                   Id::credit,       Id::copyrightNotice, Id::rightsUsageTerms,
                   Id::sourceOwner,  "Location",          Id::locationCode,
                   Id::locationName, Id::subLocation,     Id::city,
                   Id::state,        Id::country,         Id::countryCode,
                   "Other",          Id::starRating,      Id::softwareInformation}),
        buildList({Id::gpsInformation, "Position", Id::latLongInformation, Id::altitudeInformation, Id::imageDirection,
                   Id::positioningError, "Other", Id::speedInformation, Id::gpsTimestamp, Id::gpsDateStamp}),
        buildList({"Document", Id::documentName, Id::imageDescription, Id::artist, Id::tiffCopyright, Id::tiffDateTime,
                   "Equipment", Id::tiffHardwareManufacturer, Id::tiffHardwareModel, Id::tiffSoftwareInfo,
                   Id::tiffHostComputer}),
    };
}

constexpr std::array<const char *, 6> listNames = {"nonimage", "general", "exif", "iptc", "gps", "tiff"};

} // namespace

namespace InspectorCatalogue {

const QList<InspectorPropertyConfiguration> &allConfigurations()
{
    static const QList<Config> catalogue = buildCatalogue();
    return catalogue;
}

const InspectorPropertyConfiguration *configuration(InspectorIdentifier identifier)
{
    const auto &index = catalogueIndex();
    const auto found = index.find(identifier);
    return found == index.end() ? nullptr : &allConfigurations()[*found];
}

const QList<InspectorPropertyConfiguration> &list(InspectorList which)
{
    static const std::array<QList<Config>, 6> lists = buildLists();
    return lists[size_t(which)];
}

QString listName(InspectorList which)
{
    return QString::fromLatin1(listNames[size_t(which)]);
}

std::optional<InspectorList> listForName(const QString &name)
{
    for (size_t i = 0; i < listNames.size(); ++i) {
        if (name == QLatin1String(listNames[i]))
            return InspectorList(i);
    }
    return std::nullopt;
}

} // namespace InspectorCatalogue
