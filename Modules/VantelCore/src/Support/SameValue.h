// SameValue.h: "is this write a change?", with floating-point numbers compared by their bits.
//
//   IsSameValue(0.0, -0.0);                 // false: the file keeps -0 apart from 0
//   IsSameValue(glm::vec2(NAN), glm::vec2(NAN));   // true: setting the same NaN again is no change
#pragma once

#include <cstring>
#include <string>
#include <type_traits>

#include <nlohmann/json.hpp>

namespace Vantel {

// IsSameValue()
//
// True when `a` and `b` have the same bytes (texts: the same characters). Setters compare this way rather
// than with ==, so that a value saved and loaded again is set exactly (-0 stays -0) and a NaN set twice
// records nothing the second time. For plain numbers, vectors and matrices of them: types without padding.
template <typename T>
bool IsSameValue(const T& a, const T& b) {
    static_assert(std::is_trivially_copyable_v<T>, "compare only plain values by their bytes");
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

inline bool IsSameValue(const std::string& a, const std::string& b) {
    return a == b;
}

// The same for JSON values: numbers with a fraction compare by their bits, everything else as == does.
inline bool IsSameValue(const nlohmann::json& a, const nlohmann::json& b) {
    if (a.is_number_float() && b.is_number_float()) {
        return IsSameValue(a.get<double>(), b.get<double>());
    }
    if (a.type() != b.type() || a.size() != b.size()) {
        return false;
    }
    if (a.is_array()) {
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (!IsSameValue(a[i], b[i])) {
                return false;
            }
        }
        return true;
    }
    if (a.is_object()) {
        for (auto item = a.begin(); item != a.end(); ++item) {
            const auto other = b.find(item.key());
            if (other == b.end() || !IsSameValue(item.value(), *other)) {
                return false;
            }
        }
        return true;
    }
    return a == b;
}

}  // namespace Vantel
