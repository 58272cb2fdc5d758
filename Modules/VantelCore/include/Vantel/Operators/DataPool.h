// DataPool.h: values for an output without a heap allocation each frame.
//
//   class CounterOutput : public DataOutput {
//       DataPool<CountData> pool;
//       void Write(int count) { Activate(pool.Make(count)); }   // a new value with a new serial
//   };
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include <Vantel/Operators/DataBlocks.h>

namespace Vantel {

// DataPool
//
// Makes values of type T as std::make_shared would: shared, immutable, each with its own new serial. The
// memory of a value comes back to the pool once no port, task or host holds it any more and serves a later
// value, so an operator that publishes every frame allocates only while the number of its values alive at
// once still grows (usually two: the one its readers hold and the new one). Make and the pool's destruction
// belong to one thread, the one that writes the output; values may be let go of on any thread, also after
// the pool is gone.
template <typename T>
class DataPool {
public:
    template <typename... Arguments>
    std::shared_ptr<T> Make(Arguments&&... arguments) {
        return std::allocate_shared<T>(Allocator<T>(blocks.GetShared(), &blocks),
                                       std::forward<Arguments>(arguments)...);
    }

private:
    template <typename U>
    struct Allocator {
        using value_type = U;

        Allocator(DataBlocks::Implementation* shared, DataBlocks* owner) : shared(shared), owner(owner) {}
        template <typename Other>
        Allocator(const Allocator<Other>& other) : shared(other.shared), owner(other.owner) {}

        U* allocate(std::size_t count) {
            static_assert(alignof(U) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "over-aligned data is not pooled");
            return static_cast<U*>(owner->Allocate(count * sizeof(U)));
        }
        void deallocate(U* block, std::size_t count) noexcept {
            DataBlocks::Free(shared, block, count * sizeof(U));
        }
        template <typename Other>
        bool operator==(const Allocator<Other>& other) const {
            return shared == other.shared;
        }

        DataBlocks::Implementation* shared;
        // Only allocate uses it, and only Make allocates, while the pool lives.
        DataBlocks* owner;
    };

    DataBlocks blocks;
};

}  // namespace Vantel
