// BuildInfo.h: the identity of this build, as shown to users and written into project files.
//
//   std::cout << "vantel " << BuildInfo::GetDisplayString() << '\n';   // vantel alpha 2640
#pragma once

#include <string>

#include <Vantel/Export.h>
#include <Vantel/Projects/Version.h>

namespace Vantel {

// DevBuildInfo
//
// The development record of a build that is not a release, as a project file carries it.
struct DevBuildInfo {
    std::string commit;
    bool modified = false;
    int commitsAfterRelease = 0;
    std::string date;
};

// The values are fixed when the library is built.
namespace BuildInfo {

VANTEL_API std::string GetReleaseStage();
// Empty (all zero) for a development build.
VANTEL_API Version GetReleaseVersion();
VANTEL_API Version GetLastReleaseVersion();
VANTEL_API std::string GetCommit();
VANTEL_API std::string GetBuildDate();
VANTEL_API bool IsModified();
VANTEL_API int GetCommitsSinceLastRelease();
// The stage, a blank and the release version: "alpha 2640".
VANTEL_API std::string GetDisplayString();

}  // namespace BuildInfo
}  // namespace Vantel
