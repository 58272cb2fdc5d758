#include <Vantel/Operators/GraphInputsOperator.h>

#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/ParameterImplementation.h>

#include "Operators/GraphBoundary.h"
#include "Projects/EditRecorder.h"

namespace Vantel {

using InputMirror = Detail::MirrorPair<DataInput, DataOutput>;

class GraphInputsOperator::Implementation {
public:
    explicit Implementation(GraphInputsOperator& owner)
        : owner(owner),
          watch(
              owner, [this] { Sync(); }, [this](Object& member) { Release(member); }) {}

    // Brings the mirror in line with the graph (none without one); the mirror is derived, so nothing of it
    // is recorded.
    void Sync() {
        Graph* graph = owner.GetGraph();
        EditRecorder::Unrecorded unrecorded;
        Detail::SyncMirrors(
            inputs, Detail::UserInputs(graph), [this](DataInput& source) { return MakeOutput(source); },
            [this](DataOutput* mirror) { owner.RemoveDataOutput(mirror); },
            [this](DataOutput* mirror, std::size_t index) { owner.MoveDataOutput(mirror, index); });
        parameters.Sync(graph);
    }

    DataOutput* MakeOutput(DataInput& source) {
        const ObjectType* type = TypeLibrary::Get()->FindDataOutputType(source.GetType());
        std::unique_ptr<DataOutput> output = Detail::MakeOfType<DataOutput>(type, DataOutput::Type());
        output->SetKey(source.GetKey());
        output->SetName(source.GetName());
        DataOutput* raw = output.get();
        return owner.AddDataOutput(std::move(output)) ? raw : nullptr;
    }

    // A graph member is about to go: its mirror's connections inside go first, recorded, so that undo brings
    // them back once the member (and with it the mirror) is back. The mirror itself follows in Sync.
    void Release(Object& member) {
        Graph* graph = owner.GetGraph();
        if (graph == nullptr) {
            return;
        }
        if (auto* port = dynamic_cast<DataInput*>(&member)) {
            if (auto* mirror = Detail::FindMirrorOf(inputs, *port)) {
                graph->DisconnectDataOutput(*mirror);
            }
        } else {
            parameters.Release(*graph, member);
        }
    }

    GraphInputsOperator& owner;
    Detail::GraphWatch watch;
    std::vector<InputMirror> inputs;
    Detail::ParameterMirrors parameters{owner, false, ParameterFlag::Output};
};

GraphInputsOperator::GraphInputsOperator() : implementation(std::make_unique<Implementation>(*this)) {}

GraphInputsOperator::~GraphInputsOperator() = default;

const ObjectType* GraphInputsOperator::Type() {
    static const ObjectType type("Vantel.General.GraphInputsOperator", Operator::Type(),
                                 MakeFactory<GraphInputsOperator>(), "Graph Inputs");
    return &type;
}

const ObjectType* GraphInputsOperator::GetType() const {
    return Type();
}

DataOutput* GraphInputsOperator::FindMirror(const DataInput& graphInput) {
    return Detail::FindMirrorOf(implementation->inputs, graphInput);
}

Parameter* GraphInputsOperator::FindMirror(const Parameter& graphParameter) {
    return implementation->parameters.Find(graphParameter);
}

void GraphInputsOperator::Execute(ExecutionContext&) {
    for (const InputMirror& pair : implementation->inputs) {
        const DataInput& source = *pair.source;
        if (source.GetDataSerial() != pair.mirror->GetDataSerial()) {
            pair.mirror->Activate(source.GetData());
        }
    }
    for (const Detail::ParameterMirrors::Pair& pair : implementation->parameters.Pairs()) {
        if (pair.source->HasValueChanged()) {
            pair.mirror->SetFromData(pair.source->GetData());
        }
    }
}

bool GraphInputsOperator::Outdated() const {
    if (Operator::Outdated()) {
        return true;
    }
    for (const InputMirror& pair : implementation->inputs) {
        if (pair.source->GetDataSerial() != pair.mirror->GetDataSerial()) {
            return true;
        }
    }
    for (const Detail::ParameterMirrors::Pair& pair : implementation->parameters.Pairs()) {
        if (pair.source->HasValueChanged()) {
            return true;
        }
    }
    return false;
}

}  // namespace Vantel
