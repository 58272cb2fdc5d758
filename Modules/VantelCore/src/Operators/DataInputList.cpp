#include <Vantel/Operators/DataInputList.h>

#include <algorithm>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Support/Logging.h>

#include "Projects/EditRecorder.h"

namespace Vantel {

// ---- DataInputList::Implementation ----

DataInputList::Implementation::Implementation(DataInputList& list, Operator* op, const ObjectType* inputType,
                                              InputHandlers handlers)
    : list(list), op(op), inputType(inputType), handlers(std::move(handlers)) {}

DataInputList::Implementation::~Implementation() = default;

DataInput* DataInputList::Implementation::CreateInput(std::string_view key) {
    if (inputType == nullptr) {
        LogError("DataInputList::CreateInput: list '" + list.GetKey() + "' has no input type.");
        return nullptr;
    }
    if (!inputType->Inherits(DataInput::Type())) {
        LogError("DataInputList::CreateInput: '" + inputType->GetName() + "' is not a data input type.");
        return nullptr;
    }
    std::unique_ptr<Object> made = inputType->CreateInstance();
    auto* created = dynamic_cast<DataInput*>(made.get());
    if (created == nullptr) {
        return nullptr;  // a factory that does not make what its type promises
    }
    std::unique_ptr<DataInput> input(created);
    made.release();
    if (!key.empty()) {
        input->SetKey(key);
    }
    const DataTypeInfo* dataType = TypeLibrary::Get()->FindDataType(inputType);
    SettleChildKey(
        *input, dataType != nullptr ? std::string_view(dataType->name) : std::string_view("Input"),
        [this] { return "data input list '" + name + "'"; },
        [this](std::string_view candidate) { return list.FindChild(candidate) == nullptr; });

    DataInput::Implementation& port = *Access::GetImplementation(*input);
    port.SetOperator(op);
    port.SetList(&list);
    inputPointers.push_back(input.get());
    constInputPointers.push_back(input.get());
    inputs.push_back(std::move(input));
    RenumberInputs();
    if (op != nullptr) {
        Access::GetImplementation(*op)->MarkDataInputsChanged();
    }

    DataInput* result = inputPointers.back();
    EditRecorder::DataInputAdded(*result, inputs.size() - 1);
    if (handlers.created) {
        handlers.created(*result);
    }
    return result;
}

bool DataInputList::Implementation::RemoveInput(DataInput* input) {
    const std::size_t index = list.IndexOf(input);
    if (index == npos) {
        return false;
    }
    EditRecorder::PendingRemoval record = EditRecorder::DataInputRemoving(*input, index);
    Graph* graph = op != nullptr ? op->GetGraph() : nullptr;
    if (handlers.removing) {
        handlers.removing(*input);
    }
    if (graph != nullptr) {
        removing = input;
        graph->DisconnectDataInput(*input);
        removing = nullptr;
    }
    if (spareInput == input) {
        spareInput = nullptr;
    }
    inputPointers.erase(inputPointers.begin() + static_cast<std::ptrdiff_t>(index));
    constInputPointers.erase(constInputPointers.begin() + static_cast<std::ptrdiff_t>(index));
    // Destroyed still naming its list, the input leaves the operator's own inputs alone.
    inputs.erase(inputs.begin() + static_cast<std::ptrdiff_t>(index));
    RenumberInputs();
    if (op != nullptr) {
        Access::GetImplementation(*op)->MarkDataInputsChanged();
    }
    record.Record();
    return true;
}

void DataInputList::Implementation::RenumberInputs() {
    EditRecorder::Unrecorded unrecorded;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        inputs[i]->SetName("Input " + std::to_string(i + 1));
    }
}

void DataInputList::Implementation::DisconnectAllInputs() {
    Graph* graph = op != nullptr ? op->GetGraph() : nullptr;
    if (graph == nullptr) {
        return;
    }
    // Disconnecting removes list inputs as it goes, so walk a copy.
    for (DataInput* input : std::vector<DataInput*>(inputPointers)) {
        if (list.IndexOf(input) != npos) {
            graph->DisconnectDataInput(*input);
        }
    }
}

const ObjectType* DataInputList::Implementation::GetAcceptedOutputType() const {
    TakePrototypeValues();
    return acceptedOutputType;
}

