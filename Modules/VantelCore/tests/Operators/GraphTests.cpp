#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphImplementation.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::AddOperator;
using Testing::LogCapture;
using Testing::NumberData;
using Testing::NumberOf;
using Testing::NumberParameter;
using Testing::SourceOperator;

using Testing::Add;

std::unique_ptr<ExecutionContext> Frame(unsigned long long number = 0) {
    return Access::CreateExecutionContext(0.0, 0.0, number);
}

TEST(Graph, KeysComeFromNamesOrTypes) {
    Graph graph;
    SourceOperator& unnamed = Add<SourceOperator>(graph);
    AddOperator& named = Add<AddOperator>(graph, "Sum");
    EXPECT_EQ(unnamed.GetKey().rfind("Source [", 0), 0u);
    EXPECT_EQ(named.GetKey().rfind("Sum [", 0), 0u);
    EXPECT_EQ(unnamed.GetGraph(), &graph);
    EXPECT_EQ(graph.Resolve(*Path::Parse(named.GetKey() + "/Offset")), &named.offset);
    EXPECT_EQ(named.offset.GetPath().ToString(), "/" + named.GetKey() + "/Offset");
    EXPECT_TRUE(unnamed.Outdated());  // new operators run in their first frame
}

TEST(Graph, DataConnectionsAreCheckedAndCarryValues) {
    Graph graph;
    SourceOperator& source = Add<SourceOperator>(graph);
    AddOperator& first = Add<AddOperator>(graph);
    AddOperator& second = Add<AddOperator>(graph);
    Graph other;
    AddOperator& stranger = Add<AddOperator>(other);

    EXPECT_FALSE(graph.AddDataConnection({&first.out, &first.in}));      // feeds itself
    EXPECT_FALSE(graph.AddDataConnection({&source.out, &stranger.in}));  // another graph
    EXPECT_FALSE(graph.AddDataConnection({nullptr, &first.in}));
    source.out.Activate(std::make_shared<NumberData>(4.0));
    ASSERT_TRUE(graph.AddDataConnection({&source.out, &first.in}));
    EXPECT_EQ(NumberOf(first.in), 4.0);  // the current value arrives at once
    EXPECT_TRUE(first.in.HasDataChanged());
    EXPECT_FALSE(graph.AddDataConnection({&source.out, &first.in}));  // taken
    EXPECT_TRUE(graph.CanAddDataConnection({&source.out, &first.in}, true));
    ASSERT_TRUE(graph.AddDataConnection({&first.out, &second.in}));
    EXPECT_FALSE(graph.CanAddDataConnection({&second.out, &first.in}, true));  // would close a cycle

    // A parameter connection closes a cycle just as well.
    EXPECT_FALSE(graph.AddParameterConnection({&second.result, &source.value, {{0, 0}}}, false));

    EXPECT_TRUE(graph.RemoveDataConnection({&source.out, &first.in}));
    EXPECT_FALSE(graph.RemoveDataConnection({&source.out, &first.in}));
    EXPECT_FALSE(first.in.HasData());
    EXPECT_FALSE(first.in.IsConnected());
    EXPECT_TRUE(source.out.GetConnections().empty());
}

TEST(Graph, ListInputsExistWhileConnected) {
    struct Mixer : Operator {
        DataInputList layers{this, "Layers", DataInput::Type(), {}};
    };
    Graph graph;
    SourceOperator& a = Add<SourceOperator>(graph);
    SourceOperator& b = Add<SourceOperator>(graph);
    Mixer& mixer = Add<Mixer>(graph);
    DataInput* fromA = graph.AddDataConnection(a.out, mixer.layers);
    DataInput* fromB = graph.AddDataConnection(b.out, mixer.layers);
    ASSERT_NE(fromB, nullptr);
    EXPECT_EQ(mixer.layers.GetInputCount(), 2u);
    EXPECT_EQ(fromA->GetConnection().output, &a.out);

    Access::GetImplementation(mixer.layers)->SetSpareInput(fromB);
    graph.DisconnectDataOutput(a.out);
    graph.DisconnectDataOutput(b.out);
    EXPECT_EQ(mixer.layers.GetInputs(), std::vector<DataInput*>{fromB});  // the spare stays
    EXPECT_EQ(fromB->GetName(), "Input 1");
}

TEST(Graph, ParameterConnectionsTakeOverExactlyTheNamedComponents) {
    Graph graph;
    AddOperator& a = Add<AddOperator>(graph);
    AddOperator& b = Add<AddOperator>(graph);
    AddOperator& target = Add<AddOperator>(graph);

    EXPECT_EQ(WholeValueLinks(a.result, target.offset), (std::vector<ComponentLink>{{0, 0}}));
    EXPECT_FALSE(graph.AddParameterConnection({&a.result, &target.offset, {}}, false));
    EXPECT_FALSE(graph.AddParameterConnection({&a.result, &target.offset, {{0, 1}}}, false));
    EXPECT_FALSE(graph.AddParameterConnection({&a.result, &target.offset, {{0, 0}, {0, 0}}}, false));
    EXPECT_FALSE(
        graph.AddParameterConnection({&a.offset, &target.result, {{0, 0}}}, false));  // output target

    a.result.SetValue(5.0);
    ASSERT_TRUE(graph.AddParameterConnection({&a.result, &target.offset, {{0, 0}}}, false));
    EXPECT_EQ(target.offset.Value(), 5.0);  // applied at once
    EXPECT_FALSE(graph.AddParameterConnection({&b.result, &target.offset, {{0, 0}}}, false));
    b.result.SetValue(7.0);
    ASSERT_TRUE(graph.AddParameterConnection({&b.result, &target.offset, {{0, 0}}}, true));
    EXPECT_EQ(target.offset.Value(), 7.0);
    ASSERT_EQ(target.offset.GetIncomingConnections().size(), 1u);
    EXPECT_EQ(target.offset.GetIncomingConnections()[0].source, &b.result);
    EXPECT_TRUE(a.result.GetOutgoingConnections().empty());
    EXPECT_EQ(graph.GetParameterConnections().size(), 1u);

    graph.DisconnectParameterComponent(target.offset, 0);
    EXPECT_FALSE(target.offset.HasIncomingConnection());
    EXPECT_TRUE(graph.GetParameterConnections().empty());
}

