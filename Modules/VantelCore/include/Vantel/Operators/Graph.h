// Graph.h: an operator that holds other operators and the connections between them.
//
//   auto graph = std::make_unique<Graph>();
//   graph->AddOperator(std::move(blur));                   // keyed "Blur [k3x]" from its type or name
//   graph->AddDataConnection({&blur->result, &sharpen->image});
//   graph->AddParameterConnection({&lfo->value, &blur->radius, WholeValueLinks(lfo->value, blur->radius)},
//   false);
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Operators/ComponentLink.h>
#include <Vantel/Operators/DataConnection.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/ParameterConnection.h>

namespace Vantel {

using ParameterConnectionMap = std::unordered_map<ParameterConnectionEndpoints, std::vector<ComponentLink>>;

// Graph
//
// Owns its operators and the data and parameter connections between them, refuses every connection that
// would make a cycle (through either kind), and runs its outdated operators in dependency order, handing on
// changed outputs and changed parameter values after each operator. Graphs nest: a graph is an operator, and
// the graph inputs and outputs operators inside it carry values across its boundary. Connections are kept
// three times (here, and at both ends); every edit keeps the copies equal and is recorded for undo. Refusals
// return false or null and log nothing. Main thread only.
class VANTEL_API Graph : public Operator {
public:
    class Implementation;

    Graph();
    ~Graph() override;

    VANTEL_DECLARE_OBJECT_TYPE(Graph);

    // Settles the operator's structure and key, takes ownership and marks it dirty. Null does nothing.
    void AddOperator(std::unique_ptr<Operator>&& op);
    // Disconnects the operator and gives it back; null for null or an operator of another graph.
    std::unique_ptr<Operator> RemoveOperator(Operator* op);
    const std::vector<Operator*>& GetOperators();
    const std::vector<const Operator*>& GetOperators() const;

    // Both ports set and of two different operators of this graph, the input free (unless `replace`), the
    // output's type accepted by the input, and no cycle.
    bool CanAddDataConnection(DataConnection connection, bool replace) const;
    // The input receives the output's current value at once.
    bool AddDataConnection(DataConnection connection);
    // The input is left without data; a list input (but the list's spare) is removed from its list.
    bool RemoveDataConnection(DataConnection connection);
    bool CanAddDataConnection(DataOutput& output, DataInputList& list) const;
    // Connects to a new input of the list; null (and no new input) when refused.
    DataInput* AddDataConnection(DataOutput& output, DataInputList& list);
    void DisconnectDataInput(DataInput& input);
    void DisconnectDataOutput(DataOutput& output);
    const std::vector<DataConnection>& GetDataConnections() const;

    // The target accepts connections; links are not empty, in range and name each target component once;
    // unless `replace`, the target has no connection from this source and none on a named component; both
    // parameters belong to two different operators of this graph; no cycle.
    bool CanAddParameterConnection(const ParameterConnection& connection, bool replace) const;
    // With `replace`, takes over exactly the target components it names and leaves the others connected.
    // The source's value is applied to the target at once.
    bool AddParameterConnection(const ParameterConnection& connection, bool replace);
    bool RemoveParameterConnection(ParameterConnectionEndpoints endpoints);
    void DisconnectParameter(Parameter& parameter);
    void DisconnectParameterComponent(Parameter& target, int component);
    const ParameterConnectionMap& GetParameterConnections() const;

    // A port or parameter a user adds to the graph. Null for a null type; a type of the wrong kind logs
    // "Graph::AddUserDataInput: '<type>' is not a data input type." (likewise DataOutput and Parameter).
    DataInput* AddUserDataInput(const ObjectType* type);
    bool AddUserDataInput(std::unique_ptr<DataInput>&& input);
    DataOutput* AddUserDataOutput(const ObjectType* type);
    bool AddUserDataOutput(std::unique_ptr<DataOutput>&& output);
    // `output` makes it an output parameter (set from inside, read outside).
    Parameter* AddUserParameter(const ObjectType* type, bool output);
    bool AddUserParameter(std::unique_ptr<Parameter>&& parameter, std::size_t index);

    // Runs the outdated operators in dependency order and hands on what changed.
    void Execute(ExecutionContext& context) override;
    // True when one of its operators is outdated; the graph's own ports and parameters do not count.
    bool Outdated() const override;

    Event<Operator*>& OperatorAddedEvent();
    Event<Operator*>& OperatorRemovedEvent();
    // Fired after any connection was made or removed.
    Event<>& ConnectionsChangedEvent();

protected:
    // The graph's own ports and parameters first, then its operators.
    Object* FindChildImplementation(std::string_view key) override;

private:
    friend class Access;
    std::unique_ptr<Implementation> implementation;
};

// The text an operator's key in a graph is made from: its name, else its type's name after the last ".".
VANTEL_API std::string OperatorKeyBase(const Operator& op);

// The links that connect a whole value: a scalar drives every target component; otherwise component i drives
// component i, as far as both have components.
VANTEL_API std::vector<ComponentLink> WholeValueLinks(const Parameter& source, const Parameter& target);

}  // namespace Vantel
