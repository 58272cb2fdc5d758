// Serialization.h: turns the model into the JSON of project files and undo records.
//
//   nlohmann::json entry = Serialization::SerializeParameter(radius);   // {"key": "Radius", "value": 2.0}
//   nlohmann::json own = Serialization::SerializeOwnStructure(op);       // the parameters a user added
//   std::string file = Serialization::SerializeProjectText(project);     // what Project::Serialize writes
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Operators/DataConnection.h>
#include <Vantel/Operators/Graph.h>

namespace Vantel {

class DataInput;
class DataOutput;
class Operator;
class Parameter;
class ParameterGroup;
class ParameterNode;
class Project;

// Free functions, one per kind of object; none fails or logs. JSON objects keep their keys sorted.
namespace Serialization {

// {"root": the root graph as an operator, "version": SerializeProjectFileVersion()}. Changes nothing, change
// marks included: the next frame computes what it would have computed without the save.
VANTEL_API nlohmann::json SerializeProject(const Project& project);
// The project file's text: the bytes of SerializeProject(project).dump(4), written straight from the tree
// without building the document. Text that is not valid UTF-8 throws the JSON library's type error, as dump
// does.
VANTEL_API std::string SerializeProjectText(const Project& project);
// This build's record: "format" 1; "software" (the release version, else the last release) when there is
// one; "dev" {"commit", "modified", "commitsAfterRelease", "date"} for a build without release version.
VANTEL_API nlohmann::json SerializeProjectFileVersion();

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

// "type", "key", "name", "position", "dataInputs" (user-added inputs, and lists that hold inputs),
// "dataOutputs" (user-added outputs), "parameters"; for a graph also "operators" and, when there are any,
// "dataConnections" and "parameterConnections". Leaves change marks alone: undo records use it mid-frame.
VANTEL_API nlohmann::json SerializeOperator(const Operator& op);
// Pairs of endpoint paths relative to the graph of the input's operator, sorted so that the order in which
// connections were made does not show: [{"output": "...", "input": "..."}].
VANTEL_API nlohmann::json SerializeDataConnections(const std::vector<DataConnection>& connections);
// As data connections, with "links": [[source component, target component], ...].
VANTEL_API nlohmann::json SerializeParameterConnections(const ParameterConnectionMap& connections);

// "key" when not empty; for a port the user added also "type" (the port's type name) and "name".
VANTEL_API nlohmann::json SerializeDataInput(const DataInput& input);
VANTEL_API nlohmann::json SerializeDataOutput(const DataOutput& output);

}  // namespace Serialization
}  // namespace Vantel
