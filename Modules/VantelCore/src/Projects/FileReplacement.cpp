#include "FileReplacement.h"

#include <string>
#include <system_error>

#include <Vantel/Objects/Path.h>

#include "Platform/Files.h"

namespace Vantel::Detail {
namespace {

// A link names the file the user means; replacing the link itself would turn it into a copy.
std::filesystem::path FollowLinks(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
    return error ? path : target;
}

// Beside the target, so that the rename stays within one file system and is atomic there.
std::filesystem::path TemporaryPathFor(const std::filesystem::path& target) {
    const auto name = [&target](std::string_view key) {
        // The key's random digits, without the brackets around them.
        std::filesystem::path temporary = target;
        temporary += "." + std::string(key.substr(1, key.size() - 2)) + ".saving";
        return temporary;
    };
    return name(GenerateKey("", [&name](std::string_view key) {
        std::error_code error;
        return !std::filesystem::exists(name(key), error);
    }));
}

}  // namespace

bool ReplaceFile(const std::filesystem::path& path, std::string_view contents) {
    const std::filesystem::path target = FollowLinks(path);
    const std::filesystem::path temporary = TemporaryPathFor(target);
    std::error_code error;
    const std::filesystem::file_status existing = std::filesystem::status(target, error);
    if (Platform::WriteNewFileToStorage(temporary, contents)) {
        if (std::filesystem::is_regular_file(existing)) {
            std::filesystem::permissions(temporary, existing.permissions(), error);
        }
        if (Platform::MoveFileOver(temporary, target)) {
            return true;
        }
    }
    std::filesystem::remove(temporary, error);
    return false;
}

}  // namespace Vantel::Detail
