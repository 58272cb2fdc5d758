#include <gtest/gtest.h>

#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/Version.h>

namespace Vantel {
namespace {

TEST(Version, ParseAndPrint) {
    struct Row {
        const char* text;
        Version version;
        const char* printed;
    };
    const Row rows[] = {
        {"2605", {26, 5, 0}, "2605"},
        {"2640.3", {26, 40, 3}, "2640.3"},
        {"0000.1", {0, 0, 1}, "000.1"},
        {"2605.65535", {26, 5, 65535}, "2605.65535"},
        {"2605.0", {26, 5, 0}, "2605"},
        {"26050", {}, "000"},
        {"2605.", {}, "000"},
        {"2605.x", {}, "000"},
        {"2605.70000", {}, "000"},
        {"2605.65536", {}, "000"},
        {"260a", {}, "000"},
        {"", {}, "000"},
        {"2605.1.2", {}, "000"},
        {"-605", {}, "000"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const Version parsed = Version::Parse(row.text);
        EXPECT_EQ(parsed, row.version);
        EXPECT_EQ(parsed.ToString(), row.printed);
    }
    EXPECT_TRUE(Version::Parse("bad").IsEmpty());
}

TEST(Version, ComparesYearThenWeekThenPatch) {
    EXPECT_LT(Version::Parse("2639.9"), Version::Parse("2640"));
    EXPECT_LT(Version::Parse("2640"), Version::Parse("2640.1"));
    EXPECT_LT(Version::Parse("2552"), Version::Parse("2601"));
    EXPECT_GT(Version::Parse("2641"), BuildInfo::GetReleaseVersion());
}

TEST(BuildInfo, IdentifiesTheBuild) {
    EXPECT_EQ(BuildInfo::GetDisplayString(), "alpha 2640");
    EXPECT_EQ(BuildInfo::GetReleaseVersion(), (Version{26, 40, 0}));
    EXPECT_EQ(BuildInfo::GetLastReleaseVersion(), BuildInfo::GetReleaseVersion());
    EXPECT_EQ(BuildInfo::GetCommit(), "d6484ad2");
    EXPECT_EQ(BuildInfo::GetBuildDate(), "2026-10-01");
    EXPECT_FALSE(BuildInfo::IsModified());
    EXPECT_EQ(BuildInfo::GetCommitsSinceLastRelease(), 0);
}

}  // namespace
}  // namespace Vantel