void DataInputList::Implementation::DetachFromOperator() {
    for (const std::unique_ptr<DataInput>& input : inputs) {
        Access::GetImplementation(*input)->SetOperator(nullptr);
    }
    op = nullptr;
}

void DataInputList::Implementation::TakePrototypeValues() const {
    if (prototypeRead) {
        return;
    }
    prototypeRead = true;
    if (inputType == nullptr || !inputType->Inherits(DataInput::Type())) {
        return;
    }
    std::unique_ptr<Object> prototype = inputType->CreateInstance();
    if (const auto* input = dynamic_cast<const DataInput*>(prototype.get())) {
        acceptedOutputType = input->GetAcceptedOutputType();
        uiColor = input->GetUIColor();
    }
}

// ---- DataInputList ----

DataInputList::DataInputList(Operator* op, std::string_view name, const ObjectType* inputType,
                             InputHandlers handlers)
    : implementation(std::make_unique<Implementation>(*this, nullptr, inputType, std::move(handlers))) {
    implementation->name = name;
    if (op != nullptr) {
        // The key is settled while the list is still detached, then the operator takes it.
        Access::GetImplementation(*op)->AddDataInputList(*this, name);
        implementation->op = op;
    }
}

DataInputList::~DataInputList() {
    implementation->DisconnectAllInputs();
    if (implementation->op != nullptr) {
        Access::GetImplementation(*implementation->op)->RemoveDataInputList(*this);
    }
    // The inputs die with the list; one that still names its list leaves its operator alone.
}

VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(DataInputList, Object, "Vantel.DataInputList")

const std::string& DataInputList::GetName() const {
    return implementation->name;
}

void DataInputList::SetName(std::string_view name) {
    if (name == implementation->name) {
        return;
    }
    EditRecorder::Renamed(*this, implementation->op, implementation->name, name);
    implementation->name = name;
    if (implementation->op != nullptr) {
        Access::GetImplementation(*implementation->op)->MemberRenamedEvent().Fire(this);
    }
}

Operator* DataInputList::GetOperator() {
    return implementation->op;
}

const Operator* DataInputList::GetOperator() const {
    return implementation->op;
}

const ObjectType* DataInputList::GetInputType() const {
    return implementation->inputType;
}

Color DataInputList::GetUIColor() const {
    implementation->TakePrototypeValues();
    return implementation->uiColor;
}

const std::vector<DataInput*>& DataInputList::GetInputs() {
    return implementation->inputPointers;
}

const std::vector<const DataInput*>& DataInputList::GetInputs() const {
    return implementation->constInputPointers;
}

DataInput* DataInputList::GetInput(std::size_t index) const {
    return index < implementation->inputPointers.size() ? implementation->inputPointers[index] : nullptr;
}

std::size_t DataInputList::GetInputCount() const {
    return implementation->inputs.size();
}

std::size_t DataInputList::IndexOf(const DataInput* input) const {
    const std::vector<const DataInput*>& inputs = implementation->constInputPointers;
    const auto found = std::find(inputs.begin(), inputs.end(), input);
    return found == inputs.end() ? npos : static_cast<std::size_t>(found - inputs.begin());
}

bool DataInputList::MoveInput(DataInput* input, std::size_t index) {
    const std::size_t current = IndexOf(input);
    if (current == npos || current == index || index >= GetInputCount()) {
        return false;
    }
    const auto move = [current, index](auto& vector) {
        auto item = std::move(vector[current]);
        vector.erase(vector.begin() + static_cast<std::ptrdiff_t>(current));
        vector.insert(vector.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
    };
    move(implementation->inputs);
    move(implementation->inputPointers);
    move(implementation->constInputPointers);
    implementation->RenumberInputs();
    Operator* op = implementation->op;
    if (op != nullptr) {
        Access::GetImplementation(*op)->MarkDataInputsChanged();
    }
    EditRecorder::ListInputMoved(*input, current, index);
    if (implementation->handlers.reordered) {
        implementation->handlers.reordered();
    }
    return true;
}

Object* DataInputList::GetParentObjectImplementation() {
    return implementation->op;
}

Object* DataInputList::FindChildImplementation(std::string_view key) {
    for (DataInput* input : implementation->inputPointers) {
        if (input->GetKey() == key) {
            return input;
        }
    }
    return nullptr;
}

}  // namespace Vantel
