#include <Vantel/Projects/Serialization.h>

#include <algorithm>
#include <tuple>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/Operator.h>
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

// A value that connections recompute after loading is not stored.
bool IsEveryComponentDriven(const Parameter& parameter) {
    for (int component = 0; component < parameter.GetComponentCount(); ++component) {
        if (parameter.FindIncomingConnection(component) == nullptr) {
            return false;
        }
    }
    return true;
}

nlohmann::json SerializeBundle(const ParameterBundle& bundle) {
    return {{"key", bundle.GetKey()},
            {"kind", bundle.GetKind()},
            {"parameters", SerializeParameterScope(bundle)}};
}

template <typename Port>
nlohmann::json SerializePort(const Port& port) {
    nlohmann::json entry = nlohmann::json::object();
    if (!port.GetKey().empty()) {
        entry["key"] = port.GetKey();
    }
    if (port.IsAddedByUser()) {
        entry["type"] = port.GetType()->GetName();
        entry["name"] = port.GetName();
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
        nlohmann::json listInputs = nlohmann::json::array();
        for (const DataInput* input : list.GetInputs()) {
            listInputs.push_back(SerializeDataInput(*input));
        }
        inputs.push_back({{"key", list.GetKey()}, {"inputs", std::move(listInputs)}});
    }
    return inputs;
}

// The path of `object` relative to `graph` as text; empty when the graph is not above it.
std::string RelativeText(Object& object, const Graph& graph) {
    return object.GetRelativePath(graph).ToString();
}

// What is written is what the tree now is: its change marks are consumed, down through nested graphs.
void ClearChangeMarks(Operator& op) {
    for (DataInput* input : op.GetAllDataInputs()) {
        Access::GetImplementation(*input)->ClearChanged();
    }
    for (DataOutput* output : op.GetAllDataOutputs()) {
        Access::GetImplementation(*output)->ClearChanged();
    }
    for (Parameter* parameter : op.GetAllParameters()) {
        Access::GetImplementation(*parameter)->ClearValueChanged();
    }
    if (auto* graph = dynamic_cast<Graph*>(&op)) {
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
    return {{"version", SerializeProjectFileVersion()}, {"root", SerializeOperator(root)}};
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
    nlohmann::json entry = nlohmann::json::object();
    entry["type"] = op.GetType()->GetName();
    entry["key"] = op.GetKey();
    entry["name"] = op.GetName();
    entry["position"] = {op.GetPosition().x, op.GetPosition().y};
    entry["dataInputs"] = SerializeInputSlots(op);
    nlohmann::json outputs = nlohmann::json::array();
    for (const DataOutput* output : op.GetAllDataOutputs()) {
        if (output->IsAddedByUser()) {
            outputs.push_back(SerializeDataOutput(*output));
        }
    }
    entry["dataOutputs"] = std::move(outputs);
    entry["parameters"] = SerializeParameterScope(op.GetParameterGroup());
    if (const auto* graph = dynamic_cast<const Graph*>(&op)) {
        nlohmann::json operators = nlohmann::json::array();
        for (const Operator* child : graph->GetOperators()) {
            operators.push_back(SerializeOperator(*child));
        }
        entry["operators"] = std::move(operators);
        if (!graph->GetDataConnections().empty()) {
            entry["dataConnections"] = SerializeDataConnections(graph->GetDataConnections());
        }
        if (!graph->GetParameterConnections().empty()) {
            entry["parameterConnections"] = SerializeParameterConnections(graph->GetParameterConnections());
        }
    }
    return entry;
}

nlohmann::json SerializeDataConnections(const std::vector<DataConnection>& connections) {
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const DataConnection& connection : connections) {
        const Operator* consumer = connection.input->GetOperator();
        const Graph* graph = consumer != nullptr ? consumer->GetGraph() : nullptr;
        if (graph == nullptr) {
            continue;
        }
        pairs.emplace_back(RelativeText(*connection.output, *graph), RelativeText(*connection.input, *graph));
    }
    std::sort(pairs.begin(), pairs.end());
    nlohmann::json entries = nlohmann::json::array();
    for (auto& [output, input] : pairs) {
        entries.push_back({{"output", std::move(output)}, {"input", std::move(input)}});
    }
    return entries;
}

nlohmann::json SerializeParameterConnections(const ParameterConnectionMap& connections) {
    std::vector<std::tuple<std::string, std::string, const std::vector<ComponentLink>*>> entries;
    for (const auto& [endpoints, links] : connections) {
        const Operator* consumer = endpoints.target->GetOperator();
        const Graph* graph = consumer != nullptr ? consumer->GetGraph() : nullptr;
        if (graph == nullptr) {
            continue;
        }
        entries.emplace_back(RelativeText(*endpoints.source, *graph), RelativeText(*endpoints.target, *graph),
                             &links);
    }
    std::sort(entries.begin(), entries.end());
    nlohmann::json result = nlohmann::json::array();
    for (auto& [output, input, links] : entries) {
        nlohmann::json linkArray = nlohmann::json::array();
        for (const ComponentLink& link : *links) {
            linkArray.push_back({link.source, link.target});
        }
        result.push_back(
            {{"output", std::move(output)}, {"input", std::move(input)}, {"links", std::move(linkArray)}});
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
    nlohmann::json entry = nlohmann::json::object();
    if (!parameter.GetKey().empty()) {
        entry["key"] = parameter.GetKey();
    }
    const bool stored = !parameter.HasParameterFlag(ParameterFlag::Output) &&
                        !parameter.HasParameterFlag(ParameterFlag::NotSaved);
    if (stored && !IsEveryComponentDriven(parameter)) {
        entry["value"] = parameter.SerializeValue();
    }
    if (parameter.IsAddedByUser()) {
        entry["type"] = parameter.GetType()->GetName();
        entry["name"] = parameter.GetName();
        if (parameter.HasParameterFlag(ParameterFlag::Output)) {
            entry["output"] = true;
        }
    }
    return entry;
}

nlohmann::json SerializeParameterNode(const ParameterNode& node) {
    if (const auto* list = dynamic_cast<const ParameterBundleList*>(&node)) {
        nlohmann::json bundles = nlohmann::json::array();
        for (const ParameterBundle* bundle : list->GetBundles()) {
            bundles.push_back(SerializeBundle(*bundle));
        }
        return {{"key", list->GetKey()}, {"bundles", std::move(bundles)}};
    }
    if (const auto* bundle = dynamic_cast<const ParameterBundle*>(&node)) {
        return SerializeBundle(*bundle);
    }
    if (const auto* group = dynamic_cast<const ParameterGroup*>(&node)) {
        return SerializeParameterScope(*group);
    }
    if (const auto* parameter = dynamic_cast<const Parameter*>(&node)) {
        return SerializeParameter(*parameter);
    }
    return nullptr;
}

nlohmann::json SerializeParameterScope(const ParameterGroup& group) {
    nlohmann::json scope = nlohmann::json::array();
    for (const ParameterNode* child : group.GetChildren()) {
        scope.push_back(SerializeParameterNode(*child));
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
