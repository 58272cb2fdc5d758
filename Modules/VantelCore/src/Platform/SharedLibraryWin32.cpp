// The Win32 side of the platform layer: LoadLibraryW and GetModuleFileNameW.
#ifdef _WIN32

#include <windows.h>

#include <Vantel/Support/Logging.h>

#include "Platform/SharedLibrary.h"
#include "Platform/SharedLibraryChecks.h"

namespace Vantel::Platform {

std::string_view SharedLibraryExtension() {
    return ".dll";
}

std::vector<std::filesystem::path> PluginFileNames(const std::string& name) {
    // A path made from a narrow string converts it from the active code page.
    return {std::filesystem::path(name + ".dll")};
}

std::unique_ptr<SharedLibrary> SharedLibrary::Load(const std::filesystem::path& path) {
    const std::optional<std::filesystem::path> checked = CheckSharedLibraryPath(path);
    if (!checked) {
        return nullptr;
    }
    // Long paths need the "\\?\" prefix to pass MAX_PATH.
    std::wstring native = checked->wstring();
    if (native.size() >= MAX_PATH && native.rfind(L"\\\\?\\", 0) != 0) {
        native = L"\\\\?\\" + native;
    }
    HMODULE handle = LoadLibraryW(native.c_str());
    if (handle == nullptr) {
        LogError("Failed to load shared library: " + checked->string());
        return nullptr;
    }
    return std::unique_ptr<SharedLibrary>(new SharedLibrary(handle, *checked));
}

SharedLibrary::~SharedLibrary() {
    if (!FreeLibrary(static_cast<HMODULE>(handle))) {
        LogError("Failed to unload shared library: " + path.string());
    }
}

void* SharedLibrary::FindSymbol(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}

std::filesystem::path GetExecutableFolder() {
    wchar_t buffer[260];
    const DWORD length = GetModuleFileNameW(nullptr, buffer, 260);
    if (length == 0 || length == 260) {
        return {};
    }
    return std::filesystem::path(std::wstring(buffer, length)).parent_path();
}

}  // namespace Vantel::Platform

#endif
