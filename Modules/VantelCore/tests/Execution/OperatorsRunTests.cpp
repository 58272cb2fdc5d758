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
using Testing::SourceOperator;

TEST(Runner, CountsTheOperatorsThatRanAcrossFramesAndGraphs) {
    auto root = std::make_unique<Graph>();
    auto nested = std::make_unique<Graph>();
    SourceOperator& inner = Testing::Add<SourceOperator>(*nested);
    AddOperator& sink = Testing::Add<AddOperator>(*nested);
    ASSERT_TRUE(nested->AddDataConnection({&inner.out, &sink.in}));
    root->AddOperator(std::move(nested));
    Testing::Add<SourceOperator>(*root);
    root->AddOperator(std::make_unique<Graph>());  // empty: never outdated, never run

    Runner runner(std::make_unique<FixedClock>(0.1));
    runner.SetGraph(root.get());
    runner.WaitForTick();
    runner.Execute();
    EXPECT_EQ(runner.GetOperatorsRun(), 4u);  // the nested graph, its two operators, the outer source
    runner.Execute();
    EXPECT_EQ(runner.GetOperatorsRun(), 4u);
    inner.value.SetValue(3.0);
    runner.Execute();
    EXPECT_EQ(runner.GetOperatorsRun(), 7u);  // the change runs the graph, the source and the sink behind it

    // Another graph keeps the count going; a frame without a graph runs nothing.
    Graph other;
    Testing::Add<SourceOperator>(other);
    runner.SetGraph(&other);
    runner.Execute();
    runner.SetGraph(nullptr);
    runner.Execute();
    EXPECT_EQ(runner.GetOperatorsRun(), 8u);
}

}  // namespace
}  // namespace Vantel
