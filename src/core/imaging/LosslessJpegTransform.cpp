#include "core/imaging/LosslessJpegTransform.h"

#include "core/imaging/CoefficientArena.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <utility>
// clang-format off
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

namespace LosslessJpegTransform {

namespace {

// An operation as moves of the source: whether rows become columns, then which source axes are
// mirrored. Mirroring an axis negates the coefficients of odd frequencies along it.
struct Move
{
    bool transposes = false;
    bool mirrorsX = false;
    bool mirrorsY = false;
};

Move moveFor(Operation operation)
{
    switch (operation) {
    case Operation::none: return {};
    case Operation::flipHorizontal: return {false, true, false};
    case Operation::rotate180: return {false, true, true};
    case Operation::flipVertical: return {false, false, true};
    case Operation::transpose: return {true, false, false};
    case Operation::rotate90: return {true, false, true};
    case Operation::transverse: return {true, true, true};
    case Operation::rotate270: return {true, true, false};
    }
    return {};
}

// Where each coefficient of a moved block comes from, and its sign.
struct BlockMap
{
    std::array<int, DCTSIZE2> from{};
    std::array<JCOEF, DCTSIZE2> sign{};

    explicit BlockMap(const Move &move)
    {
        for (int k = 0; k < DCTSIZE2; ++k) {
            const int row = k / DCTSIZE, column = k % DCTSIZE;
            from[size_t(k)] = move.transposes ? column * DCTSIZE + row : k;
            const int sourceRow = move.transposes ? column : row;
            const int sourceColumn = move.transposes ? row : column;
            const bool negated = (move.mirrorsX && (sourceColumn & 1)) != (move.mirrorsY && (sourceRow & 1));
            sign[size_t(k)] = negated ? -1 : 1;
        }
    }

