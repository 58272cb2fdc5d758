// SharedLibraryChecks.h: the checks every platform runs on a plug-in path before loading it.
#pragma once

#include <filesystem>
#include <optional>

namespace Vantel::Platform {

// The canonical path of a loadable library, or no value after logging why not: the path does not resolve,
// is not a regular file, or lacks the platform's extension.
std::optional<std::filesystem::path> CheckSharedLibraryPath(const std::filesystem::path& path);

}  // namespace Vantel::Platform
