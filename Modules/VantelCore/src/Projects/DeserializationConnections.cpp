// Connections: making a graph's stored data and parameter connections once every operator exists.
#include <Vantel/Projects/Deserialization.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <Vantel/Objects/Path.h>
#include <Vantel/Operators/ComponentLink.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Support/Logging.h>

#include "Projects/DeserializationSupport.h"

namespace Vantel::Deserialization {
namespace {

using nlohmann::json;

// The endpoint that `text` names relative to `graph`; null for text that is no path or names nothing.
Object* ResolveEndpoint(Graph& graph, const std::string& text) {
    const std::optional<Path> path = Path::Parse(text);
    return path ? graph.Resolve(*path) : nullptr;
}

// The links in file order, each once.
std::vector<ComponentLink> ReadLinks(const json& entry) {
    std::vector<ComponentLink> links;
    for (const json& pair : Detail::ArrayAt(entry, "links")) {
        const ComponentLink link{pair.at(0).get<std::int32_t>(), pair.at(1).get<std::int32_t>()};
        if (std::find(links.begin(), links.end(), link) == links.end()) {
            links.push_back(link);
        }
    }
    return links;
}

}  // namespace

void DeserializeDataConnections(const json& connections, Graph& graph, Context&) {
    for (const json& entry : Detail::AsArray(connections)) {
        const std::string outputText = entry.value("output", std::string());
        const std::string inputText = entry.value("input", std::string());
        const std::string description = outputText + " -> " + inputText;
        auto* output = dynamic_cast<DataOutput*>(ResolveEndpoint(graph, outputText));
        Object* target = ResolveEndpoint(graph, inputText);
        auto* input = dynamic_cast<DataInput*>(target);
        auto* list = dynamic_cast<DataInputList*>(target);
        if (output == nullptr || (input == nullptr && list == nullptr)) {
            LogError("DeserializeDataConnections: could not resolve connection '" + description +
                     "', it is dropped.");
            continue;
        }
        const bool added = input != nullptr ? graph.AddDataConnection({output, input})
                                            : graph.AddDataConnection(*output, *list) != nullptr;
        if (!added) {
            LogError("DeserializeDataConnections: failed to add connection '" + description + "'.");
        }
    }
}

void DeserializeParameterConnections(const json& connections, Graph& graph, Context&) {
    for (const json& entry : Detail::AsArray(connections)) {
        const std::string outputText = entry.value("output", std::string());
        const std::string inputText = entry.value("input", std::string());
        const std::string description = outputText + " -> " + inputText;
        std::vector<ComponentLink> links = ReadLinks(entry);
        if (links.empty()) {
            LogError("DeserializeParameterConnections: connection '" + description +
                     "' has no links, it is dropped.");
            continue;
        }
        auto* source = dynamic_cast<Parameter*>(ResolveEndpoint(graph, outputText));
        auto* target = dynamic_cast<Parameter*>(ResolveEndpoint(graph, inputText));
        if (source == nullptr || target == nullptr) {
            LogError("DeserializeParameterConnections: could not resolve connection '" + description +
                     "', it is dropped.");
            continue;
        }
        if (!graph.AddParameterConnection({source, target, std::move(links)}, false)) {
            LogError("DeserializeParameterConnections: failed to add connection '" + description + "'.");
        }
    }
}

}  // namespace Vantel::Deserialization
