// Version.h: a release number such as 2640 or 2605.3.
//
//   Version v = Version::Parse("2605.3");   // {26, 5, 3}
//   v.ToString();                            // "2605.3"
//   v < BuildInfo::GetReleaseVersion();
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include <Vantel/Export.h>

namespace Vantel {

// Version
//
// A value of three fields compared in order: year and week (the two halves of the four-digit release number)
// and the patch after the dot. The all-zero version stands for "no version".
struct VANTEL_API Version {
    std::uint16_t year = 0;
    std::uint16_t week = 0;
    std::uint16_t patch = 0;

    // Four ASCII digits, optionally "." and a patch of ASCII digits up to 65535; anything else gives the
    // all-zero version.
    static Version Parse(std::string_view text);
    // The week is written with two digits; the patch only when it is not 0: {26, 5, 0} gives "2605".
    std::string ToString() const;

    bool IsEmpty() const { return year == 0 && week == 0 && patch == 0; }
    auto operator<=>(const Version&) const = default;
};

}  // namespace Vantel
