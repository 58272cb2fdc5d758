#include "Support/Resources.h"

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

}  // namespace Vantel::Resources
