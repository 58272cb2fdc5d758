// Access.h: the gateway through which library code and plug-ins reach private implementations.
//
//   Operator::Implementation& impl = *Access::GetImplementation(op);
//   impl.MarkStructureDirty();
#pragma once

#include <Vantel/Export.h>

namespace Vantel {

// Access
//
// Static members only. Each class whose private block others may reach (operators, graphs, parameters, input
// lists) befriends Access and adds its accessor here as it comes; the execution context is made here too,
// because its constructor is private.
class VANTEL_API Access {
public:
    Access() = delete;
};

}  // namespace Vantel
