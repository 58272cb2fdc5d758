#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::FixedClock;

using Testing::AddOperator;
using Testing::SourceOperator;

TEST(Runner, TimeAdvancesByTheDeltaOfEachFrame) {
    Runner runner(std::make_unique<FixedClock>(0.25));
    runner.Execute();  // no graph, no tick: only the counters move
    EXPECT_EQ(runner.GetFrameNumber(), 1u);
    EXPECT_EQ(runner.GetTime(), 0.0);

    runner.WaitForTick();
    EXPECT_EQ(runner.GetDeltaTime(), 0.25);
    runner.Execute();
    runner.Execute();
    EXPECT_EQ(runner.GetTime(), 0.5);
    EXPECT_EQ(runner.GetFrameNumber(), 3u);

    // From the second tick on, the real time between ticks is measured.
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(2)) {
    }
    runner.WaitForTick();
    EXPECT_GE(runner.GetDeltaTime(), 0.002);
    EXPECT_LT(runner.GetDeltaTime(), 10.0);
}

TEST(Runner, FramesSeeTheirTimeAndLeaveNoMarksOrRecords) {
    auto root = std::make_unique<Graph>();
    auto nested = std::make_unique<Graph>();
    auto source = std::make_unique<SourceOperator>();
    auto sink = std::make_unique<AddOperator>();
    SourceOperator& sourceRef = *source;
    AddOperator& sinkRef = *sink;
    nested->AddOperator(std::move(source));
    nested->AddOperator(std::move(sink));
    ASSERT_TRUE(nested->AddDataConnection({&sourceRef.out, &sinkRef.in}));
    root->AddOperator(std::move(nested));

    Runner runner(std::make_unique<FixedClock>(0.5));
    runner.SetGraph(root.get());
    Transaction transaction("Around a frame");
    runner.WaitForTick();
    runner.Execute();
    EXPECT_EQ(sinkRef.runs, 1);
    EXPECT_EQ(sinkRef.lastFrameTime, 0.0);
    EXPECT_TRUE(transaction.GetRecords().empty());  // the result parameter changed without a record
    EXPECT_FALSE(sinkRef.in.HasDataChanged());
    EXPECT_FALSE(sinkRef.result.HasValueChanged());
    EXPECT_FALSE(sourceRef.out.HasDataChanged());
    EXPECT_FALSE(root->Outdated());

    runner.Execute();  // nothing changed: nothing runs
    EXPECT_EQ(sinkRef.runs, 1);
    sourceRef.value.SetValue(2.0);
    runner.Execute();
    EXPECT_EQ(sourceRef.runs, 2);
    EXPECT_EQ(sinkRef.runs, 2);
    EXPECT_EQ(sinkRef.lastFrameTime, 1.0);
    EXPECT_EQ(sinkRef.result.Value(), 2.0);
}

}  // namespace
}  // namespace Vantel
