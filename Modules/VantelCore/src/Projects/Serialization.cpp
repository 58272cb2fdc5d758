#include <Vantel/Projects/Serialization.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/ProjectFileVersion.h>

#include "Projects/DocumentWriters.h"

namespace Vantel::Serialization {
namespace {

using Detail::TextWriter;
using Detail::TreeWriter;

// A value that connections recompute after loading is not stored.
bool IsEveryComponentDriven(const Parameter& parameter) {
    if (!parameter.HasIncomingConnection()) {
        return parameter.GetComponentCount() <= 0;
    }
    for (int component = 0; component < parameter.GetComponentCount(); ++component) {
        if (parameter.FindIncomingConnection(component) == nullptr) {
            return false;
        }
    }
    return true;
}

// Appends the path of `object` relative to `graph` as text, as object.GetRelativePath(graph).ToString() gives
// it (keys below the graph joined by "/", an object without key adding nothing), built in one climb.
void AppendRelativeText(std::string& text, Object& object, const Graph& graph) {
    constexpr std::size_t kMostPieces = 16;  // deeper paths, rare, take the general way
    std::array<const std::string*, kMostPieces> keys;
    std::size_t pieces = 0;
    Object* current = &object;
    for (; current != &graph && current != nullptr && pieces < kMostPieces;
         current = current->GetParentObject()) {
        const std::string& key = current->GetKey();
        if (!key.empty()) {
            keys[pieces++] = &key;
        }
    }
    // Not below the graph (that call throws then), the graph itself (so does that), or deep.
    if (current != &graph || &object == &graph) {
        text += object.GetRelativePath(graph).ToString();
        return;
    }
    for (std::size_t piece = pieces; piece-- > 0;) {
        text += *keys[piece];
        if (piece > 0) {
            text += '/';
        }
    }
}

// A graph's connections as the file lists them: by output text, then input text, so that the order in which
// they were made does not show. Two entries with equal texts could not be told apart when the file is read
// either, so their order does not matter. The texts lie end to end in one string, which keeps sorting to
// small entries and spares a string per endpoint.
class SortedConnectionTexts {
public:
    struct Entry {
        std::string_view output;
        std::string_view input;
        const std::vector<ComponentLink>* links;  // none for data connections
    };

    explicit SortedConnectionTexts(const std::vector<DataConnection>& connections) {
        spans.reserve(connections.size());
        for (const DataConnection& connection : connections) {
            // A connection lives in the graph of its consumer.
            Add(*connection.output, *connection.input, *connection.input->GetOperator()->GetGraph(), nullptr);
        }
        Sort();
    }

    explicit SortedConnectionTexts(const ParameterConnectionMap& connections) {
        // Visited in memory order rather than hash order: a parameter lives inside its operator, so
        // neighbours in memory share cache lines.
        std::vector<const ParameterConnectionMap::value_type*> visits;
        visits.reserve(connections.size());
        for (const auto& connection : connections) {
            visits.push_back(&connection);
        }
        std::sort(visits.begin(), visits.end(), [](const auto* left, const auto* right) {
            return std::less<const Parameter*>()(left->first.target, right->first.target);
        });
        spans.reserve(connections.size());
        for (const auto* visit : visits) {
            const auto& [endpoints, links] = *visit;
            Add(*endpoints.source, *endpoints.target, *endpoints.target->GetOperator()->GetGraph(), &links);
        }
        Sort();
    }

    const std::vector<Entry>& Entries() const { return entries; }

private:
    struct Span {
        std::size_t outputBegin;
        std::size_t inputBegin;
        std::size_t inputEnd;
        const std::vector<ComponentLink>* links;
    };

    void Add(Object& output, Object& input, const Graph& graph, const std::vector<ComponentLink>* links) {
        const std::size_t outputBegin = texts.size();
        AppendRelativeText(texts, output, graph);
        const std::size_t inputBegin = texts.size();
        AppendRelativeText(texts, input, graph);
        spans.push_back({outputBegin, inputBegin, texts.size(), links});
    }

