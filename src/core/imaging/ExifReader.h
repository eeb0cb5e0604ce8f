#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <mutex>
#include <optional>

// The metadata of a file, already shaped into the property groups ("{Exif}", "{GPS}", ...).
struct ImageMetadata
{
    QVariantMap exif;
    QVariantMap exifAux;
    QVariantMap iptc;
    QVariantMap gps;
    QVariantMap tiff;
    std::optional<int> orientation; // 1..8
    std::optional<double> dpiWidth;
    std::optional<double> dpiHeight;
    QByteArray iccProfile;
    // The container as the metadata library recognised it ("image/tiff", "video/quicktime", ...)
    // and the pixel size that it found in the container's header; 0 when unknown.
    QString mimeType;
    int pixelWidth = 0;
    int pixelHeight = 0;
    // The layout that IFD0 states; it describes the main image only in a plain TIFF file.
    int bitsPerSample = 0;
    int photometric = -1;
    bool extraSamples = false;
};

// Reads EXIF (with maker notes), IPTC and XMP through Exiv2 and converts them into property
// groups. Every Exiv2 error becomes a false answer with a message. The only file that sees
// Exiv2 types; safe to call from several threads at once.
namespace ExifReader {

// Prepares Exiv2 for use from several threads (XMP toolkit lock, log routing, ISO media
// support). Called by the readers; code that uses Exiv2 directly calls it first.
void initialize();

// Held while Exiv2 parses anything that may carry XMP: its XMP toolkit parses one packet at a time.
std::unique_lock<std::recursive_mutex> lockXmpParsing();

bool readFile(const QByteArray &nativePath, ImageMetadata *metadata, QString *error);
// `bytes` must hold the whole metadata of the file, e.g. a JPEG up to its first scan.
bool readBuffer(const QByteArray &bytes, ImageMetadata *metadata, QString *error);
// Metadata handed over as blocks by a container: a TIFF-structured EXIF stream (from its byte
// order mark on) and an XMP packet; either may be empty.
bool readBlocks(const QByteArray &exif, const QByteArray &xmpPacket, ImageMetadata *metadata, QString *error);

} // namespace ExifReader
