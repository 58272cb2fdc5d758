// vantel graph: the project's graphs in Graphviz DOT, nested graphs as clusters.
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Projects/Project.h>

#include "Commands.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {
namespace {

// Text inside a DOT double-quoted string.
std::string Quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
        }
        if (c == '\n') {
            result += "\\n";
        } else {
            result += c;
        }
    }
    return result + '"';
}

// Text of one field of a record label, where braces, bars and angle brackets are structure; the result is
// also safe inside a double-quoted string.
std::string RecordField(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (std::string_view("{}|<>\"\\").find(c) != std::string_view::npos) {
            result += '\\';
        }
        result += c == '\n' ? ' ' : c;
    }
    return result;
}

std::string DisplayName(const Vantel::Operator& op) {
    return op.GetName().empty() ? op.GetKey() : op.GetName();
}

class DotWriter {
public:
    void WriteProject(const Vantel::Graph& root) {
        Out() << "digraph " << Quoted(root.GetKey()) << " {\n"
              << "    rankdir=LR;\n"
              << "    node [shape=record];\n";
        WriteContents(root, 1);
        Out() << "}\n";
    }

private:
    // Node ids are made here, so that names never have to be ids.
    std::string NewId() { return "n" + std::to_string(nextId++); }

    // With rankdir=LR the outer braces lay inputs, title and outputs side by side, the inner ones stack
    // ports.
    void WriteOperatorNode(const Vantel::Operator& op, std::string_view indent) {
        const std::string id = NewId();
        nodes[&op] = id;
        std::string label = "{";
        const auto& inputs = op.GetAllDataInputs();
        if (!inputs.empty()) {
            label += "{";
            for (std::size_t i = 0; i < inputs.size(); ++i) {
                const std::string port = "i" + std::to_string(i);
                ports[inputs[i]] = id + ":" + port;
                label += (i > 0 ? "|<" : "<") + port + "> " + RecordField(inputs[i]->GetKey());
            }
            label += "}|";
        }
        label += RecordField(DisplayName(op)) + "\\n" + RecordField(op.GetType()->GetName());
        const auto& outputs = op.GetAllDataOutputs();
        if (!outputs.empty()) {
            label += "|{";
            for (std::size_t i = 0; i < outputs.size(); ++i) {
                const std::string port = "o" + std::to_string(i);
                ports[outputs[i]] = id + ":" + port;
                label += (i > 0 ? "|<" : "<") + port + "> " + RecordField(outputs[i]->GetKey());
            }
            label += "}";
        }
        label += "}";
        // RecordField already escaped quotes and backslashes; "\n" between name and type is DOT's line break.
        Out() << indent << id << " [label=\"" << label << "\"];\n";
    }

    void WriteContents(const Vantel::Graph& graph, int depth) {
        const std::string indent(4 * static_cast<std::size_t>(depth), ' ');
        for (const Vantel::Operator* op : graph.GetOperators()) {
            if (!op->GetType()->Inherits(Vantel::Graph::Type())) {
                WriteOperatorNode(*op, indent);
                continue;
            }
            // The nested graph's own node, inside its cluster, carries its ports for the connections outside.
            const auto& nested = static_cast<const Vantel::Graph&>(*op);
            Out() << indent << "subgraph cluster_" << nextCluster++ << " {\n"
                  << indent << "    label=" << Quoted(DisplayName(nested)) << ";\n";
            WriteOperatorNode(nested, indent + "    ");
            WriteContents(nested, depth + 1);
            Out() << indent << "}\n";
        }
        // Every endpoint belongs to an operator of this graph, boundary mirrors included, so it has a node.
        for (const Vantel::DataConnection& connection : graph.GetDataConnections()) {
            Out() << indent << ports.at(connection.output) << " -> " << ports.at(connection.input) << ";\n";
        }
        for (const auto& [endpoints, links] : graph.GetParameterConnections()) {
            Out() << indent << nodes.at(endpoints.source->GetOperator()) << " -> "
                  << nodes.at(endpoints.target->GetOperator()) << " [style=dashed, label="
                  << Quoted(endpoints.source->GetKey() + " -> " + endpoints.target->GetKey()) << "];\n";
        }
    }

    std::unordered_map<const Vantel::Operator*, std::string> nodes;
    std::unordered_map<const void*, std::string> ports;
    int nextId = 0;
    int nextCluster = 0;
};

}  // namespace

int GraphCommand(const Arguments& arguments) {
    Session session(arguments.plugins);
    const Vantel::Project& project = session.LoadProject(arguments.operands[0]);
    DotWriter().WriteProject(*project.GetRootGraph());
    return kExitOk;
}

}  // namespace VantelHost
