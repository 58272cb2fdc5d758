// Prefetch.h: a hint that memory is about to be read, for loops that walk objects spread over the heap.
//
//   for (std::size_t i = 0; i < items.size(); ++i) {
//       if (i + kPrefetchDistance < items.size()) { Prefetch(items[i + kPrefetchDistance]); }
#pragma once

#if defined(_MSC_VER) && !defined(__clang__)
#include <xmmintrin.h>
#endif

namespace Vantel {

// How many elements ahead a walk asks for: far enough to hide a miss to main memory behind the work on the
// elements in between, near enough that the lines are still cached when the walk gets there.
inline constexpr std::size_t kPrefetchDistance = 32;

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

}  // namespace Vantel
