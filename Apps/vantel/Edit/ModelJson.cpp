#include "ModelJson.h"

#include "JsonText.h"

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
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterGroup.h>
#include <Vantel/Parameters/ParameterInfo.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Parameters/PtrParameter.h>
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

// A data type's colour is the one its output ports start with (a registered data type has an output type).
json DataTypeColor(const Vantel::DataTypeInfo& info) {
    if (!info.outputType->CanCreate()) {
        return nullptr;
    }
    const std::unique_ptr<Vantel::Object> port = info.outputType->CreateInstance();
    const auto* output = dynamic_cast<Vantel::DataOutput*>(port.get());
    return output != nullptr ? ColorJson(output->GetUIColor()) : json(nullptr);
}

void WriteFlagNames(JsonText& out, const Vantel::Parameter& parameter) {
    static constexpr std::pair<Vantel::ParameterFlag, const char*> kNames[] = {
        {Vantel::ParameterFlag::MarksOutdated, "marksOutdated"},
        {Vantel::ParameterFlag::Output, "output"},
        {Vantel::ParameterFlag::Structural, "structural"},
        {Vantel::ParameterFlag::NotConnectable, "notConnectable"},
        {Vantel::ParameterFlag::NotSaved, "notSaved"},
        {Vantel::ParameterFlag::NotUndoable, "notUndoable"},
    };
    out.BeginArray();
    for (const auto& [flag, name] : kNames) {
        if (parameter.HasParameterFlag(flag)) {
            out.String(name);
        }
    }
    out.EndArray();
}

