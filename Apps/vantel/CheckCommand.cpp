// vantel check: loads a project and reports its file version, its size and every entry loading dropped.
#include <iostream>
#include <string>
#include <vector>

#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/ProjectFileVersion.h>

#include "Commands.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {
namespace {

// Loading logs this for a newer file; it names no dropped entry, so the report shows it as the version note.
constexpr std::string_view kNewerFileWarning =
    "[Warning] DeserializeProject: the file was written by a newer Vantel than this build. Anything this "
    "build "
    "does not know is dropped.";

std::string DescribeWriter(const Vantel::ProjectFileVersion& version) {
    const std::string thisBuild = Vantel::BuildInfo::GetReleaseVersion().IsEmpty()
                                      ? Vantel::BuildInfo::GetLastReleaseVersion().ToString()
                                      : Vantel::BuildInfo::GetReleaseVersion().ToString();
    if (version.software) {
        const std::string release = "release " + version.software->ToString();
        if (version.IsNewerThanThisBuild()) {
            return release + ", newer than this build (" + thisBuild + ")";
        }
        if (version.IsOlderThanThisBuild()) {
            return release + ", older than this build (" + thisBuild + ")";
        }
        return release + ", the same as this build";
    }
    if (version.dev) {
        std::string text = "a development build";
        if (!version.dev->commit.empty()) {
            text += " (commit " + version.dev->commit + (version.dev->modified ? ", modified" : "") + ")";
        }
        return text;
    }
    return "unknown";
}

bool IsProblem(const std::string& line) {
    return (line.starts_with("[Warning] ") || line.starts_with("[Error] ") || line.starts_with("[Fatal] ")) &&
           line != kNewerFileWarning;
}

}  // namespace

int CheckCommand(const Arguments& arguments) {
    const std::filesystem::path path = arguments.operands[0];
    RequireFile(path);
    Session session(arguments.plugins);
    std::string failure;
    std::vector<std::string> dropped;
    {
        const LogTap tap;
        try {
            session.LoadProject(path);
        } catch (const HostError& error) {
            failure = error.what();
        }
        for (const std::string& line : tap.Lines()) {
            if (IsProblem(line)) {
                dropped.push_back(line);
            }
        }
    }
    Vantel::Project& project = session.GetProject();
    const Vantel::ProjectFileVersion& version = project.GetFileVersion();

    Out() << path.string() << '\n';
    Out() << "  format: " << version.format;
    if (!version.IsReadable()) {
        Out() << " (this build reads format " << Vantel::ProjectFileVersion::kThisBuildFormat << ")";
    }
    Out() << "\n  written by: " << DescribeWriter(version) << '\n';
    if (failure.empty()) {
        Out() << "  operators: " << CountOperators(*project.GetRootGraph()) << '\n';
    }
    Out() << "  dropped: " << dropped.size() << '\n';
    for (const std::string& line : dropped) {
        Out() << "    " << line << '\n';
    }
    if (version.IsNewerThanThisBuild()) {
        std::cerr << "vantel: warning: " << path.string()
                  << " was written by a newer build; whatever this build does not know is dropped\n";
    }
    if (!failure.empty()) {
        Fail(kExitFailed, failure);
    }
    if (!dropped.empty()) {
        Fail(kExitFailed, path.string() + ": loading dropped " + std::to_string(dropped.size()) +
                              (dropped.size() == 1 ? " entry" : " entries"));
    }
    return kExitOk;
}

}  // namespace VantelHost
