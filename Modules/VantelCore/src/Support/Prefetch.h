// Prefetch.h: a hint that memory is about to be read, for loops that walk objects spread over the heap.
//
//   for (std::size_t i = 0; i < items.size(); ++i) {
//       if (i + kPrefetchDistance < items.size()) { Prefetch(items[i + kPrefetchDistance]); }
#pragma once

#include <cstddef>

#if defined(_MSC_VER) && !defined(__clang__)
#include <xmmintrin.h>
#endif

namespace Vantel {

// How many elements ahead a walk asks for: far enough to hide a miss to main memory behind the work on the
// elements in between, near enough that the lines are still cached when the walk gets there.
inline constexpr std::size_t kPrefetchDistance = 64;

// Has no effect on what the program computes; a null pointer is fine.
inline void Prefetch(const void* address) {
#if defined(__GNUC__) || defined(__clang__)
    __builtin_prefetch(address);
#elif defined(_MSC_VER)
    _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#else
    (void)address;
#endif
}

// The lines that hold the `bytes` from `address` on.
inline void PrefetchLines(const void* address, std::size_t bytes) {
    constexpr std::size_t kLine = 64;
    const auto* first = static_cast<const char*>(address);
    for (std::size_t offset = 0; offset < bytes; offset += kLine) {
        Prefetch(first + offset);
    }
}

// How much of an operator that runs a frame reads: its own fields and those of its ports and parameters,
// members of it in a typical operator.
inline constexpr std::size_t kRunningOperatorBytes = 256;

}  // namespace Vantel
