// ResourceTable.h: the table of compiled-in resources that the build generates.
#pragma once

#include <cstddef>

namespace Vantel::Resources::Detail {

struct Entry {
    const char* path;
    const unsigned char* bytes;
    std::size_t size;
};

// The entries end with one whose path is null.
const Entry* GetEntries();

}  // namespace Vantel::Resources::Detail
