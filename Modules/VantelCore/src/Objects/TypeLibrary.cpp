#include <Vantel/Objects/TypeLibrary.h>

#include <algorithm>
#include <utility>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Support/Logging.h>

#include "Objects/TypeLibraryImplementation.h"

namespace Vantel {
namespace {

template <typename T>
void Erase(std::vector<T>& items, const T& item) {
    items.erase(std::remove(items.begin(), items.end(), item), items.end());
}

// Built by appending: g++ 12 at -O3 warns falsely (-Wrestrict) about the concatenation form.
std::string Quoted(std::string_view text) {
    std::string quoted;
    quoted.reserve(text.size() + 2);
    quoted.append(1, '"').append(text).append(1, '"');
    return quoted;
}

// The procedure shared by operator and parameter records; false when the record was refused.
template <typename Info>
bool RegisterInfo(TypeLibrary::Implementation& state, Info info, std::string_view kind,
                  const ObjectType* base,
                  absl::flat_hash_map<const ObjectType*, std::unique_ptr<Info>>& byType,
                  std::vector<const Info*>& records) {
    const ObjectType* type = info.type;  // never null: the callers stop a record without a type
    const std::string prefix = "Failed to register " + std::string(kind);
    if (info.name.empty()) {
        LogWarning(prefix + ", no name was given for " + Quoted(type->GetName()));
        return false;
    }
    if (!type->Inherits(base)) {
        LogWarning(prefix + ", the type " + Quoted(type->GetName()) + " does not inherit " + base->GetName());
        return false;
    }
    if (byType.contains(type)) {
        LogWarning(prefix + ", it is already registered: " + Quoted(type->GetName()));
        return false;
    }
    const bool added = state.AddType(type);
    // A type that is there already belongs to the core or another plug-in: only the record leaves with the
    // loading plug-in.
    if (!added && state.currentPlugin != nullptr) {
        state.currentPlugin->recordedTypes.push_back(type);
    }
    auto owned = std::make_unique<Info>(std::move(info));
    records.push_back(owned.get());
    byType.emplace(type, std::move(owned));
    if (added) {
        state.typeAddedEvent.Fire(type);
    }
    return true;
}

}  // namespace

// ---- TypeLibrary::Implementation ----

// A port type maps to one data type only, and each side must be of its kind: swapped or shared port types
// would silently redirect the connections of another data type.
bool TypeLibrary::Implementation::HasUsablePortTypes(const DataTypeInfo& info) const {
    const std::string prefix = "Failed to register data type " + Quoted(info.id) + ", the ";
    const std::pair<const ObjectType*, const ObjectType*> sides[] = {{info.inputType, DataInput::Type()},
                                                                     {info.outputType, DataOutput::Type()}};
    for (const auto& [type, base] : sides) {
        if (!type->Inherits(base)) {
            LogWarning(prefix + (base == DataInput::Type() ? "input" : "output") + " type " +
                       Quoted(type->GetName()) + " does not inherit " + base->GetName());
            return false;
        }
    }
    for (const ObjectType* type : {info.inputType, info.outputType}) {
        if (const auto found = dataTypesByPortType.find(type); found != dataTypesByPortType.end()) {
            LogWarning(prefix + "port type " + Quoted(type->GetName()) + " is already used by " +
                       Quoted(found->second->id));
            return false;
        }
    }
    return true;
}

bool TypeLibrary::Implementation::AddType(const ObjectType* type) {
    if (typesByName.contains(type->GetName())) {
        LogWarning("Failed to register type, name is already taken: " + Quoted(type->GetName()));
        return false;
    }
    types.push_back(type);
    typesByName.emplace(type->GetName(), type);
    if (currentPlugin != nullptr) {
        currentPlugin->types.push_back(type);
    }
    return true;
}

void TypeLibrary::Implementation::RemoveType(const ObjectType* type) {
    const auto byName = typesByName.find(type->GetName());
    if (byName == typesByName.end() || byName->second != type) {
        return;
    }
    typesByName.erase(byName);
    Erase(types, type);
    const TakenRecords records = TakeRecords(type);
    typeRemovedEvent.Fire(type);  // the records are gone from the maps but still alive during the event
}

TakenRecords TypeLibrary::Implementation::TakeRecords(const ObjectType* type) {
    TakenRecords taken;
    if (auto found = operatorInfosByType.find(type); found != operatorInfosByType.end()) {
        Erase(operatorInfos, static_cast<const OperatorInfo*>(found->second.get()));
        taken.operatorInfo = std::move(found->second);
        operatorInfosByType.erase(found);
    }
    if (auto found = parameterInfosByType.find(type); found != parameterInfosByType.end()) {
        const ParameterInfo* info = found->second.get();
        Erase(parameterInfos, info);
        parameterInfosByName.erase(info->name);  // RegisterParameter keeps names unique to their record
        taken.parameterInfo = std::move(found->second);
        parameterInfosByType.erase(found);
    }
    return taken;
}

void TypeLibrary::Implementation::RemoveDataType(const std::string& id) {
    const auto found = dataTypesById.find(id);
    if (found == dataTypesById.end()) {
        return;
    }
    const DataTypeInfo* info = found->second.get();
    for (const ObjectType* portType : {info->inputType, info->outputType}) {
        if (auto byType = dataTypesByPortType.find(portType);
            byType != dataTypesByPortType.end() && byType->second == info) {
            dataTypesByPortType.erase(byType);
        }
    }
    Erase(dataTypes, info);
    dataTypesById.erase(found);
}

// ---- TypeLibrary ----

TypeLibrary::TypeLibrary() : implementation(std::make_unique<Implementation>()) {}

TypeLibrary::~TypeLibrary() = default;

TypeLibrary* TypeLibrary::Get() {
    static const std::unique_ptr<TypeLibrary> library(new TypeLibrary());
    return library.get();
}

void TypeLibrary::RegisterType(const ObjectType* type) {
    if (type != nullptr && implementation->AddType(type)) {
        implementation->typeAddedEvent.Fire(type);
    }
}

void TypeLibrary::RegisterOperator(OperatorInfo info) {
    if (info.type == nullptr) {
        return;
    }
    for (const OperatorInfo* existing : implementation->operatorInfos) {
        if (existing->name == info.name && existing->category == info.category) {
            LogWarning("Operator " + Quoted(info.name) + " in category " + Quoted(info.category) +
                       " is registered twice, by " + Quoted(existing->type->GetName()) + " and " +
                       Quoted(info.type->GetName()));
        }
    }
    RegisterInfo(*implementation, std::move(info), "operator", Operator::Type(),
                 implementation->operatorInfosByType, implementation->operatorInfos);
}

void TypeLibrary::RegisterParameter(ParameterInfo info) {
    if (info.type == nullptr) {
        return;
    }
    if (const ParameterInfo* other = FindParameterInfoByName(info.name);
        other != nullptr && other->type != info.type) {
        LogWarning("Failed to register parameter " + Quoted(info.type->GetName()) + ", the name " +
                   Quoted(info.name) + " is already used by " + Quoted(other->type->GetName()));
        return;
    }
    const std::string name = info.name;
    const ObjectType* type = info.type;
    if (RegisterInfo(*implementation, std::move(info), "parameter", Parameter::Type(),
                     implementation->parameterInfosByType, implementation->parameterInfos)) {
        implementation->parameterInfosByName.emplace(name,
                                                     implementation->parameterInfosByType.at(type).get());
    }
}

void TypeLibrary::RegisterDataType(DataTypeInfo info) {
    Implementation& state = *implementation;
    if (info.id.empty() || info.name.empty() || info.inputType == nullptr || info.outputType == nullptr) {
        LogWarning("Failed to register data type " + Quoted(info.id) +
                   ", it needs an id, a name, an input type and an output type.");
        return;
    }
    if (state.dataTypesById.contains(info.id)) {
        LogWarning("Failed to register data type, id is already taken: " + Quoted(info.id));
        return;
    }
    if (const DataTypeInfo* other = FindDataTypeByName(info.name)) {
        LogWarning("Failed to register data type " + Quoted(info.id) + ", the name " + Quoted(info.name) +
                   " is already used by " + Quoted(other->id));
        return;
    }
    if (!state.HasUsablePortTypes(info)) {
        return;
    }
    const bool inputAdded = state.AddType(info.inputType);
    const bool outputAdded = state.AddType(info.outputType);
    auto owned = std::make_unique<DataTypeInfo>(std::move(info));
    const DataTypeInfo* record = owned.get();
    state.dataTypesByPortType[record->inputType] = record;
    state.dataTypesByPortType[record->outputType] = record;
    state.dataTypes.push_back(record);
    if (state.currentPlugin != nullptr) {
        state.currentPlugin->dataTypeIds.push_back(record->id);
    }
    state.dataTypesById.emplace(record->id, std::move(owned));
    if (inputAdded) {
        state.typeAddedEvent.Fire(record->inputType);
    }
    if (outputAdded) {
        state.typeAddedEvent.Fire(record->outputType);
    }
}

const ObjectType* TypeLibrary::GetType(const std::string& name) const {
    const auto found = implementation->typesByName.find(name);
    return found == implementation->typesByName.end() ? nullptr : found->second;
}

const std::vector<const ObjectType*>& TypeLibrary::GetTypes() const {
    return implementation->types;
}

const std::vector<const OperatorInfo*>& TypeLibrary::GetOperatorInfos() const {
    return implementation->operatorInfos;
}

const std::vector<const ParameterInfo*>& TypeLibrary::GetParameterInfos() const {
    return implementation->parameterInfos;
}

const std::vector<const DataTypeInfo*>& TypeLibrary::GetDataTypes() const {
    return implementation->dataTypes;
}

std::vector<std::string> TypeLibrary::GetDataTypeIds() const {
    std::vector<std::string> ids;
    for (const DataTypeInfo* info : implementation->dataTypes) {
        ids.push_back(info->id);
    }
    return ids;
}

const OperatorInfo* TypeLibrary::FindOperatorInfo(const ObjectType* type) const {
    const auto found = implementation->operatorInfosByType.find(type);
    return found == implementation->operatorInfosByType.end() ? nullptr : found->second.get();
}

const ParameterInfo* TypeLibrary::FindParameterInfo(const ObjectType* type) const {
    const auto found = implementation->parameterInfosByType.find(type);
    return found == implementation->parameterInfosByType.end() ? nullptr : found->second.get();
}

const ParameterInfo* TypeLibrary::FindParameterInfoByName(std::string_view name) const {
    const auto found = implementation->parameterInfosByName.find(std::string(name));
    return found == implementation->parameterInfosByName.end() ? nullptr : found->second;
}

const DataTypeInfo* TypeLibrary::FindDataTypeById(const std::string& id) const {
    const auto found = implementation->dataTypesById.find(id);
    return found == implementation->dataTypesById.end() ? nullptr : found->second.get();
}

const DataTypeInfo* TypeLibrary::FindDataTypeByName(std::string_view name) const {
    for (const DataTypeInfo* info : implementation->dataTypes) {
        if (info->name == name) {
            return info;
        }
    }
    return nullptr;
}

const DataTypeInfo* TypeLibrary::FindDataType(const ObjectType* type) const {
    const auto found = implementation->dataTypesByPortType.find(type);
    return found == implementation->dataTypesByPortType.end() ? nullptr : found->second;
}

const ObjectType* TypeLibrary::FindDataInputType(const ObjectType* type) const {
    const DataTypeInfo* info = FindDataType(type);
    return info != nullptr ? info->inputType : nullptr;
}

const ObjectType* TypeLibrary::FindDataOutputType(const ObjectType* type) const {
    const DataTypeInfo* info = FindDataType(type);
    return info != nullptr ? info->outputType : nullptr;
}

Event<const ObjectType*>& TypeLibrary::TypeAddedEvent() const {
    return implementation->typeAddedEvent;
}

Event<const ObjectType*>& TypeLibrary::TypeRemovedEvent() const {
    return implementation->typeRemovedEvent;
}

}  // namespace Vantel
