#include "Session.h"

#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <system_error>

#include <Vantel/Execution/Tasks.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/PluginFiles.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/Project.h>

#include "Output.h"

namespace VantelHost {

Session::Session(const std::vector<std::string>& plugins) {
    Vantel::RegisterCoreTypes();
    Vantel::TypeLibrary& library = *Vantel::TypeLibrary::Get();
    if (plugins.empty()) {
        for (const std::filesystem::path& file : Vantel::FindPluginFiles()) {
            if (!library.LoadPluginFromFile(file)) {
                std::cerr << "vantel: warning: skipped " << file.filename().string()
                          << ": it does not load as a plug-in\n";
            }
        }
    } else {
        for (const std::string& name : plugins) {
            // A plug-in being written is loaded from where it is built, without copying it beside the host.
            const bool isPath = std::filesystem::path(name).has_parent_path();
            if (!(isPath ? library.LoadPluginFromFile(name) : library.LoadPlugin(name.c_str()))) {
                // The members are not built yet, so the destructor will not run: unload what did load.
                library.UnloadAllPlugins();
                Fail(kExitPluginFailed, "could not load plug-in '" + name + "'");
            }
        }
    }
}

Session::~Session() {
    Vantel::Tasks::Shutdown();
    project.reset();
    Vantel::TypeLibrary::Get()->UnloadAllPlugins();
}

void RequireFile(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        Fail(kExitMissingFile, std::filesystem::exists(path, error) ? path.string() + " is not a file"
                                                                    : "no such file: " + path.string());
    }
}

void RequireWritable(const std::filesystem::path& path) {
    // The library's save is silent about a file it cannot open, so the host asks first.
    if (!std::ofstream(path, std::ios::app)) {
        Fail(kExitFailed, "cannot write " + path.string());
    }
}

Vantel::Project& Session::LoadProject(const std::filesystem::path& path) {
    RequireFile(path);
    project = std::make_unique<Vantel::Project>();
    bool loaded = false;
    try {
        loaded = project->Deserialize(path.string());
    } catch (const nlohmann::json::parse_error& error) {
        Fail(kExitFailed, path.string() + " is not valid JSON: " + error.what());
    } catch (const nlohmann::json::exception& error) {
        Fail(kExitFailed, path.string() + " has an entry of the wrong kind: " + error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        Fail(kExitFailed, "could not read " + path.string() + ": " + error.what());
    }
    if (!loaded) {
        Fail(kExitFailed, "could not load " + path.string());
    }
    return *project;
}

Vantel::Project& Session::NewProject() {
    project = std::make_unique<Vantel::Project>();
    return *project;
}

Vantel::Project& Session::GetProject() {
    return *project;
}

std::size_t CountOperators(const Vantel::Graph& graph) {
    std::size_t count = 0;
    for (const Vantel::Operator* op : graph.GetOperators()) {
        ++count;
        if (op->GetType()->Inherits(Vantel::Graph::Type())) {
            count += CountOperators(static_cast<const Vantel::Graph&>(*op));
        }
    }
    return count;
}

}  // namespace VantelHost
