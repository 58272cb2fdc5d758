#include <Vantel/Operators/Operator.h>

#include <algorithm>
#include <cstdint>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Support/Logging.h>

#include "Projects/EditRecorder.h"
#include "Support/OperatorArena.h"
#include "Support/SameValue.h"

namespace Vantel {
namespace {

constexpr int kMaxStructureRebuilds = 8;

// How many structure rebuilds run on this thread; parameters changed during one do not start another.
thread_local int structureRebuildDepth = 0;

void CollectParameters(ParameterGroup& group, std::vector<Parameter*>& parameters) {
    for (ParameterNode* child : group.GetChildren()) {
        if (auto* parameter = ObjectCast<Parameter>(child)) {
            parameters.push_back(parameter);
        } else if (auto* subgroup = ObjectCast<ParameterGroup>(child)) {
            CollectParameters(*subgroup, parameters);
        }
    }
}

// A port without a key takes its name, or one made from the base when it has none.
template <typename Port>
void SettlePortKey(Operator::Implementation& implementation, Port& port, std::string_view base) {
    // Declared ports are keyed by their names so that files find them again; a user's ports get made keys, so
    // that two of one type do not collide.
    if (port.GetKey().empty() && !port.IsAddedByUser() && Path::IsValidKey(port.GetName())) {
        port.SetKey(port.GetName());
    }
    implementation.SettleChildKey(port, port.GetName().empty() ? base : std::string_view(port.GetName()));
}

template <typename Item>
std::size_t IndexIn(const std::vector<Item>& items, const Item& item) {
    const auto found = std::find(items.begin(), items.end(), item);
    return found == items.end() ? ParameterNode::npos : static_cast<std::size_t>(found - items.begin());
}

// Moves `item` to `index`; false, and nothing moved, when it is not there, `index` is past the end or it is
// there already.
template <typename Item>
bool MoveItem(std::vector<Item>& items, const Item& item, std::size_t index) {
    const std::size_t current = IndexIn(items, item);
    if (current == ParameterNode::npos || index >= items.size() || current == index) {
        return false;
    }
    Item moved = std::move(items[current]);
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(current));
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), std::move(moved));
    return true;
}

// Hands ownership of `port` from `owned` to `target`, or destroys it when there is no target.
template <typename Port>
void ReleaseOwnership(std::vector<std::unique_ptr<Port>>& owned, Port* port, std::unique_ptr<Port>* target) {
    const auto found =
        std::find_if(owned.begin(), owned.end(), [port](const auto& p) { return p.get() == port; });
    if (found == owned.end()) {
        return;
    }
    std::unique_ptr<Port> released = std::move(*found);
    owned.erase(found);
    if (target != nullptr) {
        *target = std::move(released);
    }
}

}  // namespace

// ---- Operator::Implementation ----

Operator::Implementation::Implementation(Operator& owner) : owner(owner) {
    parameterGroup.SetOwningOperator(&owner);
}

Operator::Implementation::~Implementation() = default;

void Operator::Implementation::ReleaseOwnedPorts() {
    // Ports must not call back into an operator that is going away: let every port go, then destroy the
    // owned. Only the destructor calls this, so the slot lists are left to die with the operator.
    for (DataInputSlot& slot : inputSlots) {
        if (auto* input = std::get_if<DataInput*>(&slot)) {
            Access::GetImplementation(**input)->SetOperator(nullptr);
        } else {
            Access::GetImplementation(*std::get<DataInputList*>(slot))->DetachFromOperator();
        }
    }
    for (DataOutput* output : outputs) {
        Access::GetImplementation(*output)->SetOperator(nullptr);
    }
    ownedInputs.clear();
    ownedOutputs.clear();
}

void Operator::Implementation::RebuildDataInputsIfNeeded() {
    if (!flatInputsStale) {
        return;
    }
    flatInputs.clear();
    for (const DataInputSlot& slot : inputSlots) {
        if (auto* input = std::get_if<DataInput*>(&slot)) {
            flatInputs.push_back(*input);
        } else {
            const std::vector<DataInput*>& listInputs = std::get<DataInputList*>(slot)->GetInputs();
            flatInputs.insert(flatInputs.end(), listInputs.begin(), listInputs.end());
        }
    }
    constFlatInputs.assign(flatInputs.begin(), flatInputs.end());
    flatInputsStale = false;
    soleInput = flatInputs.size() == 1 ? Access::GetImplementation(*flatInputs.front()).get() : nullptr;
}

