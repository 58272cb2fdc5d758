// Serialization.h: turns the model into the JSON of project files and undo records.
//
//   nlohmann::json entry = Serialization::SerializeParameter(radius);   // {"key": "Radius", "value": 2.0}
//   nlohmann::json own = Serialization::SerializeOwnStructure(op);       // the parameters a user added
#pragma once

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>

namespace Vantel {

class Operator;
class Parameter;
class ParameterGroup;
class ParameterNode;

// Free functions, one per kind of object; none fails or logs. JSON objects keep their keys sorted.
namespace Serialization {

// "key" when not empty; "value" unless the parameter is Output or NotSaved or every component is driven by a
// connection; for a user-added parameter also "type", "name" and, when it is an output, "output": true.
VANTEL_API nlohmann::json SerializeParameter(const Parameter& parameter);
// A bundle list as {"key", "bundles": [{"key", "kind", "parameters"}]}, a bundle as its entry in that array,
// another group as its scope, a parameter with SerializeParameter.
VANTEL_API nlohmann::json SerializeParameterNode(const ParameterNode& node);
// The array of SerializeParameterNode of the group's children, in order.
VANTEL_API nlohmann::json SerializeParameterScope(const ParameterGroup& group);
// The array of SerializeParameterNode of the root group's children that a user added.
VANTEL_API nlohmann::json SerializeOwnStructure(const Operator& op);

}  // namespace Serialization
}  // namespace Vantel
