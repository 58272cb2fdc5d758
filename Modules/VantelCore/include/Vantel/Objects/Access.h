// Access.h: the gateway through which library code and plug-ins reach private implementations.
//
//   #include <Vantel/Operators/OperatorImplementation.h>   // defines the operator's accessor
//   Operator::Implementation& impl = *Access::GetImplementation(op);
//   impl.MarkStructureDirty();
#pragma once

#include <memory>

namespace Vantel {

class DataInput;
class DataInputList;
class DataOutput;
class ExecutionContext;
class Graph;
class Operator;
class Parameter;

// Access
//
// Static members only. Each class whose private block others may reach befriends Access, and the accessor
// is declared here but defined in the class's own Implementation header (ExecutionContext.h for the
// context's), so that this header, low in the layers, names nothing above it. Include that header to call
// the accessor; without it the compiler stops at the call (a use of `auto` before its deduction, or an inline
// function used but never defined).
class Access {
public:
    Access() = delete;

    // Each returns a reference to the class's std::unique_ptr to its Implementation.
    static auto& GetImplementation(Graph& graph);              // GraphImplementation.h
    static auto& GetImplementation(Operator& op);              // OperatorImplementation.h
    static const auto& GetImplementation(const Operator& op);  // OperatorImplementation.h
    static auto& GetImplementation(Parameter& parameter);      // ParameterImplementation.h
    static auto& GetImplementation(DataInput& input);          // DataPortImplementation.h
    static auto& GetImplementation(DataOutput& output);        // DataPortImplementation.h
    static auto& GetImplementation(DataInputList& list);       // DataInputListImplementation.h

    // Execution contexts are made only here (and so by the runner), never by operators.
    static inline std::unique_ptr<ExecutionContext> CreateExecutionContext(double time, double deltaTime,
                                                                           unsigned long long frameNumber);
    // The runner keeps one context and moves it on to each new frame.
    static inline void UpdateExecutionContext(ExecutionContext& context, double time, double deltaTime,
                                              unsigned long long frameNumber);
    // Graphs count each operator they run, for the host's figures.
    static inline void CountOperatorRun(ExecutionContext& context);
};

}  // namespace Vantel
