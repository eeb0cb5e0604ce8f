#include "core/inspector/InspectorFormatter.h"
#include "core/inspector/InspectorCatalogue.h"
#include "core/inspector/InspectorRows.h"
#include "core/model/DisplayFormats.h"
#include "core/model/PXFile.h"

#include <gtest/gtest.h>

using F = InspectorFormat;
using Id = InspectorIdentifier;
namespace Fmt = InspectorFormatter;

namespace {

std::shared_ptr<ImagePropertiesItem> record(const QString &name)
{
    return std::make_shared<ImagePropertiesItem>(PXFile::fileForPath(QStringLiteral("/nonexistent/") + name),
                                                 QVariantMap(), QDateTime::currentDateTimeUtc());
}

QString valueOf(Id id, const QList<ImagePropertiesItemPtr> &items)
{
    return Fmt::formattedValue(*InspectorCatalogue::configuration(id), items);
}

} // namespace

TEST(InspectorFormatter, printsNumbersCodesAndExposures)
{
    EXPECT_EQ(Fmt::formatReal(1.0 / 3, F::exposureTime), QStringLiteral("1/3"));
    EXPECT_EQ(Fmt::formatReal(0.333333, F::exposureTime), QStringLiteral("1/3"));
    EXPECT_EQ(Fmt::formatReal(0.5, F::exposureTime), QStringLiteral("1/2"));
    EXPECT_EQ(Fmt::formatReal(2.5, F::exposureTime), QStringLiteral("2 1/2"));
    EXPECT_EQ(Fmt::formatReal(4.0, F::exposureTime), QStringLiteral("4"));
    EXPECT_EQ(Fmt::formatReal(0, F::exposureTime), QStringLiteral("1/0"));

    EXPECT_EQ(Fmt::formatReal(2.8, F::oneDecimal), QStringLiteral("2.8"));
    EXPECT_EQ(Fmt::formatReal(4.25, F::noDecimals), QStringLiteral("4"));
    EXPECT_EQ(Fmt::formatReal(4.5, F::noDecimals), QStringLiteral("5"));
    EXPECT_EQ(Fmt::formatReal(123.4, F::string), QStringLiteral("123.400000"));

    EXPECT_EQ(Fmt::formatInteger(16, F::flashStatus), QStringLiteral("Off, Did not fire"));
    EXPECT_EQ(Fmt::formatInteger(2, F::flashStatus), QStringLiteral("2"));
    EXPECT_EQ(Fmt::formatInteger(4, F::orientation), QStringLiteral("Flip Vertical°"));
    EXPECT_EQ(Fmt::formatInteger(2, F::whiteBalance), QStringLiteral("2"));
    EXPECT_EQ(Fmt::formatInteger(3, F::integer), QStringLiteral("3")); // no table for plain integers
}

TEST(InspectorFormatter, reprintsDatesOrKeepsTheText)
{
    const auto at = [](const char *iso) { return QDateTime::fromString(QLatin1String(iso), Qt::ISODate); };
    // With an offset the moment is exact, and is shown in the local zone.
    EXPECT_EQ(Fmt::formatText(QStringLiteral("2023:07:14 18:30:05 +02:00"), F::EXIFDateWithOffset),
              formattedDate(at("2023-07-14T16:30:05Z"), DateStyle::medium, DateStyle::longStyle));
    // Without one it is local wall time.
    const QString local =
        formattedDate(QDateTime(QDate(2023, 7, 14), QTime(18, 30, 5)), DateStyle::medium, DateStyle::longStyle);
    EXPECT_EQ(Fmt::formatText(QStringLiteral("2023:07:14 18:30:05"), F::EXIFDateWithOffset), local);
    EXPECT_EQ(Fmt::formatText(QStringLiteral("2023:07:14 18:30:05"), F::TIFFDate), local);
    EXPECT_TRUE(local.contains(QStringLiteral("2023"))) << qPrintable(local);
    EXPECT_EQ(Fmt::formatText(QStringLiteral("July 14"), F::EXIFDateWithOffset), QStringLiteral("July 14"));
    EXPECT_EQ(Fmt::formatText(QStringLiteral(""), F::EXIFDate), QString());
    EXPECT_EQ(Fmt::formatText(QStringLiteral("20230714"), F::IPTCDate),
              formattedDate(QDateTime(QDate(2023, 7, 14), QTime(0, 0)), DateStyle::longStyle, DateStyle::none));
    EXPECT_EQ(Fmt::formatText(QStringLiteral("2023:07:14 18:30:05"), F::string), QStringLiteral("2023:07:14 18:30:05"));
}

