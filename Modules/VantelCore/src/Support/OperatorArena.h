// OperatorArena.h: where operators and their private blocks live.
//
//   void* block = OperatorArena::Allocate(sizeof(Blur));
//   OperatorArena::Free(block, sizeof(Blur));
#pragma once

#include <cstddef>

namespace Vantel::OperatorArena {

// A block of `size` bytes aligned to the default new alignment. Small blocks are carved out of 2 MiB runs of
// large pages and recycled by size, so that the operators of a graph sit densely on few pages and a frame
// that visits each of them misses the processor's address cache rarely; large blocks come from the heap.
// Blocks of 16 bytes or less share cache lines, in runs of their own; larger ones have whole lines.
// Under the address sanitizer every block comes from the heap, so that it sees each one.
// Thread-safe. Throws std::bad_alloc when no memory is left.
void* Allocate(std::size_t size);
// Takes back a block from Allocate with the same size.
void Free(void* block, std::size_t size) noexcept;

// A private block that a frame visits derives from this, so that it lies beside its operator's blocks: the
// operators' members are built one after another, and a frame then walks memory in order.
struct Block {
    static void* operator new(std::size_t size) { return Allocate(size); }
    static void operator delete(void* block, std::size_t size) noexcept { Free(block, size); }
};

}  // namespace Vantel::OperatorArena