void Operator::Implementation::NoteOutputsChanged() {
    constOutputsStale = true;
    soleOutput = outputs.size() == 1 ? Access::GetImplementation(*outputs.front()).get() : nullptr;
}

void Operator::Implementation::RebuildDataOutputsIfNeeded() {
    if (!constOutputsStale) {
        return;
    }
    constOutputs.assign(outputs.begin(), outputs.end());
    constOutputsStale = false;
}

bool Operator::Implementation::DetachDataInput(DataInput* input, std::unique_ptr<DataInput>* owned) {
    const std::size_t slot = IndexIn(inputSlots, DataInputSlot(input));
    if (slot == ParameterNode::npos) {
        return false;
    }
    if (graph != nullptr) {
        graph->DisconnectDataInput(*input);
    }
    inputSlots.erase(inputSlots.begin() + static_cast<std::ptrdiff_t>(slot));
    NoteInputsChanged();
    Access::GetImplementation(*input)->SetOperator(nullptr);
    ReleaseOwnership(ownedInputs, input, owned);
    return true;
}

bool Operator::Implementation::DetachDataOutput(DataOutput* output, std::unique_ptr<DataOutput>* owned) {
    const std::size_t index = IndexIn(outputs, output);
    if (index == ParameterNode::npos) {
        return false;
    }
    if (graph != nullptr) {
        graph->DisconnectDataOutput(*output);
    }
    outputs.erase(outputs.begin() + static_cast<std::ptrdiff_t>(index));
    NoteOutputsChanged();
    Access::GetImplementation(*output)->SetOperator(nullptr);
    ReleaseOwnership(ownedOutputs, output, owned);
    return true;
}

void Operator::Implementation::AddDataInputList(DataInputList& list, std::string_view name) {
    if (Path::IsValidKey(name)) {  // a list joins as it is built, before anything gave it a key
        list.SetKey(name);
    }
    SettleChildKey(list, name.empty() ? std::string_view("Inputs") : name);
    inputSlots.emplace_back(&list);
    NoteInputsChanged();
    markedMembers |= kInputs;
}

void Operator::Implementation::RemoveDataInputList(DataInputList& list) {
    const std::size_t slot = IndexIn(inputSlots, DataInputSlot(&list));
    if (slot != ParameterNode::npos) {
        inputSlots.erase(inputSlots.begin() + static_cast<std::ptrdiff_t>(slot));
        NoteInputsChanged();
    }
}

void Operator::Implementation::UpdateStructureIfDirty() {
    if (updatingStructure || !structureDirty || EditRecorder::IsStructureUpdateDeferred()) {
        return;
    }
    struct RebuildScope {
        explicit RebuildScope(bool& updating) : updating(updating) {
            updating = true;
            ++structureRebuildDepth;
        }
        ~RebuildScope() {
            --structureRebuildDepth;
            updating = false;
        }
        bool& updating;
    } scope(updatingStructure);

    // The rebuild is undoable as one step below the change that caused it.
    EditRecorder::StructureRebuild recorded(owner);
    int rebuilds = 0;
    do {
        structureDirty = false;
        owner.UpdateStructure();
        ++rebuilds;
    } while (structureDirty && rebuilds < kMaxStructureRebuilds);
    if (structureDirty) {
        LogError("UpdateStructureIfDirty: '" + owner.GetPath().ToString() +
                 "' still changes its own structural parameters after 8 rebuilds, giving up.");
    }
    recorded.Finish();
}

bool Operator::Implementation::IsRebuildingStructure() {
    return structureRebuildDepth > 0;
}

void Operator::Implementation::RebuildFlatParametersIfNeeded() {
    if (!flatParametersStale) {
        return;
    }
    flatParameters.clear();
    CollectParameters(parameterGroup, flatParameters);
    constFlatParameters.assign(flatParameters.begin(), flatParameters.end());
    flatParametersStale = false;
}

