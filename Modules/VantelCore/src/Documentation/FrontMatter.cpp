#include "Documentation/FrontMatter.h"

#include <cstddef>
#include <vector>

namespace Vantel::Documentation {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The line that starts at `position`, without its line break; moves `position` past the line break.
std::string_view TakeLine(std::string_view text, std::size_t& position) {
    const std::size_t end = text.find('\n', position);
    const std::size_t lineEnd = end == std::string_view::npos ? text.size() : end;
    const std::string_view line = text.substr(position, lineEnd - position);
    position = end == std::string_view::npos ? text.size() : end + 1;
    return line;
}

bool IsMarkerLine(std::string_view line) {
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) {
        line.remove_suffix(1);
    }
    return line == "---";
}

std::vector<std::string_view> SplitPath(std::string_view path) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= path.size(); ++i) {
        if (i == path.size() || path[i] == '/' || path[i] == '\\') {
            if (i > start) {
                parts.push_back(path.substr(start, i - start));
            }
            start = i + 1;
        }
    }
    return parts;
}

}  // namespace

FrontMatter SplitFrontMatter(std::string_view text) {
    FrontMatter result;
    result.body = text;
    std::size_t position = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    if (position >= text.size() || !IsMarkerLine(TakeLine(text, position))) {
        return result;
    }
    const std::size_t yamlStart = position;
    while (position < text.size()) {
        const std::size_t lineStart = position;
        if (IsMarkerLine(TakeLine(text, position))) {
            result.found = true;
            result.yaml = text.substr(yamlStart, lineStart - yamlStart);
            result.body = text.substr(position);
            return result;
        }
    }
    return result;
}

std::string_view FileStem(std::string_view path) {
    const std::size_t slash = path.find_last_of("/\\");
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    if (name.ends_with(".md")) {
        name.remove_suffix(3);
    }
    return name;
}

std::string OperatorCategory(std::string_view path) {
    std::vector<std::string_view> folders = SplitPath(path);
    if (folders.empty()) {
        return {};
    }
    folders.pop_back();  // the file
    std::size_t first = folders.empty() ? 0 : folders.size() - 1;
    for (std::size_t i = folders.size(); i > 0; --i) {
        if (folders[i - 1] == "Operators") {
            first = i;
            break;
        }
    }
    std::string category;
    for (std::size_t i = first; i < folders.size(); ++i) {
        if (!category.empty()) {
            category += '/';
        }
        category += folders[i];
    }
    return category;
}

}  // namespace Vantel::Documentation
