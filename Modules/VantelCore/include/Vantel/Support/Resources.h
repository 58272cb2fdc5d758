// Resources.h: the text files compiled into the library, such as the documentation of the core types.
//
//   std::optional<std::string_view> text = Resources::Find("Docs/Operators/General/Graph.md");
//   for (std::string_view path : Resources::List("Docs/ParameterTypes/")) { ... }
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>

namespace Vantel::Resources {

// The resource stored under `path` (relative to the module folder), or no value when there is none. The text
// lives as long as the library is loaded. Thread-safe.
VANTEL_API std::optional<std::string_view> Find(std::string_view path);

// The paths of the resources that begin with `prefix` (all of them for an empty prefix), sorted. Thread-safe.
VANTEL_API std::vector<std::string_view> List(std::string_view prefix);

}  // namespace Vantel::Resources
