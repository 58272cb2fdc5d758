#include <cstdint>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataBlocks.h>
#include <Vantel/Operators/DataPool.h>

#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Number = Testing::NumberData;

TEST(DataPool, ValuesAreNewEachTimeAndTheirMemoryComesBack) {
    DataPool<Number> pool;
    std::shared_ptr<Number> held = pool.Make(1.0);
    std::shared_ptr<Number> next = pool.Make(2.0);
    EXPECT_NE(held.get(), next.get()) << "a value still held keeps its memory";
    EXPECT_EQ(next->value, 2.0);

    const Number* address = next.get();
    const std::uint64_t serial = next->GetSerial();
    next.reset();
    std::shared_ptr<Number> again = pool.Make(3.0);
    EXPECT_EQ(again.get(), address) << "the block let go of serves the next value";
    EXPECT_GT(again->GetSerial(), serial) << "a recycled block still makes a new value";
    EXPECT_EQ(again->value, 3.0);

    // A weak reference keeps the block out of the pool until it goes too.
    std::weak_ptr<Number> watcher = again;
    again.reset();
    EXPECT_TRUE(watcher.expired());
    std::shared_ptr<Number> fresh = pool.Make(4.0);
    EXPECT_NE(fresh.get(), address);
    watcher.reset();
    EXPECT_EQ(pool.Make(5.0).get(), address);
}

TEST(DataPool, ValuesOutliveThePoolAndMayBeLetGoOfOnAnyThread) {
    std::vector<std::shared_ptr<Number>> kept;
    {
        DataPool<Number> pool;
        for (int i = 0; i < 100; ++i) {
            kept.push_back(pool.Make(i));
        }
        // Half come back from another thread while this one goes on making values, which reuse them.
        std::vector<std::shared_ptr<Number>> released(kept.begin() + 50, kept.end());
        kept.resize(50);
        std::thread releaser([&released] { released.clear(); });
        std::vector<std::shared_ptr<Number>> later;
        for (int i = 0; i < 50; ++i) {
            later.push_back(pool.Make(100 + i));
        }
        releaser.join();
        kept.insert(kept.end(), later.begin(), later.end());
    }
    // The pool is gone; every value still reads, and letting go of them (here and on another thread) frees
    // their blocks, which the leak checker would report otherwise.
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(kept[i]->value, i);
        EXPECT_EQ(kept[50 + i]->value, 100 + i);
    }
    std::thread([&kept] { kept.resize(50); }).join();
    kept.clear();
}

// Given back while its thread still runs (so that the heap's own cache for that thread holds nothing), the
// block serves the owner's next value.
TEST(DataBlocks, ABlockGivenBackOnAnotherThreadServesTheOwner) {
    DataBlocks blocks;
    void* block = blocks.Allocate(48);
    std::promise<void> given;
    std::promise<void> taken;
    std::thread other([&] {
        DataBlocks::Free(blocks.GetShared(), block, 48);
        given.set_value();
        taken.get_future().wait();
    });
    given.get_future().wait();
    void* next = blocks.Allocate(48);
    taken.set_value();
    other.join();
    EXPECT_EQ(next, block);
    DataBlocks::Free(blocks.GetShared(), next, 48);
}

TEST(DataBlocks, OnlyTheFirstSizeIsRecycled) {
    DataBlocks blocks;
    void* first = blocks.Allocate(48);
    void* other = blocks.Allocate(200);
    DataBlocks::Free(blocks.GetShared(), other, 200);
    DataBlocks::Free(blocks.GetShared(), first, 48);
    EXPECT_EQ(blocks.Allocate(48), first);
    void* small = blocks.Allocate(200);
    EXPECT_NE(small, first);
    DataBlocks::Free(blocks.GetShared(), small, 200);
    DataBlocks::Free(blocks.GetShared(), first, 48);
}

}  // namespace
}  // namespace Vantel
