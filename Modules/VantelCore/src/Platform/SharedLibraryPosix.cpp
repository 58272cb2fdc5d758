// The POSIX side of the platform layer: dlopen and /proc/self/exe.
#ifndef _WIN32

#include <dlfcn.h>

#include <Vantel/Support/Logging.h>

#include "Platform/SharedLibrary.h"
#include "Platform/SharedLibraryChecks.h"

namespace Vantel::Platform {

std::string_view SharedLibraryExtension() {
    return ".so";
}

std::vector<std::filesystem::path> PluginFileNames(const std::string& name) {
    // Build systems here name libraries "lib<name>.so"; a bare "<name>.so" is taken as well.
    return {"lib" + name + ".so", name + ".so"};
}

std::unique_ptr<SharedLibrary> SharedLibrary::Load(const std::filesystem::path& path) {
    const std::optional<std::filesystem::path> checked = CheckSharedLibraryPath(path);
    if (!checked) {
        return nullptr;
    }
    void* handle = dlopen(checked->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        LogError("Failed to load shared library: " + checked->string());
        return nullptr;
    }
    return std::unique_ptr<SharedLibrary>(new SharedLibrary(handle, *checked));
}

SharedLibrary::~SharedLibrary() {
    if (dlclose(handle) != 0) {
        LogError("Failed to unload shared library: " + path.string());
    }
}

void* SharedLibrary::FindSymbol(const char* name) const {
    return dlsym(handle, name);
}

std::filesystem::path GetExecutableFolder() {
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : executable.parent_path();
}

}  // namespace Vantel::Platform

#endif
