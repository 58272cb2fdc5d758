// FileReplacement.h: writes a whole file so that it is either replaced completely or left as it was.
//
//   if (!ReplaceFile(path, text)) { LogError("could not write " + path.string()); }
#pragma once

#include <filesystem>
#include <string_view>

namespace Vantel::Detail {

// Writes `contents` to a new file beside `path`, waits until it is on storage and renames it over `path`, so
// that a failure at any point (a full disk, a crash, a power cut, a folder that cannot be written) never
// leaves a truncated file where the old one was. The bytes are written as they are, on every system. A link
// is followed: its target is replaced and the link stays. The replaced file's permissions are kept. Returns
// false, with nothing changed and nothing left behind, when the file could not be written.
bool ReplaceFile(const std::filesystem::path& path, std::string_view contents);

}  // namespace Vantel::Detail
