// Utf8Paths.h: file paths held in narrow strings, as project files and the library's interface hold them, are
// UTF-8 on every platform.
//
//   std::ifstream file(PathFromUtf8(imageParameter->GetValue()), std::ios::binary);
//   LogInfo("saved " + PathToUtf8(path));
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include <Vantel/Export.h>

namespace Vantel {

// The path that the UTF-8 text names. Constructing a path from a std::string instead reads the text in the
// system's narrow code page, which on Windows is not UTF-8 and cannot name every file.
VANTEL_API std::filesystem::path PathFromUtf8(std::string_view text);

// The path as UTF-8 text; PathFromUtf8 gives back the same path.
VANTEL_API std::string PathToUtf8(const std::filesystem::path& path);

}  // namespace Vantel
