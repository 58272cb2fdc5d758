#include <gtest/gtest.h>

#include <string>

#include "EditSequence.h"

namespace Vantel {
namespace {

// Each seed's bytes choose a sequence of edits, saves and loads; the engine checks the file after every step
// and the whole history undone and redone (see fuzz/EditSequence.cpp).
TEST(UndoRedoProperty, EditSequencesSurviveSavingLoadingUndoAndRedo) {
    ASSERT_TRUE(Testing::PrepareEditSequence());
    for (unsigned seed = 1; seed <= 500; ++seed) {
        const std::string failure = Testing::RunEditSequence(Testing::SeededBytes(seed, 120));
        ASSERT_TRUE(failure.empty()) << "seed " << seed << ", " << failure;
    }
}

}  // namespace
}  // namespace Vantel
