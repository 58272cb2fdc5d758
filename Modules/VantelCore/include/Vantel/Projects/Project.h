// Project.h: the document: one root graph, saved to and loaded from a project file.
//
//   Project project;                                   // an empty root graph keyed "Project [k3x]"
//   project.GetRootGraph()->AddOperator(std::move(blur));
//   project.Serialize("scene.vantel");
//   if (!other.Deserialize("scene.vantel")) { /* the reason was logged */ }
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Projects/DroppedEntry.h>
#include <Vantel/Projects/ProjectFileVersion.h>

namespace Vantel {

class Graph;
class Object;

namespace Deserialization::Detail {
struct ProjectAccess;
}

// Project
//
// Owns exactly one root graph, which owns every operator of the document; destroying the project destroys
// the whole tree. The root graph is never null. Loading replaces the root graph as a whole, so pointers into
// the old tree die with a successful load; undo records, which name objects by path, outlive it where the new
// tree answers to the same paths. Main thread only.
//
//   Project project;
//   if (project.Deserialize(path)) { runner.SetGraph(project.GetRootGraph()); }
class VANTEL_API Project {
public:
    // Makes an empty root graph and keys it "Project [...]".
    Project();
    ~Project();
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    Graph* GetRootGraph();
    const Graph* GetRootGraph() const;
    // Takes `graph` as the new root (the old one is destroyed) and keys it "Project [...]" unless it has a
    // key. Null is ignored: the current root stays.
    void SetRootGraph(std::unique_ptr<Graph> graph);

    // Resolves `path` from the root graph (an absolute path is taken as relative to it); null when nothing
    // answers.
    Object* Resolve(const Path& path);
    const Object* Resolve(const Path& path) const;

    // Writes the project file, pretty-printed with four blanks, non-ASCII text as it is. A file that cannot
    // be opened is not written, silently. Text that is not UTF-8 throws the JSON library's type error.
    void Serialize(const std::string& path) const;
    // Loads the project file at `path` in place of the current root graph. A missing file logs
    // "Project::Deserialize: file does not exist: <path>"; content that cannot be loaded logs the reason and
    // "Project::Deserialize: failed to deserialize project from: <path>"; both return false and keep the root
    // graph. A JSON syntax error throws the JSON library's parse error; another file-system error throws
    // std::filesystem::filesystem_error for the operation "exists". The file's version record is kept as
    // soon as it was read, also when the content then fails.
    bool Deserialize(const std::string& path);

    // The version record of the file last read; format 0 for a project that was never loaded.
    const ProjectFileVersion& GetFileVersion() const;
    // What the load that made the current root graph dropped, each entry also logged; empty for a project
    // made in memory. A failed load keeps the root graph, and with it this list.
    const std::vector<DroppedEntry>& GetDroppedEntries() const;

private:
    friend struct Deserialization::Detail::ProjectAccess;
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
