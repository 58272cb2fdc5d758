// ParameterConnection.h: one parameter driving some or all components of another.
//
//   ParameterConnection c{&source, &target, {{0, 0}, {1, 1}}};   // x drives x, y drives y
//   graph.AddParameterConnection(c, false);
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include <Vantel/Operators/ComponentLink.h>

namespace Vantel {

class Parameter;

// The pair of parameters a connection joins; the graph keys its parameter connections by it.
struct ParameterConnectionEndpoints {
    Parameter* source = nullptr;
    Parameter* target = nullptr;
    bool operator==(const ParameterConnectionEndpoints&) const = default;
};

// A connection with its component links. The graph keeps the connections; each parameter keeps copies of
// the ones it takes part in (the target as incoming, the source as outgoing).
struct ParameterConnection {
    Parameter* source = nullptr;
    Parameter* target = nullptr;
    std::vector<ComponentLink> links;

    ParameterConnectionEndpoints GetEndpoints() const { return {source, target}; }
    bool operator==(const ParameterConnection&) const = default;
};

}  // namespace Vantel

template <>
struct std::hash<Vantel::ParameterConnectionEndpoints> {
    std::size_t operator()(const Vantel::ParameterConnectionEndpoints& endpoints) const noexcept {
        const std::size_t source = std::hash<const void*>()(endpoints.source);
        const std::size_t target = std::hash<const void*>()(endpoints.target);
        return source ^ (target + 0x9e3779b97f4a7c15ULL + (source << 6) + (source >> 2));
    }
};
