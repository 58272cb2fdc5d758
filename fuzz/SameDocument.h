// SameDocument.h: whether two JSON documents are the same to the last detail, number kinds included, which
// nlohmann::json's == does not tell (5 unsigned equals 5 signed, -0.0 equals 0.0).
//
//   EXPECT_TRUE(Testing::SameDocument(Deserialization::ReadProjectText(text), nlohmann::json::parse(text)));
#pragma once

#include <cstddef>

#include <nlohmann/json.hpp>

namespace Vantel::Testing {

inline bool SameDocument(const nlohmann::json& a, const nlohmann::json& b) {
    if (a.type() != b.type() || a.size() != b.size()) {
        return false;
    }
    if (a.is_object()) {
        for (auto left = a.begin(), right = b.begin(); left != a.end(); ++left, ++right) {
            if (left.key() != right.key() || !SameDocument(left.value(), right.value())) {
                return false;
            }
        }
        return true;
    }
    if (a.is_array()) {
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (!SameDocument(a[i], b[i])) {
                return false;
            }
        }
        return true;
    }
    return a.dump() == b.dump();  // the shortest text that reads back as the same value: -0 and 0 differ
}

}  // namespace Vantel::Testing
