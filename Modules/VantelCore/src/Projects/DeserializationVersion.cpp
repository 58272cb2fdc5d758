// File versions: reading the version record of a document.
#include <Vantel/Projects/Deserialization.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

namespace Vantel::Deserialization {
namespace {

using nlohmann::json;

// The version record is read leniently: a field of the wrong type counts as missing, so that any document
// still gets an answer about its version.
template <typename T>
T FieldOr(const json& record, const char* key, T fallback) {
    const auto found = record.find(key);
    if (found == record.end()) {
        return fallback;
    }
    if constexpr (std::is_same_v<T, std::string>) {
        return found->is_string() ? found->template get<std::string>() : fallback;
    } else if constexpr (std::is_same_v<T, bool>) {
        return found->is_boolean() ? found->template get<bool>() : fallback;
    } else {
        if (!found->is_number_integer()) {
            return fallback;
        }
        // Saturated, so that a huge number still reads as a format this build does not know.
        constexpr auto low = static_cast<std::int64_t>(std::numeric_limits<T>::min());
        constexpr auto high = static_cast<std::int64_t>(std::numeric_limits<T>::max());
        if (found->is_number_unsigned()) {
            return static_cast<T>(
                std::min(found->template get<std::uint64_t>(), static_cast<std::uint64_t>(high)));
        }
        const auto value = found->template get<std::int64_t>();
        return static_cast<T>(value < low ? low : (value > high ? high : value));
    }
}

}  // namespace

ProjectFileVersion ReadProjectFileVersion(const json& document) {
    ProjectFileVersion version;
    if (!document.is_object()) {
        return version;
    }
    const auto record = document.find("version");
    if (record == document.end() || !record->is_object()) {
        return version;
    }
    version.format = FieldOr<std::int32_t>(*record, "format", 0);
    if (const auto dev = record->find("dev"); dev != record->end()) {
        if (dev->is_boolean() && dev->get<bool>()) {
            version.dev = DevBuildInfo{};
        } else if (dev->is_object()) {
            version.dev = DevBuildInfo{.commit = FieldOr<std::string>(*dev, "commit", ""),
                                       .modified = FieldOr<bool>(*dev, "modified", false),
                                       .commitsAfterRelease = FieldOr<int>(*dev, "commitsAfterRelease", 0),
                                       .date = FieldOr<std::string>(*dev, "date", "")};
        }
    }
    if (const auto software = record->find("software"); software != record->end() && software->is_string()) {
        const Version parsed = Version::Parse(software->get<std::string>());
        if (!parsed.IsEmpty()) {
            version.software = parsed;
        }
    }
    return version;
}

}  // namespace Vantel::Deserialization
