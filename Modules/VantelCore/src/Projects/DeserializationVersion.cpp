// File versions: reading the version record of a document.
#include <Vantel/Projects/Deserialization.h>

#include <cstdint>
#include <string>
#include <type_traits>

#include "Parameters/ValueParameterSupport.h"

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
        static_assert(std::is_same_v<T, std::int32_t>);
        // Saturated, so that a huge number still reads as a format this build does not know.
        return found->is_number_integer() ? ValueParameterSupport::ReadInt32(*found) : fallback;
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
