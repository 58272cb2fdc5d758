// The editor page's files: a request path reaches a file of the page folder, and nothing outside it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "Edit/PageFiles.h"

namespace {

namespace fs = std::filesystem;

TEST(PageFiles, OnlyFilesInsideThePageFolderAnswer) {
    const fs::path top = fs::temp_directory_path() /
                         ("vantel-page-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
    fs::remove_all(top);
    fs::create_directories(top / "page" / "assets");
    std::ofstream(top / "page" / "index.html") << "<!doctype html>";
    std::ofstream(top / "page" / "assets" / "main.js") << "run()";
    std::ofstream(top / "secret.txt") << "not the page's";
    // Windows builds of the standard library make no symbolic links; the link's row then names a missing
    // file.
    std::error_code noLinks;
    fs::create_symlink(top / "secret.txt", top / "page" / "assets" / "link.js", noLinks);
    const fs::path page = top / "page";

    EXPECT_EQ(VantelHost::FindPageFile(page, "/"), fs::canonical(page / "index.html"));
    EXPECT_EQ(VantelHost::FindPageFile(page, "/assets/main.js"), fs::canonical(page / "assets" / "main.js"));
    EXPECT_EQ(VantelHost::GetPageContentType(page / "assets" / "main.js"),
              "application/javascript; charset=utf-8");
    EXPECT_EQ(VantelHost::ReadPageFile(page / "assets" / "main.js"), "run()");
    constexpr const char* kRefused[] = {
        "/../secret.txt",
        "/assets/../../secret.txt",
        "/assets/./main.js",
        "/assets\\..\\..\\secret.txt",
        "/assets/link.js",
        "/assets",
        "/missing.js",
        "assets/main.js",
        "xassets/main.js",  // not from the root, whatever follows its first character
        "",
    };
    for (const char* path : kRefused) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(VantelHost::FindPageFile(page, path).has_value());
    }
    // A name cut short at a NUL by the system would reach a file the request did not name.
    EXPECT_FALSE(VantelHost::FindPageFile(page, std::string("/assets/main.js\0.png", 20)).has_value());
    EXPECT_FALSE(VantelHost::FindPageFile(top / "not-built", "/").has_value());
    EXPECT_FALSE(VantelHost::FindPageFile({}, "/").has_value());
    fs::remove_all(top);
}

}  // namespace
