// Operator.h: a node of a graph, with a tree of parameters, and the base of every operator type.
//
//   class Blur : public Operator {
//   public:
//       FloatParameter radius{ParameterScope(this), "Radius", 2.0};
//       void Execute(ExecutionContext& context) override { /* read radius.Value(), publish outputs */ }
//   };
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <glm/vec2.hpp>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Objects/Object.h>

namespace Vantel {

class DataInput;
class DataInputList;
class DataOutput;
class ExecutionContext;
class Graph;
class Parameter;
class ParameterNode;
class ParameterRootGroup;

// One input slot of an operator: a plain input or a data input list.
using DataInputSlot = std::variant<DataInput*, DataInputList*>;

// Operator
//
// Owns its parameter tree (a root group), lists its data inputs (plain inputs and data input lists) and data
// outputs, has a display name and a canvas position, and runs when something it depends on changed. Operator
// types derive from it, declare their parameters and ports as members constructed with `this`, override
// Execute to do their work and UpdateStructure to add or remove ports and parameters in answer to their
// structural parameters. A graph owns its operators; the operator's object parent is its graph. Children
// (ports, lists, parameter nodes of the root group) have keys unique among all of them. Main thread only.
class VANTEL_API Operator : public Object {
public:
    class Implementation;

    Operator();
    ~Operator() override;

    // Operators are allocated densely, apart from the general heap, so that a frame over many of them stays
    // cheap per operator. Over-aligned operator types and placement new work as usual.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, std::align_val_t alignment);
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block, std::size_t size) noexcept;
    static void operator delete(void* block, std::size_t size, std::align_val_t alignment) noexcept;

    VANTEL_DECLARE_OBJECT_TYPE(Operator);

    // Empty: the type's name is shown and used as the key base.
    const std::string& GetName() const;
    // Records the rename while a transaction records and the operator is in a graph.
    void SetName(std::string_view name);
    const glm::vec2& GetPosition() const;
    // How many frames the runner had run when the operator last ran, that frame included (the runner's
    // GetFrameNumber() just after it); 0 when it never ran. An editor shows the operators that ran as active.
    unsigned long long GetLastRunFrame() const;
    // Records the move while a transaction records and the operator is in a graph, then fires
    // PositionChangedEvent. Positions are compared bit for bit: -0 moves from 0, the same NaN does not move.
    void SetPosition(const glm::vec2& position);

    // Null while the operator is in no graph.
    Graph* GetGraph() const;
    ParameterRootGroup& GetParameterGroup();
    const ParameterRootGroup& GetParameterGroup() const;

    // The raw-pointer forms register a parameter that the operator class holds as a member; the
    // unique-pointer forms hand ownership to the root group (a refused parameter is destroyed). Same results
    // as ParameterGroup::Add, Insert and Remove.
    bool AddParameter(Parameter* parameter);
    bool AddParameter(std::unique_ptr<Parameter>&& parameter);
    bool InsertParameter(Parameter* parameter, std::size_t index);
    bool InsertParameter(std::unique_ptr<Parameter>&& parameter, std::size_t index);
    bool RemoveParameter(Parameter* parameter);
    // Every parameter of the tree, in tree order.
    const std::vector<Parameter*>& GetAllParameters();
    const std::vector<const Parameter*>& GetAllParameters() const;

    // False for null or an input that already has an operator. The key is the input's name (or one made from
    // "Input"), settled among the operator's children. The owning form keeps the input; a refused one dies.
    bool AddDataInput(DataInput* input);
    bool AddDataInput(std::unique_ptr<DataInput>&& input);
    // As AddDataInput, at input slot `index` (a list counts as one slot; past the last slot: at the end).
    bool InsertDataInput(DataInput* input, std::size_t index);
    bool InsertDataInput(std::unique_ptr<DataInput>&& input, std::size_t index);
    // False for null, an input of another operator, or an input of a data input list (those go through their
    // list). Disconnects the input and destroys it when the operator owned it.
    bool RemoveDataInput(DataInput* input);
    // Reorders declared inputs only: false for a user-added input, an index not below the slot count, or the
    // current slot. Not recorded.
    bool MoveDataInput(DataInput* input, std::size_t index);
    bool AddDataOutput(DataOutput* output);
    bool AddDataOutput(std::unique_ptr<DataOutput>&& output);
    bool InsertDataOutput(DataOutput* output, std::size_t index);
    bool InsertDataOutput(std::unique_ptr<DataOutput>&& output, std::size_t index);
    bool RemoveDataOutput(DataOutput* output);
    bool MoveDataOutput(DataOutput* output, std::size_t index);

    const std::vector<DataInputSlot>& GetAllDataInputSlots() const;
    // Plain inputs and every input of every list, in slot order.
    const std::vector<DataInput*>& GetAllDataInputs();
    const std::vector<const DataInput*>& GetAllDataInputs() const;
    const std::vector<DataOutput*>& GetAllDataOutputs();
    const std::vector<const DataOutput*>& GetAllDataOutputs() const;

    // Does nothing here; operator types do their work in it.
    virtual void Execute(ExecutionContext& context);
    // True when marked dirty, an input received new data, or a parameter with MarksOutdated changed.
    virtual bool Outdated() const;
    // Makes the operator run in the next frame.
    void MarkDirty();
    bool IsStructureDirty() const;

    Event<DataInput*>& DataInputAddedEvent();
    Event<DataInput*>& DataInputRemovedEvent();
    Event<DataOutput*>& DataOutputAddedEvent();
    Event<DataOutput*>& DataOutputRemovedEvent();
    Event<>& DataPortsReorderedEvent();
    Event<ParameterNode*>& ParameterNodeAddedEvent();
    Event<ParameterNode*>& ParameterNodeRemovedEvent();
    Event<>& ParameterTreeChangedEvent();
    Event<>& PositionChangedEvent();

protected:
    Object* GetParentObjectImplementation() override;
    // A plain data input, data input list, data output or parameter node of the root group whose key is
    // `key`.
    Object* FindChildImplementation(std::string_view key) override;
    // Adds or removes ports and parameters according to the structural parameters; does nothing here.
    virtual void UpdateStructure();

private:
    friend class Access;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
