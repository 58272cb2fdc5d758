#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphImplementation.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Parameters/VectorParameter.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"
#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::Add;
using Testing::AddOperator;
using Testing::FixedClock;
using Testing::LogCapture;
using Testing::NumberData;
using Testing::NumberOf;
using Testing::NumberParameter;
using Testing::SourceOperator;

std::unique_ptr<ExecutionContext> Frame(unsigned long long number = 0) {
    return Access::CreateExecutionContext(0.0, 0.0, number);
}

// An output of its own type, and an input that takes only such outputs.
class NumberOutput : public DataOutput {
public:
    using DataOutput::DataOutput;
    VANTEL_OBJECT_TYPE(NumberOutput, DataOutput, "Vantel.Test.NumberOutput");
};

class NumberInput : public DataInput {
public:
    NumberInput() {
        SetAcceptedOutputType(NumberOutput::Type());
        SetUIColor({0.0f, 0.5f, 1.0f, 1.0f});
    }
    VANTEL_OBJECT_TYPE(NumberInput, DataInput, "Vantel.Test.NumberInput");
};

TEST(Graph, DataConnectionsAreCheckedAndCarryValues) {
    Graph graph;
    SourceOperator& source = Add<SourceOperator>(graph);
    AddOperator& first = Add<AddOperator>(graph);
    AddOperator& second = Add<AddOperator>(graph);
    Graph other;
    AddOperator& stranger = Add<AddOperator>(other);
    int changes = 0;
    const EventSubscription counted = graph.ConnectionsChangedEvent().Subscribe([&changes] { ++changes; });

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

    // A connection against the order the operators were added in still counts for the cycle check.
    AddOperator& third = Add<AddOperator>(graph);
    AddOperator& fourth = Add<AddOperator>(graph);
    ASSERT_TRUE(graph.AddDataConnection({&fourth.out, &third.in}));
    EXPECT_FALSE(graph.CanAddDataConnection({&third.out, &fourth.in}, true));

    // A parameter connection closes a cycle just as well, and counts for the check against the order too.
    EXPECT_FALSE(graph.AddParameterConnection({&second.result, &source.value, {{0, 0}}}, false));
    AddOperator& fifth = Add<AddOperator>(graph);
    AddOperator& sixth = Add<AddOperator>(graph);
    ASSERT_TRUE(graph.AddParameterConnection({&sixth.result, &fifth.offset, {{0, 0}}}, false));
    EXPECT_FALSE(graph.CanAddDataConnection({&fifth.out, &sixth.in}, true));

    EXPECT_TRUE(graph.RemoveDataConnection({&source.out, &first.in}));
    EXPECT_FALSE(graph.RemoveDataConnection({&source.out, &first.in}));
    EXPECT_FALSE(first.in.HasData());
    EXPECT_FALSE(first.in.IsConnected());
    EXPECT_TRUE(source.out.GetConnections().empty());
    ASSERT_TRUE(graph.AddParameterConnection({&source.value, &first.offset, {{0, 0}}}, false));
    EXPECT_TRUE(graph.RemoveParameterConnection({&source.value, &first.offset}));
    EXPECT_EQ(changes, 7);  // each connection made or removed, none that was refused
}

// Last added, first destroyed: the blocks they give back are then handed out again in the order they had, and
// a graph built after this one walks memory forwards. While they die the graph lists none of them, so that
// nobody who looks then reaches a dead one.
TEST(Graph, DestroysItsOperatorsLastAddedFirst) {
    struct Recorded : SourceOperator {
        Recorded(std::vector<int>& log, const Graph& graph, int id) : log(log), graph(graph), id(id) {}
        ~Recorded() override { log.push_back(id * 10 + static_cast<int>(graph.GetOperators().size())); }
        std::vector<int>& log;
        const Graph& graph;
        int id;
    };
    std::vector<int> destroyed;  // each operator's id, tens, and how many operators the graph listed then
    {
        Graph graph;
        for (int id = 0; id < 3; ++id) {
            graph.AddOperator(std::make_unique<Recorded>(destroyed, graph, id));
        }
        ASSERT_EQ(std::as_const(graph).GetOperators().size(), 3u);
    }
    EXPECT_EQ(destroyed, (std::vector<int>{20, 10, 0}));
}

