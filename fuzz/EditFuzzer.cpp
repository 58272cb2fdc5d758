// EditFuzzer.cpp: arbitrary bytes choose a sequence of edits, saves and loads on a project; after every step
// the file must load back to the same bytes, and at the end undo and redo must give back every file in
// turn. A failed check prints the engine's report and aborts; crashes and sanitizer reports are findings too.
//
//   cmake --preset fuzz && cmake --build --preset fuzz --target EditFuzzer
//   build/fuzz/bin/EditFuzzer -max_total_time=60 fuzz/edit-corpus
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

#include "EditSequence.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (!Vantel::Testing::PrepareEditSequence()) {
        std::fputs("EditFuzzer: the standard plug-in did not load from the executable's folder\n", stderr);
        std::abort();
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The engine captures the library's log lines itself, so nothing reaches the fuzzer's output.
    const std::string failure = Vantel::Testing::RunEditSequence(std::span<const std::uint8_t>(data, size));
    if (!failure.empty()) {
        std::fprintf(stderr, "EditFuzzer: %s", failure.c_str());
        std::abort();
    }
    return 0;
}
