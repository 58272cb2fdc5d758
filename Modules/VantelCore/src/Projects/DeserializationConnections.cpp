// Connections: making a graph's stored data and parameter connections once every operator exists.
#include <Vantel/Projects/Deserialization.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Operators/ComponentLink.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Support/Logging.h>

#include "Parameters/ValueParameterSupport.h"
#include "Projects/DeserializationSupport.h"

namespace Vantel::Deserialization {
namespace {

using nlohmann::json;

// The endpoint that `text` names relative to `graph`; null for text that is no path or names nothing. Reads
// the text as Path::Parse does (a leading "/" is allowed, every piece must be a valid key) and resolves it
// as Object::Resolve does, without building the path.
Object* ResolveEndpoint(Graph& graph, std::string_view text) {
    if (!text.empty() && text.front() == '/') {
        text.remove_prefix(1);
    }
    if (text.empty()) {
        return &graph;
    }
    // An invalid piece anywhere makes the whole text no path, even after a piece that names nothing.
    Object* current = &graph;
    for (;;) {
        const std::size_t slash = text.find('/');
        const std::string_view piece = text.substr(0, slash);
        if (!Path::IsValidKey(piece)) {
            return nullptr;
        }
        current = current != nullptr ? current->FindChild(piece) : nullptr;
        if (slash == std::string_view::npos) {
            return current;
        }
        text.remove_prefix(slash + 1);
    }
}

// The entry's description is made only for a connection that is dropped: loading makes thousands that are
// not.
void DropConnection(Context& context, DroppedEntry::Kind kind, Graph& graph, const std::string& outputText,
                    const std::string& inputText, std::string_view before, std::string_view after) {
    const std::string description = outputText + " -> " + inputText;
    Detail::DropEntry(context, kind, graph, description,
                      std::string(before).append(description).append(after));
}

// A number no int holds is saturated, so that it names no component and the connection is refused, rather
// than wrapping round to a component that exists (or, for a float, being undefined).
std::int32_t ReadComponent(const json& value) {
    if (value.is_number()) {
        return ValueParameterSupport::ReadInt32(value);
    }
    return value.get<std::int32_t>();  // booleans as before, anything else the file's type error
}

// The links in file order, each once.
std::vector<ComponentLink> ReadLinks(const json& entry) {
    std::vector<ComponentLink> links;
    for (const json& pair : Detail::ArrayAt(entry, "links")) {
        const ComponentLink link{ReadComponent(pair.at(0)), ReadComponent(pair.at(1))};
        if (std::find(links.begin(), links.end(), link) == links.end()) {
            links.push_back(link);
        }
    }
    return links;
}

}  // namespace

void DeserializeDataConnections(const json& connections, Graph& graph, Context& context) {
    for (const json& entry : Detail::AsArray(connections)) {
        std::string outputStorage;
        std::string inputStorage;
        const std::string& outputText = Detail::StringField(entry, "output", outputStorage);
        const std::string& inputText = Detail::StringField(entry, "input", inputStorage);
        auto* output = ObjectCast<DataOutput>(ResolveEndpoint(graph, outputText));
        Object* target = ResolveEndpoint(graph, inputText);
        auto* input = ObjectCast<DataInput>(target);
        auto* list = ObjectCast<DataInputList>(target);
        const auto drop = [&](std::string_view before, std::string_view after) {
            DropConnection(context, DroppedEntry::Kind::DataConnection, graph, outputText, inputText, before,
                           after);
        };
        if (output == nullptr || (input == nullptr && list == nullptr)) {
            drop("DeserializeDataConnections: could not resolve connection '", "', it is dropped.");
            continue;
        }
        const bool added = input != nullptr ? graph.AddDataConnection({output, input})
                                            : graph.AddDataConnection(*output, *list) != nullptr;
        if (!added) {
            drop("DeserializeDataConnections: failed to add connection '", "'.");
        }
    }
}

void DeserializeParameterConnections(const json& connections, Graph& graph, Context& context) {
    for (const json& entry : Detail::AsArray(connections)) {
        std::string outputStorage;
        std::string inputStorage;
        const std::string& outputText = Detail::StringField(entry, "output", outputStorage);
        const std::string& inputText = Detail::StringField(entry, "input", inputStorage);
        const auto drop = [&](std::string_view before, std::string_view after) {
            DropConnection(context, DroppedEntry::Kind::ParameterConnection, graph, outputText, inputText,
                           before, after);
        };
        std::vector<ComponentLink> links = ReadLinks(entry);
        if (links.empty()) {
            drop("DeserializeParameterConnections: connection '", "' has no links, it is dropped.");
            continue;
        }
        auto* source = ObjectCast<Parameter>(ResolveEndpoint(graph, outputText));
        auto* target = ObjectCast<Parameter>(ResolveEndpoint(graph, inputText));
        if (source == nullptr || target == nullptr) {
            drop("DeserializeParameterConnections: could not resolve connection '", "', it is dropped.");
            continue;
        }
        if (!graph.AddParameterConnection({source, target, std::move(links)}, false)) {
            drop("DeserializeParameterConnections: failed to add connection '", "'.");
        }
    }
}

}  // namespace Vantel::Deserialization
