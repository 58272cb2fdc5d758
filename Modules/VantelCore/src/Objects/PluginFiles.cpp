#include <Vantel/Objects/PluginFiles.h>

#include <algorithm>
#include <string>
#include <system_error>

#include "Platform/SharedLibrary.h"

namespace Vantel {
namespace {

// This library's own file: "libVantelCore.so" here, "VantelCore.dll" on Windows. Its versioned names
// ("libVantelCore.so.0") do not end in the extension and are left out anyway.
bool IsCoreLibrary(const std::filesystem::path& file) {
    const std::string stem = file.stem().string();
    return stem == "VantelCore" || stem == "libVantelCore";
}

}  // namespace

std::filesystem::path GetPluginFolder() {
    return Platform::GetExecutableFolder();
}

std::string PluginFileExtension() {
    return std::string(Platform::SharedLibraryExtension());
}

std::vector<std::filesystem::path> PluginFileNames(const std::string& name) {
    return Platform::PluginFileNames(name);
}

std::vector<std::filesystem::path> FindPluginFiles() {
    std::vector<std::filesystem::path> files;
    const std::filesystem::path folder = GetPluginFolder();
    if (folder.empty()) {
        return files;
    }
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::filesystem::path& file = entry->path();
        if (file.extension() == Platform::SharedLibraryExtension() && !IsCoreLibrary(file) &&
            entry->is_regular_file(error)) {
            files.push_back(file);
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace Vantel
