#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <set>
#include <thread>
#include <vector>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/Operator.h>

namespace Vantel {
namespace {

// An operator with a payload that it fills with a pattern of its own, so that a block handed out twice, or
// too small, shows as a broken pattern.
struct PatternOperator : Operator {
    virtual bool Intact() const = 0;
};

template <std::size_t Bytes>
struct PayloadOperator : PatternOperator {
    static std::array<std::uint8_t, Bytes> Pattern(std::uint8_t seed) {
        std::array<std::uint8_t, Bytes> pattern;
        for (std::size_t i = 0; i < Bytes; ++i) {
            pattern[i] = static_cast<std::uint8_t>(seed + i);
        }
        return pattern;
    }
    explicit PayloadOperator(std::uint8_t seed) : seed(seed), payload(Pattern(seed)) {}
    bool Intact() const override { return payload == Pattern(seed); }
    std::uint8_t seed;
    std::array<std::uint8_t, Bytes> payload;
};

struct alignas(256) OverAlignedOperator : Operator {
    std::uint8_t byte = 7;
};

using Made = std::vector<std::unique_ptr<PatternOperator>>;

template <std::size_t Bytes>
std::unique_ptr<PatternOperator> Make(std::uint8_t seed) {
    return std::make_unique<PayloadOperator<Bytes>>(seed);
}

// The sizes in turn, the last beyond the small blocks.
Made MakeMany(int count, int salt) {
    constexpr std::unique_ptr<PatternOperator> (*makers[])(std::uint8_t) = {Make<8>, Make<200>, Make<1000>,
                                                                            Make<9000>};
    Made made;
    for (int i = 0; i < count; ++i) {
        made.push_back(makers[i % 4](static_cast<std::uint8_t>(i * 7 + salt)));
    }
    return made;
}

bool AllIntact(const Made& made) {
    return std::all_of(made.begin(), made.end(), [](const auto& op) { return !op || op->Intact(); });
}

// Operators come from an allocator of the library's own; freed blocks are reused, never while in use.
TEST(OperatorMemory, BlocksAreDistinctRecycledAndAligned) {
    Made made = MakeMany(400, 1);
    for (std::size_t i = 0; i < made.size(); i += 2) {
        made[i].reset();
    }
    Made more = MakeMany(400, 3);
    EXPECT_TRUE(AllIntact(made));
    EXPECT_TRUE(AllIntact(more));

    std::set<const Operator*> addresses;
    for (const auto* list : {&made, &more}) {
        for (const auto& op : *list) {
            if (op != nullptr) {
                EXPECT_TRUE(addresses.insert(op.get()).second);
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(op.get()) % alignof(std::max_align_t), 0u);
            }
        }
    }

    auto aligned = std::make_unique<OverAlignedOperator>();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned.get()) % 256, 0u);
    EXPECT_EQ(aligned->byte, 7);

    // Placement new still builds an operator in memory the caller provides.
    alignas(PayloadOperator<8>) std::array<std::byte, sizeof(PayloadOperator<8>)> storage;
    auto* placed = new (storage.data()) PayloadOperator<8>(9);
    EXPECT_TRUE(placed->Intact());
    placed->~PayloadOperator<8>();
}

// The arena's own behaviour, which a sanitizer build replaces by the plain heap so that it can watch each
// block.
TEST(OperatorMemory, TheArenaRecyclesBlocksAndCutsThemFromOneRun) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "under AddressSanitizer operators come from the plain heap";
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
    GTEST_SKIP() << "under a sanitizer operators come from the plain heap";
#endif
#endif
    // A block given back is the next one handed out of its size; giving back null changes nothing; blocks
    // in a row come from one run, side by side (a few tries, since a run may end between two).
    // A size no operator of the tests has, so that the free list of its class starts empty.
    constexpr std::size_t kSize = 4000;
    void* block = Operator::operator new(kSize);
    Operator::operator delete(block, kSize);
    Operator::operator delete(nullptr, kSize);
    void* again = Operator::operator new(kSize);
    EXPECT_EQ(again, block);
    bool adjacent = false;
    std::vector<void*> taken{again};
    for (int i = 0; i < 4 && !adjacent; ++i) {
        auto* first = static_cast<std::byte*>(Operator::operator new(kSize));
        auto* second = static_cast<std::byte*>(Operator::operator new(kSize));
        adjacent = second - first == static_cast<std::ptrdiff_t>((kSize / 64 + 1) * 64);  // whole cache lines
        taken.insert(taken.end(), {first, second});
    }
    EXPECT_TRUE(adjacent);
    for (void* used : taken) {
        Operator::operator delete(used, kSize);
    }
}

TEST(OperatorMemory, ThreadsAllocateAndFreeAtOnce) {
    std::vector<Made> results(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &results] {
            for (int round = 0; round < 5; ++round) {
                Made made = MakeMany(100, t * 31 + round);
                for (std::size_t i = 1; i < made.size(); i += 3) {
                    made[i].reset();
                }
                results[t] = std::move(made);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Made& made : results) {
        EXPECT_TRUE(AllIntact(made));
    }
}

}  // namespace
}  // namespace Vantel