// Null for parameter types that have one way of editing only.
const char* EditorTypeName(const Vantel::Parameter& parameter) {
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

const char* GroupKind(Vantel::ParameterNode& node) {
    if (dynamic_cast<Vantel::ParameterBundleList*>(&node) != nullptr) {
        return "bundleList";
    }
    return dynamic_cast<Vantel::ParameterBundle*>(&node) != nullptr ? "bundle" : "group";
}

// Paths are built down the tree from the operator's, rather than walked up from each member: a large graph
// has many members.
void WriteNode(JsonText& out, Vantel::ParameterGroup& group, Vantel::ParameterNode& node,
               const std::string& path);

void WriteChildren(JsonText& out, Vantel::ParameterGroup& group, const std::string& path) {
    out.BeginArray();
    for (Vantel::ParameterNode* child : group.GetChildren()) {
        WriteNode(out, group, *child, path + "/" + child->GetKey());
    }
    out.EndArray();
}

// An editor offers these as a menu; a label missing from the type shows the value itself.
void WriteEnumOptions(JsonText& out, const Vantel::EnumParameter& choice) {
    const std::vector<std::string>& values = choice.GetPossibleValues();
    const std::vector<std::string>& labels = choice.GetLabels();
    out.Key("options");
    out.BeginArray();
    for (std::size_t i = 0; i < values.size(); ++i) {
        out.BeginObject();
        out.Key("value");
        out.String(values[i]);
        out.Key("label");
        out.String(i < labels.size() && !labels[i].empty() ? labels[i] : values[i]);
        out.EndObject();
    }
    out.EndArray();
}

// The referent and the objects a reference may name, by absolute path, for an editor's picker.
void WriteReferenceChoices(JsonText& out, const Vantel::PtrParameter& reference) {
    out.Key("referent");
    if (Vantel::Object* referent = reference.Value()) {
        out.String(referent->GetPath().ToString());
    } else {
        out.Null();
    }
    out.Key("allowed");
    out.BeginArray();
    for (Vantel::Object* object : reference.GetAllowedObjects()) {
        out.String(object->GetPath().ToString());
    }
    out.EndArray();
}

void WriteParameterMembers(JsonText& out, const Vantel::Parameter& parameter) {
    out.Key("kind");
    out.String("parameter");
    out.Key("name");
    out.String(parameter.GetName());
    out.Key("type");
    out.String(parameter.GetType()->GetName());
    out.Key("value");
    out.Value(DescribeValue(parameter));
    out.Key("components");
    out.Integer(parameter.GetComponentCount());
    out.Key("flags");
    WriteFlagNames(out, parameter);
    out.Key("editorType");
    if (const char* editor = EditorTypeName(parameter)) {
        out.String(editor);
    } else {
        out.Null();
    }
    out.Key("addedByUser");
    out.Boolean(parameter.IsAddedByUser());
    if (const auto* choice = dynamic_cast<const Vantel::EnumParameter*>(&parameter)) {
        WriteEnumOptions(out, *choice);
    }
    if (const auto* reference = dynamic_cast<const Vantel::PtrParameter*>(&parameter)) {
        WriteReferenceChoices(out, *reference);
    }
}

void WriteNode(JsonText& out, Vantel::ParameterGroup& group, Vantel::ParameterNode& node,
               const std::string& path) {
    out.BeginObject();
    out.Key("key");
    out.String(node.GetKey());
    out.Key("path");
    out.String(path);
    if (const auto* parameter = dynamic_cast<const Vantel::Parameter*>(&node)) {
        WriteParameterMembers(out, *parameter);
    } else {
        out.Key("kind");
        out.String(GroupKind(node));
        out.Key("children");
        WriteChildren(out, static_cast<Vantel::ParameterGroup&>(node), path);
    }
    if (group.IsRowContinuation(&node)) {
        out.Key("rowContinuation");
        out.Boolean(true);
    }
    if (const std::string& label = group.GetRowLabel(&node); !label.empty()) {
        out.Key("rowLabel");
        out.String(label);
    }
    if (group.HasSeparatorAbove(&node)) {
        out.Key("separatorAbove");
        out.Boolean(true);
    }
    out.EndObject();
}

void WriteColor(JsonText& out, const Vantel::Color& color) {
    out.BeginArray();
    for (const float channel : {color.r, color.g, color.b, color.a}) {
        out.Number(channel);
    }
    out.EndArray();
}

// `list` is the path of the data input list the port belongs to, or empty.
void WritePort(JsonText& out, Vantel::DataPort& port, const std::string& path, const std::string& list) {
    out.BeginObject();
    out.Key("key");
    out.String(port.GetKey());
    out.Key("path");
    out.String(path);
    out.Key("name");
    out.String(port.GetName());
    out.Key("type");
    out.String(port.GetType()->GetName());
    out.Key("color");
    WriteColor(out, port.GetUIColor());
    out.Key("addedByUser");
    out.Boolean(port.IsAddedByUser());
    if (!list.empty()) {
        out.Key("list");
        out.String(list);
    }
    out.EndObject();
}

void WriteOperator(JsonText& out, Vantel::Operator& op) {
    const std::string path = op.GetPath().ToString();
    out.BeginObject();
    out.Key("key");
    out.String(op.GetKey());
    out.Key("path");
    out.String(path);
    out.Key("type");
    out.String(op.GetType()->GetName());
    out.Key("name");
    out.String(op.GetName());
    out.Key("position");
    out.BeginArray();
    out.Number(op.GetPosition().x);
    out.Number(op.GetPosition().y);
    out.EndArray();
    out.Key("graph");
    out.Boolean(op.GetType()->Inherits(Vantel::Graph::Type()));
    out.Key("inputs");
    out.BeginArray();
    for (Vantel::DataInput* input : op.GetAllDataInputs()) {
        if (Vantel::DataInputList* list = input->GetList()) {
            WritePort(out, *input, input->GetPath().ToString(), list->GetPath().ToString());
        } else {
            WritePort(out, *input, path + "/" + input->GetKey(), {});
        }
    }
    out.EndArray();
    out.Key("outputs");
    out.BeginArray();
    for (Vantel::DataOutput* output : op.GetAllDataOutputs()) {
        WritePort(out, *output, path + "/" + output->GetKey(), {});
    }
    out.EndArray();
    out.Key("parameters");
    WriteChildren(out, op.GetParameterGroup(), path);
    out.EndObject();
}

void WriteConnections(JsonText& out, Vantel::Graph& graph) {
    out.Key("dataConnections");
    out.BeginArray();
    for (const Vantel::DataConnection& connection : graph.GetDataConnections()) {
        out.BeginObject();
        out.Key("output");
        out.String(connection.output->GetPath().ToString());
        out.Key("input");
        out.String(connection.input->GetPath().ToString());
        out.EndObject();
    }
    out.EndArray();
    out.Key("parameterConnections");
    out.BeginArray();
    for (const auto& [endpoints, links] : graph.GetParameterConnections()) {
        out.BeginObject();
        out.Key("output");
        out.String(endpoints.source->GetPath().ToString());
        out.Key("input");
        out.String(endpoints.target->GetPath().ToString());
        out.Key("links");
        out.BeginArray();
        for (const Vantel::ComponentLink& link : links) {
            out.BeginArray();
            out.Integer(link.source);
            out.Integer(link.target);
            out.EndArray();
        }
        out.EndArray();
        out.EndObject();
    }
    out.EndArray();
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

std::string DescribeGraph(Vantel::Graph& graph) {
    JsonText out;
    out.BeginObject();
    out.Key("path");
    out.String(graph.GetPath().ToString());
    out.Key("name");
    out.String(graph.GetName());
    out.Key("operators");
    out.BeginArray();
    for (Vantel::Operator* op : graph.GetOperators()) {
        WriteOperator(out, *op);
    }
    out.EndArray();
    WriteConnections(out, graph);
    out.EndObject();
    return out.Take();
}

}  // namespace VantelHost
