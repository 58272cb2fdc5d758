// LoaderFuzzer.cpp: arbitrary bytes through the project loader; the JSON library's errors may reach the
// caller, anything else (another exception, a crash, a leak, a sanitizer report, a document read otherwise
// than the JSON library reads it, a file that saves differently from its tree) is a finding.
//
//   cmake --preset fuzz && cmake --build --preset fuzz --target LoaderFuzzer
//   build/fuzz/bin/LoaderFuzzer -max_total_time=60 fuzz/corpus
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <streambuf>
#include <string_view>

#include <nlohmann/json.hpp>

#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>

#include "SameDocument.h"

namespace {

// Swallows the loader's log lines: thousands of rejected documents a second would bury the fuzzer's report.
class DiscardBuffer : public std::streambuf {
protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

// The JSON library's reading of text that the project reader took; its refusing the text is a finding too.
nlohmann::json ParsedByLibrary(std::string_view text) {
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::exception&) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    static DiscardBuffer discard;
    std::cout.rdbuf(&discard);
    Vantel::RegisterCoreTypes();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const nlohmann::json document = Vantel::Deserialization::ReadProjectText(text);
        // Text the reader takes, the JSON library takes as well, and makes the same document of.
        if (!Vantel::Testing::SameDocument(document, ParsedByLibrary(text))) {
            std::abort();
        }
        const std::unique_ptr<Vantel::Project> project =
            Vantel::Deserialization::DeserializeProject(document);
        // Whatever loads can be saved, and the file's own writer prints exactly what the tree prints.
        if (project != nullptr && Vantel::Serialization::SerializeProjectText(*project) !=
                                      Vantel::Serialization::SerializeProject(*project).dump(4)) {
            std::abort();
        }
    } catch (const nlohmann::json::exception&) {
        // Syntax errors and JSON of the wrong type inside an entry are reported to the caller this way.
    }
    return 0;
}
