// DataBlocks.h: the recycled memory behind a DataPool.
//
//   DataBlocks blocks;
//   void* block = blocks.Allocate(48);             // from the heap the first time, recycled after that
//   DataBlocks::Free(blocks.GetShared(), block, 48);   // from any thread, also after `blocks` died
#pragma once

#include <cstddef>

#include <Vantel/Export.h>

namespace Vantel {

// DataBlocks
//
// Blocks of one size, handed out by one thread (the one that writes the output the pool belongs to, and
// destroys it) and given back from any thread once the last holder of the value lets go. A block given back
// is handed out again, so that a steady stream of values costs no heap allocation. The blocks outlive this
// handle: those still in use when it dies go back to the heap as they are given back.
class VANTEL_API DataBlocks {
public:
    class Implementation;

    DataBlocks();
    ~DataBlocks();
    DataBlocks(const DataBlocks&) = delete;
    DataBlocks& operator=(const DataBlocks&) = delete;

    // A block of `bytes`, aligned for any standard type. The first size asked for is the size recycled;
    // blocks of any other size come from the heap each time. Not thread-safe against itself.
    void* Allocate(std::size_t bytes);
    // What Free needs, valid while any block of this handle is out.
    Implementation* GetShared() const { return implementation; }
    // Takes back a block of `bytes` from Allocate; thread-safe.
    static void Free(Implementation* shared, void* block, std::size_t bytes) noexcept;

private:
    // Shared with the blocks that are out, so a plain pointer: it deletes itself after the last of them.
    Implementation* implementation;
};

}  // namespace Vantel
