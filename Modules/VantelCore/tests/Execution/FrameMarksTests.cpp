#include <gtest/gtest.h>

#include <memory>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Operators/Graph.h>

#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::FixedClock;

using Testing::AddOperator;
using Testing::NumberData;
using Testing::NumberParameter;

// An idle frame skips the ports and parameters of operators that had no mark; those that join an operator
// already marked must still make it run and still be cleared.
TEST(Runner, MembersThatJoinWithAMarkAreSeenAndCleared) {
    Graph graph;
    auto made = std::make_unique<AddOperator>();
    AddOperator& op = *made;
    graph.AddOperator(std::move(made));
    Runner runner(std::make_unique<FixedClock>(0.5));
    runner.SetGraph(&graph);
    runner.WaitForTick();
    runner.Execute();
    ASSERT_FALSE(op.Outdated());

    auto parameter = std::make_unique<NumberParameter>(nullptr, "Extra");
    parameter->SetValue(1.0);
    NumberParameter& parameterRef = *parameter;
    ASSERT_TRUE(op.AddParameter(std::move(parameter)));
    EXPECT_TRUE(op.Outdated());
    runner.Execute();
    EXPECT_EQ(op.runs, 2);
    EXPECT_FALSE(parameterRef.HasValueChanged());

    auto input = std::make_unique<DataInput>();
    input->Receive(std::make_shared<NumberData>(1.0));
    DataInput& inputRef = *input;
    ASSERT_TRUE(op.AddDataInput(std::move(input)));
    EXPECT_TRUE(op.Outdated());
    runner.Execute();
    EXPECT_EQ(op.runs, 3);
    EXPECT_FALSE(inputRef.HasDataChanged());

    auto output = std::make_unique<DataOutput>();
    output->Activate(std::make_shared<NumberData>(2.0));
    DataOutput& outputRef = *output;
    ASSERT_TRUE(op.AddDataOutput(std::move(output)));
    runner.Execute();
    EXPECT_FALSE(outputRef.HasDataChanged());
    EXPECT_FALSE(op.Outdated());
}

}  // namespace
}  // namespace Vantel
