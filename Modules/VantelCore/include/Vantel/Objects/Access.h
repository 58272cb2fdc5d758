// Access.h: the gateway through which library code and plug-ins reach private implementations.
//
//   Operator::Implementation& impl = *Access::GetImplementation(op);
//   impl.MarkStructureDirty();
#pragma once

#include <memory>

#include <Vantel/Export.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/Parameter.h>

namespace Vantel {

// Access
//
// Static members only. Each class whose private block others may reach befriends Access, and its accessor
// lives here; include the class's Implementation header to use what the accessor returns.
class VANTEL_API Access {
public:
    Access() = delete;

    static std::unique_ptr<Operator::Implementation>& GetImplementation(Operator& op) {
        return op.implementation;
    }
    static std::unique_ptr<Parameter::Implementation>& GetImplementation(Parameter& parameter) {
        return parameter.implementation;
    }
};

}  // namespace Vantel
