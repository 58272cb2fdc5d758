// PluginFiles.h: where TypeLibrary::LoadPlugin looks for plug-ins, and which libraries lie there.
//
//   for (const std::filesystem::path& file : FindPluginFiles()) {
//       TypeLibrary::Get()->LoadPluginFromFile(file);
//   }
#pragma once

#include <filesystem>
#include <vector>

#include <Vantel/Export.h>

namespace Vantel {

// The folder of the host executable, in which LoadPlugin looks; empty when the platform cannot tell.
VANTEL_API std::filesystem::path GetPluginFolder();

// Every file in the plug-in folder with the platform's shared library extension (".so", ".dll"), sorted by
// name, less this library itself (which lies there beside the host, but is no plug-in). Empty when the folder
// is unknown or cannot be read; never throws. Whether a file really is a plug-in shows only when it is
// loaded.
VANTEL_API std::vector<std::filesystem::path> FindPluginFiles();

}  // namespace Vantel
