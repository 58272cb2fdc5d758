// Session.h: the library set up for one command (core types, plug-ins) and taken down again in order.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Vantel {
class Graph;
class Project;
}  // namespace Vantel

namespace VantelHost {

// Session
//
// Registers the core types and loads the plug-ins: those named (each must load, or HostError with
// kExitPluginFailed), or without names every plug-in library beside the executable (one that does not load
// is skipped with a warning). The destructor shuts the task pools down, destroys the project and unloads the
// plug-ins, in that order, so no background task and no object outlives the code of its plug-in.
class Session {
public:
    explicit Session(const std::vector<std::string>& plugins);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Loads `path` into the session's project. A missing file is HostError kExitMissingFile; a JSON syntax
    // error, another JSON error or a failed load are kExitFailed. The project keeps the version record of
    // the file even when loading failed.
    Vantel::Project& LoadProject(const std::filesystem::path& path);
    // An empty project, for a file that does not exist yet.
    Vantel::Project& NewProject();
    Vantel::Project& GetProject();

private:
    std::unique_ptr<Vantel::Project> project;
};

// Throws HostError kExitMissingFile unless `path` names an existing file.
void RequireFile(const std::filesystem::path& path);

// Throws HostError kExitFailed when `path` cannot be opened for writing (it is created if missing).
void RequireWritable(const std::filesystem::path& path);

// Every operator below `graph`, the operators of nested graphs included (and each nested graph itself).
std::size_t CountOperators(const Vantel::Graph& graph);

}  // namespace VantelHost
