// ModelJson.h: what an editor reads of the model, as the JSON of the edit protocol.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace Vantel {
class Graph;
class Operator;
class Parameter;
}  // namespace Vantel

namespace VantelHost {

// Every registered operator, parameter and data type: names, summaries, Markdown docs, the operators'
// declared ports and parameters, and each data type's port colour.
nlohmann::json DescribeTypes();

// One graph, as JSON text: its operators with position, ports and parameter tree, and its connections.
// Nested graphs are named by path (`"graph": true`) and read with their own request.
std::string DescribeGraph(Vantel::Graph& graph);

// What a frame update sends for a parameter: its value as the project file writes it.
nlohmann::json DescribeValue(const Vantel::Parameter& parameter);

}  // namespace VantelHost
