#include <Vantel/Projects/Version.h>

#include <algorithm>
#include <charconv>

namespace Vantel {
namespace {

bool IsDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::uint16_t TwoDigits(std::string_view text) {
    return static_cast<std::uint16_t>((text[0] - '0') * 10 + (text[1] - '0'));
}

}  // namespace

Version Version::Parse(std::string_view text) {
    const std::size_t dot = text.find('.');
    const std::string_view release = text.substr(0, dot);
    if (release.size() != 4 || !IsDigits(release)) {
        return {};
    }
    Version version{.year = TwoDigits(release.substr(0, 2)), .week = TwoDigits(release.substr(2, 2))};
    if (dot == std::string_view::npos) {
        return version;
    }
    // from_chars of an unsigned number takes digits only: no sign, no space, nothing empty.
    const std::string_view patch = text.substr(dot + 1);
    const auto [end, error] = std::from_chars(patch.data(), patch.data() + patch.size(), version.patch);
    if (error != std::errc() || end != patch.data() + patch.size()) {
        return {};  // more than 16 bits
    }
    return version;
}

std::string Version::ToString() const {
    std::string text = std::to_string(year);
    if (week <= 9) {
        text += '0';
    }
    text += std::to_string(week);
    if (patch != 0) {
        text += '.' + std::to_string(patch);
    }
    return text;
}

}  // namespace Vantel
