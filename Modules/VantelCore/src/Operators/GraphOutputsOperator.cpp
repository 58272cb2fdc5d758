#include <Vantel/Operators/GraphOutputsOperator.h>

#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Projects/Transaction.h>

#include "Operators/GraphBoundary.h"

namespace Vantel {

using OutputMirror = Detail::MirrorPair<DataOutput, DataInput>;
using ParameterMirror = Detail::MirrorPair<Parameter, Parameter>;

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
        Transaction::SuppressRecording suppress;
        Detail::SyncMirrors(
            outputs, Detail::UserOutputs(graph), [this](DataOutput& source) { return MakeInput(source); },
            [this](DataInput* mirror) { owner.RemoveDataInput(mirror); },
            [this](DataInput* mirror, std::size_t index) { owner.MoveDataInput(mirror, index); });
        Detail::SyncMirrors(
            parameters, Detail::UserParameters(graph, true),
            [this](Parameter& source) { return MakeParameter(source); },
            [this](Parameter* mirror) { owner.RemoveParameter(mirror); },
            [this](Parameter* mirror, std::size_t index) { owner.GetParameterGroup().Move(mirror, index); });
    }

    DataInput* MakeInput(DataOutput& source) {
        const ObjectType* type = TypeLibrary::Get()->FindDataInputType(source.GetType());
        std::unique_ptr<DataInput> input = Detail::MakeOfType<DataInput>(type, DataInput::Type());
        input->SetKey(source.GetKey());
        input->SetName(source.GetName());
        DataInput* raw = input.get();
        return owner.AddDataInput(std::move(input)) ? raw : nullptr;
    }

    Parameter* MakeParameter(Parameter& source) {
        std::unique_ptr<Parameter> parameter = Detail::MakeOfType<Parameter>(source.GetType(), nullptr);
        if (parameter == nullptr) {
            return nullptr;
        }
        parameter->SetKey(source.GetKey());
        parameter->SetName(source.GetName());
        // Its value comes from a connection inside; keeping one in the file would duplicate the graph's.
        parameter->SetParameterFlag(ParameterFlag::NotSaved, true);
        parameter->SetFromData(source.GetData());
        Parameter* raw = parameter.get();
        return owner.AddParameter(std::move(parameter)) ? raw : nullptr;
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
        } else if (auto* parameter = dynamic_cast<Parameter*>(&member)) {
            if (Parameter* mirror = Detail::FindMirrorOf(parameters, *parameter)) {
                graph->DisconnectParameter(*mirror);
            }
        }
    }

    GraphOutputsOperator& owner;
    Detail::GraphWatch watch;
    std::vector<OutputMirror> outputs;
    std::vector<ParameterMirror> parameters;
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
    return Detail::FindMirrorOf(implementation->parameters, graphParameter);
}

void GraphOutputsOperator::Execute(ExecutionContext&) {
    for (const OutputMirror& pair : implementation->outputs) {
        if (pair.mirror->GetDataSerial() != pair.source->GetDataSerial()) {
            pair.source->Activate(pair.mirror->GetData());
        }
    }
    for (const ParameterMirror& pair : implementation->parameters) {
        if (pair.mirror->HasValueChanged()) {
            pair.source->SetFromData(pair.mirror->GetData());
        }
    }
}

}  // namespace Vantel
