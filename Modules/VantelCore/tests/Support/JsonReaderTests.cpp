#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Projects/Deserialization.h>

#include "SameDocument.h"
#include "Support/JsonReader.h"

namespace Vantel {
namespace {

using nlohmann::json;

// What the JSON library makes of `text`: the document, or the message of the error it throws.
struct LibraryReading {
    explicit LibraryReading(const std::string& text) {
        try {
            document = json::parse(text);
        } catch (const json::exception& thrown) {
            error = thrown.what();
        }
    }
    json document;
    std::string error;
};

// A project file must read the same whichever reader takes it: texts the quick reader takes must give the
// library's document, and all others are the library's to read or refuse.
TEST(JsonReader, TakesWhatItReadsExactlyAndLeavesTheRestToTheLibrary) {
    const std::vector<std::string> taken = {
        // numbers: each integer kind, the edges of each, what overflows into a double, and -0
        R"([0, -0, 7, -7, 18446744073709551615, 18446744073709551616, -9223372036854775808,
            -9223372036854775809, 0.5, -0.0, 1e5, 1E+5, 2.5e-3, 5e-324, 1.7976931348623157e308,
            0.1000000000000000055511151231257827, 123456789012345678901234567890])",
        // strings: escapes, code points escaped alone and in pairs, UTF-8 of every length, DEL, \u0000
        R"(["a\"b\\c\/d\b\f\n\r\t", "\u00e9\u20AC\ud83d\ude00\u0000", "é€😀", "\u007f", ""])",
        // duplicate keys keep the later value; members out of key order; whitespace of each kind
        " {\"b\": 1, \"a\": {\"x\": [1, 2], \"y\": {}}, \"b\": [true, false, null], \"a\": \"later\"}\r\n\t",
        "true", "null", "\"top\"", "-12", "[]", "\xEF\xBB\xBF{\"a\": 1}"};
    const std::vector<std::string> leftToTheLibrary = {
        std::string(300, '[') + std::string(300, ']'), std::string("{} \0 ignored", 12), "1e400", "1e-400",
        // refused by the library too
        "", " ", "{", "[1,]", "{\"a\" 1}", "{\"a\": 1,}", "[1 2]", "01", "1.", "-", "1e", ".5", "+1", "tru",
        "nul", "[1] x", "\"\x01\"", "\"\\x\"", "\"\\u12\"", "\"\\ud83d\"", "\"\\udc00\"", "\"\\udfff\"",
        "\"\\ud83d\\u0041\"", "\"\\ud83d\\n\"", "\"\xC0\xAF\"", "\"\xE0\x9F\xBF\"", "\"\xED\xA0\x80\"",
        "\"\xF0\x8F\xBF\xBF\"", "\"\xF4\x90\x80\x80\"", "\"\xF5\x80\x80\x80\"", "\"\xE2\x82\"", "\"open",
        "\xEF\xBB{}", "\xEF\xBB\xBF", "{} // comment", std::string("[1, \0]", 6)};

    for (const std::string& text : taken) {
        json document;
        EXPECT_TRUE(JsonReader::TryRead(text, document)) << text;
        const LibraryReading library(text);
        EXPECT_EQ(library.error, "") << text;
        EXPECT_TRUE(Testing::SameDocument(document, library.document)) << text << "\n" << document.dump();
    }
    for (const std::string& text : leftToTheLibrary) {
        json document;
        EXPECT_FALSE(JsonReader::TryRead(text, document)) << text;
        const LibraryReading library(text);
        try {
            EXPECT_TRUE(Testing::SameDocument(Deserialization::ReadProjectText(text), library.document))
                << text;
            EXPECT_EQ(library.error, "") << text;
        } catch (const json::exception& error) {
            EXPECT_EQ(error.what(), library.error) << text;
        }
    }
}

}  // namespace
}  // namespace Vantel
