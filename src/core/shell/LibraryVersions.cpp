#include "core/shell/LibraryVersions.h"

#include "core/app/Translate.h"

#include <exiv2/version.hpp>
#include <libraw/libraw.h>
#if __has_include(<jconfig.h>)
#include <jconfig.h>
#endif
#if __has_include(<libavutil/version.h>)
#include <libavutil/version.h>
#endif

#include <QtGlobal>

#include <dlfcn.h>

namespace {

constexpr Translator tr("LibraryVersions");

#define PIXCOVE_TEXT(x) #x
#define PIXCOVE_EXPANDED_TEXT(x) PIXCOVE_TEXT(x)

// Asks a library the program loads on demand for its version, loading it as the program would
// (the same name, so the same file); the library stays loaded for the program's later use.
QString askLoadable(const char *library, const char *function)
{
    void *handle = ::dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return tr("unavailable");
    const auto version = reinterpret_cast<const char *(*)()>(::dlsym(handle, function));
    return version ? QString::fromUtf8(version()) : tr("unknown");
}

} // namespace

QList<LibraryVersion> libraryVersions()
{
    QList<LibraryVersion> versions;
    versions.append({QStringLiteral("Qt"), QString::fromLatin1(qVersion())});
    versions.append({QStringLiteral("Exiv2"), QString::fromStdString(Exiv2::versionString())});
    // libjpeg-turbo's TurboJPEG interface has no version call: this is the one it was built with.
#ifdef LIBJPEG_TURBO_VERSION
    versions.append({QStringLiteral("libjpeg-turbo"), QStringLiteral(PIXCOVE_EXPANDED_TEXT(LIBJPEG_TURBO_VERSION))});
#else
    versions.append({QStringLiteral("libjpeg-turbo"), tr("unknown")});
#endif
    versions.append({QStringLiteral("libheif"), askLoadable("libheif.so.1", "heif_get_version")});
    versions.append({QStringLiteral("LibRaw"), QString::fromLatin1(libraw_version())});
#ifdef LIBAVUTIL_VERSION_MAJOR
    versions.append({QStringLiteral("FFmpeg"),
                     askLoadable("libavutil.so." PIXCOVE_EXPANDED_TEXT(LIBAVUTIL_VERSION_MAJOR), "av_version_info")});
#else
    versions.append({QStringLiteral("FFmpeg"), tr("unknown")});
#endif
    return versions;
}
