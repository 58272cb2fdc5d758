#include <Vantel/Operators/DataBlocks.h>

#include <atomic>
#include <cstdint>
#include <new>

#include "Platform/Threads.h"
#include "Support/OperatorArena.h"

namespace Vantel {
namespace {

struct FreeBlock {
    FreeBlock* next;
};

// Tells threads apart without a system call: the address of a thread's own variable.
const void* ThisThread() {
    VANTEL_HOT_THREAD_LOCAL thread_local const char marker = 0;
    return &marker;
}

// A given-back block holds the list's link.
std::size_t RecycledSize(std::size_t bytes) {
    return bytes < sizeof(FreeBlock) ? sizeof(FreeBlock) : bytes;
}

}  // namespace

class DataBlocks::Implementation : public OperatorArena::Block {
public:
    // Stands for the returned list once the handle is gone: blocks given back after that go to the heap.
    static FreeBlock* Closed() { return reinterpret_cast<FreeBlock*>(std::uintptr_t{1}); }

    void Release() noexcept {
        if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }
    void FreeAll(FreeBlock* list) noexcept {
        while (list != nullptr) {
            FreeBlock* next = list->next;
            ::operator delete(list);
            Release();
            list = next;
        }
    }

    // Written once, by the first Allocate, before any block of the size exists.
    std::size_t blockSize = 0;
    // The thread that allocates, also set by the first Allocate.
    const void* owner = nullptr;
    // The owner's own list: pushed and popped by the owner without atomics.
    FreeBlock* own = nullptr;
    // Pushed by any thread, taken whole by the owner when its own list is empty.
    std::atomic<FreeBlock*> returned{nullptr};
    // The handle, and each recycled-size block that exists.
    std::atomic<std::size_t> references{1};
};

DataBlocks::DataBlocks() : implementation(new Implementation) {}

DataBlocks::~DataBlocks() {
    implementation->FreeAll(implementation->own);
    implementation->FreeAll(
        implementation->returned.exchange(Implementation::Closed(), std::memory_order_acquire));
    implementation->Release();
}

void* DataBlocks::Allocate(std::size_t bytes) {
    Implementation& shared = *implementation;
    if (shared.blockSize == 0) {
        shared.blockSize = RecycledSize(bytes);
        shared.owner = ThisThread();
    }
    if (RecycledSize(bytes) != shared.blockSize) {
        return ::operator new(bytes);
    }
    if (shared.own == nullptr) {
        shared.own = shared.returned.exchange(nullptr, std::memory_order_acquire);
    }
    if (FreeBlock* block = shared.own) {
        shared.own = block->next;
        return block;
    }
    shared.references.fetch_add(1, std::memory_order_relaxed);
    return ::operator new(shared.blockSize);
}

void DataBlocks::Free(Implementation* shared, void* block, std::size_t bytes) noexcept {
    if (RecycledSize(bytes) != shared->blockSize) {
        ::operator delete(block);
        return;
    }
    auto* freed = static_cast<FreeBlock*>(block);
    if (shared->owner == ThisThread() &&
        shared->returned.load(std::memory_order_relaxed) != Implementation::Closed()) {
        // Usually so: values are let go of on the thread that runs the frames, and the handle dies on that
        // thread too, so that this thread alone touches the owner's list.
        freed->next = shared->own;
        shared->own = freed;
        return;
    }
    FreeBlock* head = shared->returned.load(std::memory_order_relaxed);
    do {
        if (head == Implementation::Closed()) {
            ::operator delete(block);
            shared->Release();
            return;
        }
        freed->next = head;
    } while (!shared->returned.compare_exchange_weak(head, freed, std::memory_order_release,
                                                     std::memory_order_relaxed));
}

}  // namespace Vantel
