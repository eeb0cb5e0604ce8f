#include "core/inspector/InspectorPropertyConfiguration.h"

#include <array>

namespace {

// In the order of the enumeration.
constexpr std::array identifierNames = {
    "none", "filename", "fileKind", "fileSize", "fileUTI", "fileTags", "fileCreationDate",
    "fileModificationDate", "fileAddedDate", "portraitLandscapeInformation", "dimensions", "megapixels",
    "colorInformation", "colorProfile", "hasAlphaChannel", "orientation", "fNumber", "shutterSpeed", "aperture",
    "focalLength", "iso", "exposureProgram", "meteringMode", "exposureMode", "exposureTime", "lightSource",
    "flashStatus", "whiteBalance", "fullDateTaken", "fullDateDigitized", "lensModel", "lensSerialNumber",
    "cameraUserComment", "cameraOwnerName", "cameraSerialNumber", "firmwareVersion", "imageNumber", "fileSource",
    "keywords", "locationCode", "locationName", "caption", "headline", "credit", "starRating", "copyrightNotice",
    "rightsUsageTerms", "bylineInformation", "sourceOwner", "subLocation", "city", "state", "country",
    "countryCode", "textualLocation", "softwareInformation", "gpsInformation", "latLongInformation",
    "altitudeInformation", "positioningError", "imageDirection", "speedInformation", "gpsTimestamp",
    "gpsDateStamp", "documentName", "imageDescription", "artist", "tiffCopyright", "tiffDateTime",
    "tiffHardwareManufacturer", "tiffHardwareModel", "tiffSoftwareInfo", "tiffHostComputer",
};
static_assert(identifierNames.size() == size_t(InspectorIdentifier::tiffHostComputer) + 1);

} // namespace

QString identifierName(InspectorIdentifier identifier)
{
    return QString::fromLatin1(identifierNames[size_t(identifier)]);
}
