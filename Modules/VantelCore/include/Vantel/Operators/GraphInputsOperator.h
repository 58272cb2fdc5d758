// GraphInputsOperator.h: the inside end of a graph's inputs.
//
//   graph.AddUserDataInput(ImageInput::Type());              // the graph gets an input "Image Input"
//   auto inputs = std::make_unique<GraphInputsOperator>();   // inside: an output mirroring it
//   graph.AddOperator(std::move(inputs));
#pragma once

#include <memory>

#include <Vantel/Export.h>
#include <Vantel/Operators/Operator.h>

namespace Vantel {

class DataInput;
class DataOutput;
class Parameter;

// GraphInputsOperator
//
// Mirrors the graph that contains it: one data output per data input the user added to the graph, and one
// output parameter per input parameter added to it, keyed and named like them and in the same order. In each
// frame it hands what reached the graph's inputs to its outputs, and copies the graph's parameter values to
// its parameters, so that a change outside reaches the operators inside in the same frame. The mirror is made
// as the operator joins a graph and follows it at once as ports and parameters are added, renamed, moved and
// removed (it goes when the operator leaves the graph); it is derived state and never saved (the operator
// itself is saved like any other). Main thread only.
class VANTEL_API GraphInputsOperator : public Operator {
public:
    GraphInputsOperator();
    ~GraphInputsOperator() override;

    VANTEL_DECLARE_OBJECT_TYPE(GraphInputsOperator);

    // The output that mirrors a data input of the containing graph; null when there is none.
    DataOutput* FindMirror(const DataInput& graphInput);
    // The parameter that mirrors an input parameter of the containing graph; null when there is none.
    Parameter* FindMirror(const Parameter& graphParameter);

    void Execute(ExecutionContext& context) override;
    // Also true when a graph input received data or an input parameter of the graph changed.
    bool Outdated() const override;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
