#include "core/imaging/HeifReader.h"

#include <QtEndian>

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
    void operator()(const heif_image_handle *handle) const { heif_image_handle_release(handle); }
};

void initializeOnce()
{
    // Reference counted by libheif; held for the life of the process.
    static std::once_flag once;
    std::call_once(once, [] { heif_init(nullptr); });
}

bool failed(const heif_error &result, QString *error)
{
    if (result.code == heif_error_Ok)
        return false;
    *error = QString::fromUtf8(result.message ? result.message : "libheif error");
    return true;
}

QByteArray metadataBlock(const heif_image_handle *handle, heif_item_id id)
{
    QByteArray block(qsizetype(heif_image_handle_get_metadata_size(handle, id)), Qt::Uninitialized);
    if (block.isEmpty() || heif_image_handle_get_metadata(handle, id, block.data()).code != heif_error_Ok)
        return {};
    return block;
}

// The EXIF and XMP items attached to the primary image.
void readMetadataBlocks(const heif_image_handle *handle, ImageHeader *header)
{
    const int count = heif_image_handle_get_number_of_metadata_blocks(handle, nullptr);
    if (count <= 0)
        return;
    std::vector<heif_item_id> ids(static_cast<size_t>(count));
    heif_image_handle_get_list_of_metadata_block_IDs(handle, nullptr, ids.data(), count);
    for (const heif_item_id id : ids) {
        const QByteArray type(heif_image_handle_get_metadata_type(handle, id));
        if (type == "Exif" && header->exifBlock.isEmpty()) {
            // A 4-byte offset to the TIFF header comes first (it skips an optional "Exif\0\0").
            const QByteArray block = metadataBlock(handle, id);
            if (block.size() < 4)
                continue;
            const quint32 offset = qFromBigEndian<quint32>(block.constData());
            if (offset < quint32(block.size() - 4))
                header->exifBlock = block.mid(4 + offset);
        } else if (type == "mime" && header->xmpPacket.isEmpty()
                   && QByteArray(heif_image_handle_get_metadata_content_type(handle, id)) == "application/rdf+xml") {
            header->xmpPacket = metadataBlock(handle, id);
        }
    }
}

} // namespace

namespace HeifReader {

bool read(const QByteArray &nativePath, ImageHeader *header, QString *error)
{
    initializeOnce();
    std::unique_ptr<heif_context, ContextDeleter> context(heif_context_alloc());
    if (!context) {
        *error = QStringLiteral("out of memory");
        return false;
    }
    if (failed(heif_context_read_from_file(context.get(), nativePath.constData(), nullptr), error))
        return false;

    header->imageCount = heif_context_get_number_of_top_level_images(context.get());
    if (header->imageCount <= 0) {
        header->imageCount = 0;
        return true;
    }
    heif_image_handle *rawHandle = nullptr;
    if (failed(heif_context_get_primary_image_handle(context.get(), &rawHandle), error))
        return false;
    std::unique_ptr<const heif_image_handle, HandleDeleter> handle(rawHandle);

    // The stored size, before the rotation and mirroring that the file asks for.
    header->width = heif_image_handle_get_ispe_width(handle.get());
    header->height = heif_image_handle_get_ispe_height(handle.get());
    if (header->width <= 0 || header->height <= 0) {
        header->width = heif_image_handle_get_width(handle.get());
        header->height = heif_image_handle_get_height(handle.get());
    }
    header->hasAlpha = heif_image_handle_has_alpha_channel(handle.get()) != 0;
    const int bits = heif_image_handle_get_luma_bits_per_pixel(handle.get());
    if (bits > 0)
        header->depth = bits;
    header->colorModel = QStringLiteral("RGB"); // YCbCr, shown as RGB

    const heif_color_profile_type profileType = heif_image_handle_get_color_profile_type(handle.get());
    if (profileType == heif_color_profile_type_prof || profileType == heif_color_profile_type_rICC) {
        QByteArray profile(qsizetype(heif_image_handle_get_raw_color_profile_size(handle.get())), Qt::Uninitialized);
        if (!profile.isEmpty()
            && heif_image_handle_get_raw_color_profile(handle.get(), profile.data()).code == heif_error_Ok)
            header->iccProfile = profile;
    }
    readMetadataBlocks(handle.get(), header);
    return true;
}

} // namespace HeifReader
