// ParameterScope.h: where a parameter attaches itself when it is constructed.
//
//   class Blur : public Operator {
//       FloatParameter radius{ParameterScope(this), "Radius", 2.0};   // joins this operator's root group
//   };
#pragma once

#include <cstddef>

#include <Vantel/Export.h>

namespace Vantel {

class Operator;
class Parameter;
class ParameterBundle;
class ParameterGroup;
class ParameterRootGroup;

// ParameterScope
//
// A handle on one group (or none). Parameters constructed with it are appended to that group without
// handing over ownership; a scope without a group leaves them detached.
class VANTEL_API ParameterScope {
public:
    // The operator's root group; no group for a null operator.
    ParameterScope(Operator* op);
    ParameterScope(ParameterBundle& bundle);
    ParameterScope(ParameterRootGroup& group);
    ParameterScope(std::nullptr_t) {}

    ParameterGroup* GetGroup() const { return group; }

private:
    friend class Parameter;
    bool Attach(Parameter& parameter) const;

    ParameterGroup* group = nullptr;
};

}  // namespace Vantel
