// SharedLibrary.h: a loaded shared library (a plug-in), and where the host executable lies.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Vantel::Platform {

// The platform's extension of shared libraries, with its dot: ".so" here, ".dll" on Windows.
std::string_view SharedLibraryExtension();

// The file names the library of the plug-in `name` may have, in the order they are looked for: "lib<name>.so"
// then "<name>.so" here, "<name>.dll" on Windows (the name taken in the narrow code page).
std::vector<std::filesystem::path> PluginFileNames(const std::string& name);

// SharedLibrary
//
// Owns one loaded library and frees it when destroyed (a failure to free is logged as
// "Failed to unload shared library: <path>").
class SharedLibrary {
public:
    // Checks the path (canonical, a regular file, the platform's extension) and loads it; logs the matching
    // error and gives null on failure.
    static std::unique_ptr<SharedLibrary> Load(const std::filesystem::path& path);
    ~SharedLibrary();
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;

    // Null when the library exports no such symbol.
    void* FindSymbol(const char* name) const;
    const std::filesystem::path& GetPath() const { return path; }

private:
    SharedLibrary(void* handle, std::filesystem::path path) : handle(handle), path(std::move(path)) {}

    void* handle;
    std::filesystem::path path;
};

// The folder of the running executable (the process's main module); empty when it cannot be found.
std::filesystem::path GetExecutableFolder();

}  // namespace Vantel::Platform
