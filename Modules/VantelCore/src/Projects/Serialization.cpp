#include <Vantel/Projects/Serialization.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>
#include <tuple>

#include <Vantel/Objects/Access.h>
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

namespace Vantel::Serialization {
namespace {

using nlohmann::json;

// Documents are large and their objects small: members are emplaced (with keys in ascending order, so each
// lands at the end of the map without a search) and arrays reserved, instead of built from temporaries.
json::object_t& MakeObject(json& value) {
    value = json(json::value_t::object);
    return value.get_ref<json::object_t&>();
}

json::array_t& MakeArray(json& value, std::size_t size) {
    value = json(json::value_t::array);
    json::array_t& array = value.get_ref<json::array_t&>();
    array.reserve(size);
    return array;
}

template <std::size_t Size>
void Append(json::object_t& object, const char (&key)[Size], json value) {
    object.emplace_hint(object.end(), std::piecewise_construct, std::forward_as_tuple(key, Size - 1),
                        std::forward_as_tuple(std::move(value)));
}

// Connections are written sorted by their endpoint texts. Positions are sorted rather than the entries, so
// that no text is moved; `Less` orders two positions.
template <typename Less>
std::vector<std::size_t> SortedOrder(std::size_t size, Less less) {
    std::vector<std::size_t> order(size);
    for (std::size_t index = 0; index < size; ++index) {
        order[index] = index;
    }
    if (!std::is_sorted(order.begin(), order.end(), less)) {
        std::sort(order.begin(), order.end(), less);
    }
    return order;
}

// Output text, then input text, as std::pair and std::tuple compare them.
bool TextsBefore(const std::string& output, const std::string& input, const std::string& otherOutput,
                 const std::string& otherInput) {
    const int outputs = output.compare(otherOutput);
    return outputs != 0 ? outputs < 0 : input < otherInput;
}

template <typename First, typename Second>
json Pair(First first, Second second) {
    json pair;
    json::array_t& array = MakeArray(pair, 2);
    array.emplace_back(first);
    array.emplace_back(second);
    return pair;
}

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

nlohmann::json SerializeBundle(const ParameterBundle& bundle) {
    json entry;
    json::object_t& members = MakeObject(entry);
    Append(members, "key", bundle.GetKey());
    Append(members, "kind", bundle.GetKind());
    Append(members, "parameters", SerializeParameterScope(bundle));
    return entry;
}

template <typename Port>
nlohmann::json SerializePort(const Port& port) {
    json entry;
    json::object_t& members = MakeObject(entry);
    if (!port.GetKey().empty()) {
        Append(members, "key", port.GetKey());
    }
    if (port.IsAddedByUser()) {
        Append(members, "name", port.GetName());
        Append(members, "type", port.GetType()->GetName());
    }
    return entry;
}

nlohmann::json SerializeInputSlots(const Operator& op) {
    nlohmann::json inputs = nlohmann::json::array();
    for (const DataInputSlot& slot : op.GetAllDataInputSlots()) {
        if (const DataInput* const* input = std::get_if<DataInput*>(&slot)) {
            if ((*input)->IsAddedByUser()) {
                inputs.push_back(SerializeDataInput(**input));
            }
            continue;
        }
        const DataInputList& list = *std::get<DataInputList*>(slot);
        if (list.GetInputCount() == 0) {
            continue;
        }
        json listInputs;
        json::array_t& items = MakeArray(listInputs, list.GetInputs().size());
        for (const DataInput* input : list.GetInputs()) {
            items.push_back(SerializeDataInput(*input));
        }
        json listEntry;
        json::object_t& members = MakeObject(listEntry);
        Append(members, "inputs", std::move(listInputs));
        Append(members, "key", list.GetKey());
        inputs.push_back(std::move(listEntry));
    }
    return inputs;
}

// The path of `object` relative to `graph` as text, as object.GetRelativePath(graph).ToString() gives it
// (keys below the graph joined by "/", an object without key adding nothing), built in one climb.
std::string RelativeText(Object& object, const Graph& graph) {
    constexpr std::size_t kMostPieces = 16;  // deeper paths, rare, take the general way
    std::array<const std::string*, kMostPieces> keys;
    std::size_t pieces = 0;
    std::size_t length = 0;
    Object* current = &object;
    for (; current != &graph && current != nullptr && pieces < kMostPieces;
         current = current->GetParentObject()) {
        const std::string& key = current->GetKey();
        if (!key.empty()) {
            keys[pieces++] = &key;
            length += key.size() + 1;
        }
    }
    // Not below the graph (that call throws then), the graph itself (so does that), or deep.
    if (current != &graph || &object == &graph) {
        return object.GetRelativePath(graph).ToString();
    }
    std::string text;
    text.reserve(length);
    for (std::size_t piece = pieces; piece-- > 0;) {
        text += *keys[piece];
        if (piece > 0) {
            text += '/';
        }
    }
    return text;
}

// What is written is what the tree now is: its change marks are consumed, down through nested graphs.
void ClearChangeMarks(Operator& op) {
    Operator::Implementation& state = *Access::GetImplementation(op);
    state.ClearMemberChangeMarks();
    if (Graph* graph = state.AsGraph()) {
        for (Operator* child : graph->GetOperators()) {
            ClearChangeMarks(*child);
        }
    }
}

}  // namespace

nlohmann::json SerializeProject(const Project& project) {
    // The marks are bookkeeping of the running tree, not part of the document; clearing them is the one
    // change that saving makes.
    auto& root = const_cast<Graph&>(*project.GetRootGraph());
    ClearChangeMarks(root);
    json version = SerializeProjectFileVersion();
    json document;
    json::object_t& members = MakeObject(document);
    Append(members, "root", SerializeOperator(root));
    Append(members, "version", std::move(version));
    return document;
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
    json entry;
    json::object_t& members = MakeObject(entry);
    json inputs = SerializeInputSlots(op);
    json outputs = json::array();
    for (const DataOutput* output : op.GetAllDataOutputs()) {
        if (output->IsAddedByUser()) {
            outputs.push_back(SerializeDataOutput(*output));
        }
    }
    json parameters = SerializeParameterScope(op.GetParameterGroup());
    const auto* graph = dynamic_cast<const Graph*>(&op);
    if (graph != nullptr) {
        json operators;
        json::array_t& children = MakeArray(operators, graph->GetOperators().size());
        for (const Operator* child : graph->GetOperators()) {
            children.push_back(SerializeOperator(*child));
        }
        json parameterConnections;
        if (!graph->GetDataConnections().empty()) {
            Append(members, "dataConnections", SerializeDataConnections(graph->GetDataConnections()));
        }
        if (!graph->GetParameterConnections().empty()) {
            parameterConnections = SerializeParameterConnections(graph->GetParameterConnections());
        }
        Append(members, "dataInputs", std::move(inputs));
        Append(members, "dataOutputs", std::move(outputs));
        Append(members, "key", op.GetKey());
        Append(members, "name", op.GetName());
        Append(members, "operators", std::move(operators));
        if (!parameterConnections.is_null()) {
            Append(members, "parameterConnections", std::move(parameterConnections));
        }
    } else {
        Append(members, "dataInputs", std::move(inputs));
        Append(members, "dataOutputs", std::move(outputs));
        Append(members, "key", op.GetKey());
        Append(members, "name", op.GetName());
    }
    Append(members, "parameters", std::move(parameters));
    Append(members, "position", Pair(op.GetPosition().x, op.GetPosition().y));
    Append(members, "type", op.GetType()->GetName());
    return entry;
}

nlohmann::json SerializeDataConnections(const std::vector<DataConnection>& connections) {
    std::vector<std::pair<std::string, std::string>> pairs;
    pairs.reserve(connections.size());
    for (const DataConnection& connection : connections) {
        const Operator* consumer = connection.input->GetOperator();
        const Graph* graph = consumer != nullptr ? consumer->GetGraph() : nullptr;
        if (graph == nullptr) {
            continue;
        }
        pairs.emplace_back(RelativeText(*connection.output, *graph), RelativeText(*connection.input, *graph));
    }
    const std::vector<std::size_t> order = SortedOrder(pairs.size(), [&pairs](std::size_t left,
                                                                              std::size_t right) {
        return TextsBefore(pairs[left].first, pairs[left].second, pairs[right].first, pairs[right].second);
    });
    json entries;
    json::array_t& items = MakeArray(entries, pairs.size());
    for (const std::size_t index : order) {
        auto& [output, input] = pairs[index];
        json& item = items.emplace_back();
        json::object_t& members = MakeObject(item);
        Append(members, "input", std::move(input));
        Append(members, "output", std::move(output));
    }
    return entries;
}

nlohmann::json SerializeParameterConnections(const ParameterConnectionMap& connections) {
    // Visited in memory order rather than hash order: a parameter lives inside its operator, so neighbours in
    // memory share cache lines. The entries are sorted by their text below anyway.
    std::vector<const ParameterConnectionMap::value_type*> visits;
    visits.reserve(connections.size());
    for (const auto& connection : connections) {
        visits.push_back(&connection);
    }
    std::sort(visits.begin(), visits.end(), [](const auto* left, const auto* right) {
        return std::less<const Parameter*>()(left->first.target, right->first.target);
    });
    std::vector<std::tuple<std::string, std::string, const std::vector<ComponentLink>*>> entries;
    entries.reserve(connections.size());
    for (const auto* visit : visits) {
        const auto& [endpoints, links] = *visit;
        const Operator* consumer = endpoints.target->GetOperator();
        const Graph* graph = consumer != nullptr ? consumer->GetGraph() : nullptr;
        if (graph == nullptr) {
            continue;
        }
        entries.emplace_back(RelativeText(*endpoints.source, *graph), RelativeText(*endpoints.target, *graph),
                             &links);
    }
    // Equal texts, which a consistent graph never has, fall back on the links' address as a tuple would.
    const std::vector<std::size_t> order =
        SortedOrder(entries.size(), [&entries](std::size_t left, std::size_t right) {
            const auto& [leftOutput, leftInput, leftLinks] = entries[left];
            const auto& [rightOutput, rightInput, rightLinks] = entries[right];
            if (TextsBefore(leftOutput, leftInput, rightOutput, rightInput)) {
                return true;
            }
            if (TextsBefore(rightOutput, rightInput, leftOutput, leftInput)) {
                return false;
            }
            return std::less<>()(leftLinks, rightLinks);
        });
    json result;
    json::array_t& items = MakeArray(result, entries.size());
    for (const std::size_t index : order) {
        auto& [output, input, links] = entries[index];
        json linkArray;
        json::array_t& pairs = MakeArray(linkArray, links->size());
        for (const ComponentLink& link : *links) {
            pairs.push_back(Pair(link.source, link.target));
        }
        json& item = items.emplace_back();
        json::object_t& members = MakeObject(item);
        Append(members, "input", std::move(input));
        Append(members, "links", std::move(linkArray));
        Append(members, "output", std::move(output));
    }
    return result;
}

nlohmann::json SerializeDataInput(const DataInput& input) {
    return SerializePort(input);
}

nlohmann::json SerializeDataOutput(const DataOutput& output) {
    return SerializePort(output);
}

nlohmann::json SerializeParameter(const Parameter& parameter) {
    json entry;
    json::object_t& members = MakeObject(entry);
    if (!parameter.GetKey().empty()) {
        Append(members, "key", parameter.GetKey());
    }
    const bool stored = !parameter.HasParameterFlag(ParameterFlag::Output) &&
                        !parameter.HasParameterFlag(ParameterFlag::NotSaved);
    const bool added = parameter.IsAddedByUser();
    if (added) {
        Append(members, "name", parameter.GetName());
        if (parameter.HasParameterFlag(ParameterFlag::Output)) {
            Append(members, "output", true);
        }
        Append(members, "type", parameter.GetType()->GetName());
    }
    if (stored && !IsEveryComponentDriven(parameter)) {
        Append(members, "value", parameter.SerializeValue());
    }
    return entry;
}

nlohmann::json SerializeParameterNode(const ParameterNode& node) {
    // Parameters are by far the most common node, and never groups.
    if (const auto* parameter = dynamic_cast<const Parameter*>(&node)) {
        return SerializeParameter(*parameter);
    }
    if (const auto* list = dynamic_cast<const ParameterBundleList*>(&node)) {
        json bundles;
        json::array_t& items = MakeArray(bundles, list->GetBundles().size());
        for (const ParameterBundle* bundle : list->GetBundles()) {
            items.push_back(SerializeBundle(*bundle));
        }
        json entry;
        json::object_t& members = MakeObject(entry);
        Append(members, "bundles", std::move(bundles));
        Append(members, "key", list->GetKey());
        return entry;
    }
    if (const auto* bundle = dynamic_cast<const ParameterBundle*>(&node)) {
        return SerializeBundle(*bundle);
    }
    if (const auto* group = dynamic_cast<const ParameterGroup*>(&node)) {
        return SerializeParameterScope(*group);
    }
    return nullptr;
}

nlohmann::json SerializeParameterScope(const ParameterGroup& group) {
    json scope;
    json::array_t& items = MakeArray(scope, group.GetChildren().size());
    for (const ParameterNode* child : group.GetChildren()) {
        items.push_back(SerializeParameterNode(*child));
    }
    return scope;
}

nlohmann::json SerializeOwnStructure(const Operator& op) {
    nlohmann::json structure = nlohmann::json::array();
    for (const ParameterNode* child : op.GetParameterGroup().GetChildren()) {
        const auto* parameter = dynamic_cast<const Parameter*>(child);
        if (parameter != nullptr && parameter->IsAddedByUser()) {
            structure.push_back(SerializeParameter(*parameter));
        }
    }
    return structure;
}

}  // namespace Vantel::Serialization
