// OperatorImplementation.h: the operations that graphs, parameter groups and loaders perform on an operator.
//
//   Operator::Implementation& impl = *Access::GetImplementation(op);
//   impl.MarkStructureDirty();
//   impl.UpdateStructureIfDirty();
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <glm/vec2.hpp>

#include <Vantel/Export.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/ParameterRootGroup.h>

namespace Vantel {

// Operator::Implementation
//
// The private block of an operator. Library code and plug-ins reach it through Access::GetImplementation;
// its data stays private to Operator.
class VANTEL_API Operator::Implementation {
public:
    // Beside its operator, apart from the general heap (see Operator::operator new).
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;

    explicit Implementation(Operator& owner);
    ~Implementation();

    // Only sets the mark; UpdateStructureIfDirty acts on it.
    void MarkStructureDirty() { structureDirty = true; }
    // Inline beside `dirty`: the runner asks it of every operator after each frame.
    bool IsStructureDirty() const { return structureDirty; }
    // Calls UpdateStructure until it stops marking the structure dirty, at most 8 times; after the 8th the
    // error "UpdateStructureIfDirty: '<path>' still changes its own structural parameters after 8 rebuilds,
    // giving up." is logged. Does nothing while a SuppressUpdateStructure lives on this thread or a rebuild
    // of this operator runs. In a graph, while a transaction records, the rebuild runs in a nested
    // transaction and a change of the operator's own structure is recorded as one StructureRecord.
    void UpdateStructureIfDirty();
    // True while any operator's structure rebuild runs on this thread.
    static bool IsRebuildingStructure();

    void RebuildFlatParametersIfNeeded();
    // Set when the parameter tree changed: the flat parameter list is rebuilt on its next use.
    void MarkParameterTreeChanged();

    // Gives `child` a key unique among the operator's children: kept when free, made from `base` when empty,
    // else extended with "_" (with the key-collision error).
    void SettleChildKey(Object& child, std::string_view base);

    void RebuildDataInputsIfNeeded();
    void RebuildDataOutputsIfNeeded();
    // Set when a list's inputs changed: the flat input list is rebuilt on its next use.
    void MarkDataInputsChanged() {
        NoteInputsChanged();
        markedMembers |= kInputs;
    }
    // Takes the input out of its slot, disconnected, and clears its operator; when the operator owned it, the
    // ownership goes to `owned` (or the input is destroyed when `owned` is null). False when no slot holds
    // it.
    bool DetachDataInput(DataInput* input, std::unique_ptr<DataInput>* owned = nullptr);
    bool DetachDataOutput(DataOutput* output, std::unique_ptr<DataOutput>* owned = nullptr);
    // Fired as a port or a parameter node starts leaving the operator (RemoveDataInput, RemoveDataOutput,
    // ParameterGroup::Remove), while it is still in place and connected: what is derived from it lets go of
    // its own connections here, so that those removals are recorded before the removal itself and undo
    // restores them after it.
    Event<DataInput*>& DataInputRemovingEvent() { return dataInputRemovingEvent; }
    Event<DataOutput*>& DataOutputRemovingEvent() { return dataOutputRemovingEvent; }
    Event<ParameterNode*>& ParameterNodeRemovingEvent() { return parameterNodeRemovingEvent; }
    // Called by a data input list as it is built and destroyed.
    void AddDataInputList(DataInputList& list, std::string_view name);
    void RemoveDataInputList(DataInputList& list);

    // Set by the graph that takes the operator in (null when it lets it go); GraphChangedEvent follows.
    void SetGraph(Graph* graph) {
        this->graph = graph;
        graphChangedEvent.Fire(graph);
    }
    // Set by a project on its root graph: in no graph, yet part of a model, so its edits are recorded.
    void SetProjectRoot(bool root) { projectRoot = root; }
    bool IsProjectRoot() const { return projectRoot; }
    // Fired as the operator joins a graph (before the graph lists it) or leaves one (with null), so that
    // what the operator derives from its graph follows at once.
    Event<Graph*>& GraphChangedEvent() { return graphChangedEvent; }
    // Fired by a port or parameter of this operator that was renamed.
    Event<Object*>& MemberRenamedEvent() { return memberRenamedEvent; }
    // Cleared by the runner after each frame.
    void ClearDirty() { dirty = false; }
    // Set by the graph each time it runs the operator.
    void NoteRun(unsigned long long frame) { lastRunFrame = frame; }
    unsigned long long GetLastRunFrame() const { return lastRunFrame; }
    // Marked, or run in the frame before `frame`: a hint for prefetching, never a decision.
    bool IsLikelyToRun(unsigned long long frame) const {
        return dirty || markedMembers != 0 || lastRunFrame == frame;
    }

