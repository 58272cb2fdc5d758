#include <Vantel/Objects/Path.h>

#include <stdexcept>

namespace Vantel {

bool Path::IsValidKey(std::string_view key) {
    return !key.empty() && key != ".." && key.find('/') == std::string_view::npos;
}

std::optional<Path> Path::Parse(std::string_view text) {
    Path path;
    if (text.empty()) {
        return path;
    }
    if (text.front() == '/') {
        path.absolute = true;
        text.remove_prefix(1);
        if (text.empty()) {
            return path;
        }
    }
    while (true) {
        const std::size_t slash = text.find('/');
        const std::string_view piece = text.substr(0, slash);
        if (!IsValidKey(piece)) {
            return std::nullopt;
        }
        path.components.emplace_back(piece);
        if (slash == std::string_view::npos) {
            return path;
        }
        text.remove_prefix(slash + 1);
    }
}

std::string Path::ToString() const {
    std::string text = absolute ? "/" : "";
    for (std::size_t i = 0; i < components.size(); ++i) {
        if (i > 0) {
            text += '/';
        }
        text += components[i];
    }
    return text;
}

Path Path::GetParent() const {
    Path parent = *this;
    if (!parent.components.empty()) {
        parent.components.pop_back();
    }
    return parent;
}

Path Path::GetChild(std::string_view key) const {
    if (!IsValidKey(key)) {
        throw std::invalid_argument("Invalid path key: " + std::string(key));
    }
    Path child = *this;
    child.components.emplace_back(key);
    return child;
}

std::optional<Path> Path::MakeRelative(const Path& base) const {
    if (!absolute || !base.absolute || base.components.size() > components.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < base.components.size(); ++i) {
        if (components[i] != base.components[i]) {
            return std::nullopt;
        }
    }
    Path relative;
    relative.components.assign(components.begin() + static_cast<std::ptrdiff_t>(base.components.size()),
                               components.end());
    return relative;
}

}  // namespace Vantel
