#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// What a format's header says about the pixels of image 0, read without decoding them.
// Zero or empty members are unknown.
struct ImageHeader
{
    int width = 0;
    int height = 0;
    int depth = 0; // bits per sample
    std::optional<bool> hasAlpha;
    QString colorModel; // "RGB", "Gray", "CMYK" or "Lab"
    int imageCount = 1;
    std::optional<double> dpiWidth;
    std::optional<double> dpiHeight;
    QByteArray iccProfile; // when the header reader met the profile itself
    // Metadata that the container hands over as blocks (HEIF): a TIFF-structured EXIF stream
    // and an XMP packet.
    QByteArray exifBlock;
    QByteArray xmpPacket;
};

// The reader that fits a file, told by its first bytes and, for camera raw files, by its type
// identifier or name (many raw formats are TIFF files underneath).
enum class ImageFormat { Jpeg, Png, Tiff, Heif, CameraRaw, Other };