TEST(Graph, ExecutesInDependencyOrderAndHandsOnValuesSetBetweenFrames) {
    Graph graph;
    EXPECT_FALSE(graph.Outdated());  // an empty graph never is
    graph.Execute(*Frame());
    AddOperator& c = Add<AddOperator>(graph, "C");
    AddOperator& b = Add<AddOperator>(graph, "B");
    SourceOperator& a = Add<SourceOperator>(graph, "A");
    AddOperator& driven = Add<AddOperator>(graph, "D");
    ASSERT_TRUE(graph.AddDataConnection({&b.out, &c.in}));
    ASSERT_TRUE(graph.AddDataConnection({&a.out, &b.in}));
    ASSERT_TRUE(graph.AddParameterConnection({&c.offset, &driven.offset, {{0, 0}}}, false));
    b.offset.SetValue(1.0);
    c.offset.SetValue(10.0);  // between frames: handed on in the next one even if the driver did not run
    a.value.SetValue(2.0);

    graph.Execute(*Frame());
    EXPECT_EQ(Access::GetImplementation(graph)->GetExecutionOrder(),
              (std::vector<Operator*>{&a, &b, &c, &driven}));
    EXPECT_EQ(NumberOf(c.in), 3.0);
    EXPECT_EQ(c.result.Value(), 13.0);
    EXPECT_EQ(c.runs, 1);
    EXPECT_EQ(driven.offset.Value(), 10.0);
    EXPECT_EQ(driven.result.Value(), 10.0);
}

TEST(Graph, RemovingAnOperatorDisconnectsIt) {
    Graph graph;
    SourceOperator& source = Add<SourceOperator>(graph);
    AddOperator& sink = Add<AddOperator>(graph);
    graph.AddDataConnection({&source.out, &sink.in});
    graph.AddParameterConnection({&source.value, &sink.offset, {{0, 0}}}, false);
    std::unique_ptr<Operator> removed = graph.RemoveOperator(&source);
    ASSERT_EQ(removed.get(), &source);
    EXPECT_EQ(source.GetGraph(), nullptr);
    EXPECT_FALSE(sink.in.IsConnected());
    EXPECT_FALSE(sink.offset.HasIncomingConnection());
    EXPECT_TRUE(graph.GetDataConnections().empty());
    EXPECT_EQ(graph.RemoveOperator(&source), nullptr);
    EXPECT_EQ(graph.GetOperators(), std::vector<Operator*>{&sink});
}

TEST(Graph, EditsAreRecorded) {
    Graph graph;
    graph.SetKey("Root");
    Transaction transaction("Build");
    SourceOperator& source = Add<SourceOperator>(graph);
    AddOperator& sink = Add<AddOperator>(graph);
    graph.AddDataConnection({&source.out, &sink.in});
    graph.RemoveDataConnection({&source.out, &sink.in});
    const std::vector<Record>& records = transaction.GetRecords();
    ASSERT_EQ(records.size(), 4u);
    const auto& added = std::get<OperatorRecord>(records[0]);
    EXPECT_EQ(added.presence, Presence::Added);
    EXPECT_EQ(added.serializedOperator["type"], "Vantel.Test.Source");
    const auto& connected = std::get<DataConnectionRecord>(records[2]);
    EXPECT_EQ(connected.output, source.out.GetPath());
    EXPECT_EQ(connected.input, sink.in.GetPath());
    EXPECT_EQ(std::get<DataConnectionRecord>(records[3]).presence, Presence::Removed);
}

TEST(Graph, UserPortsAndParameters) {
    LogCapture log;
    Graph graph;
    DataInput* input = graph.AddUserDataInput(DataInput::Type());
    ASSERT_NE(input, nullptr);
    EXPECT_TRUE(input->IsAddedByUser());
    EXPECT_EQ(input->GetName(), "Vantel.DataInput Input");
    EXPECT_EQ(graph.AddUserDataInput(DataOutput::Type()), nullptr);
    EXPECT_EQ(graph.AddUserDataOutput(DataInput::Type()), nullptr);
    EXPECT_EQ(graph.AddUserParameter(DataInput::Type(), false), nullptr);
    EXPECT_EQ(log.Text(),
              "[Error] Graph::AddUserDataInput: 'Vantel.DataOutput' is not a data input type.\n"
              "[Error] Graph::AddUserDataOutput: 'Vantel.DataInput' is not a data output type.\n"
              "[Error] Graph::AddUserParameter: 'Vantel.DataInput' is not a parameter type.\n");
    Parameter* parameter = graph.AddUserParameter(NumberParameter::Type(), true);
    ASSERT_NE(parameter, nullptr);
    EXPECT_TRUE(parameter->IsAddedByUser());
    EXPECT_TRUE(parameter->HasParameterFlag(ParameterFlag::Output));
    EXPECT_EQ(graph.AddUserDataOutput(nullptr), nullptr);
}

}  // namespace
}  // namespace Vantel
