#include <Vantel/Operators/GraphInputsOperator.h>

#include "Operators/GraphBoundary.h"

namespace Vantel {

using InputMirror = Detail::MirrorPair<DataInput, DataOutput>;

class GraphInputsOperator::Implementation : public Detail::BoundaryMirrors<DataInput, DataOutput> {
public:
    explicit Implementation(GraphInputsOperator& owner)
        : BoundaryMirrors(owner, false, ParameterFlag::Output) {}
};

GraphInputsOperator::GraphInputsOperator() : implementation(std::make_unique<Implementation>(*this)) {}

GraphInputsOperator::~GraphInputsOperator() = default;

VANTEL_DEFINE_OBJECT_TYPE(GraphInputsOperator, Operator, "Vantel.General.GraphInputsOperator", "Graph Inputs")

DataOutput* GraphInputsOperator::FindMirror(const DataInput& graphInput) {
    return Detail::FindMirrorOf(implementation->ports, graphInput);
}

Parameter* GraphInputsOperator::FindMirror(const Parameter& graphParameter) {
    return implementation->parameters.Find(graphParameter);
}

void GraphInputsOperator::Execute(ExecutionContext&) {
    for (const InputMirror& pair : implementation->ports) {
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
    for (const InputMirror& pair : implementation->ports) {
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