TEST(InspectorFormatter, comparesTheValuesOfASelection)
{
    auto canon = record(QStringLiteral("a.jpg"));
    auto nikon = record(QStringLiteral("b.jpg"));
    canon->tiffHardwareModel = QStringLiteral("Canon EOS 40D");
    nikon->tiffHardwareModel = QStringLiteral("NIKON D70");
    canon->lensModel = QStringLiteral("EF 50mm");
    canon->fNumber = 2.8;
    nikon->fNumber = 2.8;
    canon->latitude = nikon->latitude = 10.0;
    canon->longitude = nikon->longitude = 20.0;

    EXPECT_EQ(valueOf(Id::tiffHardwareModel, {}), QString());
    EXPECT_EQ(valueOf(Id::tiffHardwareModel, {canon}), QStringLiteral("Canon EOS 40D"));
    EXPECT_EQ(valueOf(Id::tiffHardwareModel, {canon, nikon}), QStringLiteral("Mixed Values"));
    EXPECT_EQ(valueOf(Id::lensModel, {nikon, canon}), QStringLiteral("Mixed Values"));
    EXPECT_EQ(valueOf(Id::lensSerialNumber, {canon, nikon}), QString());
    EXPECT_EQ(valueOf(Id::fNumber, {canon, nikon}), QStringLiteral("2.8"));
    // Two files at one place share the map; their file rows differ.
    EXPECT_EQ(valueOf(Id::gpsInformation, {canon, nikon}), QStringLiteral("10.000000, 20.000000"));
    EXPECT_EQ(valueOf(Id::filename, {canon, nikon}), QStringLiteral("Mixed Values"));
    nikon->longitudeReference = QStringLiteral("W");
    nikon->latitudeReference = QStringLiteral("N");
    EXPECT_EQ(valueOf(Id::gpsInformation, {nikon}), QStringLiteral("10.000000, -20.000000"));
    EXPECT_EQ(valueOf(Id::gpsInformation, {canon, nikon}), QStringLiteral("Mixed Values"));
}

TEST(InspectorCatalogue, listsRowsUnderTheirSections)
{
    for (const auto &configuration : InspectorCatalogue::allConfigurations()) {
        EXPECT_TRUE(configuration.label.endsWith(QLatin1Char(':'))) << qPrintable(configuration.label);
        EXPECT_EQ(configuration.rowType == InspectorRowType::map, configuration.identifier == Id::gpsInformation);
    }
    for (Id hidden : {Id::none, Id::hasAlphaChannel, Id::shutterSpeed, Id::aperture, Id::cameraUserComment})
        EXPECT_EQ(InspectorCatalogue::configuration(hidden), nullptr);

    auto item = record(QStringLiteral("c.jpg"));
    item->imageDirection = 123.4;
    item->exposureTime = 0.004;
    const QList<InspectorRow> gps = inspectorRows(InspectorList::gps, {item}, {});
    ASSERT_FALSE(gps.isEmpty());
    EXPECT_EQ(gps.first().identifier, QStringLiteral("gpsInformation"));
    EXPECT_EQ(gps.first().section, QString());
    EXPECT_TRUE(gps.first().isMap);
    const auto direction = std::find_if(gps.begin(), gps.end(), [](const InspectorRow &row) {
        return row.identifier == QLatin1String("imageDirection");
    });
    ASSERT_NE(direction, gps.end());
    EXPECT_EQ(direction->value, QStringLiteral("123.400000"));
    EXPECT_EQ(direction->section, QStringLiteral("Position"));

    QStringList exif;
    for (const InspectorRow &row : inspectorRows(InspectorList::exif, {item}, {}))
        exif.append(row.isHeader ? QLatin1Char('[') + row.label + QLatin1Char(']') : row.identifier);
    EXPECT_EQ(exif.join(QLatin1Char(' ')),
              QStringLiteral(
                  "[Settings] fNumber exposureTime focalLength iso exposureMode exposureProgram meteringMode "
                  "lightSource flashStatus whiteBalance [Dates] fullDateTaken fullDateDigitized [Hardware] "
                  "lensModel lensSerialNumber cameraSerialNumber firmwareVersion cameraOwnerName [Other] "
                  "fileSource imageNumber"));

    // A selection without images shows the file list whatever the tab.
    const PXFilePtr text = PXFile::fileForPath(QStringLiteral("/nonexistent/notes.txt"));
    EXPECT_EQ(inspectorListForTab(InspectorTab::exif, {text}), InspectorList::nonImage);
    EXPECT_EQ(inspectorListForTab(InspectorTab::exif, {text, item->file()}), InspectorList::nonImage)
        << "a file that is not on disk is no image";
}
