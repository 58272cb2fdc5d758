#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <Vantel/Objects/PluginFiles.h>

#include "Support/TestPlugins.h"

namespace Vantel {
namespace {

bool IsNamed(const std::filesystem::path& file, std::string_view part) {
    return file.filename().string().find(part) != std::string::npos;
}

TEST(PluginFiles, ListsTheLibrariesBesideTheExecutableButTheCore) {
    const std::filesystem::path folder = GetPluginFolder();
    ASSERT_FALSE(folder.empty());
    // The core library lies beside the tests too, so leaving it out is a real choice.
    bool coreIsThere = false;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        coreIsThere = coreIsThere || IsNamed(entry.path(), "VantelCore");
    }
    EXPECT_TRUE(coreIsThere);
    // The test plug-ins are built into a folder of their own, so that a host beside the core never offers
    // their types; none of them may be listed here.
    std::vector<std::filesystem::path> testPlugins;
    for (const auto& entry : std::filesystem::directory_iterator(Testing::TestPluginFolder())) {
        if (entry.path().extension() == VANTEL_SHARED_LIBRARY_SUFFIX) {
            testPlugins.push_back(entry.path().filename());
        }
    }
    EXPECT_NE(std::find(testPlugins.begin(), testPlugins.end(),
                        Testing::TestPluginFile("VantelTestPlugin").filename()),
              testPlugins.end());

    const std::vector<std::filesystem::path> files = FindPluginFiles();
    EXPECT_TRUE(std::is_sorted(files.begin(), files.end()));
    EXPECT_TRUE(std::any_of(files.begin(), files.end(),
                            [](const auto& file) { return IsNamed(file, "VantelStandard"); }));
    for (const std::filesystem::path& file : files) {
        SCOPED_TRACE(file.string());
        EXPECT_EQ(file.parent_path(), folder);
        EXPECT_FALSE(IsNamed(file, "VantelCore"));
        EXPECT_FALSE(IsNamed(file, "Tests"));  // the test executables have no library extension
        EXPECT_EQ(std::find(testPlugins.begin(), testPlugins.end(), file.filename()), testPlugins.end());
    }
}

}  // namespace
}  // namespace Vantel
