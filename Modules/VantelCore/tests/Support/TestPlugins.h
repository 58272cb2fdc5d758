// TestPlugins.h: where the plug-ins built for the tests lie, away from the folder a host loads plug-ins from.
//
//   ASSERT_TRUE(TypeLibrary::Get()->LoadPluginFromFile(Testing::TestPluginFile("VantelTestPlugin")));
//   TypeLibrary::Get()->UnloadPlugin("VantelTestPlugin");  // the file's name, less the library prefix
#pragma once

#include <filesystem>
#include <string>

namespace Vantel::Testing {

// The folder the build puts the test plug-ins in (not the executable's, so LoadPlugin(name) does not find
// them), with the platform's separators, as the library writes paths it joined itself.
inline std::filesystem::path TestPluginFolder() {
    return std::filesystem::path(VANTEL_TEST_PLUGIN_FOLDER).make_preferred();
}

// The library file of the test plug-in `name`: "libVantelTestPlugin.so" on Linux, "VantelTestPlugin.dll"
// on Windows.
inline std::filesystem::path TestPluginFile(const std::string& name) {
    return TestPluginFolder() / (VANTEL_SHARED_LIBRARY_PREFIX + name + VANTEL_SHARED_LIBRARY_SUFFIX);
}

}  // namespace Vantel::Testing