    void apply(const JCOEF *in, JCOEF *out) const
    {
        for (int k = 0; k < DCTSIZE2; ++k)
            out[k] = JCOEF(in[from[size_t(k)]] * sign[size_t(k)]);
    }
};

// One component's blocks moved from `in` (width × height blocks) into `out`.
void moveBlocks(const Move &move, JBLOCKARRAY in, JDIMENSION width, JDIMENSION height, JBLOCKARRAY out)
{
    const BlockMap map(move);
    const JDIMENSION outWidth = move.transposes ? height : width;
    const JDIMENSION outHeight = move.transposes ? width : height;
    const auto source = [&](JDIMENSION x, JDIMENSION y) {
        if (move.transposes)
            std::swap(x, y);
        return in[move.mirrorsY ? height - 1 - y : y][move.mirrorsX ? width - 1 - x : x];
    };
    if (!move.transposes) {
        for (JDIMENSION y = 0; y < outHeight; ++y)
            for (JDIMENSION x = 0; x < outWidth; ++x)
                map.apply(source(x, y), out[y][x]);
        return;
    }
    // A column of the source a band at a time: the source blocks read in turn share pages.
    constexpr JDIMENSION band = 16;
    for (JDIMENSION top = 0; top < outHeight; top += band) {
        const JDIMENSION bottom = std::min(outHeight, top + band);
        for (JDIMENSION x = 0; x < outWidth; ++x)
            for (JDIMENSION y = top; y < bottom; ++y)
                map.apply(source(x, y), out[y][x]);
    }
}

// Whether the flipped sides are whole blocks of the picture's MCU, so that no edge block is lost.
bool isWhole(const jpeg_decompress_struct &source, Operation operation)
{
    const bool single = source.num_components == 1;
    const JDIMENSION mcuWidth = JDIMENSION(DCTSIZE * (single ? 1 : source.max_h_samp_factor));
    const JDIMENSION mcuHeight = JDIMENSION(DCTSIZE * (single ? 1 : source.max_v_samp_factor));
    const Move move = moveFor(operation);
    const bool xMirrored = move.mirrorsX, yMirrored = move.mirrorsY;
    return (!xMirrored || source.image_width % mcuWidth == 0) && (!yMirrored || source.image_height % mcuHeight == 0);
}

JDIMENSION roundedUp(JDIMENSION value, int multiple)
{
    return (value + JDIMENSION(multiple) - 1) / JDIMENSION(multiple) * JDIMENSION(multiple);
}

// libjpeg reports errors by calling back; this returns to run()'s setjmp with the message.
struct Trap
{
    jpeg_error_mgr manager; // first: libjpeg's `err` points here
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX];
    bool damaged;
};

[[noreturn]] void stop(j_common_ptr cinfo)
{
    Trap *trap = reinterpret_cast<Trap *>(cinfo->err);
    (*cinfo->err->format_message)(cinfo, trap->message);
    std::longjmp(trap->jump, 1);
}

// Damaged picture data stops the transform: the new file would keep the damage as gray or garbled
// blocks in place of what a repair might still recover from the original. Stray bytes between
// segments, which some cameras write, do not.
void warn(j_common_ptr cinfo, int level)
{
    if (level >= 0)
        return; // a trace message
    switch (cinfo->err->msg_code) {
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_MUST_RESYNC: reinterpret_cast<Trap *>(cinfo->err)->damaged = true; stop(cinfo);
    default: ++cinfo->err->num_warnings;
    }
}

// The encoder's output: the caller's buffer, grown by half when full.
struct Destination
{
    jpeg_destination_mgr manager; // first: libjpeg's `dest` points here
    QByteArray *out;
};

void startOutput(j_compress_ptr cinfo)
{
    Destination *destination = reinterpret_cast<Destination *>(cinfo->dest);
    destination->manager.next_output_byte = reinterpret_cast<JOCTET *>(destination->out->data());
    destination->manager.free_in_buffer = size_t(destination->out->size());
}

boolean growOutput(j_compress_ptr cinfo)
{
    Destination *destination = reinterpret_cast<Destination *>(cinfo->dest);
    const qsizetype used = destination->out->size(); // called only when every byte is written
    destination->out->resize(used + used / 2 + 65536);
    destination->manager.next_output_byte = reinterpret_cast<JOCTET *>(destination->out->data()) + used;
    destination->manager.free_in_buffer = size_t(destination->out->size() - used);
    return TRUE;
}

void endOutput(j_compress_ptr cinfo)
{
    Destination *destination = reinterpret_cast<Destination *>(cinfo->dest);
    destination->out->resize(destination->out->size() - qsizetype(destination->manager.free_in_buffer));
}

// Everything the library calls touch. Plain data only: a longjmp out of run() runs no destructor.
struct Job
{
    jpeg_decompress_struct source;
    jpeg_compress_struct target;
    Trap trap;
    Destination destination;
    const JOCTET *data;
    unsigned long size;
    Operation operation;
    CoefficientArena *arena;
    bool imperfect;
};

// The target's critical parameters for a picture whose rows became columns: sides, sampling and
// quantisation tables transposed like the blocks.
void transposeParameters(jpeg_compress_struct &target)
{
    std::swap(target.image_width, target.image_height);
    for (int c = 0; c < target.num_components; ++c)
        std::swap(target.comp_info[c].h_samp_factor, target.comp_info[c].v_samp_factor);
    for (JQUANT_TBL *table : target.quant_tbl_ptrs) {
        if (!table)
            continue;
        for (int row = 0; row < DCTSIZE; ++row)
            for (int column = 0; column < row; ++column)
                std::swap(table->quantval[row * DCTSIZE + column], table->quantval[column * DCTSIZE + row]);
    }
}

bool run(Job &job)
{
    if (setjmp(job.trap.jump))
        return false;
    jpeg_decompress_struct &source = job.source;
    jpeg_compress_struct &target = job.target;
    jpeg_mem_src(&source, job.data, job.size);
    jpeg_save_markers(&source, JPEG_COM, 0xFFFF);
    for (int n = 0; n < 16; ++n)
        jpeg_save_markers(&source, JPEG_APP0 + n, 0xFFFF);
    jpeg_read_header(&source, TRUE);
    if (!isWhole(source, job.operation)) {
        job.imperfect = true;
        return true;
    }
    jvirt_barray_ptr *blocks = jpeg_read_coefficients(&source);

    jpeg_copy_critical_parameters(&source, &target);
    // The source's own JFIF and Adobe markers are copied below, byte for byte.
    target.write_JFIF_header = FALSE;
    target.write_Adobe_marker = FALSE;
    target.restart_interval = source.restart_interval;
    target.arith_code = source.arith_code;
    if (source.progressive_mode)
        jpeg_simple_progression(&target);
    const Move move = moveFor(job.operation);
    if (move.transposes)
        transposeParameters(target);
    jvirt_barray_ptr *moved = blocks;
    if (job.operation != Operation::none) {
        moved = static_cast<jvirt_barray_ptr *>(
            (*target.mem->alloc_small)(reinterpret_cast<j_common_ptr>(&target), JPOOL_IMAGE,
                                       sizeof(jvirt_barray_ptr) * size_t(source.num_components)));
        for (int c = 0; c < source.num_components; ++c) {
            const jpeg_component_info &from = source.comp_info[c];
            const jpeg_component_info &to = target.comp_info[c];
            const JDIMENSION width = move.transposes ? from.height_in_blocks : from.width_in_blocks;
            const JDIMENSION height = move.transposes ? from.width_in_blocks : from.height_in_blocks;
            // Rounded up to whole MCUs, as the encoder reads them.
            moved[c] = job.arena->make(roundedUp(width, to.h_samp_factor), roundedUp(height, to.v_samp_factor), false);
            if (!moved[c])
                ERREXIT1(&target, JERR_OUT_OF_MEMORY, 101);
            const auto all = [&](j_common_ptr cinfo, jvirt_barray_ptr array, JDIMENSION rows) {
                return (*cinfo->mem->access_virt_barray)(cinfo, array, 0, rows, TRUE);
            };
            moveBlocks(move, all(reinterpret_cast<j_common_ptr>(&source), blocks[c], from.height_in_blocks),
                       from.width_in_blocks, from.height_in_blocks,
                       all(reinterpret_cast<j_common_ptr>(&target), moved[c], height));
        }
    }
    jpeg_write_coefficients(&target, moved);
    for (jpeg_saved_marker_ptr marker = source.marker_list; marker; marker = marker->next)
        jpeg_write_marker(&target, marker->marker, marker->data, marker->data_length);
    jpeg_finish_compress(&target);
    jpeg_finish_decompress(&source);
    return true;
}

} // namespace

