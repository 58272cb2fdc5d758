// vantel edit: holds a project open, runs it live and serves it to an editor until Ctrl+C.
#include <atomic>
#include <csignal>
#include <filesystem>
#include <iostream>

#include <Vantel/Projects/Project.h>

#include "Commands.h"
#include "Edit/EditHost.h"
#include "Edit/EditSession.h"
#include "Edit/LogTee.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {
namespace {

std::atomic<bool> interrupted{false};

extern "C" void OnInterrupt(int) {
    interrupted = true;
}

// Where unsaved work goes when the session ends: "Scene.json" gives "Scene.recovery.json" beside it.
std::filesystem::path RecoveryFile(const std::filesystem::path& file) {
    return file.parent_path() / (file.stem().string() + ".recovery" + file.extension().string());
}

}  // namespace

int EditCommand(const Arguments& arguments) {
    const std::filesystem::path file = std::filesystem::absolute(arguments.operands[0]);
    Session session(arguments.plugins);
    const bool exists = std::filesystem::exists(file);
    Vantel::Project& project = exists ? session.LoadProject(file) : session.NewProject();
    if (!exists) {
        RequireWritable(file);  // creates it: the new project's first save goes there
        std::filesystem::remove(file);
    }
    std::filesystem::current_path(file.parent_path());

    LogTee log(std::cout);
    EditHost host(project, file, arguments.fps, log);
    const int port = host.Start(arguments.port);
    if (port < 0) {
        Fail(kExitFailed, "could not listen on 127.0.0.1:" + std::to_string(arguments.port));
    }
    Out() << (exists ? "editing " : "editing new project ") << file.string()
          << "\nopen http://127.0.0.1:" << port << "/?token=" << host.GetToken() << "\n";
    Out().flush();

    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
    host.Run(interrupted);
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    host.Stop();

    EditSession& edit = host.GetSession();
    if (edit.HasUnsavedChanges()) {
        const std::filesystem::path recovery = RecoveryFile(file);
        edit.SaveTo(recovery);
        Out() << "unsaved changes kept in " << recovery.string() << "\n";
    }
    Out() << "edit session ended\n";
    return kExitOk;
}

}  // namespace VantelHost
