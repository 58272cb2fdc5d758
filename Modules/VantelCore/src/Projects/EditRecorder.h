// EditRecorder.h: the one seam through which the model reports its edits for undo.
//
//   nlohmann::json previous = EditRecorder::ValueBefore(radius);   // null unless something records
//   ... write the value ...
//   EditRecorder::ValueWritten(radius, std::move(previous));
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include <glm/vec2.hpp>
#include <nlohmann/json.hpp>

namespace Vantel {

class DataInput;
class DataOutput;
class Graph;
class Object;
class Operator;
class Parameter;
class ParameterNode;
struct ComponentLink;
struct DataConnection;
struct ParameterConnectionEndpoints;

// EditRecorder
//
// Each call checks first whether a transaction records on this thread and whether the edit's target is part
// of a model (an operator in a graph, or a project's root graph), and only then builds its record: paths and
// JSON cost nothing while frames run with recording suppressed. An operator outside a model carries its
// edits in the record that adds it to a graph. A graph's own operators and connections record wherever the
// graph is: a graph in no graph is the root of whatever holds it.
namespace EditRecorder {

// In a graph, or the root graph of a project.
bool IsInModel(const Operator* op);
// While a SuppressUpdateStructure lives on this thread.
bool IsStructureUpdateDeferred();

// Null unless IsRecording(): the previous value a setter hands to ValueWritten.
nlohmann::json ValueBefore(const Parameter& parameter);
// A structural parameter records a compound record, below which its rebuild records.
void ValueWritten(Parameter& parameter, nlohmann::json previous);
// Logs "Parameter '<name>' is structural and was written per component, the write is not in the undo
// history. Structural parameters are written whole." for a structural parameter, and records nothing.
void ComponentWritten(Parameter& parameter, int component, double previous, double next);

// `target` is an operator, a parameter or a data port of `owner`; the path is taken before the change.
void Renamed(Object& target, const Operator* owner, std::string_view previous, std::string_view next);
void OperatorMoved(Operator& op, const glm::vec2& previous, const glm::vec2& next);

void OperatorAdded(Operator& op, std::size_t index);
void DataConnectionMade(DataConnection connection);
void DataConnectionRemoved(DataConnection connection);
void ParameterConnectionMade(const ParameterConnectionEndpoints& endpoints,
                             const std::vector<ComponentLink>& links);
void ParameterConnectionRemoved(const ParameterConnectionEndpoints& endpoints,
                                const std::vector<ComponentLink>& links);

// A user's port on an operator, or an input of a data input list (`index` is its slot or list index).
void DataInputAdded(DataInput& input, std::size_t index);
void DataOutputAdded(DataOutput& output, std::size_t index);
void ListInputMoved(DataInput& input, std::size_t previous, std::size_t next);

// A bundle or a parameter put into its group (already at its index).
void ParameterNodeAdded(ParameterNode& node);
void ParameterNodeMoved(ParameterNode& node, std::size_t previous, std::size_t next);

// PendingRemoval
//
// A removal is recorded from what the target was before it left, and handed on once it has left, so that
// what the removal itself records (disconnections) comes first and undo restores it after the target.
// Empty, and free to make, when nothing records.
class PendingRemoval {
public:
    PendingRemoval();
    PendingRemoval(PendingRemoval&& other) noexcept;
    PendingRemoval& operator=(PendingRemoval&& other) noexcept;
    ~PendingRemoval();
    // Hands the record to the transaction, once.
    void Record();

    struct Held;
    explicit PendingRemoval(std::unique_ptr<Held> held);

private:
    std::unique_ptr<Held> held;
};

PendingRemoval OperatorRemoving(Operator& op, std::size_t index);
PendingRemoval DataInputRemoving(DataInput& input, std::size_t index);
PendingRemoval DataOutputRemoving(DataOutput& output, std::size_t index);
PendingRemoval ParameterNodeRemoving(ParameterNode& node, std::size_t index);

// StructureRebuild
//
// Spans an operator's structure rebuild. For an operator in a model, while a transaction records, the
// rebuild's own records go to a nested transaction that hangs below the change that caused it, and a change
// of the operator's own structure is recorded on Finish as one structure record.
class StructureRebuild {
public:
    explicit StructureRebuild(Operator& op);
    ~StructureRebuild();
    StructureRebuild(const StructureRebuild&) = delete;
    StructureRebuild& operator=(const StructureRebuild&) = delete;
    void Finish();

private:
    struct State;
    std::unique_ptr<State> state;
};

// Unrecorded
//
// Nothing is recorded on this thread while one lives. Nests.
class Unrecorded {
public:
    Unrecorded();
    ~Unrecorded();
    Unrecorded(const Unrecorded&) = delete;
    Unrecorded& operator=(const Unrecorded&) = delete;

private:
    alignas(std::max_align_t) unsigned char guard[sizeof(std::max_align_t)];  // built in place
};

}  // namespace EditRecorder
}  // namespace Vantel
