#include <Vantel/Support/Resources.h>

#include "Support/ResourceTable.h"

namespace Vantel::Resources {

std::optional<std::string_view> Find(std::string_view path) {
    for (const Detail::Entry* entry = Detail::GetEntries(); entry->path != nullptr; ++entry) {
        if (path == entry->path) {
            return std::string_view(reinterpret_cast<const char*>(entry->bytes), entry->size);
        }
    }
    return std::nullopt;
}

std::vector<std::string_view> List(std::string_view prefix) {
    // The build writes the table sorted by path, so the result needs no sorting of its own.
    std::vector<std::string_view> paths;
    for (const Detail::Entry* entry = Detail::GetEntries(); entry->path != nullptr; ++entry) {
        if (std::string_view(entry->path).starts_with(prefix)) {
            paths.emplace_back(entry->path);
        }
    }
    return paths;
}

}  // namespace Vantel::Resources