void Operator::Implementation::MarkParameterTreeChanged() {
    flatParametersStale = true;
    markedMembers |= kParameters;  // a parameter that joins may carry a mark
    markedParameter = nullptr;
    ForgetOutdatingParameterMark();  // the one that carried it may have left
}

void Operator::Implementation::SettleChildKey(Object& child, std::string_view base) {
    Vantel::SettleChildKey(
        child, base, [this] { return "operator '" + owner.GetKey() + "'"; },
        [this](std::string_view key) { return owner.FindChild(key) == nullptr; });
}

// ---- Operator ----

void* Operator::operator new(std::size_t size) {
    return OperatorArena::Allocate(size);
}

void* Operator::operator new(std::size_t size, std::align_val_t alignment) {
    return ::operator new(size, alignment);
}

void Operator::operator delete(void* block, std::size_t size) noexcept {
    OperatorArena::Free(block, size);
}

void Operator::operator delete(void* block, std::size_t, std::align_val_t alignment) noexcept {
    // The unsized form: not every compiler offers sized deallocation by default.
    ::operator delete(block, alignment);
}

void* Operator::Implementation::operator new(std::size_t size) {
    return OperatorArena::Allocate(size);
}

void Operator::Implementation::operator delete(void* block, std::size_t size) noexcept {
    OperatorArena::Free(block, size);
}

void Operator::Implementation::ClearMarkedParameters() {
    if (markedParameter != nullptr) {
        Access::GetImplementation(*markedParameter)->ClearValueChanged();
    } else if ((markedMembers & kParameters) != 0) {
        for (Parameter* parameter : owner.GetAllParameters()) {
            Access::GetImplementation(*parameter)->ClearValueChanged();
        }
    }
    markedParameter = nullptr;
}

Operator::Operator() : implementation(std::make_unique<Implementation>(*this)) {}

Operator::~Operator() {
    implementation->ReleaseOwnedPorts();
}

VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(Operator, Object, "Vantel.General.Operator")

const std::string& Operator::GetName() const {
    return implementation->name;
}

void Operator::SetName(std::string_view name) {
    if (name == implementation->name) {
        return;
    }
    // Outside a model the path would be wrong; adding the operator records its name anyway.
    EditRecorder::Renamed(*this, this, implementation->name, name);
    implementation->name = name;
}

const glm::vec2& Operator::GetPosition() const {
    return implementation->position;
}

unsigned long long Operator::GetLastRunFrame() const {
    return implementation->GetLastRunFrame();
}

void Operator::SetPosition(const glm::vec2& position) {
    if (IsSameValue(position, implementation->position)) {
        return;
    }
    EditRecorder::OperatorMoved(*this, implementation->position, position);
    implementation->position = position;
    implementation->positionChangedEvent.Fire();
}

Graph* Operator::GetGraph() const {
    return implementation->graph;
}

ParameterRootGroup& Operator::GetParameterGroup() {
    return implementation->parameterGroup;
}

const ParameterRootGroup& Operator::GetParameterGroup() const {
    return implementation->parameterGroup;
}

bool Operator::AddParameter(Parameter* parameter) {
    return implementation->parameterGroup.Add(parameter);
}

bool Operator::AddParameter(std::unique_ptr<Parameter>&& parameter) {
    return implementation->parameterGroup.Add(std::unique_ptr<ParameterNode>(std::move(parameter)));
}

bool Operator::InsertParameter(Parameter* parameter, std::size_t index) {
    return implementation->parameterGroup.Insert(parameter, index);
}

bool Operator::InsertParameter(std::unique_ptr<Parameter>&& parameter, std::size_t index) {
    return implementation->parameterGroup.Insert(std::unique_ptr<ParameterNode>(std::move(parameter)), index);
}

bool Operator::RemoveParameter(Parameter* parameter) {
    return implementation->parameterGroup.Remove(parameter);
}

const std::vector<Parameter*>& Operator::GetAllParameters() {
    implementation->RebuildFlatParametersIfNeeded();
    return implementation->flatParameters;
}

const std::vector<const Parameter*>& Operator::GetAllParameters() const {
    implementation->RebuildFlatParametersIfNeeded();
    return implementation->constFlatParameters;
}

bool Operator::AddDataInput(DataInput* input) {
    return InsertDataInput(input, ParameterNode::npos);
}

