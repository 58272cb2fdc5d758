#include "Support/OperatorArena.h"

#include <array>
#include <mutex>
#include <new>

#include "Platform/Memory.h"

#if defined(__SANITIZE_ADDRESS__)
#define VANTEL_OPERATOR_ARENA_OFF 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define VANTEL_OPERATOR_ARENA_OFF 1
#endif
#endif

namespace Vantel::OperatorArena {
namespace {

#ifndef VANTEL_OPERATOR_ARENA_OFF

constexpr std::size_t kGranule = 64;  // a cache line: no two blocks above the small size share one
constexpr std::size_t kLargestBlock = 4096;
constexpr std::size_t kRunSize = std::size_t{2} << 20;  // one large page

struct FreeBlock {
    FreeBlock* next;
};

// Where blocks are carved from: a run of large pages, used up from the front.
struct Run {
    char* cursor = nullptr;
    char* end = nullptr;
};

class Arena {
public:
    void* Allocate(std::size_t size) {
        const std::size_t sizeClass = ClassOf(size);
        const std::lock_guard lock(mutex);
        if (FreeBlock* block = freeBlocks[sizeClass]) {
            freeBlocks[sizeClass] = block->next;
            return block;
        }
        const std::size_t bytes = BytesOf(sizeClass);
        Run& run = sizeClass == kSmallClass ? smallRun : wholeLineRun;
        if (static_cast<std::size_t>(run.end - run.cursor) < bytes && !StartRun(run)) {
            // No large pages to be had: a heap block of the class's size serves, and is recycled like any.
            return ::operator new(bytes);
        }
        void* block = run.cursor;
        run.cursor += bytes;
        return block;
    }

    void Free(void* block, std::size_t size) noexcept {
        const std::size_t sizeClass = ClassOf(size);
        const std::lock_guard lock(mutex);
        freeBlocks[sizeClass] = new (block) FreeBlock{freeBlocks[sizeClass]};
    }

private:
    // Blocks of up to kSmallBlock bytes (a parameter's value, say) share lines, in runs of their own: the
    // values of neighbouring operators then lie together, and a frame that reads them reads few lines.
    static constexpr std::size_t kSmallBlock = 16;
    static constexpr std::size_t kSmallClass = kLargestBlock / kGranule;

    static std::size_t ClassOf(std::size_t size) {
        if (size <= kSmallBlock) {
            return kSmallClass;
        }
        return (size - 1) / kGranule;
    }
    static std::size_t BytesOf(std::size_t sizeClass) {
        return sizeClass == kSmallClass ? kSmallBlock : (sizeClass + 1) * kGranule;
    }

    static bool StartRun(Run& run) {
        // The rest of the current run is left unused: it is smaller than the block that did not fit.
        auto* pages = static_cast<char*>(Platform::ReserveLargePages(kRunSize, kRunSize));
        if (pages == nullptr) {
            return false;
        }
        run.cursor = pages;
        run.end = pages + kRunSize;
        return true;
    }

    std::mutex mutex;
    std::array<FreeBlock*, kSmallClass + 1> freeBlocks{};
    Run wholeLineRun;
    Run smallRun;
};

// Never destroyed: operators may be freed by other statics' destructors at exit.
Arena& TheArena() {
    static Arena* arena = new Arena;
    return *arena;
}

#endif

}  // namespace

void* Allocate(std::size_t size) {
#ifndef VANTEL_OPERATOR_ARENA_OFF
    if (size <= kLargestBlock) {
        return TheArena().Allocate(size);
    }
#endif
    return ::operator new(size);
}

void Free(void* block, [[maybe_unused]] std::size_t size) noexcept {
    if (block == nullptr) {
        return;
    }
#ifndef VANTEL_OPERATOR_ARENA_OFF
    if (size <= kLargestBlock) {
        TheArena().Free(block, size);
        return;
    }
#endif
    ::operator delete(block);  // unsized: not every compiler offers sized deallocation by default
}

}  // namespace Vantel::OperatorArena
