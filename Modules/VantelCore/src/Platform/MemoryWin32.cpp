// The Win32 side of taking memory from the system. Large pages there need a privilege that a user's process
// rarely holds, so the memory comes in ordinary pages; VirtualAlloc's 64 KiB granularity is aligned enough
// for the arenas that ask.
#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Platform/Memory.h"

namespace Vantel::Platform {

void* ReserveLargePages(std::size_t size, std::size_t alignment) {
    (void)alignment;
    return VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

}  // namespace Vantel::Platform

#endif
