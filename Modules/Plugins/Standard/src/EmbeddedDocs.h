// EmbeddedDocs.h: the plug-in's doc files, compiled in by the build, and their lookup.
#pragma once

#include <cstddef>
#include <string_view>

namespace VantelStandard::EmbeddedDocs {

struct Entry {
    const char* path;
    const unsigned char* bytes;
    std::size_t size;
};

// Generated: the entries, sorted by path, end with one whose path is null.
const Entry* GetEntries();

// The doc stored under `path` ("Docs/Operators/Math/Counter.md"); empty when there is none.
inline std::string_view Find(std::string_view path) {
    for (const Entry* entry = GetEntries(); entry->path != nullptr; ++entry) {
        if (path == entry->path) {
            return {reinterpret_cast<const char*>(entry->bytes), entry->size};
        }
    }
    return {};
}

}  // namespace VantelStandard::EmbeddedDocs
