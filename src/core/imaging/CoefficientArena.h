#pragma once

#include <cstddef>
#include <deque>
#include <vector>

struct jpeg_common_struct;
struct jvirt_barray_control;

// Memory for the DCT coefficient blocks of lossless JPEG transforms, kept from one picture to the
// next. A 24 MP picture's blocks take about 72 MB; mapping that afresh for every file costs a page
// fault for every 4 KB. The arena gives the same pages to each picture of a batch, prefaults the
// pages it maps in one call, and returns them to the system when it is destroyed.
//
// It stands in for libjpeg's virtual block arrays (install()), so the library decodes into it and
// encodes from it; an array may also be made a band of rows at a time as it is read
// (makeFilled()), so that blocks needed once are never stored. The arrays of a picture live until
// reset(). One thread at a time.
class CoefficientArena
{
public:
    CoefficientArena() = default;
    ~CoefficientArena();
    CoefficientArena(const CoefficientArena &) = delete;
    CoefficientArena &operator=(const CoefficientArena &) = delete;

    // Makes the libjpeg object keep its block arrays here (its `client_data` points at the arena).
    void install(jpeg_common_struct *cinfo);
    // Fills `count` rows of blocks from `row` on into `rows` (a JBLOCKROW[count]).
    using Fill = void (*)(void *context, unsigned row, unsigned count, void *rows);
    // An array whose rows are made by `fill` as they are asked for, `window` rows at a time into
    // room for as many: the blocks a reader needs only once never go through memory. A reader may
    // ask for up to `window` rows at once; `context` outlives the array.
    jvirt_barray_control *makeFilled(unsigned width, unsigned height, unsigned window, Fill fill, void *context);
    // Forgets every array; their memory serves the next picture.
    void reset();

private:
    struct Chunk
    {
        unsigned char *base = nullptr;
        std::size_t size = 0;
        std::size_t used = 0;
        std::size_t dirty = 0; // bytes from the start that have been handed out before: not zero
        std::size_t populated = 0;
    };
    // An array of blocks: its rows of blocks lie in the arena. libjpeg sees it as a
    // jvirt_barray_ptr and reaches it only through the hooks.
    struct Array
    {
        unsigned width = 0;
        unsigned height = 0;
        bool zeroed = false;
        void *rows = nullptr; // JBLOCKROW[height], null until realized
        Fill fill = nullptr; // when set, the rows asked for are made in `window`
        void *context = nullptr;
        unsigned windowRows = 0;
        unsigned char *window = nullptr;
        unsigned filledFrom = 0; // the rows in `window` now
        unsigned filledTo = 0;
    };

    friend struct CoefficientArenaHooks; // libjpeg's entry points, in the .cpp

    void *allocate(std::size_t bytes, bool zeroed);
    bool realize(Array &array);

    std::vector<Chunk> m_chunks;
    std::size_t m_current = 0;
    std::deque<Array> m_arrays; // stable addresses: libjpeg holds pointers to them
    void (*m_libraryRealize)(jpeg_common_struct *) = nullptr;
};
