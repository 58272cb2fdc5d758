#include "Platform/SharedLibraryChecks.h"

#include <string>
#include <system_error>

#include <Vantel/Support/Logging.h>

#include "Platform/SharedLibrary.h"

namespace Vantel::Platform {

std::optional<std::filesystem::path> CheckSharedLibraryPath(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path canonical = std::filesystem::canonical(path, error);
    if (error) {
        LogError("Failed to resolve path of shared library.");
        return std::nullopt;
    }
    // A symbolic link was resolved above; what is left must be a plain file.
    if (!std::filesystem::is_regular_file(canonical, error) || error) {
        LogError("Path of given shared library is not a regular file.");
        return std::nullopt;
    }
    const std::string extension = canonical.extension().string();
    const std::string_view expected = SharedLibraryExtension();
    std::string upper(expected);
    for (char& c : upper) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    if (extension != expected && extension != upper) {
        LogError("Shared library must have " + std::string(expected) + " or " + upper + " file extension");
        return std::nullopt;
    }
    return canonical;
}

}  // namespace Vantel::Platform
