// ValueParameterSupport.h: number narrowing and JSON reading shared by the typed value parameters.
//
//   nlohmann::json previous = PreviousValue(*this);       // null unless a transaction records
//   int x = RoundToInt32(2.5);                            // 3
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <system_error>

#include <nlohmann/json.hpp>

#include <Vantel/Parameters/Parameter.h>

#include "Projects/EditRecorder.h"

namespace Vantel::ValueParameterSupport {

// The previous value a setter hands to MarkChanged; serialising it costs, so only while a transaction
// records.
inline nlohmann::json PreviousValue(const Parameter& parameter) {
    return EditRecorder::ValueBefore(parameter);
}

// Truncates toward zero and saturates at the 64-bit range; NaN gives 0.
inline std::int64_t TruncateToInt64(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= 0x1p63) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value <= -0x1p63) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(value);
}

// Halves away from zero, as std::llround, but saturating instead of leaving the result unspecified.
inline std::int64_t RoundToInt64(double value) {
    return TruncateToInt64(std::round(value));
}

inline int ClampToInt32(std::int64_t value) {
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

inline int RoundToInt32(double value) {
    return ClampToInt32(RoundToInt64(value));
}

// Values beyond the float range become infinities, as the hardware conversion gives, without relying on it.
inline float NarrowToFloat(double value) {
    if (value > std::numeric_limits<float>::max()) {
        return std::numeric_limits<float>::infinity();
    }
    if (value < -std::numeric_limits<float>::max()) {
        return -std::numeric_limits<float>::infinity();
    }
    return static_cast<float>(value);
}

// A float widened through its shortest text, so that 0.1f is written as 0.1 rather than 0.10000000149011612;
// the double still reads back as the same float.
inline nlohmann::json FloatToJson(float value) {
    std::array<char, 32> text{};
    double widened = value;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc()) {
        std::from_chars(text.data(), end, widened);
    }
    return widened;
}

// Integers as they are (unsigned ones saturated), floats truncated toward zero. Anything else, booleans
// included, throws the library's type error 302 "type must be number, but is <type>".
inline std::int64_t ReadInt64(const nlohmann::json& value) {
    if (value.is_number_float()) {
        return TruncateToInt64(value.get<double>());
    }
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        const auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        return static_cast<std::int64_t>(std::min(number, largest));
    }
    return value.get<std::int64_t>();  // the int64 conversion, unlike the others, refuses booleans
}

// As ReadInt64, then saturated at the int range.
inline int ReadInt32(const nlohmann::json& value) {
    return ClampToInt32(ReadInt64(value));
}

// Calls read(index, element) for the elements 0 to count - 1 that the array holds. A value that is not an
// array throws the library's type error 305 "cannot use operator[] with a numeric argument with <type>".
template <typename Read>
void ReadArrayElements(const nlohmann::json& value, std::size_t count, Read&& read) {
    if (!value.is_array()) {
        static_cast<void>(value[std::size_t{0}]);  // throws for every non-array
        return;
    }
    for (std::size_t i = 0; i < std::min(count, value.size()); ++i) {
        read(i, value[i]);
    }
}

}  // namespace Vantel::ValueParameterSupport
