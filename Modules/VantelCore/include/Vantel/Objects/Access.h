// Access.h: the gateway through which library code and plug-ins reach private implementations.
//
//   Operator::Implementation& impl = *Access::GetImplementation(op);
//   impl.MarkStructureDirty();
#pragma once

#include <memory>

#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Export.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
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

    static std::unique_ptr<Graph::Implementation>& GetImplementation(Graph& graph) {
        return graph.implementation;
    }
    static std::unique_ptr<Operator::Implementation>& GetImplementation(Operator& op) {
        return op.implementation;
    }
    static const std::unique_ptr<Operator::Implementation>& GetImplementation(const Operator& op) {
        return op.implementation;
    }
    static std::unique_ptr<Parameter::Implementation>& GetImplementation(Parameter& parameter) {
        return parameter.implementation;
    }
    static std::unique_ptr<DataInput::Implementation>& GetImplementation(DataInput& input) {
        return input.implementation;
    }
    static std::unique_ptr<DataOutput::Implementation>& GetImplementation(DataOutput& output) {
        return output.implementation;
    }
    static std::unique_ptr<DataInputList::Implementation>& GetImplementation(DataInputList& list) {
        return list.implementation;
    }
    // Execution contexts are made only here (and so by the runner), never by operators.
    static std::unique_ptr<ExecutionContext> CreateExecutionContext(double time, double deltaTime,
                                                                    unsigned long long frameNumber) {
        return std::unique_ptr<ExecutionContext>(new ExecutionContext(time, deltaTime, frameNumber));
    }
    // The runner keeps one context and moves it on to each new frame.
    static void UpdateExecutionContext(ExecutionContext& context, double time, double deltaTime,
                                       unsigned long long frameNumber) {
        context.Update(time, deltaTime, frameNumber);
    }
    // Graphs count each operator they run, for the host's figures.
    static void CountOperatorRun(ExecutionContext& context) { context.CountOperatorRun(); }
};

}  // namespace Vantel
