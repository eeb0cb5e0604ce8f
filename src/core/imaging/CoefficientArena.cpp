#include "core/imaging/CoefficientArena.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
// clang-format off
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23 // Linux 5.14
#endif

namespace {

// 64 MB: one 24 MP picture's blocks as read fit in one chunk; smaller pictures share it.
constexpr std::size_t chunkBytes = std::size_t(64) << 20;
// 64 bytes: a cache line, so that no two arrays share one.
constexpr std::size_t alignment = 64;

std::size_t pageSize()
{
    static const std::size_t size = std::size_t(sysconf(_SC_PAGESIZE));
    return size;
}

} // namespace

struct CoefficientArenaHooks
{
    static CoefficientArena *arena(j_common_ptr cinfo) { return static_cast<CoefficientArena *>(cinfo->client_data); }
    static CoefficientArena::Array *array(jvirt_barray_ptr pointer)
    {
        return reinterpret_cast<CoefficientArena::Array *>(pointer);
    }

    static jvirt_barray_ptr request(j_common_ptr cinfo, int, boolean preZero, JDIMENSION width, JDIMENSION height,
                                    JDIMENSION)
    {
        CoefficientArena::Array &made = arena(cinfo)->m_arrays.emplace_back();
        made.width = width;
        made.height = height;
        made.zeroed = preZero;
        return reinterpret_cast<jvirt_barray_ptr>(&made);
    }

    static void realize(j_common_ptr cinfo)
    {
        CoefficientArena *self = arena(cinfo);
        self->m_libraryRealize(cinfo); // the library's own arrays of samples, if any
        for (CoefficientArena::Array &each : self->m_arrays) {
            if (!each.rows && !self->realize(each))
                ERREXIT1(cinfo, JERR_OUT_OF_MEMORY, 100);
        }
    }

    static JBLOCKARRAY access(j_common_ptr cinfo, jvirt_barray_ptr pointer, JDIMENSION row, JDIMENSION count, boolean)
    {
        CoefficientArena::Array *blocks = array(pointer);
        if (!blocks->rows || row + count > blocks->height || row + count < row
            || (blocks->fill && count > blocks->windowRows))
            ERREXIT(cinfo, JERR_BAD_VIRTUAL_ACCESS);
        JBLOCKROW *rows = static_cast<JBLOCKROW *>(blocks->rows);
        if (blocks->fill && !(blocks->filledFrom <= row && row + count <= blocks->filledTo)) {
            // The next band of rows from `row` on, made at once: the encoder asks for a few at a time.
            const JDIMENSION to = std::min(blocks->height, row + blocks->windowRows);
            for (JDIMENSION i = row; i < to; ++i)
                rows[i] =
                    reinterpret_cast<JBLOCKROW>(blocks->window + size_t(i - row) * blocks->width * sizeof(JBLOCK));
            blocks->fill(blocks->context, row, to - row, rows + row);
            blocks->filledFrom = row;
            blocks->filledTo = to;
        }
        return rows + row;
    }
};

CoefficientArena::~CoefficientArena()
{
    for (const Chunk &chunk : m_chunks)
        ::munmap(chunk.base, chunk.size);
}

void CoefficientArena::install(jpeg_common_struct *cinfo)
{
    cinfo->client_data = this;
    if (cinfo->mem->realize_virt_arrays != CoefficientArenaHooks::realize)
        m_libraryRealize = cinfo->mem->realize_virt_arrays;
    cinfo->mem->request_virt_barray = CoefficientArenaHooks::request;
    cinfo->mem->realize_virt_arrays = CoefficientArenaHooks::realize;
    cinfo->mem->access_virt_barray = CoefficientArenaHooks::access;
}

jvirt_barray_control *CoefficientArena::makeFilled(unsigned width, unsigned height, unsigned window, Fill fill,
                                                   void *context)
{
    Array &made = m_arrays.emplace_back();
    made.width = width;
    made.height = height;
    made.fill = fill;
    made.context = context;
    made.windowRows = window;
    made.rows = allocate(std::size_t(height) * sizeof(JBLOCKROW), false);
    made.window = static_cast<unsigned char *>(allocate(std::size_t(window) * width * sizeof(JBLOCK), false));
    return made.rows && made.window ? reinterpret_cast<jvirt_barray_control *>(&made) : nullptr;
}

void CoefficientArena::reset()
{
    m_arrays.clear();
    for (Chunk &chunk : m_chunks)
        chunk.used = 0;
    m_current = 0;
}

bool CoefficientArena::realize(Array &array)
{
    const std::size_t rowBytes = std::size_t(array.width) * sizeof(JBLOCK);
    auto *rows = static_cast<JBLOCKROW *>(allocate(std::size_t(array.height) * sizeof(JBLOCKROW), false));
    auto *blocks = static_cast<unsigned char *>(allocate(rowBytes * array.height, array.zeroed));
    if (!rows || !blocks)
        return false;
    for (JDIMENSION row = 0; row < array.height; ++row)
        rows[row] = reinterpret_cast<JBLOCKROW>(blocks + rowBytes * row);
    array.rows = rows;
    return true;
}

void *CoefficientArena::allocate(std::size_t bytes, bool zeroed)
{
    bytes = (bytes + alignment - 1) / alignment * alignment;
    while (m_current < m_chunks.size() && m_chunks[m_current].size - m_chunks[m_current].used < bytes)
        ++m_current;
    if (m_current == m_chunks.size()) {
        const std::size_t size = std::max(chunkBytes, (bytes + pageSize() - 1) / pageSize() * pageSize());
        void *base = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (base == MAP_FAILED)
            return nullptr;
        m_chunks.push_back({static_cast<unsigned char *>(base), size, 0, 0, 0});
    }
    Chunk &chunk = m_chunks[m_current];
    unsigned char *at = chunk.base + chunk.used;
    const std::size_t end = chunk.used + bytes;
    // Pages never handed out are still the kernel's zeros; only reused ones need clearing.
    if (zeroed && chunk.used < chunk.dirty)
        std::memset(at, 0, std::min(end, chunk.dirty) - chunk.used);
    if (end > chunk.populated) {
        // One call maps them all, rather than a fault for each page as libjpeg touches it.
        const std::size_t from = chunk.populated / pageSize() * pageSize();
        const std::size_t to = std::min(chunk.size, (end + pageSize() - 1) / pageSize() * pageSize());
        ::madvise(chunk.base + from, to - from, MADV_POPULATE_WRITE); // a kernel without it faults instead
        chunk.populated = to;
    }
    chunk.used = end;
    chunk.dirty = std::max(chunk.dirty, end);
    return at;
}
