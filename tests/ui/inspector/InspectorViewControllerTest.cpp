#include "ui/inspector/InspectorViewController.h"
#include "core/imaging/ImagePropertiesManager.h"
#include "core/model/PXFile.h"

#include "support/TestDir.h"
#include "support/TestImages.h"

#include <QUrlQuery>

#include <gtest/gtest.h>

namespace {
QString valueOf(const QList<InspectorRow> &rows, const QString &identifier)
{
    for (const InspectorRow &row : rows) {
        if (row.identifier == identifier)
            return row.value;
    }
    return QStringLiteral("<absent>");
}

bool settle(InspectorViewController &inspector)
{
    return waitUntil([&] { return !inspector.isLoading(); }, 10000);
}
} // namespace

TEST(InspectorViewController, ShowsTheLatestSelectionWithMixedValuesAndAMapLink)
{
    TestDir dir;
    TestImages::JpegOptions canon;
    canon.make = "Canon";
    canon.model = "Canon EOS 5D";
    canon.latitude = 48.8584;
    canon.longitude = -2.2945;
    TestImages::JpegOptions nikon;
    nikon.make = "NIKON";
    nikon.model = "NIKON D70";
    const PXFilePtr first = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("a.jpg"), QSize(64, 48), canon));
    const PXFilePtr second = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("b.jpg"), QSize(64, 48), nikon));
    const PXFilePtr text = PXFile::fileForPath(dir.write(QStringLiteral("notes.txt"), "hello"));

    auto settings = std::make_shared<WindowSettings>();
    InspectorViewController inspector(settings);
    inspector.setFiles({first});
    // A newer selection wins over the load still running for the one before.
    inspector.setFiles({second});
    ASSERT_TRUE(settle(inspector));
    EXPECT_EQ(valueOf(inspector.rows(InspectorTab::general), "filename"), "b.jpg");
    EXPECT_TRUE(valueOf(inspector.rows(InspectorTab::tiff), "tiffHardwareModel").contains("D70"))
        << valueOf(inspector.rows(InspectorTab::tiff), "tiffHardwareModel").toStdString();

    inspector.setFiles({first, second});
    ASSERT_TRUE(settle(inspector));
    EXPECT_EQ(valueOf(inspector.rows(InspectorTab::general), "filename"), "Mixed Values");

    inspector.setFiles({first});
    ASSERT_TRUE(settle(inspector));
    const QString position = valueOf(inspector.rows(InspectorTab::gps), "gpsInformation");
    EXPECT_FALSE(position.isEmpty() || position == "<absent>");
    const QUrl map = InspectorViewController::mapUrl(48.8584, -2.2945);
    EXPECT_EQ(map.host(), "www.openstreetmap.org");
    EXPECT_EQ(QUrlQuery(map).queryItemValue("mlon"), "-2.294500");

    // A file that is not an image gets the file rows only; an empty selection none.
    inspector.setFiles({text});
    ASSERT_TRUE(settle(inspector));
    EXPECT_EQ(valueOf(inspector.rows(InspectorTab::general), "filename"), "notes.txt");
    inspector.setFiles({});
    EXPECT_TRUE(inspector.rows(InspectorTab::general).isEmpty());

    // The chosen tab is the window's setting.
    settings->setInspectorActiveTab(InspectorTab::gps);
    EXPECT_EQ(settings->inspectorActiveTab(), InspectorTab::gps);
}

TEST(InspectorViewController, ReselectingAFileTakesItsRecordFromTheSharedCache)
{
    TestDir dir;
    TestImages::JpegOptions canon;
    canon.model = "Canon EOS 5D";
    const PXFilePtr first = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("a.jpg"), QSize(64, 48), canon));
    const PXFilePtr second = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("b.jpg"), QSize(64, 48)));
    ImagePropertiesManager &cache = ImagePropertiesManager::shared();

    InspectorViewController inspector(std::make_shared<WindowSettings>());
    inspector.setFiles({first});
    ASSERT_TRUE(settle(inspector));
    const ImagePropertiesItemPtr record = cache.item(first);
    ASSERT_TRUE(record);
    inspector.setFiles({second});
    ASSERT_TRUE(settle(inspector));
    inspector.setFiles({first});
    ASSERT_TRUE(settle(inspector));
    EXPECT_EQ(cache.item(first), record) << "an unchanged file is not read again";
    EXPECT_TRUE(valueOf(inspector.rows(InspectorTab::tiff), "tiffHardwareModel").contains("5D"));

    // Written with another camera: the next selection shows it.
    TestImages::JpegOptions nikon;
    nikon.model = "NIKON D70";
    TestImages::writeJpeg(first->path(), QSize(64, 48), nikon);
    inspector.setFiles({second});
    inspector.setFiles({first});
    ASSERT_TRUE(settle(inspector));
    EXPECT_TRUE(valueOf(inspector.rows(InspectorTab::tiff), "tiffHardwareModel").contains("D70"));
    EXPECT_NE(cache.item(first), record);
}

// A file that cannot be read says why above the tabs and keeps its file rows; a readable one
// selected next clears the message. Values written to XMP only reach the IPTC tab.
TEST(InspectorViewController, ShowsAReadFailureInPlaceAndTheXmpOnlyValues)
{
    TestDir dir;
    const PXFilePtr broken = PXFile::fileForPath(dir.write("broken.jpg", "not a picture at all"));
    TestImages::JpegOptions xmp;
    xmp.extra.insert("Xmp.dc.subject", "harbour");
    xmp.extra.insert("Xmp.dc.creator", "Ana Lima");
    const PXFilePtr tagged = PXFile::fileForPath(TestImages::writeJpeg(dir.filePath("tagged.jpg"), QSize(32, 32), xmp));

    InspectorViewController inspector(std::make_shared<WindowSettings>());
    inspector.setFiles({broken});
    ASSERT_TRUE(settle(inspector));
    EXPECT_TRUE(inspector.failureText().contains("broken.jpg")) << qPrintable(inspector.failureText());
    EXPECT_NE(valueOf(inspector.rows(InspectorTab::general), "filename"), "<absent>");

    inspector.setFiles({tagged});
    ASSERT_TRUE(settle(inspector));
    EXPECT_TRUE(inspector.failureText().isEmpty());
    EXPECT_EQ(valueOf(inspector.rows(InspectorTab::iptc), "keywords"), "harbour");
    EXPECT_EQ(valueOf(inspector.rows(InspectorTab::iptc), "bylineInformation"), "Ana Lima");
}
