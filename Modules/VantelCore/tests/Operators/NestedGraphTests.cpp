#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"
#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::FixedClock;

using Testing::AddOperator;
using Testing::NumberOf;
using Testing::NumberParameter;
using Testing::SourceOperator;

using Testing::Add;

// Source -> A (offset driven by a driver's result) -> B (offset 10), as one flat graph.
struct FlatSetup {
    Graph root;
    SourceOperator& source = Add<SourceOperator>(root);
    AddOperator& driver = Add<AddOperator>(root);
    AddOperator& a = Add<AddOperator>(root);
    AddOperator& b = Add<AddOperator>(root);
    AddOperator& sink = Add<AddOperator>(root);

    FlatSetup() {
        b.offset.SetValue(10.0);
        EXPECT_TRUE(root.AddDataConnection({&source.out, &a.in}));
        EXPECT_TRUE(root.AddDataConnection({&a.out, &b.in}));
        EXPECT_TRUE(root.AddDataConnection({&b.out, &sink.in}));
        EXPECT_TRUE(root.AddParameterConnection({&driver.result, &a.offset, {{0, 0}}}, false));
        EXPECT_TRUE(root.AddParameterConnection({&b.result, &sink.offset, {{0, 0}}}, false));
    }
};

// The same, with A and B inside a nested graph that has a data input, a data output, an input parameter
// ("Gain", driven by the driver) and an output parameter ("Total", fed by B's result).
struct NestedSetup {
    Graph root;
    SourceOperator& source = Add<SourceOperator>(root);
    AddOperator& driver = Add<AddOperator>(root);
    Graph& nested = Add<Graph>(root);
    AddOperator& sink = Add<AddOperator>(root);
    GraphInputsOperator& inputs = Add<GraphInputsOperator>(nested);
    AddOperator& a = Add<AddOperator>(nested);
    AddOperator& b = Add<AddOperator>(nested);
    GraphOutputsOperator& outputs = Add<GraphOutputsOperator>(nested);

    NestedSetup() {
        b.offset.SetValue(10.0);
        DataInput* in = nested.AddUserDataInput(DataInput::Type());
        DataOutput* out = nested.AddUserDataOutput(DataOutput::Type());
        Parameter* gain = nested.AddUserParameter(NumberParameter::Type(), false);
        Parameter* total = nested.AddUserParameter(NumberParameter::Type(), true);
        EXPECT_TRUE(root.AddDataConnection({&source.out, in}));
        EXPECT_TRUE(root.AddDataConnection({out, &sink.in}));
        EXPECT_TRUE(root.AddParameterConnection({&driver.result, gain, {{0, 0}}}, false));
        EXPECT_TRUE(root.AddParameterConnection({total, &sink.offset, {{0, 0}}}, false));

        EXPECT_TRUE(nested.AddDataConnection({inputs.FindMirror(*in), &a.in}));
        EXPECT_TRUE(nested.AddDataConnection({&a.out, &b.in}));
        EXPECT_TRUE(nested.AddDataConnection({&b.out, outputs.FindMirror(*out)}));
        EXPECT_TRUE(nested.AddParameterConnection({inputs.FindMirror(*gain), &a.offset, {{0, 0}}}, false));
        EXPECT_TRUE(nested.AddParameterConnection({&b.result, outputs.FindMirror(*total), {{0, 0}}}, false));
    }
};

TEST(NestedGraph, ComputesWhatTheFlatGraphComputesFrameByFrame) {
    FlatSetup flat;
    NestedSetup nested;
    Runner flatRunner(std::make_unique<FixedClock>(0.1));
    Runner nestedRunner(std::make_unique<FixedClock>(0.1));
    flatRunner.SetGraph(&flat.root);
    nestedRunner.SetGraph(&nested.root);
    flatRunner.WaitForTick();
    nestedRunner.WaitForTick();

    const double values[] = {1.0, 1.0, 2.5, 2.5, -4.0};
    const double drives[] = {0.0, 3.0, 3.0, 7.0, 7.0};
    for (int frame = 0; frame < 5; ++frame) {
        SCOPED_TRACE(frame);
        flat.source.value.SetValue(values[frame]);
        nested.source.value.SetValue(values[frame]);
        flat.driver.offset.SetValue(drives[frame]);
        nested.driver.offset.SetValue(drives[frame]);
        flatRunner.Execute();
        nestedRunner.Execute();
        EXPECT_EQ(NumberOf(nested.sink.in), NumberOf(flat.sink.in));
        EXPECT_EQ(nested.sink.offset.Value(), flat.sink.offset.Value());
        EXPECT_EQ(nested.sink.result.Value(), flat.sink.result.Value());
        EXPECT_EQ(nested.sink.result.Value(), 2 * (values[frame] + drives[frame] + 10.0));
    }
}

