#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include <Vantel/Objects/Path.h>

namespace Vantel {
namespace {

TEST(Path, KeysAreValidUnlessEmptyDotDotOrSlashed) {
    EXPECT_TRUE(Path::IsValidKey("."));
    EXPECT_TRUE(Path::IsValidKey("Blur [k3x]"));
    EXPECT_TRUE(Path::IsValidKey("..."));
    EXPECT_FALSE(Path::IsValidKey(""));
    EXPECT_FALSE(Path::IsValidKey(".."));
    EXPECT_FALSE(Path::IsValidKey("a/b"));
}

TEST(Path, ParseAndPrintRoundTrip) {
    struct Row {
        const char* text;
        bool absolute;
        std::size_t size;
    };
    constexpr Row rows[] = {
        {"", false, 0},    {"/", true, 0},    {"a", false, 1},
        {"/a/b", true, 2}, {"./a", false, 2}, {"a b/. c", false, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const std::optional<Path> path = Path::Parse(row.text);
        ASSERT_TRUE(path.has_value());
        EXPECT_EQ(path->IsAbsolute(), row.absolute);
        EXPECT_EQ(path->Size(), row.size);
        EXPECT_EQ(path->ToString(), row.text);
    }
    EXPECT_EQ((*Path::Parse("./a"))[0], ".");
    EXPECT_NE(*Path::Parse(""), *Path::Parse("/"));
}

TEST(Path, ParseRejectsEmptyPiecesAndDotDot) {
    for (const char* text : {"a//b", "a/", "//a", "a/../b", "..", "/.."}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(Path::Parse(text).has_value());
    }
}

TEST(Path, ParentChildAndRelative) {
    const Path root = *Path::Parse("/");
    EXPECT_EQ(root.GetParent(), root);
    EXPECT_EQ(Path::Parse("/a/b")->GetParent(), *Path::Parse("/a"));
    EXPECT_EQ(Path::Parse("a")->GetParent(), Path());
    EXPECT_EQ(root.GetChild("x").GetChild("y").ToString(), "/x/y");

    for (const char* key : {"..", "a/b", ""}) {
        SCOPED_TRACE(key);
        try {
            (void)root.GetChild(key);
            ADD_FAILURE() << "no exception";
        } catch (const std::invalid_argument& error) {
            EXPECT_EQ(std::string(error.what()), std::string("Invalid path key: ") + key);
        }
    }

    const Path ab = *Path::Parse("/a/b");
    EXPECT_EQ(ab.MakeRelative(*Path::Parse("/a"))->ToString(), "b");
    EXPECT_EQ(ab.MakeRelative(ab), Path());
    EXPECT_EQ(ab.MakeRelative(root)->ToString(), "a/b");
    EXPECT_FALSE(ab.MakeRelative(*Path::Parse("a")).has_value());
    EXPECT_FALSE(Path::Parse("a/b")->MakeRelative(*Path::Parse("a")).has_value());
    EXPECT_FALSE(ab.MakeRelative(*Path::Parse("/b")).has_value());
    EXPECT_FALSE(Path::Parse("/a")->MakeRelative(ab).has_value());
    EXPECT_FALSE(Path::Parse("/ab")->MakeRelative(*Path::Parse("/a")).has_value());
}

bool IsBase36(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z');
}

TEST(GenerateKey, MakesBracketedBase36KeysThatTheCallerAccepts) {
    const std::string key = GenerateKey("a/b", [](std::string_view) { return true; });
    ASSERT_EQ(key.size(), std::string("a b [xxx]").size());
    EXPECT_EQ(key.substr(0, 5), "a b [");
    EXPECT_EQ(key.back(), ']');
    EXPECT_TRUE(IsBase36(key[5]) && IsBase36(key[6]) && IsBase36(key[7]));

    const std::string bare = GenerateKey("", [](std::string_view) { return true; });
    EXPECT_EQ(bare.size(), 5u);
    EXPECT_EQ(bare.front(), '[');

    // Ten refusals with three digits, then the candidates grow to four digits.
    int calls = 0;
    std::string accepted;
    accepted = GenerateKey("Blur", [&](std::string_view candidate) {
        ++calls;
        return calls == 11 || candidate.empty();
    });
    EXPECT_EQ(accepted.size(), std::string("Blur [xxxx]").size());

    EXPECT_THROW(GenerateKey("x", nullptr), std::bad_function_call);
}

TEST(GenerateKey, ThreadsDrawFromTheirOwnEngines) {
    std::set<std::string> keys;
    for (int i = 0; i < 50; ++i) {
        keys.insert(GenerateKey("", [](std::string_view) { return true; }));
    }
    std::string other;
    std::thread([&] { other = GenerateKey("T", [](std::string_view) { return true; }); }).join();
    EXPECT_GT(keys.size(), 45u);  // 36^3 candidates: collisions are rare, repetition would be a bug
    EXPECT_EQ(other.substr(0, 3), "T [");
}

}  // namespace
}  // namespace Vantel
