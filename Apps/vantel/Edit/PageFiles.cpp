#include "PageFiles.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include <Vantel/Objects/PluginFiles.h>

namespace VantelHost {
namespace {

// Only what the bundler writes; anything else is no part of the page. Scripts go as application/javascript
// with a charset, which the transport leaves uncompressed (see kJsonType in EditServer.cpp).
constexpr std::pair<std::string_view, std::string_view> kContentTypes[] = {
    {".html", "text/html; charset=utf-8"},
    {".js", "application/javascript; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".svg", "image/svg+xml"},
    {".png", "image/png"},
    {".ico", "image/x-icon"},
    {".json", "application/json; charset=utf-8"},
    {".woff2", "font/woff2"},
};

bool HasUnsafePiece(std::string_view requestPath) {
    if (requestPath.find('\\') != std::string_view::npos ||
        requestPath.find('\0') != std::string_view::npos) {
        return true;
    }
    std::size_t start = 0;
    while (start <= requestPath.size()) {
        const std::size_t end = std::min(requestPath.find('/', start), requestPath.size());
        const std::string_view piece = requestPath.substr(start, end - start);
        if (piece == ".." || piece == ".") {
            return true;
        }
        start = end + 1;
    }
    return false;
}

}  // namespace

std::filesystem::path GetPageFolder() {
    const std::filesystem::path host = Vantel::GetPluginFolder();
    return host.empty() ? host : host / "editor";
}

std::optional<std::filesystem::path> FindPageFile(const std::filesystem::path& folder,
                                                  std::string_view requestPath) {
    if (!requestPath.starts_with('/') || HasUnsafePiece(requestPath)) {
        return std::nullopt;
    }
    const std::string_view relative = requestPath == "/" ? "index.html" : requestPath.substr(1);
    std::error_code error;
    const std::filesystem::path root = std::filesystem::canonical(folder, error);  // fails for no folder too
    if (error) {
        return std::nullopt;
    }
    const std::filesystem::path file = std::filesystem::canonical(root / relative, error);
    if (error || !std::filesystem::is_regular_file(file, error)) {
        return std::nullopt;
    }
    // A link inside the folder may still point out of it.
    const auto [rootEnd, fileAt] = std::mismatch(root.begin(), root.end(), file.begin(), file.end());
    if (rootEnd != root.end()) {
        return std::nullopt;
    }
    return file;
}

std::string GetPageContentType(const std::filesystem::path& file) {
    const std::string extension = file.extension().string();
    for (const auto& [known, type] : kContentTypes) {
        if (extension == known) {
            return std::string(type);
        }
    }
    return "application/octet-stream";
}

std::optional<std::string> ReadPageFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    std::ostringstream text;
    text << in.rdbuf();
    return std::move(text).str();
}

}  // namespace VantelHost
