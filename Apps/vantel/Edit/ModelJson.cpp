#include "ModelJson.h"

#include <memory>
#include <string>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterGroup.h>
#include <Vantel/Parameters/ParameterInfo.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Parameters/StringParameter.h>

namespace VantelHost {
namespace {

using nlohmann::json;

json ColorJson(const Vantel::Color& color) {
    return json::array({color.r, color.g, color.b, color.a});
}

json EntriesJson(const std::vector<Vantel::OperatorInfo::Entry>& entries) {
    json result = json::array();
    for (const Vantel::OperatorInfo::Entry& entry : entries) {
        json item = {{"name", entry.name}, {"type", entry.type}, {"description", entry.description}};
        if (entry.IsBundleList()) {
            item["summary"] = entry.summary;
            json kinds = json::array();
            for (const Vantel::OperatorInfo::BundleKind& kind : entry.kinds) {
                kinds.push_back({{"name", kind.name}, {"parameters", EntriesJson(kind.parameters)}});
            }
            item["kinds"] = std::move(kinds);
        }
        result.push_back(std::move(item));
    }
    return result;
}

// A data type's colour is the one its output ports start with.
json DataTypeColor(const Vantel::DataTypeInfo& info) {
    if (info.outputType == nullptr || !info.outputType->CanCreate()) {
        return nullptr;
    }
    const std::unique_ptr<Vantel::Object> port = info.outputType->CreateInstance();
    const auto* output = dynamic_cast<Vantel::DataOutput*>(port.get());
    return output != nullptr ? ColorJson(output->GetUIColor()) : json(nullptr);
}

json FlagNames(const Vantel::Parameter& parameter) {
    static constexpr std::pair<Vantel::ParameterFlag, const char*> kNames[] = {
        {Vantel::ParameterFlag::MarksOutdated, "marksOutdated"},
        {Vantel::ParameterFlag::Output, "output"},
        {Vantel::ParameterFlag::Structural, "structural"},
        {Vantel::ParameterFlag::NotConnectable, "notConnectable"},
        {Vantel::ParameterFlag::NotSaved, "notSaved"},
        {Vantel::ParameterFlag::NotUndoable, "notUndoable"},
    };
    json names = json::array();
    for (const auto& [flag, name] : kNames) {
        if (parameter.HasParameterFlag(flag)) {
            names.push_back(name);
        }
    }
    return names;
}

json EditorType(const Vantel::Parameter& parameter) {
    if (const auto* number = dynamic_cast<const Vantel::IntParameter*>(&parameter)) {
        static constexpr const char* kNames[] = {"number", "slider", "seed"};
        return kNames[static_cast<int>(number->GetEditorType())];
    }
    if (const auto* text = dynamic_cast<const Vantel::StringParameter*>(&parameter)) {
        static constexpr const char* kNames[] = {"singleLine", "multiLine", "filePath", "code"};
        return kNames[static_cast<int>(text->GetEditorType())];
    }
    return nullptr;
}

// Paths are built down the tree from the operator's, rather than walked up from each member: a large graph
// has many members.
json NodeJson(Vantel::ParameterGroup& group, Vantel::ParameterNode& node, const std::string& path);

json ChildrenJson(Vantel::ParameterGroup& group, const std::string& path) {
    json children = json::array();
    for (Vantel::ParameterNode* child : group.GetChildren()) {
        children.push_back(NodeJson(group, *child, path + "/" + child->GetKey()));
    }
    return children;
}

json NodeJson(Vantel::ParameterGroup& group, Vantel::ParameterNode& node, const std::string& path) {
    json item = {{"key", node.GetKey()}, {"path", path}};
    if (auto* parameter = dynamic_cast<Vantel::Parameter*>(&node)) {
        item["kind"] = "parameter";
        item["name"] = parameter->GetName();
        item["type"] = parameter->GetType()->GetName();
        item["value"] = DescribeValue(*parameter);
        item["components"] = parameter->GetComponentCount();
        item["flags"] = FlagNames(*parameter);
        item["editorType"] = EditorType(*parameter);
        item["addedByUser"] = parameter->IsAddedByUser();
    } else {
        auto& inner = static_cast<Vantel::ParameterGroup&>(node);
        item["kind"] = dynamic_cast<Vantel::ParameterBundleList*>(&node) != nullptr ? "bundleList"
                       : dynamic_cast<Vantel::ParameterBundle*>(&node) != nullptr   ? "bundle"
                                                                                    : "group";
        item["children"] = ChildrenJson(inner, path);
    }
    if (group.IsRowContinuation(&node)) {
        item["rowContinuation"] = true;
    }
    if (!group.GetRowLabel(&node).empty()) {
        item["rowLabel"] = group.GetRowLabel(&node);
    }
    if (group.HasSeparatorAbove(&node)) {
        item["separatorAbove"] = true;
    }
    return item;
}

json PortJson(Vantel::DataPort& port, std::string path) {
    return {{"key", port.GetKey()},
            {"path", std::move(path)},
            {"name", port.GetName()},
            {"type", port.GetType()->GetName()},
            {"color", ColorJson(port.GetUIColor())},
            {"addedByUser", port.IsAddedByUser()}};
}

}  // namespace

json DescribeValue(const Vantel::Parameter& parameter) {
    return parameter.SerializeValue();
}

json DescribeTypes() {
    const Vantel::TypeLibrary& library = *Vantel::TypeLibrary::Get();
    json operators = json::array();
    for (const Vantel::OperatorInfo* info : library.GetOperatorInfos()) {
        operators.push_back({{"type", info->type->GetName()},
                             {"name", info->name},
                             {"category", info->category},
                             {"summary", info->summary},
                             {"tags", info->tags},
                             {"doc", info->text},
                             {"inputs", EntriesJson(info->inputs)},
                             {"outputs", EntriesJson(info->outputs)},
                             {"parameters", EntriesJson(info->parameters)}});
    }
    json parameters = json::array();
    for (const Vantel::ParameterInfo* info : library.GetParameterInfos()) {
        parameters.push_back({{"type", info->type->GetName()},
                              {"name", info->name},
                              {"summary", info->summary},
                              {"tags", info->tags},
                              {"doc", info->text}});
    }
    json dataTypes = json::array();
    for (const Vantel::DataTypeInfo* info : library.GetDataTypes()) {
        dataTypes.push_back({{"id", info->id},
                             {"name", info->name},
                             {"summary", info->summary},
                             {"tags", info->tags},
                             {"doc", info->text},
                             {"color", DataTypeColor(*info)}});
    }
    return {{"operators", std::move(operators)},
            {"parameters", std::move(parameters)},
            {"dataTypes", std::move(dataTypes)}};
}

json DescribeOperator(Vantel::Operator& op) {
    const std::string path = op.GetPath().ToString();
    json inputs = json::array();
    for (Vantel::DataInput* input : op.GetAllDataInputs()) {
        Vantel::DataInputList* list = input->GetList();
        json port =
            PortJson(*input, list != nullptr ? input->GetPath().ToString() : path + "/" + input->GetKey());
        if (list != nullptr) {
            port["list"] = list->GetPath().ToString();
        }
        inputs.push_back(std::move(port));
    }
    json outputs = json::array();
    for (Vantel::DataOutput* output : op.GetAllDataOutputs()) {
        outputs.push_back(PortJson(*output, path + "/" + output->GetKey()));
    }
    const glm::vec2& position = op.GetPosition();
    return {{"key", op.GetKey()},
            {"path", path},
            {"type", op.GetType()->GetName()},
            {"name", op.GetName()},
            {"position", json::array({position.x, position.y})},
            {"graph", op.GetType()->Inherits(Vantel::Graph::Type())},
            {"inputs", std::move(inputs)},
            {"outputs", std::move(outputs)},
            {"parameters", ChildrenJson(op.GetParameterGroup(), path)}};
}

json DescribeGraph(Vantel::Graph& graph) {
    json operators = json::array();
    for (Vantel::Operator* op : graph.GetOperators()) {
        operators.push_back(DescribeOperator(*op));
    }
    json data = json::array();
    for (const Vantel::DataConnection& connection : graph.GetDataConnections()) {
        data.push_back({{"output", connection.output->GetPath().ToString()},
                        {"input", connection.input->GetPath().ToString()}});
    }
    json parameters = json::array();
    for (const auto& [endpoints, links] : graph.GetParameterConnections()) {
        json linkList = json::array();
        for (const Vantel::ComponentLink& link : links) {
            linkList.push_back(json::array({link.source, link.target}));
        }
        parameters.push_back({{"output", endpoints.source->GetPath().ToString()},
                              {"input", endpoints.target->GetPath().ToString()},
                              {"links", std::move(linkList)}});
    }
    return {{"path", graph.GetPath().ToString()},
            {"name", graph.GetName()},
            {"operators", std::move(operators)},
            {"dataConnections", std::move(data)},
            {"parameterConnections", std::move(parameters)}};
}

}  // namespace VantelHost
