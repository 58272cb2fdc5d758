// The whole load of a project document.
#include <Vantel/Projects/Deserialization.h>

#include <string>

#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Support/Logging.h>

#include "Projects/DeserializationSupport.h"
#include "Support/JsonReader.h"

namespace Vantel::Deserialization {

nlohmann::json ReadProjectText(std::string_view text) {
    return JsonReader::Parse(text);
}

std::unique_ptr<Project> DeserializeProject(const nlohmann::json& document) {
    // Loading builds a new tree; none of it is an edit of the user's.
    Transaction::SuppressRecording suppress;
    if (!document.is_object()) {
        LogError("DeserializeProject: expected a JSON object.");
        return nullptr;
    }
    const ProjectFileVersion version = ReadProjectFileVersion(document);
    const std::string thisBuild = std::to_string(ProjectFileVersion::kThisBuildFormat);
    if (!version.IsReadable()) {
        if (version.format == 0) {
            LogError("DeserializeProject: the file has no recognisable version, this build reads format " +
                     thisBuild + ".");
        } else {
            LogError("DeserializeProject: unsupported project file format " + std::to_string(version.format) +
                     ", this build reads format " + thisBuild + ".");
        }
        return nullptr;
    }
    if (version.IsNewerThanThisBuild()) {
        LogWarning(
            "DeserializeProject: the file was written by a newer Vantel than this build. Anything this build "
            "does "
            "not know is dropped.");
    }

    // The document outlives the load, so the context reads its connection arrays in place.
    Context context;
    Detail::ContextAccess::ReadEntriesInPlace(context);
    const nlohmann::json missing;
    const auto rootEntry = document.find("root");
    std::unique_ptr<Operator> root =
        DeserializeOperator(rootEntry != document.end() ? *rootEntry : missing, context);
    if (root == nullptr) {
        LogError("DeserializeProject: failed to read the root entry.");
        return nullptr;
    }
    auto* graph = dynamic_cast<Graph*>(root.get());
    if (graph == nullptr) {
        LogError("DeserializeProject: the root entry is not a graph.");
        return nullptr;
    }
    root.release();
    std::unique_ptr<Graph> rootGraph(graph);
    context.ResolveReferences();

    auto project = std::make_unique<Project>();
    project->SetRootGraph(std::move(rootGraph));
    Detail::ProjectAccess::SetDroppedEntries(*project, context.GetDroppedEntries());
    return project;
}

}  // namespace Vantel::Deserialization
