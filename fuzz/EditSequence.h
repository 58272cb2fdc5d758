// EditSequence.h: a sequence of edits chosen by input bytes, checked after every step against saving,
// loading, undo and redo. The edit fuzzer and the undo property test both drive it.
//
//   ASSERT_TRUE(PrepareEditSequence());
//   const std::string failure = RunEditSequence(SeededBytes(7, 120));
//   EXPECT_EQ(failure, "");
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Vantel::Testing {

// ByteReader
//
// Hands out the input's bytes as choices, one byte per choice (two for more than 256 options). Past the end
// every choice is 0 and AtEnd() is true, which ends the sequence.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : bytes(bytes) {}

    bool AtEnd() const { return next >= bytes.size(); }
    std::uint8_t Next() { return AtEnd() ? 0 : bytes[next++]; }
    // A number below `count`; 0 for a count of 0 or 1, which takes no byte.
    std::size_t Pick(std::size_t count) {
        if (count < 2) {
            return 0;
        }
        std::size_t value = Next();
        if (count > 256) {
            value = value << 8 | Next();
        }
        return value % count;
    }
    bool Chance(std::size_t inCount) { return Pick(inCount) == 0; }

private:
    std::span<const std::uint8_t> bytes;
    std::size_t next = 0;
};

// Registers the core and test types and loads the standard plug-in from the executable's folder, once per
// process. False when the plug-in did not load.
bool PrepareEditSequence();

// Runs the edits that `bytes` choose on a fresh project and checks every step. Empty when everything held;
// else the report: the step, the edits so far, and the first line where the two compared texts differ.
std::string RunEditSequence(std::span<const std::uint8_t> bytes);

// `count` bytes of a generator seeded with `seed`, the same on every machine.
std::vector<std::uint8_t> SeededBytes(unsigned seed, std::size_t count);

}  // namespace Vantel::Testing
