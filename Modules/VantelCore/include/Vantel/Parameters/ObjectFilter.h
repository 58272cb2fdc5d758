// ObjectFilter.h: what a reference parameter may point at.
//
//   ObjectFilter filter{.types = {Parameter::Type()}, .scope = ObjectFilter::Scope::SameGraph};
//   filter.forbiddenFlags = ParameterFlag::Output;
//   target.SetFilter(filter);   // a referent that no longer passes is let go
#pragma once

#include <cstdint>
#include <vector>

#include <Vantel/Parameters/ParameterFlag.h>

namespace Vantel {

class ObjectType;

// ObjectFilter
//
// A plain value. The referenced object's type must inherit from one of `types` (no types: nothing passes);
// its owning operator (the object itself when it is an operator, else its nearest ancestor that is one) must
// lie where `scope` says; a referenced parameter must carry every required flag and none of the forbidden
// ones. The default filter admits nothing.
struct ObjectFilter {
    // Where the owning operator of a referenced object must lie, seen from the parameter's own operator. The
    // numbers are fixed; any other value admits nothing.
    enum class Scope : std::uint32_t {
        OwnOperator = 0,           // the parameter's own operator
        ContainingGraph = 1,       // the graph that contains the parameter's operator, as an operator
        SameGraph = 2,             // any operator of that graph, the own one included
        BelowContainingGraph = 3,  // any operator inside that graph, at any depth (not the graph itself)
    };

    std::vector<const ObjectType*> types = {};
    Scope scope = Scope::OwnOperator;
    // Refuses every object whose owning operator is the parameter's own.
    bool excludeOwnOperator = false;
    Flags<ParameterFlag> requiredFlags = {};
    Flags<ParameterFlag> forbiddenFlags = {};
};

}  // namespace Vantel
