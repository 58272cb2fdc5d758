// ProjectFileVersion.h: the version record of a project file, and whether this build can read it.
//
//   ProjectFileVersion version = Deserialization::ReadProjectFileVersion(document);
//   if (!version.IsReadable()) { /* another file format */ }
//   if (version.IsNewerThanThisBuild()) { /* parts of the file may be dropped */ }
#pragma once

#include <cstdint>
#include <optional>

#include <Vantel/Export.h>
#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/Version.h>

namespace Vantel {

// ProjectFileVersion
//
// A plain value: the file format number and what the build that wrote the file said about itself. A release
// build writes its `software` version; a development build writes a `dev` record and no release of its own.
// Default-constructed it is format 0 with neither, which is what a project made in memory reports.
struct VANTEL_API ProjectFileVersion {
    // The project file format that this build writes and reads.
    static constexpr std::int32_t kThisBuildFormat = 1;

    std::int32_t format = 0;
    std::optional<Version> software;
    std::optional<DevBuildInfo> dev;

    // The format is this build's.
    bool IsReadable() const;
    // A later format; or, in any other format, a software version above this build's release (the last
    // release for a development build). A file without software version is not newer.
    bool IsNewerThanThisBuild() const;
    // An earlier format; or, in any other format, a software version below this build's release.
    bool IsOlderThanThisBuild() const;
};

}  // namespace Vantel