Result transform(QByteArrayView jpeg, Operation operation, CoefficientArena &arena, QByteArray &out)
{
    arena.reset();
    Job job{};
    job.data = reinterpret_cast<const JOCTET *>(jpeg.data());
    job.size = static_cast<unsigned long>(jpeg.size());
    job.operation = operation;
    job.arena = &arena;
    job.source.err = jpeg_std_error(&job.trap.manager);
    job.target.err = &job.trap.manager;
    job.trap.manager.error_exit = stop;
    job.trap.manager.emit_message = warn;
    jpeg_create_decompress(&job.source);
    jpeg_create_compress(&job.target);
    arena.install(reinterpret_cast<j_common_ptr>(&job.source));
    arena.install(reinterpret_cast<j_common_ptr>(&job.target));
    // About the source's size: a moved picture takes as many bytes give or take its tables.
    out.resize(std::max(out.capacity(), jpeg.size() + jpeg.size() / 8 + 65536));
    job.destination.out = &out;
    job.destination.manager.init_destination = startOutput;
    job.destination.manager.empty_output_buffer = growOutput;
    job.destination.manager.term_destination = endOutput;
    job.target.dest = &job.destination.manager;

    Result result;
    if (!run(job)) {
        result.outcome = job.trap.damaged ? Outcome::damaged : Outcome::unreadable;
        result.error = QString::fromLatin1(job.trap.message);
        out.resize(0);
    } else {
        result.outcome = job.imperfect ? Outcome::imperfect : Outcome::done;
        if (job.imperfect)
            out.resize(0);
    }
    jpeg_destroy_compress(&job.target);
    jpeg_destroy_decompress(&job.source);
    arena.reset();
    return result;
}

} // namespace LosslessJpegTransform
