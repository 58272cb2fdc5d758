// PageFiles.h: which file of the editor page answers a request path, and how it is served.
//
//   std::optional<std::filesystem::path> file = FindPageFile(folder, "/assets/index-4f2a.js");
//   if (file) { reply with ReadPageFile(*file) as GetPageContentType(*file) }
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace VantelHost {

// The folder of the built page beside the host executable ("bin/editor"); empty when the host's folder is
// unknown.
std::filesystem::path GetPageFolder();

// The file under `folder` that `requestPath` names ("/" names "index.html"), or no value when it names
// nothing there: a missing file, a folder, or a path that would leave the folder (".." pieces, backslashes,
// a link that points outside).
std::optional<std::filesystem::path> FindPageFile(const std::filesystem::path& folder,
                                                  std::string_view requestPath);

// The MIME type by the file's extension; "application/octet-stream" for an unknown one.
std::string GetPageContentType(const std::filesystem::path& file);

// The whole file; no value when it cannot be read.
std::optional<std::string> ReadPageFile(const std::filesystem::path& file);

}  // namespace VantelHost