bool Operator::AddDataInput(std::unique_ptr<DataInput>&& input) {
    return InsertDataInput(std::move(input), ParameterNode::npos);
}

bool Operator::InsertDataInput(DataInput* input, std::size_t index) {
    if (input == nullptr || input->GetOperator() != nullptr) {
        return false;
    }
    SettlePortKey(*implementation, *input, "Input");
    Access::GetImplementation(*input)->SetOperator(this);
    std::vector<DataInputSlot>& slots = implementation->inputSlots;
    index = std::min(index, slots.size());
    slots.insert(slots.begin() + static_cast<std::ptrdiff_t>(index), input);
    implementation->NoteInputsChanged();
    implementation->markedMembers |= Implementation::kInputs;  // it may carry a mark
    if (input->IsAddedByUser()) {
        EditRecorder::DataInputAdded(*input, index);
    }
    implementation->dataInputAddedEvent.Fire(input);
    return true;
}

bool Operator::InsertDataInput(std::unique_ptr<DataInput>&& input, std::size_t index) {
    std::unique_ptr<DataInput> taken = std::move(input);
    if (!InsertDataInput(taken.get(), index)) {
        return false;
    }
    implementation->ownedInputs.push_back(std::move(taken));
    return true;
}

bool Operator::RemoveDataInput(DataInput* input) {
    if (input == nullptr || input->GetOperator() != this || input->GetList() != nullptr) {
        return false;
    }
    implementation->dataInputRemovingEvent.Fire(input);
    EditRecorder::PendingRemoval record;
    if (input->IsAddedByUser()) {
        record = EditRecorder::DataInputRemoving(*input,
                                                 IndexIn(implementation->inputSlots, DataInputSlot(input)));
    }
    std::unique_ptr<DataInput> owned;
    implementation->DetachDataInput(input, &owned);  // the guards above say it is in a slot
    record.Record();
    implementation->dataInputRemovedEvent.Fire(input);
    return true;  // `owned` destroys an input the operator owned
}

bool Operator::MoveDataInput(DataInput* input, std::size_t index) {
    if (input == nullptr || input->IsAddedByUser() ||
        !MoveItem(implementation->inputSlots, DataInputSlot(input), index)) {
        return false;
    }
    implementation->NoteInputsChanged();
    implementation->dataPortsReorderedEvent.Fire();
    return true;
}

bool Operator::AddDataOutput(DataOutput* output) {
    return InsertDataOutput(output, ParameterNode::npos);
}

bool Operator::AddDataOutput(std::unique_ptr<DataOutput>&& output) {
    return InsertDataOutput(std::move(output), ParameterNode::npos);
}

bool Operator::InsertDataOutput(DataOutput* output, std::size_t index) {
    if (output == nullptr || output->GetOperator() != nullptr) {
        return false;
    }
    SettlePortKey(*implementation, *output, "Output");
    Access::GetImplementation(*output)->SetOperator(this);
    std::vector<DataOutput*>& outputs = implementation->outputs;
    index = std::min(index, outputs.size());
    outputs.insert(outputs.begin() + static_cast<std::ptrdiff_t>(index), output);
    implementation->NoteOutputsChanged();
    implementation->markedMembers |= Implementation::kOutputs;  // it may carry a mark
    if (output->IsAddedByUser()) {
        EditRecorder::DataOutputAdded(*output, index);
    }
    implementation->dataOutputAddedEvent.Fire(output);
    return true;
}

bool Operator::InsertDataOutput(std::unique_ptr<DataOutput>&& output, std::size_t index) {
    std::unique_ptr<DataOutput> taken = std::move(output);
    if (!InsertDataOutput(taken.get(), index)) {
        return false;
    }
    implementation->ownedOutputs.push_back(std::move(taken));
    return true;
}

bool Operator::RemoveDataOutput(DataOutput* output) {
    if (output == nullptr || output->GetOperator() != this) {
        return false;
    }
    implementation->dataOutputRemovingEvent.Fire(output);
    EditRecorder::PendingRemoval record;
    if (output->IsAddedByUser()) {
        record = EditRecorder::DataOutputRemoving(*output, IndexIn(implementation->outputs, output));
    }
    std::unique_ptr<DataOutput> owned;
    implementation->DetachDataOutput(output, &owned);  // its operator is this one, so it is listed
    record.Record();
    implementation->dataOutputRemovedEvent.Fire(output);
    return true;
}

