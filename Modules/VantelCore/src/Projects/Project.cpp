#include <Vantel/Projects/Project.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include <nlohmann/json.hpp>

#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Support/Logging.h>
#include <Vantel/Support/Utf8Paths.h>

#include "Projects/DeserializationSupport.h"
#include "Projects/FileReplacement.h"

namespace Vantel {
namespace {

// The root graph has no siblings, so any key GenerateKey makes is free. It is in no graph, yet part of the
// model, and its edits are recorded.
void AdoptRootGraph(Graph& graph) {
    Access::GetImplementation(static_cast<Operator&>(graph))->SetProjectRoot(true);
    if (graph.GetKey().empty()) {
        graph.SetKey(GenerateKey("Project", [](std::string_view) { return true; }));
    }
}

}  // namespace

class Project::Implementation {
public:
    std::unique_ptr<Graph> rootGraph;
    ProjectFileVersion fileVersion;
    std::vector<DroppedEntry> droppedEntries;
};

Project::Project() : implementation(std::make_unique<Implementation>()) {
    implementation->rootGraph = std::make_unique<Graph>();
    AdoptRootGraph(*implementation->rootGraph);
}

Project::~Project() = default;

Graph* Project::GetRootGraph() {
    return implementation->rootGraph.get();
}

const Graph* Project::GetRootGraph() const {
    return implementation->rootGraph.get();
}

void Project::SetRootGraph(std::unique_ptr<Graph> graph) {
    if (graph == nullptr) {
        return;
    }
    AdoptRootGraph(*graph);
    implementation->rootGraph = std::move(graph);
}

Object* Project::Resolve(const Path& path) {
    Graph* root = GetRootGraph();
    return root != nullptr ? root->Resolve(path) : nullptr;
}

const Object* Project::Resolve(const Path& path) const {
    // Resolving walks children through non-const lookups; it changes nothing.
    return const_cast<Project*>(this)->Resolve(path);
}

void Project::Serialize(const std::string& path) const {
    // The whole text is made before anything is written (text that is not valid UTF-8 throws here), and it
    // replaces the old file only once it is completely on disk: a failed save never costs the last good one.
    const std::string text = Serialization::SerializeProjectText(*this);
    if (!Detail::ReplaceFile(PathFromUtf8(path), text)) {
        LogError("Project::Serialize: failed to write project to: " + path);
    }
}

bool Project::Deserialize(const std::string& path) {
    std::error_code error;
    const std::filesystem::path file = PathFromUtf8(path);
    const bool exists = std::filesystem::exists(file, error);
    if (error) {
        throw std::filesystem::filesystem_error("exists", file, error);
    }
    if (!exists) {
        LogError("Project::Deserialize: file does not exist: " + path);
        return false;
    }
    // Read whole and then parsed: the library's parser reads a stream a character at a time.
    std::string text;
    {
        std::ifstream stream(file);
        text.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }
    const nlohmann::json document = Deserialization::ReadProjectText(text);
    implementation->fileVersion = Deserialization::ReadProjectFileVersion(document);
    std::unique_ptr<Project> loaded = Deserialization::DeserializeProject(document);
    if (loaded == nullptr) {
        LogError("Project::Deserialize: failed to deserialize project from: " + path);
        return false;
    }
    implementation->rootGraph = std::move(loaded->implementation->rootGraph);
    implementation->droppedEntries = std::move(loaded->implementation->droppedEntries);
    return true;
}

const ProjectFileVersion& Project::GetFileVersion() const {
    return implementation->fileVersion;
}

const std::vector<DroppedEntry>& Project::GetDroppedEntries() const {
    return implementation->droppedEntries;
}

void Deserialization::Detail::ProjectAccess::SetDroppedEntries(Project& project,
                                                               std::vector<DroppedEntry> entries) {
    project.implementation->droppedEntries = std::move(entries);
}

}  // namespace Vantel
