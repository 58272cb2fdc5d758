// PluginFiles.h: where TypeLibrary::LoadPlugin looks for plug-ins, and which libraries lie there.
//
//   for (const std::filesystem::path& file : FindPluginFiles()) {
//       TypeLibrary::Get()->LoadPluginFromFile(file);
//   }
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <Vantel/Export.h>

namespace Vantel {

// The folder of the host executable, in which LoadPlugin looks; empty when the platform cannot tell.
VANTEL_API std::filesystem::path GetPluginFolder();

// The platform's extension of plug-in libraries, with its dot: ".so" on Linux, ".dll" on Windows. A file is
// taken with this extension or with it in capitals, never in mixed case.
VANTEL_API std::string PluginFileExtension();

// The file names LoadPlugin(name) looks for in the plug-in folder, in order: "lib<name>.so" then "<name>.so"
// on Linux, "<name>.dll" on Windows.
VANTEL_API std::vector<std::filesystem::path> PluginFileNames(const std::string& name);

// Every file in the plug-in folder with the platform's shared library extension (".so", ".dll"), sorted by
// name, less this library itself (which lies there beside the host, but is no plug-in). Empty when the folder
// is unknown or cannot be read; never throws. Whether a file really is a plug-in shows only when it is
// loaded.
VANTEL_API std::vector<std::filesystem::path> FindPluginFiles();

}  // namespace Vantel
