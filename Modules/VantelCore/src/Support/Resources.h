// Resources.h: the text files compiled into the library, such as the documentation of the core types.
//
//   std::optional<std::string_view> text = Resources::Find("Docs/Operators/General/Graph.md");
#pragma once

#include <optional>
#include <string_view>

namespace Vantel::Resources {

// The resource stored under `path` (relative to the module folder), or no value when there is none.
std::optional<std::string_view> Find(std::string_view path);

}  // namespace Vantel::Resources