TEST(Graph, ListInputsExistWhileConnected) {
    struct Mixer : Operator {
        DataInputList layers{this, "Layers", DataInput::Type(), {}};
        DataInputList numbers{this, "Numbers", NumberInput::Type(), {}};
    };
    struct Counter : Operator {
        NumberOutput out{this, "Out"};
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
    graph.DisconnectDataOutput(b.out);
    EXPECT_EQ(mixer.layers.GetInputs(), (std::vector<DataInput*>{fromA, fromB}));  // the spare stays
    EXPECT_EQ(fromB->GetName(), "Input 2");

    // Removing a connected input through its list takes its connection along, once.
    ASSERT_TRUE(Access::GetImplementation(mixer.layers)->RemoveInput(fromA));
    EXPECT_EQ(mixer.layers.GetInputs(), std::vector<DataInput*>{fromB});
    EXPECT_EQ(fromB->GetName(), "Input 1");
    EXPECT_TRUE(a.out.GetConnections().empty());
    EXPECT_TRUE(graph.GetDataConnections().empty());

    // A typed list answers for its inputs before it makes one, and shows their colour.
    EXPECT_FALSE(graph.CanAddDataConnection(a.out, mixer.numbers));
    EXPECT_NE(graph.AddDataConnection(Add<Counter>(graph).out, mixer.numbers), nullptr);
    EXPECT_EQ(mixer.numbers.GetUIColor(), (Color{0.0f, 0.5f, 1.0f, 1.0f}));

    // A list an operator drops while it is connected (as a rebuild may) takes its connections along.
    auto extra = std::make_unique<DataInputList>(&mixer, "Extra", DataInput::Type(), InputHandlers{});
    ASSERT_NE(graph.AddDataConnection(a.out, *extra), nullptr);
    extra.reset();
    EXPECT_TRUE(a.out.GetConnections().empty());
    EXPECT_EQ(graph.GetDataConnections().size(), 1u);  // the numbers' connection
}

TEST(Graph, ParameterConnectionsTakeOverExactlyTheNamedComponents) {
    Graph graph;
    AddOperator& a = Add<AddOperator>(graph);
    AddOperator& b = Add<AddOperator>(graph);
    AddOperator& target = Add<AddOperator>(graph);

    EXPECT_EQ(WholeValueLinks(a.result, target.offset), (std::vector<ComponentLink>{{0, 0}}));
    EXPECT_FALSE(graph.AddParameterConnection({&a.result, &target.offset, {}}, false));
    EXPECT_FALSE(graph.AddParameterConnection({nullptr, &target.offset, {{0, 0}}}, false));
    EXPECT_FALSE(graph.AddParameterConnection({&a.result, &target.offset, {{0, 1}}}, false));
    EXPECT_FALSE(graph.AddParameterConnection({&a.result, &target.offset, {{1, 0}}}, false));
    EXPECT_FALSE(graph.AddParameterConnection({&a.result, &target.offset, {{-1, 0}}}, false));
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
    AddOperator& c = Add<AddOperator>(graph, "C");
    AddOperator& b = Add<AddOperator>(graph, "B");
    SourceOperator& a = Add<SourceOperator>(graph, "A");
    AddOperator& driven = Add<AddOperator>(graph, "D");
    ASSERT_TRUE(graph.AddParameterConnection({&c.offset, &driven.offset, {{0, 0}}}, false));
    graph.Execute(*Frame());  // C first, as it was added first; the data connections below must change that
    ASSERT_TRUE(graph.AddDataConnection({&b.out, &c.in}));
    ASSERT_TRUE(graph.AddDataConnection({&a.out, &b.in}));
    b.offset.SetValue(1.0);
    c.offset.SetValue(10.0);  // between frames: handed on in the next one even if the driver did not run
    a.value.SetValue(2.0);

    graph.Execute(*Frame());
    EXPECT_EQ(Access::GetImplementation(graph)->GetExecutionOrder(),
              (std::vector<Operator*>{&a, &b, &c, &driven}));
    EXPECT_EQ(NumberOf(c.in), 3.0);
    EXPECT_EQ(c.result.Value(), 13.0);
    EXPECT_EQ(c.runs, 2);
    EXPECT_EQ(driven.offset.Value(), 10.0);
    EXPECT_EQ(driven.result.Value(), 10.0);

    // A chain long enough that the frame fetches operators ahead of their turn, added against its order. Its
    // 128 operators fill the frame's lists to their capacity, so that a read one past their end is caught by
    // the address sanitizer.
    Graph chain;
    std::vector<AddOperator*> links(127);
    for (AddOperator*& link : links) {
        link = &Add<AddOperator>(chain);
        link->offset.SetValue(1.0);
    }
    SourceOperator& head = Add<SourceOperator>(chain);
    for (std::size_t i = 0; i < links.size(); ++i) {
        ASSERT_TRUE(chain.AddDataConnection({i == 0 ? &head.out : &links[i - 1]->out, &links[i]->in}));
    }
    for (const double value : {0.5, 1.5}) {
        head.value.SetValue(value);
        chain.Execute(*Access::CreateExecutionContext(value, 0.0, 0));  // the time as the frame's context
        EXPECT_EQ(links.back()->result.Value(), value + 127.0);
        EXPECT_EQ(links.back()->lastFrameTime, value);
    }
    // A runner's frame also walks them all a second time, clearing their change marks.
    Runner runner(std::make_unique<FixedClock>(0.1));
    runner.SetGraph(&chain);
    runner.WaitForTick();
    head.value.SetValue(2.5);
    runner.Execute();
    EXPECT_EQ(links.back()->result.Value(), 2.5 + 127.0);
    EXPECT_FALSE(links.back()->in.HasDataChanged());
    EXPECT_EQ(links.front()->runs, 3);
}

// A feeds C directly by data and again through B by parameters, so C reaches the queue before its second
// feeder has run: it must still wait for B, or it computes with B's value of the frame before.
TEST(Graph, AnOperatorWaitsForEveryFeederEvenWhenAShortcutQueuesItFirst) {
    Graph graph;
    SourceOperator& a = Add<SourceOperator>(graph, "A");
    AddOperator& b = Add<AddOperator>(graph, "B");
    AddOperator& c = Add<AddOperator>(graph, "C");
    ASSERT_TRUE(graph.AddDataConnection({&a.out, &c.in}));
    ASSERT_TRUE(graph.AddParameterConnection({&a.value, &b.offset, {{0, 0}}}, false));
    ASSERT_TRUE(graph.AddParameterConnection({&b.result, &c.offset, {{0, 0}}}, false));
    Runner runner(std::make_unique<FixedClock>(0.1));
    runner.SetGraph(&graph);
    runner.WaitForTick();
    for (const double value : {2.0, 5.0, -1.0}) {
        SCOPED_TRACE(value);
        a.value.SetValue(value);
        runner.Execute();
        EXPECT_EQ(b.result.Value(), value);
        EXPECT_EQ(c.offset.Value(), value);
        EXPECT_EQ(c.result.Value(), 2 * value);  // its data input and its offset, both of this frame
    }
    EXPECT_EQ(Access::GetImplementation(graph)->GetExecutionOrder(), (std::vector<Operator*>{&a, &b, &c}));
}

// Links name a source component and a target component; only same-index links would hide a swap.
TEST(Graph, ParameterLinksCarryTheirSourceComponentToTheirTargetComponent) {
    struct Vectors : Operator {
        Vector3Parameter in{this, "In", {0.0, 0.0, 0.0}};
        Vector3Parameter out{this, "Out", {0.0, 0.0, 0.0}};
    };
    Graph graph;
    SourceOperator& number = Add<SourceOperator>(graph);
    Vectors& from = Add<Vectors>(graph);
    Vectors& spread = Add<Vectors>(graph);
    Vectors& crossed = Add<Vectors>(graph);
    number.value.SetValue(4.0);
    from.out.SetValue({1.0, 2.0, 3.0});

    EXPECT_EQ(WholeValueLinks(number.value, spread.in), (std::vector<ComponentLink>{{0, 0}, {0, 1}, {0, 2}}));
    ASSERT_TRUE(graph.AddParameterConnection(
        {&number.value, &spread.in, WholeValueLinks(number.value, spread.in)}, false));
    ASSERT_TRUE(graph.AddParameterConnection({&from.out, &crossed.in, {{0, 2}, {2, 1}}}, false));
    EXPECT_EQ(spread.in.Value(), glm::dvec3(4.0, 4.0, 4.0));
    EXPECT_EQ(crossed.in.Value(), glm::dvec3(0.0, 3.0, 1.0));  // component 0 untouched

    number.value.SetValue(-2.0);
    from.out.SetValue({7.0, 8.0, 9.0});
    graph.Execute(*Frame());
    EXPECT_EQ(spread.in.Value(), glm::dvec3(-2.0, -2.0, -2.0));
    EXPECT_EQ(crossed.in.Value(), glm::dvec3(0.0, 9.0, 7.0));
    EXPECT_EQ(crossed.in.FindIncomingConnection(2)->source, &from.out);
    EXPECT_EQ(crossed.in.FindIncomingConnection(0), nullptr);

    // Unless replacing, a free component takes another source, but the same source is not linked twice.
    EXPECT_FALSE(graph.AddParameterConnection({&from.out, &crossed.in, {{1, 0}}}, false));
    EXPECT_TRUE(graph.AddParameterConnection({&number.value, &crossed.in, {{0, 0}}}, false));
    EXPECT_EQ(crossed.in.Value(), glm::dvec3(-2.0, 9.0, 7.0));

    // Replacing takes over only the named component: the old source keeps its other link.
    EXPECT_TRUE(graph.AddParameterConnection({&number.value, &crossed.in, {{0, 2}}}, true));
    EXPECT_EQ(crossed.in.FindIncomingConnection(2)->source, &number.value);
    EXPECT_EQ(crossed.in.FindIncomingConnection(1)->source, &from.out);
    // Whichever of the incoming connections holds the component, it gives it up.
    Vectors& fresh = Add<Vectors>(graph);
    ASSERT_TRUE(graph.AddParameterConnection({&number.value, &fresh.in, {{0, 0}}}, false));
    ASSERT_TRUE(graph.AddParameterConnection({&from.out, &fresh.in, {{0, 1}}}, false));
    EXPECT_TRUE(graph.AddParameterConnection({&spread.out, &fresh.in, {{0, 1}}}, true));
    EXPECT_EQ(fresh.in.FindIncomingConnection(1)->source, &spread.out);
    EXPECT_EQ(fresh.in.FindIncomingConnection(0)->source, &number.value);
}

TEST(Graph, AddedOperatorsGetKeysAndRemovedOnesAreDisconnected) {
    Graph graph;
    std::vector<Operator*> added, gone;
    EventSubscription onAdd =
        graph.OperatorAddedEvent().Subscribe([&](Operator* op) { added.push_back(op); });
    EventSubscription onGone =
        graph.OperatorRemovedEvent().Subscribe([&](Operator* op) { gone.push_back(op); });
    SourceOperator& source = Add<SourceOperator>(graph);
    AddOperator& sink = Add<AddOperator>(graph, "Sum");
    EXPECT_EQ(added, (std::vector<Operator*>{&source, &sink}));
    // Keys come from the name, or from the type without one.
    EXPECT_EQ(source.GetKey().rfind("Source [", 0), 0u);
    EXPECT_EQ(sink.GetKey().rfind("Sum [", 0), 0u);
    EXPECT_EQ(source.GetGraph(), &graph);
    EXPECT_EQ(graph.Resolve(*Path::Parse(sink.GetKey() + "/Offset")), &sink.offset);
    EXPECT_EQ(sink.offset.GetPath().ToString(), "/" + sink.GetKey() + "/Offset");
    EXPECT_TRUE(source.Outdated());  // new operators run in their first frame
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
    EXPECT_EQ(gone, std::vector<Operator*>{&source});  // once, after it was let go

    // A structure changed outside any graph is settled as the operator joins one.
    auto stack = std::make_unique<Testing::StackOperator>();
    stack->count.SetValue(2.0);
    ASSERT_EQ(stack->layers.GetBundleCount(), 0u);
    Testing::StackOperator& joined = *stack;
    graph.AddOperator(std::move(stack));
    EXPECT_EQ(joined.layers.GetBundleCount(), 2u);
    EXPECT_EQ(joined.GetAllDataInputs().size(), 2u);
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
    EXPECT_FALSE(graph.AddUserParameter(std::unique_ptr<Parameter>(), 0));
    EXPECT_EQ(graph.AddUserDataOutput(DataOutput::Type())->GetName(), "Vantel.DataOutput Output");
}

// Source -> A (offset driven by a driver's result) -> B (offset 10) -> sink (offset B's result), with A and B
// inside a nested graph that has a data input, a data output, an input parameter and an output parameter.
TEST(NestedGraph, CarriesDataAndParametersThroughItsBoundaryFrameByFrame) {
    Graph root;
    SourceOperator& source = Add<SourceOperator>(root);
    AddOperator& driver = Add<AddOperator>(root);
    Graph& nested = Add<Graph>(root);
    AddOperator& sink = Add<AddOperator>(root);
    GraphInputsOperator& inputs = Add<GraphInputsOperator>(nested);
    AddOperator& a = Add<AddOperator>(nested);
    AddOperator& b = Add<AddOperator>(nested);
    GraphOutputsOperator& outputs = Add<GraphOutputsOperator>(nested);
    b.offset.SetValue(10.0);
    DataInput* in = nested.AddUserDataInput(DataInput::Type());
    DataOutput* out = nested.AddUserDataOutput(DataOutput::Type());
    Parameter* gain = nested.AddUserParameter(NumberParameter::Type(), false);
    Parameter* total = nested.AddUserParameter(NumberParameter::Type(), true);
    ASSERT_TRUE(root.AddDataConnection({&source.out, in}));
    ASSERT_TRUE(root.AddDataConnection({out, &sink.in}));
    ASSERT_TRUE(root.AddParameterConnection({&driver.result, gain, {{0, 0}}}, false));
    ASSERT_TRUE(root.AddParameterConnection({total, &sink.offset, {{0, 0}}}, false));
    ASSERT_TRUE(nested.AddDataConnection({inputs.FindMirror(*in), &a.in}));
    ASSERT_TRUE(nested.AddDataConnection({&a.out, &b.in}));
    ASSERT_TRUE(nested.AddDataConnection({&b.out, outputs.FindMirror(*out)}));
    ASSERT_TRUE(nested.AddParameterConnection({inputs.FindMirror(*gain), &a.offset, {{0, 0}}}, false));
    ASSERT_TRUE(nested.AddParameterConnection({&b.result, outputs.FindMirror(*total), {{0, 0}}}, false));

    Runner runner(std::make_unique<FixedClock>(0.1));
    runner.SetGraph(&root);
    runner.WaitForTick();
    const double values[] = {1.0, 1.0, 2.5, 2.5, -4.0};
    const double drives[] = {0.0, 3.0, 3.0, 7.0, 7.0};
    for (int frame = 0; frame < 5; ++frame) {
        SCOPED_TRACE(frame);
        source.value.SetValue(values[frame]);
        driver.offset.SetValue(drives[frame]);
        runner.Execute();
        // Every value arrives in the frame it was set in.
        const double passed = values[frame] + drives[frame] + 10.0;
        EXPECT_EQ(NumberOf(sink.in), passed);
        EXPECT_EQ(sink.offset.Value(), passed);
        EXPECT_EQ(sink.result.Value(), 2 * passed);
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
    inputs.Execute(*Frame());
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
// the boundary operators before saving; and saving changes nothing the next frame computes.
TEST(NestedGraph, SavedBytesDependOnlyOnTheModelAndSavingLeavesTheNextFrame) {
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

    // The model in memory and the file it just wrote compute the same next frame: saving consumes no mark.
    AddOperator& inner = Add<AddOperator>(nested);
    ASSERT_TRUE(nested.AddParameterConnection({inputs.FindMirror(*gain), &inner.offset, {{0, 0}}}, false));
    static_cast<NumberParameter*>(gain)->SetValue(3.0);  // before the first frame
    loaded = Deserialization::DeserializeProject(Serialization::SerializeProject(project));
    ASSERT_NE(loaded, nullptr);
    for (Project* model : {&project, loaded.get()}) {
        Runner runner(std::make_unique<FixedClock>(0.1));
        runner.SetGraph(model->GetRootGraph());
        runner.WaitForTick();
        runner.Execute();
        const auto* result = dynamic_cast<NumberParameter*>(model->Resolve(inner.result.GetPath()));
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(result->Value(), 3.0);
    }
}

}  // namespace
}  // namespace Vantel
