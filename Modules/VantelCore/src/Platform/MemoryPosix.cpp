// The POSIX side of taking memory from the system: an anonymous mapping, advised to use huge pages.
#ifndef _WIN32

#include <sys/mman.h>

#include <cstdint>

#include "Platform/Memory.h"

namespace Vantel::Platform {

void* ReserveLargePages(std::size_t size, std::size_t alignment) {
    // Map more than asked, then cut the mapping to an aligned run: huge pages need aligned ranges.
    const std::size_t mapped = size + alignment;
    void* region = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (region == MAP_FAILED) {
        return nullptr;
    }
    const auto start = reinterpret_cast<std::uintptr_t>(region);
    const std::uintptr_t aligned = (start + alignment - 1) & ~(static_cast<std::uintptr_t>(alignment) - 1);
    const std::uintptr_t head = aligned - start;  // often nothing: mappings tend to be aligned already
    if (head != 0) {
        munmap(region, head);
    }
    // An aligned run needs less than was mapped, so a tail always remains.
    munmap(reinterpret_cast<void*>(aligned + size), alignment - head);
#ifdef MADV_HUGEPAGE
    madvise(reinterpret_cast<void*>(aligned), size, MADV_HUGEPAGE);  // a hint: small pages work as well
#endif
    return reinterpret_cast<void*>(aligned);
}

}  // namespace Vantel::Platform

#endif
