#include "core/imaging/HeifDecoder.h"

#include "core/imaging/NclxProfile.h"

#include <QColorSpace>

#include <libheif/heif.h>

#include <memory>
#include <mutex>
#include <vector>

namespace {

struct ContextDeleter
{
    void operator()(heif_context *context) const { heif_context_free(context); }
};
struct HandleDeleter
{
    void operator()(heif_image_handle *handle) const { heif_image_handle_release(handle); }
};
using Context = std::unique_ptr<heif_context, ContextDeleter>;
using Handle = std::unique_ptr<heif_image_handle, HandleDeleter>;

bool failed(const heif_error &result, QString *error)
{
    if (result.code == heif_error_Ok)
        return false;
    *error = QString::fromUtf8(result.message ? result.message : "libheif error");
    return true;
}

Context openContext(const QByteArray &nativePath, QString *error)
{
    static std::once_flag once;
    std::call_once(once, [] { heif_init(nullptr); });
    Context context(heif_context_alloc());
    if (!context) {
        *error = QStringLiteral("out of memory");
        return {};
    }
    if (failed(heif_context_read_from_file(context.get(), nativePath.constData(), nullptr), error))
        return {};
    return context;
}

// Decodes `handle` to interleaved RGBA; the image owns the libheif buffer until it is dropped.
Handle primaryHandle(heif_context *context, QString *error)
{
    heif_image_handle *raw = nullptr;
    if (failed(heif_context_get_primary_image_handle(context, &raw), error))
        return {};
    return Handle(raw);
}

QImage decodeHandle(heif_image_handle *handle, qint64 memoryLimit, QString *error)
{
    const int width = heif_image_handle_get_width(handle);
    const int height = heif_image_handle_get_height(handle);
    if (width <= 0 || height <= 0) {
        *error = QStringLiteral("HEIF image without a size");
        return {};
    }
    if (qint64(width) * height * 4 > memoryLimit) {
        *error = QStringLiteral("a %1 x %2 HEIF image needs more memory than allowed").arg(width).arg(height);
        return {};
    }
    heif_image *decoded = nullptr;
    if (failed(heif_decode_image(handle, &decoded, heif_colorspace_RGB, heif_chroma_interleaved_RGBA, nullptr), error))
        return {};
    int stride = 0;
    const uint8_t *plane = heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    if (!plane) {
        heif_image_release(decoded);
        *error = QStringLiteral("HEIF image without pixels");
        return {};
    }
    // The size after the rotation boxes were applied.
    const int outWidth = heif_image_get_width(decoded, heif_channel_interleaved);
    const int outHeight = heif_image_get_height(decoded, heif_channel_interleaved);
    return QImage(
        plane, outWidth, outHeight, stride, QImage::Format_RGBA8888,
        [](void *image) { heif_image_release(static_cast<heif_image *>(image)); }, decoded);
}

// The profile the handle's nclx colour box describes; empty when it says sRGB.
QByteArray nclxProfile(const heif_image_handle *handle)
{
    heif_color_profile_nclx *nclx = nullptr;
    if (heif_image_handle_get_nclx_color_profile(handle, &nclx).code != heif_error_Ok || !nclx)
        return {};
    const QByteArray profile = NclxProfile::iccProfile(nclx->color_primaries, nclx->transfer_characteristics);
    heif_nclx_color_profile_free(nclx);
    return profile;
}

} // namespace

namespace HeifDecoder {

QImage decode(const QByteArray &nativePath, QSize fitSize, qint64 memoryLimit, QString *error)
{
    const Context context = openContext(nativePath, error);
    const Handle handle = context ? primaryHandle(context.get(), error) : Handle();
    if (!handle)
        return {};
    QImage image = decodeHandle(handle.get(), memoryLimit, error);
    // Phones shoot in wide gamuts: the file's profile goes with the picture, for the viewer to
    // convert (a picture shown as if it were sRGB looks dull).
    const heif_color_profile_type profileType = heif_image_handle_get_color_profile_type(handle.get());
    if (!image.isNull()
        && (profileType == heif_color_profile_type_prof || profileType == heif_color_profile_type_rICC)) {
        QByteArray profile(qsizetype(heif_image_handle_get_raw_color_profile_size(handle.get())), Qt::Uninitialized);
        if (!profile.isEmpty()
            && heif_image_handle_get_raw_color_profile(handle.get(), profile.data()).code == heif_error_Ok)
            image.setColorSpace(QColorSpace::fromIccProfile(profile));
    } else if (!image.isNull() && profileType == heif_color_profile_type_nclx) {
        // Code points only (no ICC profile): a profile is made from them.
        const QByteArray profile = nclxProfile(handle.get());
        if (!profile.isEmpty())
            image.setColorSpace(QColorSpace::fromIccProfile(profile));
    }
    if (image.isNull() || fitSize.isEmpty() || (image.width() <= fitSize.width() && image.height() <= fitSize.height()))
        return image;
    return image.scaled(fitSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QImage thumbnail(const QByteArray &nativePath, int neededPixels, QString *error)
{
    const Context context = openContext(nativePath, error);
    const Handle primary = context ? primaryHandle(context.get(), error) : Handle();
    if (!primary)
        return {};
    const int count = heif_image_handle_get_number_of_thumbnails(primary.get());
    if (count <= 0) {
        *error = QStringLiteral("no HEIF thumbnail");
        return {};
    }
    std::vector<heif_item_id> ids(static_cast<size_t>(count));
    heif_image_handle_get_list_of_thumbnail_IDs(primary.get(), ids.data(), count);
    Handle best;
    int bestEdge = 0;
    for (const heif_item_id id : ids) {
        heif_image_handle *candidate = nullptr;
        if (heif_image_handle_get_thumbnail(primary.get(), id, &candidate).code != heif_error_Ok)
            continue;
        Handle owned(candidate);
        const int edge = qMax(heif_image_handle_get_width(candidate), heif_image_handle_get_height(candidate));
        const bool better =
            !best || (bestEdge < neededPixels ? edge > bestEdge : (edge >= neededPixels && edge < bestEdge));
        if (better) {
            best = std::move(owned);
            bestEdge = edge;
        }
    }
    if (!best) {
        *error = QStringLiteral("no readable HEIF thumbnail");
        return {};
    }
    // Thumbnails are small; 64 MB is far above any that a camera or phone stores.
    return decodeHandle(best.get(), qint64(64) * 1024 * 1024, error);
}

} // namespace HeifDecoder
