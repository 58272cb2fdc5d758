#include "Projects/EditRecorder.h"

#include <new>
#include <optional>
#include <string>
#include <utility>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Operators/DataConnection.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Operators/ParameterConnection.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Projects/Record.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/SuppressUpdateStructure.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Support/Logging.h>

namespace Vantel::EditRecorder {
namespace {

bool IsRecording() {
    return Transaction::IsRecording();
}

// Edits record while a transaction records, and only those of operators in a project's tree.
bool RecordsEditsOf(const Operator* op) {
    return IsRecording() && IsInModel(op);
}

bool IsUndoable(Parameter& parameter) {
    return RecordsEditsOf(parameter.GetOperator()) && !parameter.HasParameterFlag(ParameterFlag::NotUndoable);
}

bool IsBundle(ParameterNode& node) {
    return ObjectCast<ParameterBundle>(&node) != nullptr;
}

void RecordDataConnection(DataConnection connection, Presence presence) {
    if (!IsRecording()) {
        return;
    }
    Transaction::AddRecord(
        DataConnectionRecord{connection.output->GetPath(), connection.input->GetPath(), presence});
}

void RecordParameterConnection(const ParameterConnectionEndpoints& endpoints,
                               const std::vector<ComponentLink>& links, Presence presence) {
    if (!IsRecording()) {
        return;
    }
    Transaction::AddRecord(
        ParameterConnectionRecord{endpoints.source->GetPath(), endpoints.target->GetPath(), links, presence});
}

}  // namespace

struct PendingRemoval::Held {
    // Spelled out: clang 14, which builds the fuzzers, cannot make an aggregate from parentheses.
    explicit Held(Vantel::Record record) : record(std::move(record)) {}
    Vantel::Record record;
};

bool IsInModel(const Operator* op) {
    return op != nullptr && (op->GetGraph() != nullptr || Access::GetImplementation(*op)->IsProjectRoot());
}

bool IsStructureUpdateDeferred() {
    return SuppressUpdateStructure::IsActive();
}

// ---- Values ----

nlohmann::json ValueBefore(const Parameter& parameter) {
    return IsRecording() ? parameter.SerializeValue() : nlohmann::json();
}

void ValueWritten(Parameter& parameter, nlohmann::json previous) {
    if (!IsUndoable(parameter)) {
        return;
    }
    if (parameter.HasParameterFlag(ParameterFlag::Structural)) {
        Transaction::AddRecord(
            CompoundRecord{parameter.GetPath(), std::move(previous), parameter.SerializeValue(), {}});
        return;
    }
    Transaction::AddRecord(
        ParameterValueRecord{parameter.GetPath(), std::move(previous), parameter.SerializeValue()});
}

void ComponentWritten(Parameter& parameter, int component, double previous, double next) {
    if (!IsUndoable(parameter)) {
        return;
    }
    if (parameter.HasParameterFlag(ParameterFlag::Structural)) {
        LogError("Parameter '" + parameter.GetName() +
                 "' is structural and was written per component, the write is not in the undo history. "
                 "Structural parameters are written whole.");
        return;
    }
    Transaction::AddRecord(ParameterComponentRecord{parameter.GetPath(), component, previous, next});
}

// ---- Names and places ----

void Renamed(Object& target, const Operator* owner, std::string_view previous, std::string_view next) {
    if (!RecordsEditsOf(owner)) {
        return;
    }
    Transaction::AddRecord(RenameRecord{target.GetPath(), std::string(previous), std::string(next)});
}

void OperatorMoved(Operator& op, const glm::vec2& previous, const glm::vec2& next) {
    if (!RecordsEditsOf(&op)) {
        return;
    }
    Transaction::AddRecord(OperatorPositionRecord{op.GetPath(), previous, next});
}

// ---- Operators and connections ----

void OperatorAdded(Operator& op, std::size_t index) {
    if (!IsRecording()) {
        return;
    }
    Transaction::AddRecord(
        OperatorRecord{op.GetPath(), index, Serialization::SerializeOperator(op), Presence::Added});
}

PendingRemoval OperatorRemoving(Operator& op, std::size_t index) {
    if (!IsRecording()) {
        return {};
    }
    return PendingRemoval(std::make_unique<PendingRemoval::Held>(
        OperatorRecord{op.GetPath(), index, Serialization::SerializeOperator(op), Presence::Removed}));
}

void DataConnectionMade(DataConnection connection) {
    RecordDataConnection(connection, Presence::Added);
}

void DataConnectionRemoved(DataConnection connection) {
    RecordDataConnection(connection, Presence::Removed);
}

void ParameterConnectionMade(const ParameterConnectionEndpoints& endpoints,
                             const std::vector<ComponentLink>& links) {
    RecordParameterConnection(endpoints, links, Presence::Added);
}

void ParameterConnectionRemoved(const ParameterConnectionEndpoints& endpoints,
                                const std::vector<ComponentLink>& links) {
    RecordParameterConnection(endpoints, links, Presence::Removed);
}

// ---- Data ports ----

void DataInputAdded(DataInput& input, std::size_t index) {
    if (!RecordsEditsOf(input.GetOperator())) {
        return;
    }
    Transaction::AddRecord(DataPortRecord{input.GetPath(), index, Serialization::SerializeDataInput(input),
                                          PortDirection::Input, Presence::Added});
}

void DataOutputAdded(DataOutput& output, std::size_t index) {
    if (!RecordsEditsOf(output.GetOperator())) {
        return;
    }
    Transaction::AddRecord(DataPortRecord{output.GetPath(), index, Serialization::SerializeDataOutput(output),
                                          PortDirection::Output, Presence::Added});
}

PendingRemoval DataInputRemoving(DataInput& input, std::size_t index) {
    if (!RecordsEditsOf(input.GetOperator())) {
        return {};
    }
    return PendingRemoval(std::make_unique<PendingRemoval::Held>(
        DataPortRecord{input.GetPath(), index, Serialization::SerializeDataInput(input), PortDirection::Input,
                       Presence::Removed}));
}

PendingRemoval DataOutputRemoving(DataOutput& output, std::size_t index) {
    if (!RecordsEditsOf(output.GetOperator())) {
        return {};
    }
    return PendingRemoval(std::make_unique<PendingRemoval::Held>(
        DataPortRecord{output.GetPath(), index, Serialization::SerializeDataOutput(output),
                       PortDirection::Output, Presence::Removed}));
}

void ListInputMoved(DataInput& input, std::size_t previous, std::size_t next) {
    if (!RecordsEditsOf(input.GetOperator())) {
        return;
    }
    Transaction::AddRecord(ListInputMoveRecord{input.GetPath(), previous, next});
}

// ---- Parameter nodes ----

void ParameterNodeAdded(ParameterNode& node) {
    if (!RecordsEditsOf(node.GetOperator())) {
        return;
    }
    nlohmann::json serialized = Serialization::SerializeParameterNode(node);
    if (IsBundle(node)) {
        Transaction::AddRecord(BundleAddedRecord{node.GetPath(), node.GetIndex(), std::move(serialized)});
        return;
    }
    Transaction::AddRecord(ParameterAddedRecord{node.GetPath(), node.GetIndex(), std::move(serialized)});
}

PendingRemoval ParameterNodeRemoving(ParameterNode& node, std::size_t index) {
    if (!RecordsEditsOf(node.GetOperator())) {
        return {};
    }
    nlohmann::json serialized = Serialization::SerializeParameterNode(node);
    if (IsBundle(node)) {
        return PendingRemoval(std::make_unique<PendingRemoval::Held>(
            BundleRemovedRecord{node.GetPath(), index, std::move(serialized)}));
    }
    return PendingRemoval(std::make_unique<PendingRemoval::Held>(
        ParameterRemovedRecord{node.GetPath(), index, std::move(serialized)}));
}

void ParameterNodeMoved(ParameterNode& node, std::size_t previous, std::size_t next) {
    if (!RecordsEditsOf(node.GetOperator())) {
        return;
    }
    Transaction::AddRecord(ParameterNodeMoveRecord{node.GetPath(), previous, next});
}

// ---- PendingRemoval ----

PendingRemoval::PendingRemoval() = default;
PendingRemoval::PendingRemoval(std::unique_ptr<Held> held) : held(std::move(held)) {}
PendingRemoval::PendingRemoval(PendingRemoval&& other) noexcept = default;
PendingRemoval& PendingRemoval::operator=(PendingRemoval&& other) noexcept = default;
PendingRemoval::~PendingRemoval() = default;

void PendingRemoval::Record() {
    if (held == nullptr) {
        return;
    }
    Transaction::AddRecord(std::move(held->record));
    held.reset();
}

// ---- StructureRebuild ----

struct StructureRebuild::State {
    Operator& op;
    nlohmann::json before;
    Transaction nested{"Update structure"};
};

StructureRebuild::StructureRebuild(Operator& op) {
    if (!RecordsEditsOf(&op)) {
        return;
    }
    nlohmann::json before = Serialization::SerializeOwnStructure(op);
    state.reset(new State{op, std::move(before)});
}

StructureRebuild::~StructureRebuild() = default;

void StructureRebuild::Finish() {
    if (state == nullptr) {
        return;
    }
    nlohmann::json after = Serialization::SerializeOwnStructure(state->op);
    if (after != state->before) {
        Transaction::AddRecord(
            StructureRecord{state->op.GetPath(), std::move(state->before), std::move(after)});
    }
}

// ---- Unrecorded ----

using Guard = Transaction::SuppressRecording;
static_assert(sizeof(Guard) <= sizeof(std::max_align_t) && alignof(Guard) <= alignof(std::max_align_t));

Unrecorded::Unrecorded() {
    new (guard) Guard();
}

Unrecorded::~Unrecorded() {
    std::launder(reinterpret_cast<Guard*>(guard))->~Guard();
}

}  // namespace Vantel::EditRecorder
