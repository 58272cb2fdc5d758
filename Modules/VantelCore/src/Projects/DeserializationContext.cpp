// The context of one load: what waits until the whole tree exists, and how it is finished.
#include <Vantel/Projects/Deserialization.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphImplementation.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Support/Logging.h>

#include "Projects/DeserializationSupport.h"

namespace Vantel::Deserialization {

class Context::Implementation {
public:
    struct DeferredValue {
        Ptr<Parameter> parameter;
        std::string key;  // to name the value should the parameter go away
        nlohmann::json value;
    };
    struct StoredValue {
        Ptr<Operator> op;
        Ptr<ParameterGroup> scope;
        std::size_t index = 0;
        nlohmann::json entry;
    };
    struct DeferredConnections {
        Ptr<Graph> graph;
        nlohmann::json data;
        nlohmann::json parameters;
        // Set when the arrays are read in place; the copies above stay null then.
        const nlohmann::json* dataInPlace = nullptr;
        const nlohmann::json* parametersInPlace = nullptr;

        const nlohmann::json& Data() const { return dataInPlace != nullptr ? *dataInPlace : data; }
        const nlohmann::json& Parameters() const {
            return parametersInPlace != nullptr ? *parametersInPlace : parameters;
        }
    };

    // Applies the reference values. A structural one rebuilds its operator as it is set, like any change.
    void ApplyReferenceValues(Context& context) {
        for (DeferredValue& deferred : std::exchange(references, {})) {
            Parameter* parameter = deferred.parameter.Get();
            if (parameter == nullptr) {
                static const std::string reason = "Context::ResolveReferences: Parameter pointer is null.";
                LogError(reason);
                dropped.push_back({DroppedEntry::Kind::ParameterValue, {}, deferred.key, reason});
                continue;
            }
            Detail::GiveValue(*parameter, deferred.value, context);
        }
    }

    // Rebuilds each operator that has stored values left and gives those a second chance, the values whose
    // structural parameter went away included (they get their report).
    void ApplyStoredValues(Context& context) {
        std::vector<StoredValue> values = std::exchange(stored, {});
        std::vector<Ptr<Operator>> operators;
        for (const StoredValue& value : values) {
            if (value.op && std::find(operators.begin(), operators.end(), value.op) == operators.end()) {
                operators.push_back(value.op);
            }
        }
        for (const Ptr<Operator>& handle : operators) {
            Operator* op = handle.Get();
            if (op == nullptr) {
                continue;
            }
            Detail::RebuildStructure(*op);
            std::vector<Detail::Unmatched> missing;
            for (const StoredValue& value : values) {
                if (value.op.Get() != op) {
                    continue;
                }
                ParameterGroup* scope = value.scope.Get();
                Detail::ApplyEntry(*op, scope != nullptr ? *scope : op->GetParameterGroup(), value.index,
                                   value.entry, context, Detail::References::Apply, missing);
            }
            if (missing.empty()) {
                continue;
            }
            const std::string reason = "Context::ResolveReferences: some stored values of operator '" +
                                       op->GetName() + "' did not match a member and are dropped.";
            LogWarning(reason);
            for (const Detail::Unmatched& entry : missing) {
                ParameterGroup* scope = entry.scope.Get();
                dropped.push_back({Detail::KindOf(entry),
                                   Ptr<Object>(scope != nullptr ? static_cast<Object*>(scope) : op),
                                   Detail::KeyOf(entry), reason});
            }
        }
    }

    struct Dropped {
        DroppedEntry::Kind kind;
        Ptr<Object> owner;
        std::string key;
        std::string reason;
        // Set for a value its parameter refused: while the parameter lives, it names the entry.
        Ptr<Parameter> parameter = {};

        DroppedEntry Describe() const {
            if (Parameter* refusing = parameter.Get()) {
                Object* parent = refusing->GetParentObject();
                return {kind, parent != nullptr ? parent->GetPath().ToString() : std::string(),
                        refusing->GetKey(), reason};
            }
            Object* object = owner.Get();
            return {kind, object != nullptr ? object->GetPath().ToString() : std::string(), key, reason};
        }
    };

