// ComponentLink.h: which component of a source parameter feeds which component of a target parameter.
//
//   ComponentLink link{.source = 0, .target = 2};   // x of the source drives z of the target
//   std::vector<ComponentLink> links{{0, 0}, {1, 1}};
#pragma once

#include <compare>
#include <cstdint>

namespace Vantel {

// ComponentLink
//
// One link of a parameter connection. Ordered by source component, then target component, so a connection's
// links can be kept sorted and compared as a whole.
struct ComponentLink {
    std::int32_t source = 0;
    std::int32_t target = 0;

    bool operator==(const ComponentLink& other) const = default;
    auto operator<=>(const ComponentLink& other) const = default;
};

}  // namespace Vantel
