// GraphBoundary.h: what the graph inputs and outputs operators share: following the ports and parameters of
// the graph that contains them.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/EventSubscription.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterRootGroup.h>

#include "Projects/EditRecorder.h"

namespace Vantel::Detail {

// One graph member and the port or parameter that stands for it on the boundary operator.
template <typename Source, typename Mirror>
struct MirrorPair {
    Ptr<Source> source;
    Mirror* mirror = nullptr;
};

// The mirror of `source` among `pairs`; null when it has none.
template <typename Source, typename Mirror>
Mirror* FindMirrorOf(const std::vector<MirrorPair<Source, Mirror>>& pairs, const Source& source) {
    for (const MirrorPair<Source, Mirror>& pair : pairs) {
        if (pair.source.Get() == &source) {
            return pair.mirror;
        }
    }
    return nullptr;
}

// Keeps a boundary operator's mirror in step with its graph, eagerly: `onChange` runs as the operator joins
// or leaves a graph and after every addition, removal, move or rename of the graph's ports and parameters, so
// that the mirror (and with it a saved file) never depends on what looked at it before. `onRemoving` hears of
// a port or parameter node of the graph that is about to go, while the mirror of it is still connected.
class GraphWatch {
public:
    GraphWatch(Operator& owner, std::function<void()> onChange, std::function<void(Object&)> onRemoving)
        : onChange(std::move(onChange)), onRemoving(std::move(onRemoving)) {
        joining = Access::GetImplementation(owner)->GraphChangedEvent().Subscribe([this](Graph* graph) {
            Watch(graph);
            this->onChange();
        });
    }

private:
    void Watch(Graph* graph) {
        subscriptions.clear();
        if (graph == nullptr) {
            return;
        }
        const auto changed = [this] { onChange(); };
        subscriptions.push_back(graph->DataInputAddedEvent().Subscribe([changed](DataInput*) { changed(); }));
        subscriptions.push_back(
            graph->DataInputRemovedEvent().Subscribe([changed](DataInput*) { changed(); }));
        subscriptions.push_back(
            graph->DataOutputAddedEvent().Subscribe([changed](DataOutput*) { changed(); }));
        subscriptions.push_back(
            graph->DataOutputRemovedEvent().Subscribe([changed](DataOutput*) { changed(); }));
        subscriptions.push_back(graph->DataPortsReorderedEvent().Subscribe(changed));
        subscriptions.push_back(graph->ParameterTreeChangedEvent().Subscribe(changed));
        Operator::Implementation& members = *Access::GetImplementation(static_cast<Operator&>(*graph));
        subscriptions.push_back(members.MemberRenamedEvent().Subscribe([changed](Object*) { changed(); }));
        const auto removing = [this](Object* member) { onRemoving(*member); };
        subscriptions.push_back(members.DataInputRemovingEvent().Subscribe(removing));
        subscriptions.push_back(members.DataOutputRemovingEvent().Subscribe(removing));
        subscriptions.push_back(members.ParameterNodeRemovingEvent().Subscribe(removing));
    }

    std::function<void()> onChange;
    std::function<void(Object&)> onRemoving;
    EventSubscription joining;
    std::vector<EventSubscription> subscriptions;
};

// The data inputs (or outputs, as `Port` says) that a user added to `graph`, in their order.
template <typename Port>
std::vector<Port*> UserPorts(Graph* graph) {
    std::vector<Port*> ports;
    if (graph == nullptr) {
        return ports;
    }
    const auto& all = [graph]() -> const std::vector<Port*>& {
        if constexpr (std::is_same_v<Port, DataInput>) {
            return graph->GetAllDataInputs();
        } else {
            return graph->GetAllDataOutputs();
        }
    }();
    for (Port* port : all) {
        if (port->IsAddedByUser()) {
            ports.push_back(port);
        }
    }
    return ports;
}

// The parameters a user added to `graph` whose Output flag equals `outputs`, in tree order.
inline std::vector<Parameter*> UserParameters(Graph* graph, bool outputs) {
    std::vector<Parameter*> parameters;
    if (graph != nullptr) {
        for (ParameterNode* node : graph->GetParameterGroup().GetChildren()) {
            auto* parameter = dynamic_cast<Parameter*>(node);
            if (parameter != nullptr && parameter->IsAddedByUser() &&
                parameter->HasParameterFlag(ParameterFlag::Output) == outputs) {
                parameters.push_back(parameter);
            }
        }
    }
    return parameters;
}

// Brings `pairs` in line with `sources`: drops mirrors of sources that went, makes mirrors for new sources
// with `make`, removes with `remove`, and keeps keys, names and order equal to the sources'.
template <typename Source, typename Mirror, typename Make, typename Remove, typename Move>
void SyncMirrors(std::vector<MirrorPair<Source, Mirror>>& pairs, const std::vector<Source*>& sources,
                 Make make, Remove remove, Move move) {
    std::vector<MirrorPair<Source, Mirror>> kept;
    for (MirrorPair<Source, Mirror>& pair : pairs) {
        Source* source = pair.source.Get();
        if (source != nullptr && std::find(sources.begin(), sources.end(), source) != sources.end()) {
            kept.push_back(pair);
        } else {
            remove(pair.mirror);
        }
    }
    std::vector<MirrorPair<Source, Mirror>> ordered;
    for (Source* source : sources) {
        auto found = std::find_if(kept.begin(), kept.end(),
                                  [source](const auto& pair) { return pair.source.Get() == source; });
        if (found != kept.end()) {
            ordered.push_back(*found);
        } else if (Mirror* mirror = make(*source)) {
            ordered.push_back({Ptr<Source>(source), mirror});
        }
    }
    for (std::size_t i = 0; i < ordered.size(); ++i) {
        move(ordered[i].mirror, i);
        if (ordered[i].mirror->GetName() != ordered[i].source->GetName()) {
            ordered[i].mirror->SetName(ordered[i].source->GetName());
        }
    }
    pairs = std::move(ordered);
}

// A new object of `type`, or of `fallback` when `type` is null or cannot be made, as a T.
template <typename T>
std::unique_ptr<T> MakeOfType(const ObjectType* type, const ObjectType* fallback) {
    for (const ObjectType* candidate : {type, fallback}) {
        if (candidate == nullptr) {
            continue;
        }
        std::unique_ptr<Object> made = candidate->CreateInstance();
        if (auto* typed = dynamic_cast<T*>(made.get())) {
            made.release();
            return std::unique_ptr<T>(typed);
        }
    }
    return nullptr;
}

// The parameter half of a boundary operator, the same on both sides: one parameter of the operator per user
// parameter of its graph (the graph's inputs or its outputs), of the same type, key and name, with `flag`
// set on each.
class ParameterMirrors {
public:
    using Pair = MirrorPair<Parameter, Parameter>;