    // The kinds of member that may carry a change mark, one bit each.
    enum MemberKind : std::uint8_t {
        kInputs = 1,
        kOutputs = 2,
        kParameters = 4,
        kHandedOn = kOutputs | kParameters,
        kAllMembers = 7,
        // Not a kind but a certainty beside kParameters: a parameter that marks the operator outdated carries
        // a mark. Set only as such a parameter is marked; forgotten when the parameter tree or a flag
        // changes.
        kOutdatingParameter = 8
    };
    // A port or parameter of this operator calls this as it sets its change mark; joining the operator counts
    // too. While a kind's bit stays clear, none of its members carries a mark, so a frame need not look at
    // them: an operator that only wrote its output is not searched for changed parameters.
    void NoteMembersMarked(MemberKind kinds) {
        if ((kinds & kParameters) != 0) {
            markedParameter = nullptr;  // which parameter it was is not known
        }
        markedMembers |= kinds;
    }
    // A parameter of this operator calls this as it sets its change mark; `outdating` when the parameter
    // marks the operator outdated. While one parameter alone was marked since the marks were last cleared, it
    // is remembered, so that handing values on and clearing the marks visit it without the others.
    void NoteParameterMarked(Parameter& parameter, bool outdating) {
        if ((markedMembers & kParameters) == 0) {
            markedParameter = &parameter;
        } else if (markedParameter != &parameter) {
            markedParameter = nullptr;
        }
        markedMembers |= outdating ? kParameters | kOutdatingParameter : kParameters;
    }
    // The one parameter marked since the marks were last cleared; null when none was, or several, or which is
    // not known.
    Parameter* MarkedParameter() const { return markedParameter; }
    // Set as a parameter of this operator gets its first connection out, never cleared: while it is clear no
    // parameter of the operator drives another, and a frame hands no value on.
    void NoteDrivesParameters() { drivesParameters = true; }
    bool MayDriveParameters() const { return drivesParameters; }
    // A parameter flag changed: whether a marked parameter still marks the operator outdated is not known.
    void ForgetOutdatingParameterMark() { markedMembers &= ~kOutdatingParameter; }
    bool MayHaveMarkedMembers(MemberKind kinds) const { return (markedMembers & kinds) != 0; }
    // Clears the change marks of every port and parameter (not the operator's own dirty mark), skipping the
    // kinds that carry none (inline: every frame asks this of every operator).
    void ClearMemberChangeMarks() {
        if (markedMembers == 0) {
            return;
        }
        if ((markedMembers & (kInputs | kOutputs)) != 0) {
            ++markEpoch;  // unmarks every port at once, without a visit to each
        }
        // Usually not so: an operator that ran and wrote its output had only its ports marked.
        if ((markedMembers & ~(kInputs | kOutputs)) != 0) {
            ClearMarkedParameters();
        }
        markedMembers = 0;
    }
    // The operator's outputs, as Operator::GetAllDataOutputs gives them, for a frame's inner loop.
    const std::vector<DataOutput*>& Outputs() const { return outputs; }
    // The block of the operator's one output, null unless it has exactly one (most operators): a frame
    // reaches it from the block's first line, without the list.
    const DataOutput::Implementation* SoleOutput() const { return soleOutput; }
    // The marks of the operator's ports are those set in this epoch; clearing them starts the next.
    std::uint64_t GetMarkEpoch() const { return markEpoch; }
    // The operator as a graph (set by Graph itself), so that the runner recurses without a dynamic_cast.
    Graph* AsGraph() const { return asGraph; }
    void SetAsGraph(Graph* self) { asGraph = self; }
    // Where the fields that every frame reads lie (they share the first cache line of the block), for a
    // walk over many operators to prefetch.
    const void* FrameFields() const { return &dirty; }

private:
    friend class Operator;
    void ClearMarkedParameters();
    void ReleaseOwnedPorts();
    void NoteOutputsChanged();
    // The flat input list must be rebuilt, and until it is the sole input is not known.
    void NoteInputsChanged() {
        flatInputsStale = true;
        soleInput = nullptr;
    }

    Operator& owner;
    // What every frame reads, together in the block's first cache line (the block starts on one): the marks,
    // the graph to recurse into, the input whose change makes the operator run and the output to hand on.
    bool dirty = false;
    bool structureDirty = false;
    bool updatingStructure = false;
    bool projectRoot = false;
    // MemberKind bits.
    std::uint8_t markedMembers = kAllMembers;
    bool flatInputsStale = true;
    bool drivesParameters = false;
    Graph* asGraph = nullptr;
    std::uint64_t markEpoch = 1;
    unsigned long long lastRunFrame = 0;
    const DataOutput::Implementation* soleOutput = nullptr;
    // The block of the operator's one input while the flat input list is fresh and holds exactly one (most
    // operators), else null: a frame asks it whether the input changed without the list.
    const DataInput::Implementation* soleInput = nullptr;
    Parameter* markedParameter = nullptr;
    std::vector<DataOutput*> outputs;
    std::string name;
    glm::vec2 position{0.0f, 0.0f};
    ParameterRootGroup parameterGroup;
    std::vector<DataInputSlot> inputSlots;
    std::vector<std::unique_ptr<DataInput>> ownedInputs;
    std::vector<std::unique_ptr<DataOutput>> ownedOutputs;
    std::vector<DataInput*> flatInputs;
    std::vector<const DataInput*> constFlatInputs;
    std::vector<const DataOutput*> constOutputs;
    bool constOutputsStale = true;
    std::vector<Parameter*> flatParameters;
    std::vector<const Parameter*> constFlatParameters;
    bool flatParametersStale = true;
    Event<DataInput*> dataInputRemovingEvent;
    Event<DataOutput*> dataOutputRemovingEvent;
    Event<ParameterNode*> parameterNodeRemovingEvent;
    Event<DataInput*> dataInputAddedEvent;
    Event<DataInput*> dataInputRemovedEvent;
    Event<DataOutput*> dataOutputAddedEvent;
    Event<DataOutput*> dataOutputRemovedEvent;
    Event<> dataPortsReorderedEvent;
    Event<ParameterNode*> parameterNodeAddedEvent;
    Event<ParameterNode*> parameterNodeRemovedEvent;
    Event<> parameterTreeChangedEvent;
    Event<> positionChangedEvent;
    Event<Graph*> graphChangedEvent;
    Event<Object*> memberRenamedEvent;
    Graph* graph = nullptr;
};

inline auto& Access::GetImplementation(Operator& op) {
    return op.implementation;
}

inline const auto& Access::GetImplementation(const Operator& op) {
    return op.implementation;
}

}  // namespace Vantel
