#include <Vantel/Parameters/ParameterScope.h>

#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterRootGroup.h>

namespace Vantel {

ParameterScope::ParameterScope(Operator* op) : group(op != nullptr ? &op->GetParameterGroup() : nullptr) {}

ParameterScope::ParameterScope(ParameterBundle& bundle) : group(&bundle) {}

ParameterScope::ParameterScope(ParameterRootGroup& group) : group(&group) {}

bool ParameterScope::Attach(Parameter& parameter) const {
    return group != nullptr && group->Add(&parameter);
}

}  // namespace Vantel
