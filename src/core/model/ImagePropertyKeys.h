#pragma once

// Keys of the image property dictionaries: what a reader of image properties fills and what the
// file record reads its image facts from.
namespace ImagePropertyKey {
inline constexpr char PixelWidth[] = "PixelWidth";
inline constexpr char PixelHeight[] = "PixelHeight";
inline constexpr char Depth[] = "Depth";
inline constexpr char HasAlpha[] = "HasAlpha";
inline constexpr char ColorModel[] = "ColorModel";
inline constexpr char ProfileName[] = "ProfileName";
inline constexpr char NamedColorSpace[] = "NamedColorSpace";
inline constexpr char Orientation[] = "Orientation";
inline constexpr char DPIWidth[] = "DPIWidth";
inline constexpr char DPIHeight[] = "DPIHeight";

inline constexpr char ExifDictionary[] = "{Exif}";
inline constexpr char ExifAuxDictionary[] = "{ExifAux}";
inline constexpr char IPTCDictionary[] = "{IPTC}";
inline constexpr char GPSDictionary[] = "{GPS}";
inline constexpr char TIFFDictionary[] = "{TIFF}";
} // namespace ImagePropertyKey
