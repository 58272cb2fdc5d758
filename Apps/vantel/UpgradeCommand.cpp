// vantel upgrade: loads a project file of any readable version and saves it in this build's format.
#include <filesystem>
#include <iostream>

#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/ProjectFileVersion.h>

#include "Commands.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {

int UpgradeCommand(const Arguments& arguments) {
    const std::filesystem::path in = arguments.operands[0];
    const std::filesystem::path out = arguments.operands[1];
    RequireFile(in);
    Session session(arguments.plugins);
    Vantel::Project& project = session.LoadProject(in);
    RequireWritable(out);
    project.Serialize(out.string());
    Out() << "wrote " << out.string() << " in file format " << Vantel::ProjectFileVersion::kThisBuildFormat
          << '\n';
    return kExitOk;
}

}  // namespace VantelHost
