// Operators, data ports and parameters: building the objects of an entry, with what the user added to them.
#include <Vantel/Projects/Deserialization.h>

#include <array>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <glm/vec2.hpp>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Support/Logging.h>

#include "Projects/DeserializationSupport.h"

namespace Vantel::Deserialization {
namespace {

using nlohmann::json;

// An object of `type` as a T; null when the type cannot be made or makes something else.
template <typename T>
std::unique_ptr<T> CreateAs(const ObjectType& type) {
    std::unique_ptr<Object> made = type.CreateInstance();
    auto* typed = dynamic_cast<T*>(made.get());
    if (typed == nullptr) {
        return nullptr;
    }
    made.release();
    return std::unique_ptr<T>(typed);
}

// The creating half shared by parameters and ports; `function` names the caller in the messages. Null with
// the reason in `failure`, not logged: the caller decides how the loss is reported.
template <typename T>
std::unique_ptr<T> CreateFromEntry(const json& entry, const std::string& function, std::string& failure) {
    if (!entry.is_object() || !entry.contains("type")) {
        failure = function + ": expected a JSON object with a 'type' field.";
        return nullptr;
    }
    const auto& typeName = entry.at("type").get_ref<const std::string&>();
    const ObjectType* type = TypeLibrary::Get()->GetType(typeName);
    if (type == nullptr) {
        failure = function + ": type '" + typeName + "' not found in type library.";
        return nullptr;
    }
    std::unique_ptr<T> made = CreateAs<T>(*type);
    if (made == nullptr) {
        failure = function + ": failed to create instance of type '" + typeName + "'.";
    }
    return made;
}

// A new member of the entry's type, filled from the entry; null with the reason in `failure`.
template <typename T>
std::unique_ptr<T> CreateMember(const json& entry, const std::string& function, Context& context,
                                std::string& failure) {
    std::unique_ptr<T> made = CreateFromEntry<T>(entry, function, failure);
    if (made == nullptr) {
        return nullptr;
    }
    if constexpr (std::is_same_v<T, Parameter>) {
        DeserializeParameter(entry, *made, context);
    } else if constexpr (std::is_same_v<T, DataInput>) {
        DeserializeDataInput(entry, *made, context);
    } else {
        DeserializeDataOutput(entry, *made, context);
    }
    return made;
}

template <typename T>
std::unique_ptr<T> CreateMemberOrLog(const json& entry, const std::string& function, Context& context) {
    std::string failure;
    std::unique_ptr<T> made = CreateMember<T>(entry, function, context, failure);
    if (made == nullptr) {
        LogError(failure);
    }
    return made;
}

// [x, y], where null stands for a coordinate that JSON has no number for (NaN, the infinities): the writer
// puts null there, so every saved position reads back. Anything else is dropped and the operator keeps its
// default place.
void ApplyPosition(Operator& op, const json& entry, Context& context) {
    const auto position = entry.find("position");
    if (position == entry.end()) {
        return;
    }
    const auto coordinate = [](const json& value) {
        return value.is_null() ? std::numeric_limits<float>::quiet_NaN() : value.get<float>();
    };
    const auto fits = [](const json& value) { return value.is_null() || value.is_number(); };
    if (!position->is_array() || position->size() != 2 || !fits((*position)[0]) || !fits((*position)[1])) {
        Detail::DropEntry(context, DroppedEntry::Kind::Position, op, "position",
                          "DeserializeOperator: the position of operator '" + op.GetName() +
                              "' is not two numbers, it is dropped.");
        return;
    }
    op.SetPosition(glm::vec2(coordinate((*position)[0]), coordinate((*position)[1])));
}

// An attached object's key is its identity, so only a detached one takes the stored key.
template <typename T>
void ApplyKeyAndName(const json& entry, T& object) {
    const std::string key = Detail::KeyOf(entry);
    if (!key.empty() && object.GetParentObject() == nullptr) {
        object.SetKey(key);
    }
    if (const auto name = entry.find("name"); name != entry.end()) {
        object.SetName(name->get<std::string>());
    }
}

// A stored port carries nothing beyond its key, type and name.
template <typename Port>
void DeserializePort(const json& entry, Port& port) {
    ApplyKeyAndName(entry, port);
}

DataInputList* FindList(const Operator& op, const std::string& key) {
    for (const DataInputSlot& slot : op.GetAllDataInputSlots()) {
        if (DataInputList* const* list = std::get_if<DataInputList*>(&slot); list != nullptr) {
            if ((*list)->GetKey() == key) {
                return *list;
            }
        }
    }
    return nullptr;
}

void CreateInputsOfList(Operator& op, const json& item, Context& context) {
    const std::string key = Detail::KeyOf(item);
    DataInputList* list = FindList(op, key);
    if (list == nullptr) {
        Detail::DropEntry(context, DroppedEntry::Kind::ListInputs, op, key,
                          "CreateListInputs: data input list '" + key + "' not found in operator '" +
                              op.GetName() + "', its inputs are dropped.");
        return;
    }
    // A list input's entry holds only its key: its name comes from its place in the list.
    for (const json& inputEntry : Detail::AsArray(item.at("inputs"))) {
        Access::GetImplementation(*list)->CreateInput(Detail::KeyOf(inputEntry));
    }
}

// Entries without "inputs" are the user's own inputs, made elsewhere.
void CreateListInputs(Operator& op, const json& entry, Context& context) {
    for (const json& item : Detail::ArrayAt(entry, "dataInputs")) {
        if (item.is_object() && item.contains("inputs")) {
            CreateInputsOfList(op, item, context);
        }
    }
}

void AddUserParameter(Operator& op, std::unique_ptr<Parameter> parameter) {
    if (auto* graph = dynamic_cast<Graph*>(&op)) {
        graph->AddUserParameter(std::move(parameter), ParameterNode::npos);
        return;
    }
    Access::GetImplementation(*parameter)->SetAddedByUser(true);
    op.AddParameter(std::move(parameter));
}

// Only a graph takes ports and parameters from its user; elsewhere such an entry has nowhere to go.
void CreateAddedMembers(Operator& op, const json& entry, Context& context) {
    auto* graph = dynamic_cast<Graph*>(&op);
    for (const char* section : {"dataInputs", "dataOutputs", "parameters"}) {
        const std::string sectionKey = section;
        for (const json& item : Detail::ArrayAt(entry, section)) {
            if (!item.is_object() || !item.contains("type")) {
                continue;
            }
            const std::string key = Detail::KeyOf(item);
            if (graph == nullptr) {
                Detail::DropEntry(context, DroppedEntry::Kind::AddedMember, op, key,
                                  "CreateAddedMembers: operator '" + op.GetName() +
                                      "' is not a graph, the added entry '" + key + "' in \"" + sectionKey +
                                      "\" is dropped.");
                continue;
            }
            std::string failure;
            if (sectionKey == "dataInputs") {
                if (auto input = CreateMember<DataInput>(item, "DeserializeDataInput", context, failure)) {
                    graph->AddUserDataInput(std::move(input));
                }
            } else if (sectionKey == "dataOutputs") {
                if (auto output = CreateMember<DataOutput>(item, "DeserializeDataOutput", context, failure)) {
                    graph->AddUserDataOutput(std::move(output));
                }
            } else if (auto parameter =
                           CreateMember<Parameter>(item, "DeserializeParameter", context, failure)) {
                AddUserParameter(*graph, std::move(parameter));
            }
            if (!failure.empty()) {
                Detail::DropEntry(context, DroppedEntry::Kind::AddedMember, op, key, failure);
            }
        }
    }
}

std::unique_ptr<Operator> BuildOperator(const json& entry, Context& context, std::string& failure);

// The graph's operators in file order; its connections wait until every operator of the load exists.
void BuildGraph(Graph& graph, const json& entry, Context& context) {
    for (const json& child : Detail::ArrayAt(entry, "operators")) {
        std::string failure;
        std::unique_ptr<Operator> op = BuildOperator(child, context, failure);
        if (op == nullptr) {
            // The specific reason is what the host is shown; the second line names the graph that lost it.
            Detail::DropEntry(context, DroppedEntry::Kind::Operator, graph, Detail::KeyOf(child), failure);
            LogError("DeserializeOperator: failed to deserialize an operator of graph '" + graph.GetName() +
                     "'.");
            continue;
        }
        graph.AddOperator(std::move(op));
    }
    Detail::ContextAccess::DeferConnections(context, graph, Detail::ArrayAt(entry, "dataConnections"),
                                            Detail::ArrayAt(entry, "parameterConnections"));
}

// DeserializeOperator, with the reason for a null result in `failure` instead of the log.
std::unique_ptr<Operator> BuildOperator(const json& entry, Context& context, std::string& failure) {
    if (!entry.is_object()) {
        failure = "DeserializeOperator: expected a JSON object.";
        return nullptr;
    }
    const auto typeEntry = entry.find("type");
    if (typeEntry == entry.end()) {
        failure = "DeserializeOperator: an operator entry has no \"type\", it is dropped.";
        return nullptr;
    }
    const auto& typeName = typeEntry->get_ref<const std::string&>();
    const ObjectType* type = TypeLibrary::Get()->GetType(typeName);
    if (type == nullptr || !type->Inherits(Operator::Type())) {
        failure = "DeserializeOperator: type '" + typeName + "' not found in type library.";
        return nullptr;
    }
    std::unique_ptr<Operator> op = CreateAs<Operator>(*type);
    if (op == nullptr) {
        failure = "DeserializeOperator: failed to create instance of type '" + typeName + "'.";
        return nullptr;
    }

    if (const std::string key = Detail::KeyOf(entry); !key.empty()) {
        op->SetKey(key);
    }
    if (const auto name = entry.find("name"); name != entry.end()) {
        op->SetName(name->get<std::string>());
    }
    ApplyPosition(*op, entry, context);
    CreateListInputs(*op, entry, context);
    CreateAddedMembers(*op, entry, context);
    ApplyParameterValues(*op, entry, context);
    if (auto* graph = dynamic_cast<Graph*>(op.get())) {
        BuildGraph(*graph, entry, context);
    }
    return op;
}

}  // namespace

std::unique_ptr<Operator> DeserializeOperator(const json& entry, Context& context) {
    std::string failure;
    std::unique_ptr<Operator> op = BuildOperator(entry, context, failure);
    if (op == nullptr) {
        LogError(failure);
    }
    return op;
}

std::unique_ptr<Parameter> DeserializeParameter(const json& entry, Context& context) {
    return CreateMemberOrLog<Parameter>(entry, "DeserializeParameter", context);
}

std::unique_ptr<DataInput> DeserializeDataInput(const json& entry, Context& context) {
    return CreateMemberOrLog<DataInput>(entry, "DeserializeDataInput", context);
}

std::unique_ptr<DataOutput> DeserializeDataOutput(const json& entry, Context& context) {
    return CreateMemberOrLog<DataOutput>(entry, "DeserializeDataOutput", context);
}

void DeserializeParameter(const json& entry, Parameter& parameter, Context& context) {
    ApplyKeyAndName(entry, parameter);
    if (const auto output = entry.find("output"); output != entry.end()) {
        parameter.SetParameterFlag(ParameterFlag::Output, output->get<bool>());
    }
    if (const auto value = entry.find("value"); value != entry.end()) {
        Detail::ApplyValue(parameter, *value, context, Detail::References::Defer);
    }
}

void DeserializeDataInput(const json& entry, DataInput& input, Context&) {
    DeserializePort(entry, input);
}

void DeserializeDataOutput(const json& entry, DataOutput& output, Context&) {
    DeserializePort(entry, output);
}

bool RestoreOwnStructure(Operator& op, const json& structure, Context& context) {
    if (Serialization::SerializeOwnStructure(op) == structure) {
        return false;
    }
    std::vector<Parameter*> current;
    for (ParameterNode* child : op.GetParameterGroup().GetChildren()) {
        auto* parameter = dynamic_cast<Parameter*>(child);
        if (parameter != nullptr && parameter->IsAddedByUser()) {
            current.push_back(parameter);
        }
    }
    for (Parameter* parameter : current) {
        op.RemoveParameter(parameter);
    }
    for (const json& entry : Detail::AsArray(structure)) {
        if (std::unique_ptr<Parameter> parameter = DeserializeParameter(entry, context)) {
            AddUserParameter(op, std::move(parameter));
        }
    }
    return true;
}

void PruneOrphanListInputs(Operator& op) {
    Detail::PruneListInputs(op, nullptr);
}

namespace {

// Only lists hold inputs to prune, and most have none: the inputs are copied only for a list that does.
void PruneList(Operator& op, DataInputList& list, Context* context) {
    const std::vector<DataInput*>& inputs = list.GetInputs();
    const auto orphan = [](const DataInput* input) { return !input->IsConnected(); };
    if (std::none_of(inputs.begin(), inputs.end(), orphan)) {
        return;
    }
    for (DataInput* input : std::vector<DataInput*>(inputs)) {
        if (!orphan(input)) {
            continue;
        }
        std::string reason =
            "PruneOrphanListInputs: input '" + input->GetKey() + "' of list '" + list.GetKey() +
            "' in operator '" + op.GetName() +
            "' has no connection and is removed. The file lost the connection to it, or the "
            "connection could not be made (see the error above it); connecting the source again "
            "recreates the input.";
        LogWarning(reason);
        if (context != nullptr) {
            Detail::ContextAccess::NoteDropped(*context, DroppedEntry::Kind::ListInput, &op,
                                               list.GetKey() + "/" + input->GetKey(), std::move(reason));
        }
        Access::GetImplementation(list)->RemoveInput(input);
    }
}

}  // namespace

void Detail::PruneListInputs(Operator& op, Context* context) {
    for (const DataInputSlot& slot : op.GetAllDataInputSlots()) {
        if (DataInputList* const* list = std::get_if<DataInputList*>(&slot); list != nullptr) {
            PruneList(op, **list, context);
        }
    }
}

}  // namespace Vantel::Deserialization
