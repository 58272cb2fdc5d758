#include <Vantel/Operators/GraphOutputsOperator.h>

#include "Operators/GraphBoundary.h"

namespace Vantel {

using OutputMirror = Detail::MirrorPair<DataOutput, DataInput>;

class GraphOutputsOperator::Implementation : public Detail::BoundaryMirrors<DataOutput, DataInput> {
public:
    explicit Implementation(GraphOutputsOperator& owner)
        : BoundaryMirrors(owner, true, ParameterFlag::NotSaved) {}
};

GraphOutputsOperator::GraphOutputsOperator() : implementation(std::make_unique<Implementation>(*this)) {}

GraphOutputsOperator::~GraphOutputsOperator() = default;

VANTEL_DEFINE_OBJECT_TYPE(GraphOutputsOperator, Operator, "Vantel.General.GraphOutputsOperator",
                          "Graph Outputs")

DataInput* GraphOutputsOperator::FindMirror(const DataOutput& graphOutput) {
    return Detail::FindMirrorOf(implementation->ports, graphOutput);
}

Parameter* GraphOutputsOperator::FindMirror(const Parameter& graphParameter) {
    return implementation->parameters.Find(graphParameter);
}

void GraphOutputsOperator::Execute(ExecutionContext&) {
    for (const OutputMirror& pair : implementation->ports) {
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
