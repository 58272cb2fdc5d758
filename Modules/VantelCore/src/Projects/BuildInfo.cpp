#include <Vantel/Projects/BuildInfo.h>

namespace Vantel::BuildInfo {

std::string GetReleaseStage() {
    return "alpha";
}
Version GetReleaseVersion() {
    return Version::Parse("2640");
}
Version GetLastReleaseVersion() {
    return Version::Parse("2640");
}
std::string GetCommit() {
    return "d6484ad2";
}
std::string GetBuildDate() {
    return "2026-10-01";
}
bool IsModified() {
    return false;
}
int GetCommitsSinceLastRelease() {
    return 0;
}
std::string GetDisplayString() {
    return GetReleaseStage() + " " + GetReleaseVersion().ToString();
}

}  // namespace Vantel::BuildInfo
