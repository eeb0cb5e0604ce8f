// libheif, loaded on the first HEIF file rather than with the program.
//
// libheif brings four video codecs with it (x265, aom, dav1d, libde265, some 25 MB of code with
// thousands of relocations): linked into the program they load at every start, a third of what a
// `pixcove-cli` call costs before it does anything, for folders that may hold no HEIF at all.
// The functions the HEIF reader and decoder use are defined here with libheif's own
// declarations; each finds the real one in the library on its first call. Without the library
// every file fails to open with a message saying why, and nothing else changes.

#include <libheif/heif.h>

#include <dlfcn.h>

#include <string>

namespace {

struct Library
{
    void *handle = nullptr;
    std::string error; // why it could not be loaded
};

const Library &library()
{
    static const Library loaded = [] {
        Library result;
        result.handle = ::dlopen("libheif.so.1", RTLD_NOW | RTLD_LOCAL);
        if (!result.handle) {
            const char *reason = ::dlerror();
            result.error = std::string("libheif cannot be loaded: ") + (reason ? reason : "unknown reason");
        }
        return result;
    }();
    return loaded;
}

template<typename Function>
Function resolved(const char *name)
{
    const Library &loaded = library();
    return loaded.handle ? reinterpret_cast<Function>(::dlsym(loaded.handle, name)) : nullptr;
}

heif_error unavailable()
{
    const std::string &error = library().error;
    return {heif_error_Unsupported_feature, heif_suberror_Unspecified,
            error.empty() ? "this libheif lacks a function the program needs" : error.c_str()};
}

// Without the library a context is a placeholder that opens nothing, so that the reader's
// "cannot allocate" path stays for real allocation failures and the message tells the cause.
heif_context *placeholderContext()
{
    static char placeholder;
    return reinterpret_cast<heif_context *>(&placeholder);
}

} // namespace

// One function: its return type, name, parameters, the call of the real one, and the answer when
// libheif or the function is missing.
#define PIXCOVE_HEIF_FORWARD(Return, Name, Parameters, Arguments, Fallback)                                            \
    extern "C" Return Name Parameters                                                                                  \
    {                                                                                                                  \
        static const auto real = resolved<decltype(&::Name)>(#Name);                                                   \
        return real ? real Arguments : Fallback;                                                                       \
    }

PIXCOVE_HEIF_FORWARD(heif_error, heif_init, (heif_init_params * params), (params), unavailable())
PIXCOVE_HEIF_FORWARD(heif_context *, heif_context_alloc, (void), (), placeholderContext())
PIXCOVE_HEIF_FORWARD(void, heif_context_free, (heif_context * context), (context), void())
PIXCOVE_HEIF_FORWARD(heif_error, heif_context_read_from_file,
                     (heif_context * context, const char *filename, const heif_reading_options *options),
                     (context, filename, options), unavailable())
PIXCOVE_HEIF_FORWARD(int, heif_context_get_number_of_top_level_images, (heif_context * context), (context), 0)
PIXCOVE_HEIF_FORWARD(heif_error, heif_context_get_primary_image_handle,
                     (heif_context * context, heif_image_handle **handle), (context, handle), unavailable())
PIXCOVE_HEIF_FORWARD(heif_error, heif_decode_image,
                     (const heif_image_handle *handle, heif_image **image, heif_colorspace colorspace,
                      heif_chroma chroma, const heif_decoding_options *options),
                     (handle, image, colorspace, chroma, options), unavailable())
PIXCOVE_HEIF_FORWARD(void, heif_image_release, (const heif_image *image), (image), void())
PIXCOVE_HEIF_FORWARD(int, heif_image_get_width, (const heif_image *image, heif_channel channel), (image, channel), 0)
PIXCOVE_HEIF_FORWARD(int, heif_image_get_height, (const heif_image *image, heif_channel channel), (image, channel), 0)
PIXCOVE_HEIF_FORWARD(const uint8_t *, heif_image_get_plane_readonly,
                     (const heif_image *image, heif_channel channel, int *stride), (image, channel, stride), nullptr)
PIXCOVE_HEIF_FORWARD(void, heif_image_handle_release, (const heif_image_handle *handle), (handle), void())
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_width, (const heif_image_handle *handle), (handle), 0)
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_height, (const heif_image_handle *handle), (handle), 0)
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_ispe_width, (const heif_image_handle *handle), (handle), 0)
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_ispe_height, (const heif_image_handle *handle), (handle), 0)
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_has_alpha_channel, (const heif_image_handle *handle), (handle), 0)
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_luma_bits_per_pixel, (const heif_image_handle *handle), (handle), 0)
PIXCOVE_HEIF_FORWARD(heif_color_profile_type, heif_image_handle_get_color_profile_type,
                     (const heif_image_handle *handle), (handle), heif_color_profile_type_not_present)
PIXCOVE_HEIF_FORWARD(size_t, heif_image_handle_get_raw_color_profile_size, (const heif_image_handle *handle), (handle),
                     0)
PIXCOVE_HEIF_FORWARD(heif_error, heif_image_handle_get_nclx_color_profile,
                     (const heif_image_handle *handle, heif_color_profile_nclx **nclx), (handle, nclx), unavailable())
PIXCOVE_HEIF_FORWARD(void, heif_nclx_color_profile_free, (heif_color_profile_nclx * nclx), (nclx), void())
PIXCOVE_HEIF_FORWARD(heif_error, heif_image_handle_get_raw_color_profile, (const heif_image_handle *handle, void *data),
                     (handle, data), unavailable())
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_number_of_metadata_blocks,
                     (const heif_image_handle *handle, const char *typeFilter), (handle, typeFilter), 0)
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_list_of_metadata_block_IDs,
                     (const heif_image_handle *handle, const char *typeFilter, heif_item_id *ids, int count),
                     (handle, typeFilter, ids, count), 0)
PIXCOVE_HEIF_FORWARD(const char *, heif_image_handle_get_metadata_type,
                     (const heif_image_handle *handle, heif_item_id id), (handle, id), nullptr)
PIXCOVE_HEIF_FORWARD(const char *, heif_image_handle_get_metadata_content_type,
                     (const heif_image_handle *handle, heif_item_id id), (handle, id), nullptr)
PIXCOVE_HEIF_FORWARD(size_t, heif_image_handle_get_metadata_size, (const heif_image_handle *handle, heif_item_id id),
                     (handle, id), 0)
PIXCOVE_HEIF_FORWARD(heif_error, heif_image_handle_get_metadata,
                     (const heif_image_handle *handle, heif_item_id id, void *data), (handle, id, data), unavailable())
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_number_of_thumbnails, (const heif_image_handle *handle), (handle), 0)
PIXCOVE_HEIF_FORWARD(int, heif_image_handle_get_list_of_thumbnail_IDs,
                     (const heif_image_handle *handle, heif_item_id *ids, int count), (handle, ids, count), 0)
PIXCOVE_HEIF_FORWARD(heif_error, heif_image_handle_get_thumbnail,
                     (const heif_image_handle *handle, heif_item_id id, heif_image_handle **thumbnail),
                     (handle, id, thumbnail), unavailable())
