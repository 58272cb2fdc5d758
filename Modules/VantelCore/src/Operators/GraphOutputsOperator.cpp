#include <Vantel/Operators/GraphOutputsOperator.h>

#include <Vantel/Operators/OperatorImplementation.h>

#include "Operators/GraphBoundary.h"
#include "Projects/EditRecorder.h"

namespace Vantel {

using OutputMirror = Detail::MirrorPair<DataOutput, DataInput>;

class GraphOutputsOperator::Implementation {
public:
    explicit Implementation(GraphOutputsOperator& owner)
        : owner(owner),
          watch(
              owner, [this] { Sync(); }, [this](Object& member) { Release(member); }) {}

    // Brings the mirror in line with the graph (none without one); the mirror is derived, so nothing of it
    // is recorded.
    void Sync() {
        Graph* graph = owner.GetGraph();
        EditRecorder::Unrecorded unrecorded;
        Detail::SyncMirrors(
            outputs, Detail::UserOutputs(graph), [this](DataOutput& source) { return MakeInput(source); },
            [this](DataInput* mirror) { owner.RemoveDataInput(mirror); },
            [this](DataInput* mirror, std::size_t index) { owner.MoveDataInput(mirror, index); });
        parameters.Sync(graph);
    }

    DataInput* MakeInput(DataOutput& source) {
        const ObjectType* type = TypeLibrary::Get()->FindDataInputType(source.GetType());
        std::unique_ptr<DataInput> input = Detail::MakeOfType<DataInput>(type, DataInput::Type());
        input->SetKey(source.GetKey());
        input->SetName(source.GetName());
        DataInput* raw = input.get();
        return owner.AddDataInput(std::move(input)) ? raw : nullptr;
    }

    // A graph member is about to go: its mirror's connections inside go first, recorded, so that undo brings
    // them back once the member (and with it the mirror) is back. The mirror itself follows in Sync.
    void Release(Object& member) {
        Graph* graph = owner.GetGraph();
        if (graph == nullptr) {
            return;
        }
        if (auto* port = dynamic_cast<DataOutput*>(&member)) {
            if (auto* mirror = Detail::FindMirrorOf(outputs, *port)) {
                graph->DisconnectDataInput(*mirror);
            }
        } else {
            parameters.Release(*graph, member);
        }
    }

    GraphOutputsOperator& owner;
    Detail::GraphWatch watch;
    std::vector<OutputMirror> outputs;
    Detail::ParameterMirrors parameters{owner, true, ParameterFlag::NotSaved};
};

GraphOutputsOperator::GraphOutputsOperator() : implementation(std::make_unique<Implementation>(*this)) {}

GraphOutputsOperator::~GraphOutputsOperator() = default;

const ObjectType* GraphOutputsOperator::Type() {
    static const ObjectType type("Vantel.General.GraphOutputsOperator", Operator::Type(),
                                 MakeFactory<GraphOutputsOperator>(), "Graph Outputs");
    return &type;
}

const ObjectType* GraphOutputsOperator::GetType() const {
    return Type();
}

DataInput* GraphOutputsOperator::FindMirror(const DataOutput& graphOutput) {
    return Detail::FindMirrorOf(implementation->outputs, graphOutput);
}

Parameter* GraphOutputsOperator::FindMirror(const Parameter& graphParameter) {
    return implementation->parameters.Find(graphParameter);
}

void GraphOutputsOperator::Execute(ExecutionContext&) {
    for (const OutputMirror& pair : implementation->outputs) {
        if (pair.mirror->GetDataSerial() != pair.source->GetDataSerial()) {
            pair.source->Activate(pair.mirror->GetData());
        }
    }
    for (const Detail::ParameterMirrors::Pair& pair : implementation->parameters.Pairs()) {
        if (pair.mirror->HasValueChanged()) {
            pair.source->SetFromData(pair.mirror->GetData());
        }
    }
}

}  // namespace Vantel
