// GraphImplementation.h: what the runner, loaders and undo do on a graph beyond its public interface.
//
//   Graph::Implementation& impl = *Access::GetImplementation(graph);
//   impl.InsertOperator(std::move(op), index);     // undo of a removal puts it back where it was
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Operators/Graph.h>

namespace Vantel {

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

private:
    friend class Graph;
    void RebuildOrder();
    bool IsUpstream(const Operator* of, const Operator* candidate) const;
    void ForgetConnections();

    Graph& graph;
    std::vector<Operator*> operators;
    std::vector<const Operator*> constOperators;
    std::vector<std::unique_ptr<Operator>> ownedOperators;
    std::vector<DataConnection> dataConnections;
    ParameterConnectionMap parameterConnections;
    std::vector<Operator*> executionOrder;
    bool orderDirty = true;
    Event<Operator*> operatorAddedEvent;
    Event<Operator*> operatorRemovedEvent;
    Event<> connectionsChangedEvent;
};

}  // namespace Vantel
