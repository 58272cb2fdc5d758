// vantel check: loads a project and reports its file version, its size and every entry loading dropped.
#include <iostream>
#include <string>
#include <vector>

#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/DroppedEntry.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/ProjectFileVersion.h>

#include "Commands.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {
namespace {

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

}  // namespace

int CheckCommand(const Arguments& arguments) {
    const std::filesystem::path path = arguments.operands[0];
    RequireFile(path);
    Session session(arguments.plugins);
    std::string failure;
    try {
        session.LoadProject(path);
    } catch (const HostError& error) {
        failure = error.what();
    }
    Vantel::Project& project = session.GetProject();
    const Vantel::ProjectFileVersion& version = project.GetFileVersion();
    // A failed load keeps the empty project's root, which dropped nothing.
    const std::vector<Vantel::DroppedEntry>& dropped = project.GetDroppedEntries();

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
    for (const Vantel::DroppedEntry& entry : dropped) {
        Out() << "    " << Vantel::ToString(entry.kind) << " '" << entry.key << "' in "
              << (entry.owner.empty() ? "(gone)" : entry.owner) << ": " << entry.reason << '\n';
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
