#include "Operators/GraphBoundary.h"

namespace Vantel::Detail {

ParameterMirrors::ParameterMirrors(Operator& owner, bool graphOutputs, ParameterFlag flag)
    : owner(owner), graphOutputs(graphOutputs), flag(flag) {}

void ParameterMirrors::Sync(Graph* graph) {
    SyncMirrors(
        pairs, UserParameters(graph, graphOutputs), [this](Parameter& source) { return Make(source); },
        [this](Parameter* mirror) { owner.RemoveParameter(mirror); },
        [this](Parameter* mirror, std::size_t index) { owner.GetParameterGroup().Move(mirror, index); });
}

void ParameterMirrors::Release(Graph& graph, Object& member) {
    if (auto* parameter = dynamic_cast<Parameter*>(&member)) {
        if (Parameter* mirror = Find(*parameter)) {
            graph.DisconnectParameter(*mirror);
        }
    }
}

Parameter* ParameterMirrors::Make(const Parameter& source) {
    std::unique_ptr<Parameter> parameter = MakeOfType<Parameter>(source.GetType(), nullptr);
    if (parameter == nullptr) {
        return nullptr;
    }
    parameter->SetKey(source.GetKey());
    parameter->SetName(source.GetName());
    parameter->SetParameterFlag(flag, true);
    parameter->SetFromData(source.GetData());
    Parameter* raw = parameter.get();
    return owner.AddParameter(std::move(parameter)) ? raw : nullptr;
}

}  // namespace Vantel::Detail
