#include <libheif/heif.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
/* Writes a flat-coloured HEIC whose only colour description is an nclx box:
   nclx OUT R G B PRIMARIES TRANSFER */
int main(int argc, char **argv)
{
    if (argc != 7) return 2;
    heif_init(NULL);
    struct heif_context *ctx = heif_context_alloc();
    struct heif_encoder *enc = NULL;
    if (heif_context_get_encoder_for_format(ctx, heif_compression_HEVC, &enc).code) return 1;
    heif_encoder_set_lossy_quality(enc, 95);
    struct heif_image *img = NULL;
    const int size = 64;
    heif_image_create(size, size, heif_colorspace_RGB, heif_chroma_interleaved_RGB, &img);
    heif_image_add_plane(img, heif_channel_interleaved, size, size, 8);
    int stride = 0;
    uint8_t *p = heif_image_get_plane(img, heif_channel_interleaved, &stride);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            p[y * stride + 3 * x] = atoi(argv[2]);
            p[y * stride + 3 * x + 1] = atoi(argv[3]);
            p[y * stride + 3 * x + 2] = atoi(argv[4]);
        }
    struct heif_color_profile_nclx *nclx = heif_nclx_color_profile_alloc();
    heif_nclx_color_profile_set_color_primaries(nclx, atoi(argv[5]));
    heif_nclx_color_profile_set_transfer_characteristics(nclx, atoi(argv[6]));
    heif_nclx_color_profile_set_matrix_coefficients(nclx, 6);
    nclx->full_range_flag = 1;
    heif_image_set_nclx_color_profile(img, nclx);
    struct heif_encoding_options *options = heif_encoding_options_alloc();
    options->macOS_compatibility_workaround_no_nclx_profile = 0;
    options->output_nclx_profile = nclx;
    if (heif_context_encode_image(ctx, img, enc, options, NULL).code) return 1;
    if (heif_context_write_to_file(ctx, argv[1]).code) return 1;
    return 0;
}