    // Views are taken once every text is in place, the string no longer moving.
    void Sort() {
        entries.reserve(spans.size());
        const char* const base = texts.data();
        for (const Span& span : spans) {
            entries.push_back({{base + span.outputBegin, span.inputBegin - span.outputBegin},
                               {base + span.inputBegin, span.inputEnd - span.inputBegin},
                               span.links});
        }
        std::ranges::sort(entries, {},
                          [](const Entry& entry) { return std::tie(entry.output, entry.input); });
    }

    std::string texts;
    std::vector<Span> spans;
    std::vector<Entry> entries;
};

// The rules of the file, written once for both writers. Members are written in ascending key order.

template <typename Writer>
void WriteParameterScope(Writer& writer, const ParameterGroup& group);

template <typename Writer>
void WriteParameter(Writer& writer, const Parameter& parameter) {
    writer.BeginObject();
    if (!parameter.GetKey().empty()) {
        writer.Key("key");
        writer.String(parameter.GetKey());
    }
    const bool stored = !parameter.HasParameterFlag(ParameterFlag::Output) &&
                        !parameter.HasParameterFlag(ParameterFlag::NotSaved);
    if (parameter.IsAddedByUser()) {
        writer.Key("name");
        writer.String(parameter.GetName());
        if (parameter.HasParameterFlag(ParameterFlag::Output)) {
            writer.Key("output");
            writer.Boolean(true);
        }
        writer.Key("type");
        writer.String(parameter.GetType()->GetName());
    }
    if (stored && !IsEveryComponentDriven(parameter)) {
        writer.Key("value");
        writer.Value(parameter.SerializeValue());
    }
    writer.EndObject();
}

template <typename Writer>
void WriteBundle(Writer& writer, const ParameterBundle& bundle) {
    writer.BeginObject();
    writer.Key("key");
    writer.String(bundle.GetKey());
    writer.Key("kind");
    writer.String(bundle.GetKind());
    writer.Key("parameters");
    WriteParameterScope(writer, bundle);
    writer.EndObject();
}

template <typename Writer>
void WriteParameterNode(Writer& writer, const ParameterNode& node) {
    // Parameters are by far the most common node, and never groups.
    if (const auto* parameter = ObjectCast<Parameter>(&node)) {
        WriteParameter(writer, *parameter);
    } else if (const auto* list = ObjectCast<ParameterBundleList>(&node)) {
        writer.BeginObject();
        writer.Key("bundles");
        writer.BeginArray(list->GetBundles().size());
        for (const ParameterBundle* bundle : list->GetBundles()) {
            WriteBundle(writer, *bundle);
        }
        writer.EndArray();
        writer.Key("key");
        writer.String(list->GetKey());
        writer.EndObject();
    } else if (const auto* bundle = ObjectCast<ParameterBundle>(&node)) {
        WriteBundle(writer, *bundle);
    } else if (const auto* group = ObjectCast<ParameterGroup>(&node)) {
        WriteParameterScope(writer, *group);
    } else {
        writer.Null();
    }
}

template <typename Writer>
void WriteParameterScope(Writer& writer, const ParameterGroup& group) {
    writer.BeginArray(group.GetChildren().size());
    for (const ParameterNode* child : group.GetChildren()) {
        WriteParameterNode(writer, *child);
    }
    writer.EndArray();
}

template <typename Writer>
void WriteOwnStructure(Writer& writer, const Operator& op) {
    writer.BeginArray(0);
    for (const ParameterNode* child : op.GetParameterGroup().GetChildren()) {
        const auto* parameter = ObjectCast<Parameter>(child);
        if (parameter != nullptr && parameter->IsAddedByUser()) {
            WriteParameter(writer, *parameter);
        }
    }
    writer.EndArray();
}

template <typename Writer, typename Port>
void WritePort(Writer& writer, const Port& port) {
    writer.BeginObject();
    if (!port.GetKey().empty()) {
        writer.Key("key");
        writer.String(port.GetKey());
    }
    if (port.IsAddedByUser()) {
        writer.Key("name");
        writer.String(port.GetName());
        writer.Key("type");
        writer.String(port.GetType()->GetName());
    }
    writer.EndObject();
}

template <typename Writer>
void WriteInputSlots(Writer& writer, const Operator& op) {
    writer.BeginArray(0);
    for (const DataInputSlot& slot : op.GetAllDataInputSlots()) {
        if (const DataInput* const* input = std::get_if<DataInput*>(&slot)) {
            if ((*input)->IsAddedByUser()) {
                WritePort(writer, **input);
            }
            continue;
        }
        const DataInputList& list = *std::get<DataInputList*>(slot);
        if (list.GetInputCount() == 0) {
            continue;
        }
        writer.BeginObject();
        writer.Key("inputs");
        writer.BeginArray(list.GetInputs().size());
        for (const DataInput* input : list.GetInputs()) {
            WritePort(writer, *input);
        }
        writer.EndArray();
        writer.Key("key");
        writer.String(list.GetKey());
        writer.EndObject();
    }
    writer.EndArray();
}

template <typename Writer>
void WriteOutputs(Writer& writer, const Operator& op) {
    writer.BeginArray(0);
    for (const DataOutput* output : op.GetAllDataOutputs()) {
        if (output->IsAddedByUser()) {
            WritePort(writer, *output);
        }
    }
    writer.EndArray();
}

template <typename Writer>
void WriteDataConnections(Writer& writer, const std::vector<DataConnection>& connections) {
    const SortedConnectionTexts texts(connections);
    writer.BeginArray(texts.Entries().size());
    for (const SortedConnectionTexts::Entry& entry : texts.Entries()) {
        writer.BeginObject();
        writer.Key("input");
        writer.String(entry.input);
        writer.Key("output");
        writer.String(entry.output);
        writer.EndObject();
    }
    writer.EndArray();
}

template <typename Writer>
void WriteParameterConnections(Writer& writer, const ParameterConnectionMap& connections) {
    const SortedConnectionTexts texts(connections);
    writer.BeginArray(texts.Entries().size());
    for (const SortedConnectionTexts::Entry& entry : texts.Entries()) {
        writer.BeginObject();
        writer.Key("input");
        writer.String(entry.input);
        writer.Key("links");
        writer.BeginArray(entry.links->size());
        for (const ComponentLink& link : *entry.links) {
            writer.BeginArray(2);
            writer.Integer(link.source);
            writer.Integer(link.target);
            writer.EndArray();
        }
        writer.EndArray();
        writer.Key("output");
        writer.String(entry.output);
        writer.EndObject();
    }
    writer.EndArray();
}

// JSON has no number for NaN or the infinities; null, which the text would print anyway, is also what the
// tree holds then, so that both forms compare equal to what a load of them gives back.
template <typename Writer>
void WriteCoordinate(Writer& writer, float coordinate) {
    if (std::isfinite(coordinate)) {
        writer.Float(coordinate);
    } else {
        writer.Null();
    }
}

template <typename Writer>
void WriteOperator(Writer& writer, const Operator& op) {
    const auto* graph = ObjectCast<Graph>(&op);
    writer.BeginObject();
    if (graph != nullptr && !graph->GetDataConnections().empty()) {
        writer.Key("dataConnections");
        WriteDataConnections(writer, graph->GetDataConnections());
    }
    writer.Key("dataInputs");
    WriteInputSlots(writer, op);
    writer.Key("dataOutputs");
    WriteOutputs(writer, op);
    writer.Key("key");
    writer.String(op.GetKey());
    writer.Key("name");
    writer.String(op.GetName());
    if (graph != nullptr) {
        writer.Key("operators");
        writer.BeginArray(graph->GetOperators().size());
        for (const Operator* child : graph->GetOperators()) {
            WriteOperator(writer, *child);
        }
        writer.EndArray();
        if (!graph->GetParameterConnections().empty()) {
            writer.Key("parameterConnections");
            WriteParameterConnections(writer, graph->GetParameterConnections());
        }
    }
    writer.Key("parameters");
    WriteParameterScope(writer, op.GetParameterGroup());
    writer.Key("position");
    writer.BeginArray(2);
    WriteCoordinate(writer, op.GetPosition().x);
    WriteCoordinate(writer, op.GetPosition().y);
    writer.EndArray();
    writer.Key("type");
    writer.String(op.GetType()->GetName());
    writer.EndObject();
}

template <typename Writer>
void WriteProject(Writer& writer, const Project& project) {
    // The change marks stay: they are what the next frame hands on, and a save must not change that.
    const Graph& root = *project.GetRootGraph();
    writer.BeginObject();
    writer.Key("root");
    WriteOperator(writer, root);
    writer.Key("version");
    writer.Value(SerializeProjectFileVersion());
    writer.EndObject();
}

// A generous guess at the size of the file's text, from what a typical entry takes at a typical depth.
std::size_t EstimateTextSize(const Operator& op) {
    constexpr std::size_t kOperatorBytes = 512;
    constexpr std::size_t kParameterBytes = 192;
    constexpr std::size_t kConnectionBytes = 256;
    std::size_t size = kOperatorBytes + kParameterBytes * op.GetParameterGroup().GetChildren().size();
    if (const auto* graph = ObjectCast<Graph>(&op)) {
        size +=
            kConnectionBytes * (graph->GetDataConnections().size() + graph->GetParameterConnections().size());
        for (const Operator* child : graph->GetOperators()) {
            size += EstimateTextSize(*child);
        }
    }
    return size;
}

template <typename Write>
nlohmann::json BuildTree(Write&& write) {
    TreeWriter writer;
    write(writer);
    return writer.Take();
}

}  // namespace

nlohmann::json SerializeProject(const Project& project) {
    return BuildTree([&project](TreeWriter& writer) { WriteProject(writer, project); });
}

std::string SerializeProjectText(const Project& project) {
    TextWriter writer(EstimateTextSize(*project.GetRootGraph()));
    WriteProject(writer, project);
    return writer.Take();
}

nlohmann::json SerializeProjectFileVersion() {
    nlohmann::json record = nlohmann::json::object();
    record["format"] = ProjectFileVersion::kThisBuildFormat;
    const Version release = BuildInfo::GetReleaseVersion();
    const Version software = release.IsEmpty() ? BuildInfo::GetLastReleaseVersion() : release;
    if (!software.IsEmpty()) {
        record["software"] = software.ToString();
    }
    if (release.IsEmpty()) {
        record["dev"] = {{"commit", BuildInfo::GetCommit()},
                         {"modified", BuildInfo::IsModified()},
                         {"commitsAfterRelease", BuildInfo::GetCommitsSinceLastRelease()},
                         {"date", BuildInfo::GetBuildDate()}};
    }
    return record;
}

nlohmann::json SerializeOperator(const Operator& op) {
    return BuildTree([&op](TreeWriter& writer) { WriteOperator(writer, op); });
}

nlohmann::json SerializeDataConnections(const std::vector<DataConnection>& connections) {
    return BuildTree([&connections](TreeWriter& writer) { WriteDataConnections(writer, connections); });
}

nlohmann::json SerializeParameterConnections(const ParameterConnectionMap& connections) {
    return BuildTree([&connections](TreeWriter& writer) { WriteParameterConnections(writer, connections); });
}

nlohmann::json SerializeDataInput(const DataInput& input) {
    return BuildTree([&input](TreeWriter& writer) { WritePort(writer, input); });
}

nlohmann::json SerializeDataOutput(const DataOutput& output) {
    return BuildTree([&output](TreeWriter& writer) { WritePort(writer, output); });
}

nlohmann::json SerializeParameter(const Parameter& parameter) {
    return BuildTree([&parameter](TreeWriter& writer) { WriteParameter(writer, parameter); });
}

nlohmann::json SerializeParameterNode(const ParameterNode& node) {
    return BuildTree([&node](TreeWriter& writer) { WriteParameterNode(writer, node); });
}

nlohmann::json SerializeParameterScope(const ParameterGroup& group) {
    return BuildTree([&group](TreeWriter& writer) { WriteParameterScope(writer, group); });
}

nlohmann::json SerializeOwnStructure(const Operator& op) {
    return BuildTree([&op](TreeWriter& writer) { WriteOwnStructure(writer, op); });
}

}  // namespace Vantel::Serialization
