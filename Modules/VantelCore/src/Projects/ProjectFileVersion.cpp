#include <Vantel/Projects/ProjectFileVersion.h>

namespace Vantel {
namespace {

// This build's release, or the last release for a development build; empty when there is neither.
std::optional<Version> ThisBuildVersion() {
    Version version = BuildInfo::GetReleaseVersion();
    if (version.IsEmpty()) {
        version = BuildInfo::GetLastReleaseVersion();
    }
    return version.IsEmpty() ? std::nullopt : std::optional<Version>(version);
}

}  // namespace

bool ProjectFileVersion::IsReadable() const {
    return format == kThisBuildFormat;
}

bool ProjectFileVersion::IsNewerThanThisBuild() const {
    if (format > kThisBuildFormat) {
        return true;
    }
    const std::optional<Version> build = ThisBuildVersion();
    return software && build && *software > *build;
}

bool ProjectFileVersion::IsOlderThanThisBuild() const {
    if (format < kThisBuildFormat) {
        return true;
    }
    const std::optional<Version> build = ThisBuildVersion();
    return software && build && *software < *build;
}

}  // namespace Vantel
