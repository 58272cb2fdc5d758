#include <Vantel/Operators/Graph.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <type_traits>
#include <unordered_set>

#include <absl/container/flat_hash_set.h>

#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/GraphImplementation.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Parameters/ParameterInfo.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Support/Logging.h>

#include "Operators/OperatorKeyIndex.h"
#include "Parameters/ReferenceSupport.h"
#include "Projects/EditRecorder.h"
#include "Support/Prefetch.h"

namespace Vantel {
namespace {

void ClearChangeMarks(Operator& op, Operator::Implementation& state, std::vector<Operator*>& unsettled) {
    state.ClearDirty();
    state.ClearMemberChangeMarks();
    if (state.IsStructureDirty()) {
        unsettled.push_back(&op);
    }
    if (Graph* graph = state.AsGraph()) {
        Access::GetImplementation(*graph)->ClearOperatorChangeMarks(unsettled);
    }
}

// Each pointer once, in no particular order.
template <typename T>
std::vector<T*> Distinct(std::vector<T*> pointers) {
    std::sort(pointers.begin(), pointers.end(), std::less<>());
    pointers.erase(std::unique(pointers.begin(), pointers.end()), pointers.end());
    return pointers;
}

// Every operator that feeds `op` through a connected data input or a parameter connection.
template <typename Visit>
void ForEachFeeder(const Operator& op, Visit&& visit) {
    for (const DataInput* input : op.GetAllDataInputs()) {
        if (input->IsConnected()) {
            visit(input->GetConnection().output->GetOperator());
        }
    }
    for (const Parameter* parameter : op.GetAllParameters()) {
        for (const ParameterConnection& connection : parameter->GetIncomingConnections()) {
            visit(connection.source->GetOperator());
        }
    }
}

// Every operator that `op` feeds through its outputs' connections or its parameters' outgoing connections.
template <typename Visit>
void ForEachConsumer(const Operator& op, Visit&& visit) {
    for (const DataOutput* output : op.GetAllDataOutputs()) {
        for (const DataConnection& connection : output->GetConnections()) {
            visit(connection.input->GetOperator());
        }
    }
    for (const Parameter* parameter : op.GetAllParameters()) {
        for (const ParameterConnection& connection : parameter->GetOutgoingConnections()) {
            visit(connection.target->GetOperator());
        }
    }
}

bool HasFeeders(const Operator& op) {
    bool fed = false;
    ForEachFeeder(op, [&fed](const Operator*) { fed = true; });
    return fed;
}

// Components are read one by one, so that a numeric source that changes every frame is not described anew.
void PassValue(const Parameter& source, Parameter& target, const std::vector<ComponentLink>& links) {
    if (target.HasNumericComponents()) {
        for (const ComponentLink& link : links) {
            target.SetComponent(link.target, source.GetComponent(link.source));
        }
    } else if (source.HasNumericComponents()) {
        const int component = links.empty() ? 0 : links.front().source;
        target.SetFromData(ParameterData(std::vector<double>{source.GetComponent(component)}));
    } else {
        target.SetFromData(source.GetData());
    }
}

void HandOn(const DataOutput::Implementation& output, std::uint64_t epoch) {
    if (!output.IsMarkedIn(epoch)) {
        return;
    }
    for (const DataConnection& connection : output.GetConnections()) {
        connection.input->Receive(output.GetData());
    }
}

// Straight from the private blocks: the frame does this for every operator that wrote an output.
void HandOnData(const Operator::Implementation& state) {
    const std::uint64_t epoch = state.GetMarkEpoch();
    if (const DataOutput::Implementation* sole = state.SoleOutput()) {
        HandOn(*sole, epoch);
        return;
    }
    for (DataOutput* output : state.Outputs()) {
        HandOn(*Access::GetImplementation(*output), epoch);
    }
}

// What handing on an operator's data reads apart from the operator: the blocks of its output or the list of
// its outputs, and the output's list of connections. Each is asked for once the line that points to it has
// come in: the output's block half the prefetch distance ahead, its list a quarter.
void PrefetchHandOn(const Operator::Implementation& half, const Operator::Implementation& quarter) {
    if (const DataOutput::Implementation* sole = half.SoleOutput()) {
        PrefetchLines(sole, sizeof(DataOutput::Implementation));
    } else {
        Prefetch(half.Outputs().data());
    }
    if (const DataOutput::Implementation* sole = quarter.SoleOutput()) {
        Prefetch(sole->GetConnections().data());
    }
}

void PassOn(const Parameter& parameter) {
    for (const ParameterConnection& connection : parameter.GetOutgoingConnections()) {
        PassValue(parameter, *connection.target, connection.links);
    }
}

// Only operators with a parameter that drives another have anything to hand on; when one parameter alone was
// marked, only it can have changed.
void HandOnValues(Operator& op, const Operator::Implementation& state) {
    if (!state.MayDriveParameters()) {
        return;
    }
    if (const Parameter* marked = state.MarkedParameter()) {
        if (marked->HasValueChanged()) {
            PassOn(*marked);
        }
        return;
    }
    for (Parameter* parameter : op.GetAllParameters()) {
        if (parameter->HasValueChanged()) {
            PassOn(*parameter);
        }
    }
}

// A connection joins two different operators, both of `graph`.
bool AreTwoOperatorsOf(const Graph& graph, const Operator* producer, const Operator* consumer) {
    return producer != nullptr && consumer != nullptr && producer != consumer &&
           producer->GetGraph() == &graph && consumer->GetGraph() == &graph;
}

// The name a user's new member starts with: a port's names its data type and side, a parameter's comes from
// the parameter type's registration.
template <typename Member>
std::string UserMemberName(const ObjectType& type) {
    if constexpr (std::is_same_v<Member, Parameter>) {
        const ParameterInfo* info = TypeLibrary::Get()->FindParameterInfo(&type);
        return info != nullptr ? info->name : type.GetDisplayName();
    } else {
        const DataTypeInfo* dataType = TypeLibrary::Get()->FindDataType(&type);
        const std::string base = dataType != nullptr ? dataType->name : type.GetName();
        return base + (std::is_same_v<Member, DataInput> ? " Input" : " Output");
    }
}

// Makes a named port or parameter of a type a user picked for a graph and hands it to `add`. Null for a null
// type, one that makes no `Member`, or a refusal by `add`; a type of another kind logs
// "Graph::<function>: '<type>' is not a <noun> type.".
template <typename Member, typename Add>
Member* CreateUserMember(const ObjectType* type, std::string_view function, std::string_view noun, Add add) {
    if (type == nullptr) {
        return nullptr;
    }
    if (!type->Inherits(Member::Type())) {
        LogError("Graph::" + std::string(function) + ": '" + type->GetName() + "' is not a " +
                 std::string(noun) + " type.");
        return nullptr;
    }
    std::unique_ptr<Object> made = type->CreateInstance();
    auto* member = dynamic_cast<Member*>(made.get());
    if (member == nullptr) {
        return nullptr;
    }
    made.release();
    member->SetName(UserMemberName<Member>(*type));
    return add(std::unique_ptr<Member>(member)) ? member : nullptr;
}

// Marks a given port or parameter as the user's and hands it to `add`; false for null.
template <typename Member, typename Add>
bool AdoptUserMember(std::unique_ptr<Member>&& member, Add add) {
    if (member == nullptr) {
        return false;
    }
    Access::GetImplementation(*member)->SetAddedByUser(true);
    return add(std::move(member));
}

}  // namespace

std::string OperatorKeyBase(const Operator& op) {
    if (!op.GetName().empty()) {
        return op.GetName();
    }
    const std::string& typeName = op.GetType()->GetName();
    const std::size_t dot = typeName.rfind('.');
    return dot == std::string::npos ? typeName : typeName.substr(dot + 1);
}

std::vector<ComponentLink> WholeValueLinks(const Parameter& source, const Parameter& target) {
    const int sourceCount = source.GetComponentCount();
    const int targetCount = target.GetComponentCount();
    std::vector<ComponentLink> links;
    if (sourceCount == 1) {
        for (int j = 0; j < targetCount; ++j) {
            links.push_back({0, j});
        }
        return links;
    }
    for (int i = 0; i < std::min(sourceCount, targetCount); ++i) {
        links.push_back({i, i});
    }
    return links;
}

// ---- Graph::Implementation ----

Graph::Implementation::Implementation(Graph& graph)
    : graph(graph), operatorsByKey(std::make_unique<OperatorKeyIndex>()) {}

Graph::Implementation::~Implementation() = default;

Operator* Graph::Implementation::Attach(std::unique_ptr<Operator>&& op, std::size_t index) {
    Access::GetImplementation(static_cast<Operator&>(graph))->SettleChildKey(*op, OperatorKeyBase(*op));
    Access::GetImplementation(*op)->SetGraph(&graph);
    Operator* raw = op.get();
    operators.insert(operators.begin() + static_cast<std::ptrdiff_t>(index), raw);
    constOperators.insert(constOperators.begin() + static_cast<std::ptrdiff_t>(index), raw);
    ownedOperators.insert(ownedOperators.begin() + static_cast<std::ptrdiff_t>(index), std::move(op));
    operatorsByKey->Add(raw->GetKey(), raw);
    ranks[raw] = nextRank++;  // unconnected: any rank is a valid one
    orderDirty = true;
    return raw;
}

std::unique_ptr<Operator> Graph::Implementation::Detach(const Operator* op) {
    const std::size_t index = IndexOf(op);
    if (index == ParameterNode::npos) {
        return nullptr;
    }
    operators.erase(operators.begin() + static_cast<std::ptrdiff_t>(index));
    constOperators.erase(constOperators.begin() + static_cast<std::ptrdiff_t>(index));
    std::unique_ptr<Operator> released = std::move(ownedOperators[index]);
    ownedOperators.erase(ownedOperators.begin() + static_cast<std::ptrdiff_t>(index));
    operatorsByKey->Remove(op->GetKey());
    ranks.erase(op);
    Access::GetImplementation(*released)->SetGraph(nullptr);
    orderDirty = true;
    return released;
}

void Graph::Implementation::DetachAll() {
    for (Operator* op : operators) {
        Access::GetImplementation(*op)->SetGraph(nullptr);
    }
    operators.clear();
    constOperators.clear();
    operatorsByKey->Clear();
    // Last made, first destroyed: the operator arena hands freed blocks out again last in, first out, so that
    // the next graph built gets them in the order this one had, and its frames walk memory forwards.
    while (!ownedOperators.empty()) {
        ownedOperators.pop_back();
    }
}

void Graph::Implementation::InsertOperator(std::unique_ptr<Operator>&& op, std::size_t index) {
    if (op == nullptr) {
        return;
    }
    Access::GetImplementation(*op)->UpdateStructureIfDirty();
    index = std::min(index, operators.size());
    Operator* raw = Attach(std::move(op), index);
    EditRecorder::OperatorAdded(*raw, index);
    raw->MarkDirty();
    operatorAddedEvent.Fire(raw);
}

std::size_t Graph::Implementation::IndexOf(const Operator* op) const {
    const auto found = std::find(constOperators.begin(), constOperators.end(), op);
    return found == constOperators.end() ? ParameterNode::npos
                                         : static_cast<std::size_t>(found - constOperators.begin());
}

const std::vector<Operator*>& Graph::Implementation::GetExecutionOrder() {
    if (orderDirty) {
        RebuildOrder();
    }
    return executionOrder;
}

void Graph::Implementation::RebuildOrder() {
    orderDirty = false;
    executionOrder.clear();
    executionStates.clear();
    ranks.clear();
    std::unordered_set<const Operator*> placed;
    std::unordered_set<const Operator*> queued;
    std::deque<Operator*> queue;
    const auto enqueue = [&](Operator* op) {
        if (op != nullptr && queued.insert(op).second) {
            queue.push_back(op);
        }
    };
    for (Operator* op : operators) {
        if (!HasFeeders(*op)) {
            enqueue(op);
        }
    }
    while (!queue.empty()) {
        Operator* op = queue.front();
        queue.pop_front();
        queued.erase(op);
        bool ready = true;
        ForEachFeeder(*op, [&](const Operator* feeder) { ready = ready && placed.contains(feeder); });
        if (!ready) {
            enqueue(op);
            continue;
        }
        ranks[op] = executionOrder.size();
        executionOrder.push_back(op);
        executionStates.push_back(Access::GetImplementation(*op).get());
        placed.insert(op);
        for (DataOutput* output : op->GetAllDataOutputs()) {
            for (const DataConnection& connection : output->GetConnections()) {
                enqueue(connection.input->GetOperator());
            }
        }
        for (Parameter* parameter : op->GetAllParameters()) {
            for (const ParameterConnection& connection : parameter->GetOutgoingConnections()) {
                enqueue(connection.target->GetOperator());
            }
        }
    }
    nextRank = executionOrder.size();
    ranksValid = executionOrder.size() == operators.size();
}

bool Graph::Implementation::HasParameterChains() const {
    return std::any_of(parameterConnections.begin(), parameterConnections.end(),
                       [](const auto& entry) { return entry.first.source->HasIncomingConnection(); });
}

void Graph::Implementation::PassConnectedValues() {
    if (parameterConnections.empty()) {
        return;  // nothing to hand on, and undo settles every graph: spares each one without them the order
    }
    for (Operator* op : GetExecutionOrder()) {
        for (const Parameter* parameter : op->GetAllParameters()) {
            PassOn(*parameter);
        }
    }
}

bool Graph::Implementation::IsUpstream(const Operator* of, const Operator* candidate) {
    if (!ranksValid) {
        RebuildOrder();
    }
    if (ranksValid) {
        const auto ofRank = ranks.find(of);
        const auto candidateRank = ranks.find(candidate);
        if (ofRank != ranks.end() && candidateRank != ranks.end() && ofRank->second < candidateRank->second) {
            return false;  // every path runs from lower to higher ranks
        }
    }
    // Up from `of` and down from `candidate` in turns: a path exists exactly when one search meets the other
    // end, and whichever side runs out first ends the search. A long chain checked at its end thus costs as
    // little as the short side, which keeps loading a large file from being quadratic.
    std::vector<const Operator*> up{of};
    std::vector<const Operator*> down{candidate};
    std::unordered_set<const Operator*> seenUp{of};
    std::unordered_set<const Operator*> seenDown{candidate};
    bool found = false;
    while (!up.empty() && !down.empty() && !found) {
        const Operator* upper = up.back();
        up.pop_back();
        ForEachFeeder(*upper, [&](const Operator* feeder) {
            found = found || feeder == candidate;
            if (feeder != nullptr && seenUp.insert(feeder).second) {
                up.push_back(feeder);
            }
        });
        const Operator* lower = down.back();
        down.pop_back();
        ForEachConsumer(*lower, [&](const Operator* consumer) {
            found = found || consumer == of;
            if (consumer != nullptr && seenDown.insert(consumer).second) {
                down.push_back(consumer);
            }
        });
    }
    return found;
}

void Graph::Implementation::NoteConnection(const Operator* producer, const Operator* consumer) {
    const auto producerRank = ranks.find(producer);
    const auto consumerRank = ranks.find(consumer);
    if (producerRank == ranks.end() || consumerRank == ranks.end() ||
        producerRank->second >= consumerRank->second) {
        ranksValid = false;
    }
}

void Graph::Implementation::ForgetConnections() {
    // A dying graph: the ends of its connections must not point at each other any more, in whatever order
    // its operators are destroyed. Each end drops all of the graph's connections in one pass: dropped one by
    // one, an output or parameter that feeds many would search its list once for each of them.
    absl::flat_hash_set<const DataInput*> inputs;
    std::vector<DataOutput::Implementation*> outputs;
    for (const DataConnection& connection : dataConnections) {
        Access::GetImplementation(*connection.input)->SetConnection({});
        inputs.insert(connection.input);
        outputs.push_back(Access::GetImplementation(*connection.output).get());
    }
    for (DataOutput::Implementation* output : Distinct(std::move(outputs))) {
        // An input has one connection at most, so the graph's connections are those to its inputs.
        output->RemoveConnectionsIf(
            [&inputs](const DataConnection& connection) { return inputs.contains(connection.input); });
    }
    dataConnections.clear();
    std::vector<Parameter::Implementation*> ends;
    for (const auto& [endpoints, links] : parameterConnections) {
        ends.push_back(Access::GetImplementation(*endpoints.source).get());
        ends.push_back(Access::GetImplementation(*endpoints.target).get());
    }
    for (Parameter::Implementation* end : Distinct(std::move(ends))) {
        end->RemoveConnectionsIf([this](ParameterConnectionEndpoints endpoints) {
            return parameterConnections.contains(endpoints);
        });
    }
    parameterConnections.clear();
}

// ---- Graph ----

Graph::Graph() : implementation(std::make_unique<Implementation>(*this)) {
    Access::GetImplementation(static_cast<Operator&>(*this))->SetAsGraph(this);
}

Graph::~Graph() {
    EditRecorder::Unrecorded unrecorded;
    implementation->ForgetConnections();
    implementation->DetachAll();
}

VANTEL_DEFINE_OBJECT_TYPE(Graph, Operator, "Vantel.General.Graph")

void Graph::AddOperator(std::unique_ptr<Operator>&& op) {
    implementation->InsertOperator(std::move(op), implementation->operators.size());
}

std::unique_ptr<Operator> Graph::RemoveOperator(Operator* op) {
    if (op == nullptr || implementation->IndexOf(op) == ParameterNode::npos) {
        return nullptr;
    }
    // Recorded before the removal, so that undo puts the operator back first and the references then find it.
    ReferenceSupport::ClearReferencesInto(*op);
    const std::size_t index = implementation->IndexOf(op);
    EditRecorder::PendingRemoval record = EditRecorder::OperatorRemoving(*op, index);
    for (Parameter* parameter : std::vector<Parameter*>(op->GetAllParameters())) {
        DisconnectParameter(*parameter);
    }
    for (DataOutput* output : op->GetAllDataOutputs()) {
        DisconnectDataOutput(*output);
    }
    for (DataInput* input : std::vector<DataInput*>(op->GetAllDataInputs())) {
        if (input->IsConnected()) {
            RemoveDataConnection(input->GetConnection());
        }
    }
    std::unique_ptr<Operator> released = implementation->Detach(op);
    record.Record();
    implementation->operatorRemovedEvent.Fire(op);
    return released;
}

const std::vector<Operator*>& Graph::GetOperators() {
    return implementation->operators;
}

const std::vector<const Operator*>& Graph::GetOperators() const {
    return implementation->constOperators;
}

bool Graph::CanAddDataConnection(DataConnection connection, bool replace) const {
    if (connection.output == nullptr || connection.input == nullptr) {
        return false;
    }
    if (!replace && connection.input->IsConnected()) {
        return false;
    }
    const Operator* producer = connection.output->GetOperator();
    const Operator* consumer = connection.input->GetOperator();
    if (!AreTwoOperatorsOf(*this, producer, consumer)) {
        return false;
    }
    const ObjectType* accepted = connection.input->GetAcceptedOutputType();
    if (accepted != nullptr && !connection.output->GetType()->Inherits(accepted)) {
        return false;
    }
    return !implementation->IsUpstream(producer, consumer);
}

bool Graph::AddDataConnection(DataConnection connection) {
    if (!CanAddDataConnection(connection, false)) {
        return false;
    }
    Access::GetImplementation(*connection.input)->SetConnection(connection);
    Access::GetImplementation(*connection.output)->AddConnection(connection);
    implementation->dataConnections.push_back(connection);
    implementation->orderDirty = true;
    implementation->NoteConnection(connection.output->GetOperator(), connection.input->GetOperator());
    EditRecorder::DataConnectionMade(connection);
    connection.input->Receive(connection.output->GetData());
    implementation->connectionsChangedEvent.Fire();
    return true;
}

bool Graph::RemoveDataConnection(DataConnection connection) {
    std::vector<DataConnection>& connections = implementation->dataConnections;
    const auto found = std::find(connections.begin(), connections.end(), connection);
    if (found == connections.end()) {
        return false;
    }
    connections.erase(found);
    Access::GetImplementation(*connection.input)->SetConnection({});
    Access::GetImplementation(*connection.output)->RemoveConnection(connection);
    EditRecorder::DataConnectionRemoved(connection);
    connection.input->Receive(nullptr);
    implementation->connectionsChangedEvent.Fire();  // the order holds with one constraint fewer
    if (DataInputList* list = connection.input->GetList()) {
        DataInputList::Implementation& listImplementation = *Access::GetImplementation(*list);
        if (!listImplementation.KeepsWhenDisconnected(connection.input)) {
            listImplementation.RemoveInput(connection.input);
        }
    }
    return true;
}

bool Graph::CanAddDataConnection(DataOutput& output, DataInputList& list) const {
    const Operator* producer = output.GetOperator();
    const Operator* consumer = list.GetOperator();
    if (!AreTwoOperatorsOf(*this, producer, consumer)) {
        return false;
    }
    const ObjectType* accepted = Access::GetImplementation(list)->GetAcceptedOutputType();
    if (accepted != nullptr && !output.GetType()->Inherits(accepted)) {
        return false;
    }
    return !implementation->IsUpstream(producer, consumer);
}

DataInput* Graph::AddDataConnection(DataOutput& output, DataInputList& list) {
    if (!CanAddDataConnection(output, list)) {
        return nullptr;
    }
    DataInputList::Implementation& listImplementation = *Access::GetImplementation(list);
    DataInput* input = listImplementation.CreateInput("");
    if (input == nullptr) {
        return nullptr;
    }
    // A fresh input accepts what its list accepts and is on the list's operator: the checks above hold for
    // it.
    AddDataConnection({&output, input});
    return input;
}

void Graph::DisconnectDataInput(DataInput& input) {
    if (input.IsConnected()) {
        RemoveDataConnection(input.GetConnection());
    }
}

void Graph::DisconnectDataOutput(DataOutput& output) {
    for (const DataConnection& connection : std::vector<DataConnection>(output.GetConnections())) {
        RemoveDataConnection(connection);
    }
}

const std::vector<DataConnection>& Graph::GetDataConnections() const {
    return implementation->dataConnections;
}

bool Graph::CanAddParameterConnection(const ParameterConnection& connection, bool replace) const {
    const Parameter* source = connection.source;
    const Parameter* target = connection.target;
    if (source == nullptr || target == nullptr || !target->AcceptsInputConnection() ||
        connection.links.empty()) {
        return false;
    }
    const int sourceCount = source->GetComponentCount();
    const int targetCount = target->GetComponentCount();
    const std::vector<ComponentLink>& links = connection.links;
    for (auto link = links.begin(); link != links.end(); ++link) {
        const auto sameTarget = [&](const ComponentLink& earlier) { return earlier.target == link->target; };
        if (link->source < 0 || link->source >= sourceCount || link->target < 0 ||
            link->target >= targetCount || std::any_of(links.begin(), link, sameTarget)) {
            return false;
        }
    }
    if (!replace) {
        for (const ParameterConnection& existing : target->GetIncomingConnections()) {
            if (existing.source == source) {
                return false;
            }
        }
        for (const ComponentLink& link : links) {
            if (target->FindIncomingConnection(link.target) != nullptr) {
                return false;
            }
        }
    }
    const Operator* producer = source->GetOperator();
    const Operator* consumer = target->GetOperator();
    if (!AreTwoOperatorsOf(*this, producer, consumer)) {
        return false;
    }
    return !implementation->IsUpstream(producer, consumer);
}

bool Graph::AddParameterConnection(const ParameterConnection& connection, bool replace) {
    if (!CanAddParameterConnection(connection, replace)) {
        return false;
    }
    ParameterConnection added = connection;
    if (replace) {
        const auto named = [&connection](int component) {
            return std::any_of(connection.links.begin(), connection.links.end(),
                               [component](const ComponentLink& link) { return link.target == component; });
        };
        for (const ParameterConnection& existing :
             std::vector<ParameterConnection>(connection.target->GetIncomingConnections())) {
            const bool sameEndpoints = existing.GetEndpoints() == connection.GetEndpoints();
            const bool overlaps =
                std::any_of(existing.links.begin(), existing.links.end(),
                            [&named](const ComponentLink& link) { return named(link.target); });
            if (!sameEndpoints && !overlaps) {
                continue;
            }
            std::vector<ComponentLink> remaining;
            std::copy_if(existing.links.begin(), existing.links.end(), std::back_inserter(remaining),
                         [&named](const ComponentLink& link) { return !named(link.target); });
            RemoveParameterConnection(existing.GetEndpoints());
            if (remaining.empty()) {
                continue;
            }
            if (sameEndpoints) {
                added.links.insert(added.links.end(), remaining.begin(), remaining.end());
            } else {
                AddParameterConnection({existing.source, existing.target, remaining}, false);
            }
        }
    }
    Access::GetImplementation(*added.target)->AddIncomingConnection(added);
    Access::GetImplementation(*added.source)->AddOutgoingConnection(added);
    Access::GetImplementation(*added.source->GetOperator())->NoteDrivesParameters();
    implementation->parameterConnections[added.GetEndpoints()] = added.links;
    implementation->orderDirty = true;
    implementation->NoteConnection(added.source->GetOperator(), added.target->GetOperator());
    EditRecorder::ParameterConnectionMade(added.GetEndpoints(), added.links);
    PassValue(*added.source, *added.target, added.links);
    implementation->connectionsChangedEvent.Fire();
    return true;
}

bool Graph::RemoveParameterConnection(ParameterConnectionEndpoints endpoints) {
    const auto found = implementation->parameterConnections.find(endpoints);
    if (found == implementation->parameterConnections.end()) {
        return false;
    }
    const std::vector<ComponentLink> links = std::move(found->second);
    implementation->parameterConnections.erase(found);
    Access::GetImplementation(*endpoints.target)->RemoveIncomingConnection(endpoints);
    Access::GetImplementation(*endpoints.source)->RemoveOutgoingConnection(endpoints);
    EditRecorder::ParameterConnectionRemoved(endpoints, links);
    implementation->connectionsChangedEvent.Fire();  // the order holds with one constraint fewer
    return true;
}

void Graph::DisconnectParameter(Parameter& parameter) {
    for (const ParameterConnection& connection :
         std::vector<ParameterConnection>(parameter.GetIncomingConnections())) {
        RemoveParameterConnection(connection.GetEndpoints());
    }
    for (const ParameterConnection& connection :
         std::vector<ParameterConnection>(parameter.GetOutgoingConnections())) {
        RemoveParameterConnection(connection.GetEndpoints());
    }
}

void Graph::DisconnectParameterComponent(Parameter& target, int component) {
    const ParameterConnection* driving = target.FindIncomingConnection(component);
    if (driving == nullptr) {
        return;
    }
    ParameterConnection rest = *driving;
    std::erase_if(rest.links, [component](const ComponentLink& link) { return link.target == component; });
    RemoveParameterConnection(rest.GetEndpoints());
    if (!rest.links.empty()) {
        AddParameterConnection(rest, false);
    }
}

const ParameterConnectionMap& Graph::GetParameterConnections() const {
    return implementation->parameterConnections;
}

DataInput* Graph::AddUserDataInput(const ObjectType* type) {
    return CreateUserMember<DataInput>(type, "AddUserDataInput", "data input",
                                       [this](auto&& input) { return AddUserDataInput(std::move(input)); });
}

bool Graph::AddUserDataInput(std::unique_ptr<DataInput>&& input) {
    return AdoptUserMember(std::move(input), [this](auto&& port) { return AddDataInput(std::move(port)); });
}

DataOutput* Graph::AddUserDataOutput(const ObjectType* type) {
    return CreateUserMember<DataOutput>(type, "AddUserDataOutput", "data output", [this](auto&& output) {
        return AddUserDataOutput(std::move(output));
    });
}

bool Graph::AddUserDataOutput(std::unique_ptr<DataOutput>&& output) {
    return AdoptUserMember(std::move(output), [this](auto&& port) { return AddDataOutput(std::move(port)); });
}

Parameter* Graph::AddUserParameter(const ObjectType* type, bool output) {
    return CreateUserMember<Parameter>(type, "AddUserParameter", "parameter", [&](auto&& parameter) {
        parameter->SetParameterFlag(ParameterFlag::Output, output);
        return AddUserParameter(std::move(parameter), ParameterNode::npos);
    });
}

bool Graph::AddUserParameter(std::unique_ptr<Parameter>&& parameter, std::size_t index) {
    return AdoptUserMember(std::move(parameter),
                           [&](auto&& member) { return InsertParameter(std::move(member), index); });
}

void Graph::Execute(ExecutionContext& context) {
    const std::vector<Operator*>& order = implementation->GetExecutionOrder();
    const std::vector<Operator::Implementation*>& states = implementation->executionStates;
    const unsigned long long frame = context.GetFrameNumber();
    for (std::size_t i = 0; i < order.size(); ++i) {
        // Operators ahead are asked for while this one is worked on. Busy operators sit among busy ones, so
        // when this one will probably run, so will those ahead: then all of their first lines (their ports
        // and parameters) and what handing on their data reads are asked for, else only the line that
        // Outdated reads.
        const bool busy = states[i]->IsLikelyToRun(frame);
        if (i + kPrefetchDistance < order.size()) {
            // A size fixed here, not chosen at run time, unrolls into plain hints.
            if (busy) {
                PrefetchLines(order[i + kPrefetchDistance], kRunningOperatorBytes);
            } else {
                Prefetch(order[i + kPrefetchDistance]);
            }
            Prefetch(states[i + kPrefetchDistance]->FrameFields());
        }
        if (busy && i + kPrefetchDistance / 2 < order.size()) {
            PrefetchHandOn(*states[i + kPrefetchDistance / 2], *states[i + kPrefetchDistance / 4]);
        }
        Operator* op = order[i];
        if (op->Outdated()) {
            op->Execute(context);
            Access::CountOperatorRun(context);
            states[i]->NoteRun(frame + 1);  // frames are counted from 1, 0 is never
        }
        // Only the kinds of member that were marked have anything to hand on.
        const Operator::Implementation& state = *states[i];
        if (state.MayHaveMarkedMembers(Operator::Implementation::kHandedOn)) {
            if (state.MayHaveMarkedMembers(Operator::Implementation::kOutputs)) {
                HandOnData(state);
            }
            if (state.MayHaveMarkedMembers(Operator::Implementation::kParameters)) {
                HandOnValues(*op, state);
            }
        }
    }
}

void ClearFrameChangeMarks(Operator& op, std::vector<Operator*>& unsettled) {
    ClearChangeMarks(op, *Access::GetImplementation(op), unsettled);
}

void Graph::Implementation::ClearOperatorChangeMarks(std::vector<Operator*>& unsettled) {
    const std::vector<Operator*>& order = GetExecutionOrder();
    if (order.size() != operators.size()) {
        for (Operator* op : operators) {
            ClearChangeMarks(*op, *Access::GetImplementation(*op), unsettled);
        }
        return;
    }
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i + kPrefetchDistance < order.size()) {
            Prefetch(executionStates[i + kPrefetchDistance]->FrameFields());
        }
        ClearChangeMarks(*order[i], *executionStates[i], unsettled);
    }
}

bool Graph::Outdated() const {
    for (const Operator* op : implementation->constOperators) {
        if (op->Outdated()) {
            return true;
        }
    }
    return false;
}

Event<Operator*>& Graph::OperatorAddedEvent() {
    return implementation->operatorAddedEvent;
}

Event<Operator*>& Graph::OperatorRemovedEvent() {
    return implementation->operatorRemovedEvent;
}

Event<>& Graph::ConnectionsChangedEvent() {
    return implementation->connectionsChangedEvent;
}

Object* Graph::FindChildImplementation(std::string_view key) {
    if (Object* own = Operator::FindChildImplementation(key)) {
        return own;
    }
    return implementation->operatorsByKey->Find(key);
}

}  // namespace Vantel