bool Operator::MoveDataOutput(DataOutput* output, std::size_t index) {
    if (output == nullptr || output->IsAddedByUser() || !MoveItem(implementation->outputs, output, index)) {
        return false;
    }
    implementation->NoteOutputsChanged();
    implementation->dataPortsReorderedEvent.Fire();
    return true;
}

const std::vector<DataInputSlot>& Operator::GetAllDataInputSlots() const {
    return implementation->inputSlots;
}

const std::vector<DataInput*>& Operator::GetAllDataInputs() {
    implementation->RebuildDataInputsIfNeeded();
    return implementation->flatInputs;
}

const std::vector<const DataInput*>& Operator::GetAllDataInputs() const {
    implementation->RebuildDataInputsIfNeeded();
    return implementation->constFlatInputs;
}

const std::vector<DataOutput*>& Operator::GetAllDataOutputs() {
    return implementation->outputs;
}

const std::vector<const DataOutput*>& Operator::GetAllDataOutputs() const {
    implementation->RebuildDataOutputsIfNeeded();
    return implementation->constOutputs;
}

void Operator::Execute(ExecutionContext&) {}

bool Operator::Outdated() const {
    if (implementation->dirty) {
        return true;
    }
    if (implementation->MayHaveMarkedMembers(Implementation::kInputs)) {
        if (const DataInput::Implementation* sole = implementation->soleInput) {
            if (sole->IsMarked()) {
                return true;
            }
        } else {
            for (const DataInput* input : GetAllDataInputs()) {
                if (input->HasDataChanged()) {
                    return true;
                }
            }
        }
    }
    if (implementation->MayHaveMarkedMembers(Implementation::kParameters)) {
        if (implementation->MayHaveMarkedMembers(Implementation::kOutdatingParameter)) {
            return true;
        }
        for (const Parameter* parameter : GetAllParameters()) {
            if (parameter->HasValueChanged() && parameter->HasParameterFlag(ParameterFlag::MarksOutdated)) {
                return true;
            }
        }
    }
    return false;
}

void Operator::MarkDirty() {
    implementation->dirty = true;
}

bool Operator::IsStructureDirty() const {
    return implementation->structureDirty;
}

Event<DataInput*>& Operator::DataInputAddedEvent() {
    return implementation->dataInputAddedEvent;
}

Event<DataInput*>& Operator::DataInputRemovedEvent() {
    return implementation->dataInputRemovedEvent;
}

Event<DataOutput*>& Operator::DataOutputAddedEvent() {
    return implementation->dataOutputAddedEvent;
}

Event<DataOutput*>& Operator::DataOutputRemovedEvent() {
    return implementation->dataOutputRemovedEvent;
}

Event<>& Operator::DataPortsReorderedEvent() {
    return implementation->dataPortsReorderedEvent;
}

Event<ParameterNode*>& Operator::ParameterNodeAddedEvent() {
    return implementation->parameterNodeAddedEvent;
}

Event<ParameterNode*>& Operator::ParameterNodeRemovedEvent() {
    return implementation->parameterNodeRemovedEvent;
}

Event<>& Operator::ParameterTreeChangedEvent() {
    return implementation->parameterTreeChangedEvent;
}

Event<>& Operator::PositionChangedEvent() {
    return implementation->positionChangedEvent;
}

Object* Operator::GetParentObjectImplementation() {
    return implementation->graph;
}

Object* Operator::FindChildImplementation(std::string_view key) {
    for (const DataInputSlot& slot : implementation->inputSlots) {
        Object* object = std::holds_alternative<DataInput*>(slot)
                             ? static_cast<Object*>(std::get<DataInput*>(slot))
                             : std::get<DataInputList*>(slot);
        if (object->GetKey() == key) {
            return object;
        }
    }
    for (DataOutput* output : implementation->outputs) {
        if (output->GetKey() == key) {
            return output;
        }
    }
    return implementation->parameterGroup.Find(key);
}

void Operator::UpdateStructure() {}

}  // namespace Vantel