    std::vector<DeferredValue> references;
    std::vector<StoredValue> stored;
    std::vector<DeferredConnections> graphs;
    std::vector<Dropped> dropped;
    bool entriesInPlace = false;
};

Context::Context() : implementation(std::make_unique<Implementation>()) {}

Context::~Context() = default;

Context::Context(Context&&) noexcept = default;

Context& Context::operator=(Context&&) noexcept = default;

void Context::DeferReferenceValue(Parameter& parameter, nlohmann::json value) {
    implementation->references.push_back({Ptr<Parameter>(&parameter), parameter.GetKey(), std::move(value)});
}

bool Context::HasDeferredStructuralValue(const Operator& op) const {
    return std::any_of(implementation->references.begin(), implementation->references.end(),
                       [&op](const Implementation::DeferredValue& deferred) {
                           const Parameter* parameter = deferred.parameter.Get();
                           return parameter != nullptr && parameter->GetOperator() == &op &&
                                  parameter->HasParameterFlag(ParameterFlag::Structural);
                       });
}

void Context::StoreValue(Operator& op, ParameterGroup& scope, std::size_t index, nlohmann::json entry) {
    implementation->stored.push_back(
        {Ptr<Operator>(&op), Ptr<ParameterGroup>(&scope), index, std::move(entry)});
}

void Context::DeferConnections(Graph& graph, nlohmann::json dataConnections,
                               nlohmann::json parameterConnections) {
    implementation->graphs.push_back(
        {Ptr<Graph>(&graph), std::move(dataConnections), std::move(parameterConnections), nullptr, nullptr});
}

void Context::ResolveReferences() {
    implementation->ApplyReferenceValues(*this);
    implementation->ApplyStoredValues(*this);

    const std::vector<Implementation::DeferredConnections> graphs = std::exchange(implementation->graphs, {});
    for (const Implementation::DeferredConnections& deferred : graphs) {
        if (Graph* graph = deferred.graph.Get()) {
            DeserializeDataConnections(deferred.Data(), *graph, *this);
            DeserializeParameterConnections(deferred.Parameters(), *graph, *this);
            // Each connection handed its source's value on as it was made; only in a chain can that have
            // been a value the source did not have yet, and a large file without one is spared the order.
            Graph::Implementation& implementation = *Access::GetImplementation(*graph);
            if (implementation.HasParameterChains()) {
                implementation.PassConnectedValues();
            }
        }
    }
    // List inputs exist to receive a connection: whatever is still unconnected now is a leftover.
    for (const Implementation::DeferredConnections& deferred : graphs) {
        if (Graph* graph = deferred.graph.Get()) {
            for (Operator* op : std::vector<Operator*>(graph->GetOperators())) {
                Detail::PruneListInputs(*op, this);
            }
        }
    }
}

std::vector<DroppedEntry> Context::GetDroppedEntries() const {
    std::vector<DroppedEntry> entries;
    for (const Implementation::Dropped& dropped : implementation->dropped) {
        entries.push_back(dropped.Describe());
    }
    return entries;
}

namespace Detail {

void ContextAccess::ReadEntriesInPlace(Context& context) {
    context.implementation->entriesInPlace = true;
}

void ContextAccess::DeferConnections(Context& context, Graph& graph, const nlohmann::json& dataConnections,
                                     const nlohmann::json& parameterConnections) {
    Context::Implementation& implementation = *context.implementation;
    if (!implementation.entriesInPlace) {
        context.DeferConnections(graph, dataConnections, parameterConnections);
        return;
    }
    implementation.graphs.push_back(
        {Ptr<Graph>(&graph), nullptr, nullptr, &dataConnections, &parameterConnections});
}

void ContextAccess::NoteDropped(Context& context, DroppedEntry::Kind kind, Object* owner, std::string key,
                                std::string reason) {
    context.implementation->dropped.push_back({kind, Ptr<Object>(owner), std::move(key), std::move(reason)});
}

void ContextAccess::NoteRefusedValue(Context& context, Parameter& parameter, std::string reason) {
    context.implementation->dropped.push_back({DroppedEntry::Kind::ParameterValue,
                                               {},
                                               parameter.GetKey(),
                                               std::move(reason),
                                               Ptr<Parameter>(&parameter)});
}

void DropEntry(Context& context, DroppedEntry::Kind kind, Object& owner, std::string key,
               std::string reason) {
    LogError(reason);
    ContextAccess::NoteDropped(context, kind, &owner, std::move(key), std::move(reason));
}

}  // namespace Detail
}  // namespace Vantel::Deserialization
