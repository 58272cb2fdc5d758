// GraphImplementation.h: what the runner, loaders and undo do on a graph beyond its public interface.
//
//   Graph::Implementation& impl = *Access::GetImplementation(graph);
//   impl.InsertOperator(std::move(op), index);     // undo of a removal puts it back where it was
#pragma once

#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/Graph.h>

namespace Vantel {

class OperatorKeyIndex;

// Graph::Implementation
//
// The private block of a graph, reached through Access::GetImplementation; its data stays private to Graph.
class VANTEL_API Graph::Implementation {
public:
    explicit Implementation(Graph& graph);
    ~Implementation();

    // As AddOperator, at `index` in the operator list (at the end when past it).
    void InsertOperator(std::unique_ptr<Operator>&& op, std::size_t index);
    std::size_t IndexOf(const Operator* op) const;
    // Rebuilt when the order is dirty.
    const std::vector<Operator*>& GetExecutionOrder();
    // After a frame: clears the change marks of every operator in the graph, nested graphs' included, and
    // appends those whose structure is dirty to `unsettled`. The graph's own marks are for whoever holds the
    // graph to clear.
    void ClearOperatorChangeMarks(std::vector<Operator*>& unsettled);
    // Hands every parameter connection's value on again, sources first, as a frame would. A load makes the
    // connections in the file's order, which can reach the far end of a chain before its start has a value.
    void PassConnectedValues();
    // Whether a parameter connection starts at a parameter that is driven itself.
    bool HasParameterChains() const;

private:
    friend class Graph;
    // Attach, Detach and DetachAll are the only writers of the operator containers below (the lists, the
    // owners, the key index, the ranks) and of the operators' graph pointer, so these always agree.
    // Attach settles the operator's key among its siblings first.
    Operator* Attach(std::unique_ptr<Operator>&& op, std::size_t index);
    // Null when the operator is not in this graph.
    std::unique_ptr<Operator> Detach(const Operator* op);
    // A dying graph: clears every operator's graph pointer before any operator is destroyed.
    void DetachAll();
    void RebuildOrder();
    // Whether `candidate` feeds `of`, directly or through others; asked of two different operators.
    bool IsUpstream(const Operator* of, const Operator* candidate);
    // After a new connection from `producer` to `consumer`: the ranks stay valid when it follows them.
    void NoteConnection(const Operator* producer, const Operator* consumer);
    void ForgetConnections();

    Graph& graph;
    std::vector<Operator*> operators;
    std::vector<const Operator*> constOperators;
    std::vector<std::unique_ptr<Operator>> ownedOperators;  // in the order of `operators`
    // Keys are fixed while an operator is in the graph, so lookups by key need no scan. Never null.
    std::unique_ptr<OperatorKeyIndex> operatorsByKey;
    std::vector<DataConnection> dataConnections;
    ParameterConnectionMap parameterConnections;
    std::vector<Operator*> executionOrder;
    // The operators' private blocks in execution order: a frame walks them ahead of the operators, so that it
    // can ask for the memory of the next ones before it needs it.
    std::vector<Operator::Implementation*> executionStates;
    // A topological rank per operator while `ranksValid`: a connection that goes from a lower to a higher
    // rank cannot close a cycle, so the cycle test needs no search for it. An empty graph's ranks are valid,
    // which spares a freshly loaded graph a full rebuild before its first connection.
    std::unordered_map<const Operator*, std::size_t> ranks;
    std::size_t nextRank = 0;
    bool ranksValid = true;
    bool orderDirty = true;
    Event<Operator*> operatorAddedEvent;
    Event<Operator*> operatorRemovedEvent;
    Event<> connectionsChangedEvent;
};

inline auto& Access::GetImplementation(Graph& graph) {
    return graph.implementation;
}

// After a frame: clears the change marks of `op` (its dirty flag, ports and parameters) and, for a graph, of
// every operator below it. Appends to `unsettled` each of them whose structure update was deferred (its
// structure is dirty), outer operators before those inside them.
VANTEL_API void ClearFrameChangeMarks(Operator& op, std::vector<Operator*>& unsettled);

}  // namespace Vantel
