// GraphOutputsOperator.h: the inside end of a graph's outputs.
//
//   graph.AddUserDataOutput(ImageOutput::Type());             // the graph gets an output "Image Output"
//   auto outputs = std::make_unique<GraphOutputsOperator>();  // inside: an input feeding it
//   graph.AddOperator(std::move(outputs));
#pragma once

#include <memory>

#include <Vantel/Export.h>
#include <Vantel/Operators/Operator.h>

namespace Vantel {

class DataInput;
class DataOutput;
class Parameter;

// GraphOutputsOperator
//
// Mirrors the graph that contains it: one data input per data output the user added to the graph, and one
// parameter per output parameter added to it, keyed and named like them and in the same order. What reaches
// its inputs and parameters from inside is handed to the graph's outputs in the same frame, where the
// enclosing graph passes it on. The mirror is made as the operator joins a graph and follows the graph's
// ports and parameters at once (it goes when the operator leaves the graph); it is never saved, and its
// parameters take their values from connections inside. Main thread only.
class VANTEL_API GraphOutputsOperator : public Operator {
public:
    GraphOutputsOperator();
    ~GraphOutputsOperator() override;

    VANTEL_DECLARE_OBJECT_TYPE(GraphOutputsOperator);

    // The input that mirrors a data output of the containing graph; null when there is none.
    DataInput* FindMirror(const DataOutput& graphOutput);
    // The parameter that mirrors an output parameter of the containing graph; null when there is none.
    Parameter* FindMirror(const Parameter& graphParameter);

    void Execute(ExecutionContext& context) override;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
