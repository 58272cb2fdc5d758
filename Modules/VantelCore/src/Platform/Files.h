// Files.h: writing files so that what was written survives a crash or a power cut.
#pragma once

#include <filesystem>
#include <string_view>

namespace Vantel::Platform {

// Creates `path`, which must not exist yet, writes `contents` to it and returns once the system has them on
// storage. False when any step fails; a file already created is then left for the caller to remove.
bool WriteNewFileToStorage(const std::filesystem::path& path, std::string_view contents);

// Renames the file `from` over `to` in one step (a reader sees the old file or the new one, never neither)
// and returns once the rename is on storage.
bool MoveFileOver(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace Vantel::Platform
