#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::Add;
using Testing::AddOperator;
using Testing::FixedClock;
using Testing::NumberData;
using Testing::NumberParameter;
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

TEST(Runner, FramesRunWhatIsOutdatedCountItAndLeaveNoMarksOrRecords) {
    Graph root;
    auto nested = std::make_unique<Graph>();
    SourceOperator& source = Add<SourceOperator>(*nested);
    AddOperator& sink = Add<AddOperator>(*nested);
    ASSERT_TRUE(nested->AddDataConnection({&source.out, &sink.in}));
    Add<SourceOperator>(root);  // first: once idle, it must not end the frame for those after it
    root.AddOperator(std::move(nested));
    root.AddOperator(std::make_unique<Graph>());  // empty: never outdated, never run

    Runner runner(std::make_unique<FixedClock>(0.5));
    runner.SetGraph(&root);
    Transaction transaction("Around a frame");
    runner.WaitForTick();
    runner.Execute();
    EXPECT_EQ(runner.GetOperatorsRun(), 4u);  // the nested graph, its two operators, the outer source
    EXPECT_EQ(sink.runs, 1);
    EXPECT_EQ(sink.lastFrameTime, 0.0);
    EXPECT_TRUE(transaction.GetRecords().empty());  // the result parameter changed without a record
    EXPECT_FALSE(sink.in.HasDataChanged());
    EXPECT_FALSE(sink.result.HasValueChanged());
    EXPECT_FALSE(source.out.HasDataChanged());
    EXPECT_FALSE(root.Outdated());

    runner.Execute();  // nothing changed: nothing runs
    EXPECT_EQ(runner.GetOperatorsRun(), 4u);
    source.value.SetValue(2.0);
    runner.Execute();
    EXPECT_EQ(runner.GetOperatorsRun(), 7u);  // the change runs the graph, the source and the sink behind it
    EXPECT_EQ(sink.runs, 2);
    EXPECT_EQ(sink.lastFrameTime, 1.0);
    EXPECT_EQ(sink.result.Value(), 2.0);
    // Each operator knows the last frame it ran in; the outer source, unchanged, stays at the first.
    EXPECT_EQ(sink.GetLastRunFrame(), runner.GetFrameNumber());
    EXPECT_EQ(source.GetLastRunFrame(), runner.GetFrameNumber());
    EXPECT_EQ(root.GetOperators()[0]->GetLastRunFrame(), runner.GetFrameNumber() - 2);
    EXPECT_EQ(root.GetOperators()[2]->GetLastRunFrame(), 0u);

    // Another graph keeps the count going; a frame without a graph runs nothing.
    Graph other;
    Add<SourceOperator>(other);
    runner.SetGraph(&other);
    runner.Execute();
    runner.SetGraph(nullptr);
    runner.Execute();
    EXPECT_EQ(runner.GetOperatorsRun(), 8u);
}

// A changed parameter makes its operator run only while its flag says so when the frame looks; a value
// driven through a connection makes the target run; every mark lasts one frame.
TEST(Runner, ParameterMarksFollowTheirFlagAndLastOneFrame) {
    Graph graph;
    SourceOperator& source = Add<SourceOperator>(graph);
    AddOperator& driven = Add<AddOperator>(graph);
    AddOperator& other = Add<AddOperator>(graph);
    ASSERT_TRUE(graph.AddParameterConnection(
        {&source.value, &driven.offset, WholeValueLinks(source.value, driven.offset)}, false));
    Runner runner(std::make_unique<FixedClock>(0.5));
    runner.SetGraph(&graph);
    runner.WaitForTick();
    runner.Execute();
    const int sourceRuns = source.runs;
    const int drivenRuns = driven.runs;
    const int otherRuns = other.runs;

    other.offset.SetValue(4.0);
    other.offset.SetParameterFlag(ParameterFlag::MarksOutdated, false);
    runner.Execute();
    EXPECT_EQ(other.runs, otherRuns);
    EXPECT_FALSE(other.offset.HasValueChanged());
    other.offset.SetParameterFlag(ParameterFlag::MarksOutdated, true);

    source.value.SetValue(2.0);
    runner.Execute();
    EXPECT_EQ(source.runs, sourceRuns + 1);
    EXPECT_EQ(driven.runs, drivenRuns + 1);
    EXPECT_EQ(driven.result.Value(), 2.0);
    EXPECT_FALSE(source.value.HasValueChanged());
    EXPECT_FALSE(driven.offset.HasValueChanged());
    runner.Execute();  // nothing changed: nothing runs
    EXPECT_EQ(source.runs, sourceRuns + 1);
    EXPECT_EQ(driven.runs, drivenRuns + 1);
    EXPECT_EQ(other.runs, otherRuns);
}