TEST(NestedGraph, BoundaryOperatorsFollowTheGraphsMembers) {
    Graph graph;
    GraphInputsOperator& inputs = Add<GraphInputsOperator>(graph);
    GraphOutputsOperator& outputs = Add<GraphOutputsOperator>(graph);
    DataInput* first = graph.AddUserDataInput(DataInput::Type());
    DataInput* second = graph.AddUserDataInput(DataInput::Type());
    DataOutput* out = graph.AddUserDataOutput(DataOutput::Type());
    ASSERT_NE(inputs.FindMirror(*first), nullptr);
    EXPECT_EQ(inputs.FindMirror(*first)->GetKey(), first->GetKey());
    EXPECT_EQ(inputs.GetAllDataOutputs().size(), 2u);
    EXPECT_EQ(outputs.FindMirror(*out)->GetName(), out->GetName());
    EXPECT_EQ(graph.Resolve(*Path::Parse(inputs.GetKey() + "/" + second->GetKey())),
              inputs.FindMirror(*second));

    first->SetName("Renamed");
    AddOperator& consumer = Add<AddOperator>(graph);
    ASSERT_TRUE(graph.AddDataConnection({inputs.FindMirror(*second), &consumer.in}));
    {
        Transaction transaction("Remove an input");
        EXPECT_TRUE(graph.RemoveDataInput(second));
        EXPECT_EQ(inputs.GetAllDataOutputs().size(), 1u);
        EXPECT_FALSE(consumer.in.IsConnected());  // the mirror went with its connections
    }
    inputs.Execute(*Access::CreateExecutionContext(0.0, 0.0, 0));
    EXPECT_EQ(inputs.GetAllDataOutputs()[0]->GetName(), "Renamed");

    Parameter* parameter = graph.AddUserParameter(NumberParameter::Type(), false);
    Parameter* mirror = inputs.FindMirror(*parameter);
    ASSERT_NE(mirror, nullptr);
    EXPECT_TRUE(mirror->HasParameterFlag(ParameterFlag::Output));
    EXPECT_EQ(outputs.FindMirror(*parameter), nullptr);  // input parameters are mirrored by Graph Inputs only
    graph.RemoveParameter(parameter);
    EXPECT_TRUE(inputs.GetAllParameters().empty());
}

// A mirror parameter leaves its key in the file, so the mirrors must exist whether or not anything looked at
// the boundary operators before saving.
TEST(NestedGraph, SavedBytesDependOnlyOnTheModel) {
    Testing::RegisterProjectTestTypes();
    Project project;
    Graph& nested = Add<Graph>(*project.GetRootGraph());
    GraphInputsOperator& inputs = Add<GraphInputsOperator>(nested);
    Parameter* gain = nested.AddUserParameter(NumberParameter::Type(), false);
    DataOutput* out = nested.AddUserDataOutput(DataOutput::Type());
    Parameter* total = nested.AddUserParameter(NumberParameter::Type(), true);
    GraphOutputsOperator& outputs = Add<GraphOutputsOperator>(nested);  // joins a graph with members
    const auto save = [](const Project& saved) { return Serialization::SerializeProject(saved).dump(4); };

    const std::string unseen = save(project);
    EXPECT_NE(unseen.find("\"key\": \"" + gain->GetKey() + "\"\n"), std::string::npos);  // the mirror's entry
    ASSERT_NE(inputs.FindMirror(*gain), nullptr);
    ASSERT_NE(outputs.FindMirror(*out), nullptr);
    ASSERT_NE(outputs.FindMirror(*total), nullptr);
    EXPECT_EQ(save(project), unseen);

    Testing::LogCapture log;
    std::unique_ptr<Project> loaded = Deserialization::DeserializeProject(nlohmann::json::parse(unseen));
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(save(*loaded), unseen);
    EXPECT_EQ(log.Text(), "");

    // Leaving the graph drops the mirror; coming back makes it again.
    std::unique_ptr<Operator> taken = nested.RemoveOperator(&outputs);
    EXPECT_TRUE(taken->GetAllDataInputs().empty());
    EXPECT_TRUE(taken->GetAllParameters().empty());
    nested.AddOperator(std::move(taken));
    EXPECT_EQ(save(project), unseen);

    gain->SetName("Gain");
    EXPECT_EQ(inputs.GetAllParameters()[0]->GetName(), "Gain");  // followed at once, unasked
}

}  // namespace
}  // namespace Vantel
