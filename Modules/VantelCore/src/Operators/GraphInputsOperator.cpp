#include <Vantel/Operators/GraphInputsOperator.h>

#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Projects/Transaction.h>

#include "Operators/GraphBoundary.h"

namespace Vantel {

using InputMirror = Detail::MirrorPair<DataInput, DataOutput>;
using ParameterMirror = Detail::MirrorPair<Parameter, Parameter>;

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
        Transaction::SuppressRecording suppress;
        Detail::SyncMirrors(
            inputs, Detail::UserInputs(graph), [this](DataInput& source) { return MakeOutput(source); },
            [this](DataOutput* mirror) { owner.RemoveDataOutput(mirror); },
            [this](DataOutput* mirror, std::size_t index) { owner.MoveDataOutput(mirror, index); });
        Detail::SyncMirrors(
            parameters, Detail::UserParameters(graph, false),
            [this](Parameter& source) { return MakeParameter(source); },
            [this](Parameter* mirror) { owner.RemoveParameter(mirror); },
            [this](Parameter* mirror, std::size_t index) { owner.GetParameterGroup().Move(mirror, index); });
    }

    DataOutput* MakeOutput(DataInput& source) {
        const ObjectType* type = TypeLibrary::Get()->FindDataOutputType(source.GetType());
        std::unique_ptr<DataOutput> output = Detail::MakeOfType<DataOutput>(type, DataOutput::Type());
        output->SetKey(source.GetKey());
        output->SetName(source.GetName());
        DataOutput* raw = output.get();
        return owner.AddDataOutput(std::move(output)) ? raw : nullptr;
    }

    Parameter* MakeParameter(Parameter& source) {
        std::unique_ptr<Parameter> parameter = Detail::MakeOfType<Parameter>(source.GetType(), nullptr);
        if (parameter == nullptr) {
            return nullptr;
        }
        parameter->SetKey(source.GetKey());
        parameter->SetName(source.GetName());
        parameter->SetParameterFlag(ParameterFlag::Output, true);
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
        if (auto* port = dynamic_cast<DataInput*>(&member)) {
            if (auto* mirror = Detail::FindMirrorOf(inputs, *port)) {
                graph->DisconnectDataOutput(*mirror);
            }
        } else if (auto* parameter = dynamic_cast<Parameter*>(&member)) {
            if (Parameter* mirror = Detail::FindMirrorOf(parameters, *parameter)) {
                graph->DisconnectParameter(*mirror);
            }
        }
    }

    GraphInputsOperator& owner;
    Detail::GraphWatch watch;
    std::vector<InputMirror> inputs;
    std::vector<ParameterMirror> parameters;
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
    return Detail::FindMirrorOf(implementation->parameters, graphParameter);
}

void GraphInputsOperator::Execute(ExecutionContext&) {
    for (const InputMirror& pair : implementation->inputs) {
        const DataInput& source = *pair.source;
        if (source.GetDataSerial() != pair.mirror->GetDataSerial()) {
            pair.mirror->Activate(source.GetData());
        }
    }
    for (const ParameterMirror& pair : implementation->parameters) {
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
    for (const ParameterMirror& pair : implementation->parameters) {
        if (pair.source->HasValueChanged()) {
            return true;
        }
    }
    return false;
}

}  // namespace Vantel