// Only the second output changes: the unchanged first must not keep it from being handed on.
class SecondOutputOperator : public Operator {
public:
    DataOutput first{this, "First"};
    DataOutput second{this, "Second"};
    void Execute(ExecutionContext&) override { second.Activate(std::make_shared<NumberData>(3.0)); }
};

// An idle frame skips the ports and parameters of operators that had no mark; those that join an operator
// already marked must still make it run and still be cleared. Every output that changed is handed on.
TEST(Runner, ChangedOutputsAndMembersThatJoinWithAMarkAreSeenAndCleared) {
    Graph graph;
    AddOperator& op = Add<AddOperator>(graph);
    auto& producer = Add<SecondOutputOperator>(graph);
    AddOperator& behindFirst = Add<AddOperator>(graph);
    AddOperator& behindSecond = Add<AddOperator>(graph);
    ASSERT_TRUE(graph.AddDataConnection({&producer.first, &behindFirst.in}));
    ASSERT_TRUE(graph.AddDataConnection({&producer.second, &behindSecond.in}));
    Runner runner(std::make_unique<FixedClock>(0.5));
    runner.SetGraph(&graph);
    runner.WaitForTick();
    runner.Execute();
    EXPECT_EQ(behindFirst.result.Value(), 0.0);
    EXPECT_EQ(behindSecond.result.Value(), 3.0);  // every changed output is handed on
    ASSERT_FALSE(op.Outdated());

    op.offset.SetValue(0.5);  // marked alone until the extra parameter joins with a mark of its own
    auto parameter = std::make_unique<NumberParameter>(nullptr, "Extra");
    parameter->SetValue(1.0);
    NumberParameter& parameterRef = *parameter;
    ASSERT_TRUE(op.AddParameter(std::move(parameter)));
    EXPECT_TRUE(op.Outdated());
    runner.Execute();
    EXPECT_EQ(op.runs, 2);
    EXPECT_FALSE(parameterRef.HasValueChanged());

    // A parameter marked alone and then removed (and destroyed) leaves nothing to run for or to clear.
    parameterRef.SetValue(3.0);
    ASSERT_TRUE(op.RemoveParameter(&parameterRef));
    runner.Execute();
    EXPECT_EQ(op.runs, 2);

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
    AddOperator& behindAdded = Add<AddOperator>(graph);
    ASSERT_TRUE(graph.AddDataConnection({&outputRef, &behindAdded.in}));
    runner.Execute();
    outputRef.Activate(std::make_shared<NumberData>(5.0));
    runner.Execute();
    EXPECT_EQ(behindAdded.result.Value(), 5.0);  // handed on beside the operator's own output
    EXPECT_FALSE(outputRef.HasDataChanged());
    EXPECT_FALSE(op.Outdated());
}

TEST(Runner, StructureChangedWhileRunningIsSettledAfterTheFrame) {
    const Testing::LogCapture quiet;  // the second item's key is settled
    Graph root;
    Testing::CountedOperator& op = Add<Testing::CountedOperator>(Add<Graph>(root));
    op.countOnRun = 2.0;
    Runner runner(std::make_unique<FixedClock>(0.5));
    runner.SetGraph(&root);
    runner.WaitForTick();
    Transaction transaction("Around frames");
    runner.Execute();
    EXPECT_FALSE(op.IsStructureDirty());
    EXPECT_EQ(op.GetAllParameters().size(), 3u);
    EXPECT_TRUE(transaction.GetRecords().empty());
    runner.Execute();
    EXPECT_EQ(op.runs, 2);  // once more, with its new structure
    runner.Execute();
    EXPECT_EQ(op.runs, 2);
}

}  // namespace
}  // namespace Vantel
