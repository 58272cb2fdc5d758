// Memory.h: address space taken straight from the operating system, for allocators of the library's own.
#pragma once

#include <cstddef>

namespace Vantel::Platform {

// Reads and writes `size` bytes of fresh zeroed memory, aligned to `alignment` (a power of two), asking the
// system to back it with large pages where it can. Null when the system refuses. The memory is never given
// back: the callers keep it for reuse for the life of the process.
void* ReserveLargePages(std::size_t size, std::size_t alignment);

}  // namespace Vantel::Platform