    ParameterMirrors(Operator& owner, bool graphOutputs, ParameterFlag flag);

    // Brings the mirrors in line with `graph`'s parameters (none without a graph). Records nothing.
    void Sync(Graph* graph);
    // When `member` is one of the graph's mirrored parameters: disconnects its mirror inside `graph`,
    // recorded.
    void Release(Graph& graph, Object& member);
    Parameter* Find(const Parameter& source) const { return FindMirrorOf(pairs, source); }
    const std::vector<Pair>& Pairs() const { return pairs; }

private:
    Parameter* Make(const Parameter& source);

    Operator& owner;
    bool graphOutputs;
    ParameterFlag flag;
    std::vector<Pair> pairs;
};

// What a boundary operator keeps of the graph that contains it: a port of the other kind (a `Mirror`) for
// each `Source` port a user added to the graph, and a parameter for each of the graph's user parameters on
// that side (outputs when `graphOutputs`, each mirror with `flag`). Follows the graph through a GraphWatch.
template <typename Source, typename Mirror>
class BoundaryMirrors {
public:
    using PortPair = MirrorPair<Source, Mirror>;

    BoundaryMirrors(Operator& owner, bool graphOutputs, ParameterFlag flag)
        : parameters(owner, graphOutputs, flag),
          owner(owner),
          watch(
              owner, [this] { Sync(); }, [this](Object& member) { Release(member); }) {}

    // Brings the mirror in line with the graph (none without one); the mirror is derived, so nothing of it
    // is recorded.
    void Sync() {
        Graph* graph = owner.GetGraph();
        EditRecorder::Unrecorded unrecorded;
        SyncMirrors(
            ports, UserPorts<Source>(graph), [this](Source& source) { return MakeMirror(source); },
            [this](Mirror* mirror) { RemoveMirror(mirror); },
            [this](Mirror* mirror, std::size_t index) { MoveMirror(mirror, index); });
        parameters.Sync(graph);
    }

    // A graph member is about to go: its mirror's connections inside go first, recorded, so that undo brings
    // them back once the member (and with it the mirror) is back. The mirror itself follows in Sync.
    void Release(Object& member) {
        Graph* graph = owner.GetGraph();
        if (graph == nullptr) {
            return;
        }
        if (auto* port = dynamic_cast<Source*>(&member)) {
            if (Mirror* mirror = FindMirrorOf(ports, *port)) {
                Disconnect(*graph, *mirror);
            }
        } else {
            parameters.Release(*graph, member);
        }
    }

    std::vector<PortPair> ports;
    ParameterMirrors parameters;

private:
    static constexpr bool kMirrorsAreInputs = std::is_same_v<Mirror, DataInput>;

    Mirror* MakeMirror(Source& source) {
        TypeLibrary* library = TypeLibrary::Get();
        const ObjectType* type = kMirrorsAreInputs ? library->FindDataInputType(source.GetType())
                                                   : library->FindDataOutputType(source.GetType());
        std::unique_ptr<Mirror> mirror = MakeOfType<Mirror>(type, Mirror::Type());
        mirror->SetKey(source.GetKey());
        mirror->SetName(source.GetName());
        Mirror* raw = mirror.get();
        return AddMirror(std::move(mirror)) ? raw : nullptr;
    }

    bool AddMirror(std::unique_ptr<Mirror>&& mirror) {
        if constexpr (kMirrorsAreInputs) {
            return owner.AddDataInput(std::move(mirror));
        } else {
            return owner.AddDataOutput(std::move(mirror));
        }
    }

    void RemoveMirror(Mirror* mirror) {
        if constexpr (kMirrorsAreInputs) {
            owner.RemoveDataInput(mirror);
        } else {
            owner.RemoveDataOutput(mirror);
        }
    }

    void MoveMirror(Mirror* mirror, std::size_t index) {
        if constexpr (kMirrorsAreInputs) {
            owner.MoveDataInput(mirror, index);
        } else {
            owner.MoveDataOutput(mirror, index);
        }
    }

    static void Disconnect(Graph& graph, Mirror& mirror) {
        if constexpr (kMirrorsAreInputs) {
            graph.DisconnectDataInput(mirror);
        } else {
            graph.DisconnectDataOutput(mirror);
        }
    }

    Operator& owner;
    GraphWatch watch;
};

}  // namespace Vantel::Detail
