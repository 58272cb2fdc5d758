// OperatorKeyIndex.h: a graph's operators by key.
//
//   index.Add(op->GetKey(), op);
//   Operator* found = index.Find("Blur");   // null when no operator has the key
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include <absl/container/flat_hash_map.h>

namespace Vantel {

class Operator;

// The keys lie in the index's own array, not in nodes spread over the heap: resolving the paths of a large
// graph's connections, as a load does for each of them, then finds each operator without a trip to main
// memory for the lookup itself.
class OperatorKeyIndex {
public:
    void Add(const std::string& key, Operator* op) { byKey.emplace(key, op); }
    void Remove(const std::string& key) { byKey.erase(key); }
    void Clear() { byKey.clear(); }
    Operator* Find(std::string_view key) const {
        const auto found = byKey.find(key);
        return found == byKey.end() ? nullptr : found->second;
    }

private:
    // Transparent, so that a path's pieces are looked up as they are, without a string made for each.
    struct KeyHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
    };
    absl::flat_hash_map<std::string, Operator*, KeyHash, std::equal_to<>> byKey;
};

}  // namespace Vantel
