// vantel upgrade: loads a project file of any readable version and saves it in this build's format.
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>

#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/ProjectFileVersion.h>

#include "Commands.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {
namespace {

// The same file, also when spelled another way or reached through a link. An OUT that does not exist yet
// cannot be IN.
bool IsSameFile(const std::filesystem::path& in, const std::filesystem::path& out) {
    std::error_code error;
    return std::filesystem::equivalent(in, out, error) && !error;
}

std::string Entries(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " entry" : " entries");
}

}  // namespace

int UpgradeCommand(const Arguments& arguments) {
    const std::filesystem::path in = arguments.operands[0];
    const std::filesystem::path out = arguments.operands[1];
    RequireFile(in);
    // A load that dropped something would otherwise write the loss over the only copy.
    if (!arguments.force && IsSameFile(in, out)) {
        Fail(kExitUsage, "OUT is the same file as IN (" + in.string() + "); give --force to write over it");
    }
    Session session(arguments.plugins);
    Vantel::Project& project = session.LoadProject(in);
    const std::size_t dropped = project.GetDroppedEntries().size();
    if (dropped > 0 && !arguments.force) {
        Fail(kExitFailed, in.string() + ": loading dropped " + Entries(dropped) + ", " + out.string() +
                              " is not written; give --force to write what loaded");
    }
    RequireWritable(out);
    project.Serialize(out.string());
    if (dropped > 0) {
        std::cerr << "vantel: warning: " << out.string() << " lacks the " << Entries(dropped)
                  << " that loading dropped\n";
    }
    Out() << "wrote " << out.string() << " in file format " << Vantel::ProjectFileVersion::kThisBuildFormat
          << '\n';
    return kExitOk;
}

}  // namespace VantelHost
