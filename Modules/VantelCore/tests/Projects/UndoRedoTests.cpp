#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Projects/UndoRedo.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"

namespace Vantel {
namespace {

using Testing::AddOperator;
using Testing::LogCapture;
using Testing::MirrorOperator;
using Testing::MixerOperator;
using Testing::SourceOperator;

std::string Save(const Project& project) {
    return Serialization::SerializeProject(project).dump(4);
}

CommittedTransaction Record(std::string_view name, const std::function<void()>& edit) {
    Transaction transaction(name);
    edit();
    std::optional<CommittedTransaction> done = transaction.Commit();
    return done ? *done : CommittedTransaction{};
}

template <typename T>
T* Add(Graph& graph) {
    auto made = std::make_unique<T>();
    T* raw = made.get();
    graph.AddOperator(std::move(made));
    return raw;
}

// A port as a user adds it to an operator that is not a graph.
template <typename Port>
std::unique_ptr<Port> UserPort() {
    auto port = std::make_unique<Port>();
    Access::GetImplementation(*port)->SetAddedByUser(true);
    return port;
}

// Undo gives back the file of `before`, redo the file as it is now; both run quietly.
void ExpectRoundTrip(Project& project, const std::string& before, const CommittedTransaction& done) {
    ASSERT_FALSE(done.records.empty());
    const std::string after = Save(project);
    ASSERT_NE(after, before);
    LogCapture log;
    EXPECT_TRUE(UndoTransaction(project, done));
    EXPECT_EQ(Save(project), before);
    EXPECT_TRUE(ApplyTransaction(project, done));
    EXPECT_EQ(Save(project), after);
    EXPECT_EQ(log.Text(), "");
}

class UndoRedo : public testing::Test {
protected:
    void SetUp() override {
        Testing::RegisterProjectTestTypes();
        graph = project.GetRootGraph();
        source = Add<SourceOperator>(*graph);
        adder = Add<AddOperator>(*graph);
        mixer = Add<MixerOperator>(*graph);
    }
    Project project;
    Graph* graph = nullptr;
    SourceOperator* source = nullptr;
    AddOperator* adder = nullptr;
    MixerOperator* mixer = nullptr;
};

TEST_F(UndoRedo, ValuesAndComponents) {
    std::string before = Save(project);
    CommittedTransaction done = Record("Set value", [&] { source->value.SetValue(2.5); });
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(source->value.Value(), 2.5);

    before = Save(project);
    done = Record("Set component", [&] { adder->offset.SetComponent(0, -4.0); });
    ASSERT_EQ(RecordKind(done.records.at(0)), 1);
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(adder->offset.Value(), -4.0);
    EXPECT_EQ(DescribeRecord(done.records[0]),
              "Set component 0 of " + adder->offset.GetPath().ToString() + " to -4.0");
}

TEST_F(UndoRedo, RenameAndPosition) {
    const std::string before = Save(project);
    const CommittedTransaction done = Record("Rename and move", [&] {
        source->SetName("Start");
        source->value.SetName("Level");
        adder->out.SetName("Sum");
        mixer->SetPosition({10.0f, -2.0f});
    });
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(source->GetName(), "Start");
    EXPECT_EQ(DescribeRecord(done.records[0]),
              "Rename " + source->GetPath().ToString() + " from \"\" to \"Start\"");
}

TEST_F(UndoRedo, OperatorsComeBackWhereTheyWere) {
    const std::string before = Save(project);
    const CommittedTransaction done = Record("Edit operators", [&] {
        source->value.SetValue(3.0);
        graph->RemoveOperator(adder);
        Add<SourceOperator>(*graph);
    });
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(graph->GetOperators().size(), 3u);
    EXPECT_TRUE(UndoTransaction(project, done));
    ASSERT_EQ(graph->GetOperators().size(), 3u);
    EXPECT_EQ(graph->GetOperators()[1]->GetType(), AddOperator::Type());
    EXPECT_EQ(DescribeRecord(done.records.at(1)),
              "Remove operator " + graph->GetOperators()[1]->GetPath().ToString());
}

TEST_F(UndoRedo, DataAndParameterConnectionsWithListInputs) {
    std::string before = Save(project);
    CommittedTransaction done = Record("Connect", [&] {
        graph->AddDataConnection(DataConnection{&source->out, &adder->in});
        graph->AddDataConnection(source->out, mixer->layers);
        graph->AddDataConnection(adder->out, mixer->layers);
        graph->AddParameterConnection(ParameterConnection{&source->value, &adder->offset,
                                                          WholeValueLinks(source->value, adder->offset)},
                                      false);
    });
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(mixer->layers.GetInputCount(), 2u);
    EXPECT_EQ(graph->GetDataConnections().size(), 3u);

    // Disconnecting removes the list input; undo brings it back first, then reconnects it.
    before = Save(project);
    done = Record("Disconnect", [&] {
        graph->DisconnectDataInput(*mixer->layers.GetInput(0));
        graph->RemoveParameterConnection(ParameterConnectionEndpoints{&source->value, &adder->offset});
    });
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(mixer->layers.GetInputCount(), 1u);

    before = Save(project);
    done = Record("Move list input", [&] {
        graph->AddDataConnection(source->out, mixer->layers);
        mixer->layers.MoveInput(mixer->layers.GetInput(1), 0);
    });
    ExpectRoundTrip(project, before, done);
}

TEST_F(UndoRedo, UserPortsAndParametersOfANestedGraph) {
    Graph* inner = Add<Graph>(*graph);
    const std::string before = Save(project);
    const CommittedTransaction done = Record("Add members", [&] {
        inner->AddUserDataInput(DataInput::Type());
        DataOutput* output = inner->AddUserDataOutput(DataOutput::Type());
        inner->AddUserParameter(Testing::NumberParameter::Type(), false);
        inner->AddUserParameter(Testing::NumberParameter::Type(), true);
        output->SetName("Result");
        Add<SourceOperator>(*inner)->value.SetValue(7.0);
    });
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(inner->GetAllDataInputs().size(), 1u);
    EXPECT_EQ(inner->GetOperators().size(), 1u);

    const std::string withMembers = Save(project);
    const CommittedTransaction removal = Record("Remove members", [&] {
        inner->RemoveDataInput(inner->GetAllDataInputs()[0]);
        inner->RemoveParameter(inner->GetAllParameters()[0]);
    });
    ExpectRoundTrip(project, withMembers, removal);
}

// A user's port comes back at the slot it had, on a graph and on a plain operator, whether its removal is
// undone or its addition redone. The file shows the order of a user's ports but not where they sit among
// declared ones.
TEST_F(UndoRedo, UserPortsComeBackAtTheirSlot) {
    Graph* inner = Add<Graph>(*graph);
    for (int i = 0; i < 3; ++i) {
        inner->AddUserDataInput(DataInput::Type());
        inner->AddUserDataOutput(DataOutput::Type());
    }
    ASSERT_TRUE(mixer->InsertDataOutput(UserPort<DataOutput>(), 99));  // past the end: last
    ASSERT_TRUE(mixer->InsertDataOutput(UserPort<DataOutput>(), 1));
    std::string before = Save(project);
    CommittedTransaction done = Record("Add in front", [&] {
        EXPECT_TRUE(adder->InsertDataInput(UserPort<DataInput>(), 0));
        EXPECT_FALSE(adder->InsertDataInput(&adder->in, 0));  // already in place
    });
    ExpectRoundTrip(project, before, done);
    auto* front = std::get<DataInput*>(adder->GetAllDataInputSlots().at(0));
    ASSERT_TRUE(front->IsAddedByUser());

    before = Save(project);
    done = Record("Remove ports", [&] {
        inner->RemoveDataInput(inner->GetAllDataInputs()[1]);
        inner->RemoveDataOutput(inner->GetAllDataOutputs()[0]);
        mixer->RemoveDataOutput(mixer->GetAllDataOutputs()[1]);
        adder->RemoveDataInput(front);
    });
    ExpectRoundTrip(project, before, done);
    EXPECT_TRUE(UndoTransaction(project, done));
    EXPECT_TRUE(std::get<DataInput*>(adder->GetAllDataInputSlots().at(0))->IsAddedByUser());
}

// Removing a graph's port or parameter takes the connections of its mirror inside along, recorded before the
// removal, so that undo makes them again once the member (and with it the mirror) is back.
TEST_F(UndoRedo, GraphMembersGetTheirInsideConnectionsBack) {
    Graph* inner = Add<Graph>(*graph);
    auto* inputs = Add<GraphInputsOperator>(*inner);
    auto* outputs = Add<GraphOutputsOperator>(*inner);
    auto* insideSource = Add<SourceOperator>(*inner);
    auto* insideAdder = Add<AddOperator>(*inner);
    DataInput* in = inner->AddUserDataInput(DataInput::Type());
    DataOutput* out = inner->AddUserDataOutput(DataOutput::Type());
    Parameter* level = inner->AddUserParameter(Testing::NumberParameter::Type(), false);
    Parameter* total = inner->AddUserParameter(Testing::NumberParameter::Type(), true);
    ASSERT_TRUE(graph->AddDataConnection({&source->out, in}));
    ASSERT_TRUE(inner->AddDataConnection({inputs->FindMirror(*in), &insideAdder->in}));
    ASSERT_TRUE(inner->AddDataConnection({&insideAdder->out, outputs->FindMirror(*out)}));
    Parameter* levelMirror = inputs->FindMirror(*level);
    Parameter* totalMirror = outputs->FindMirror(*total);
    ASSERT_TRUE(inner->AddParameterConnection(
        {levelMirror, &insideAdder->offset, WholeValueLinks(*levelMirror, insideAdder->offset)}, false));
    ASSERT_TRUE(inner->AddParameterConnection(
        {&insideSource->value, totalMirror, WholeValueLinks(insideSource->value, *totalMirror)}, false));

    const std::string before = Save(project);
    const CommittedTransaction done = Record("Remove members", [&] {
        inner->RemoveDataInput(in);
        inner->RemoveDataOutput(out);
        inner->RemoveParameter(level);
        inner->RemoveParameter(total);
    });
    std::vector<int> kinds;
    for (const Vantel::Record& record : done.records) {
        kinds.push_back(RecordKind(record));
    }
    // The input: inside, then outside disconnected, then removed; likewise the others.
    EXPECT_EQ(kinds, (std::vector<int>{5, 5, 7, 5, 7, 6, 11, 6, 11}));
    EXPECT_EQ(std::get<DataConnectionRecord>(done.records[0]).input, insideAdder->in.GetPath());
    ExpectRoundTrip(project, before, done);
}

TEST_F(UndoRedo, EveryRecordKindHasItsOwnDescription) {
    const Path o = adder->GetPath();
    const Path p = adder->offset.GetPath();
    const Path i = adder->in.GetPath();
    const std::string ot = o.ToString(), pt = p.ToString(), it = i.ToString();
    const std::vector<std::pair<Vantel::Record, std::string>> rows{
        {ParameterValueRecord{p, 0.0, 2.5}, "Set " + pt + " to 2.5"},
        {ParameterComponentRecord{p, 1, 0.0, -1.5}, "Set component 1 of " + pt + " to -1.5"},
        {OperatorPositionRecord{o, {}, {3.0f, -2.5f}}, "Move " + ot + " to (3.0, -2.5)"},
        {RenameRecord{o, "A", "B"}, "Rename " + ot + " from \"A\" to \"B\""},
        {OperatorRecord{o, 1, {}, Presence::Removed}, "Remove operator " + ot},
        {DataConnectionRecord{o, i, Presence::Removed}, "Disconnect " + ot + " from " + it},
        {ParameterConnectionRecord{o, p, {}, Presence::Added}, "Connect parameter " + ot + " to " + pt},
        {DataPortRecord{i, 0, {}, PortDirection::Output, Presence::Added}, "Add data output " + it},
        {StructureRecord{o, {}, {}}, "Rebuild the structure of " + ot},
        {ListInputMoveRecord{i, 0, 2}, "Move list input " + it + " to index 2"},
        {ParameterAddedRecord{p, 0, {}}, "Add parameter " + pt},
        {ParameterRemovedRecord{p, 0, {}}, "Remove parameter " + pt},
        {BundleAddedRecord{p, 0, {}}, "Add bundle " + pt},
        {BundleRemovedRecord{p, 0, {}}, "Remove bundle " + pt},
        {ParameterNodeMoveRecord{p, 0, 1}, "Move parameter " + pt + " to index 1"},
        {CompoundRecord{p, 0.0, 2.5, {ParameterValueRecord{}}},
         "Set " + pt + " to 2.5 and rebuild (1 nested)"},
    };
    std::set<std::string> texts;
    for (std::size_t kind = 0; kind < rows.size(); ++kind) {
        SCOPED_TRACE("kind " + std::to_string(kind));
        EXPECT_EQ(RecordKind(rows[kind].first), static_cast<int>(kind));
        EXPECT_EQ(DescribeRecord(rows[kind].first), rows[kind].second);
        texts.insert(rows[kind].second);
    }
    EXPECT_EQ(texts.size(), 16u);
}

TEST_F(UndoRedo, BundlesCreatedMovedAndRemoved) {
    std::string before = Save(project);
    CommittedTransaction done = Record("Add bands", [&] {
        mixer->bands.CreateBundle("Band", "");
        mixer->bands.CreateBundle("Band", "");
        dynamic_cast<Testing::NumberParameter*>(mixer->bands.GetBundle(1)->FindParameter("Gain"))
            ->SetValue(0.5);
    });
    ExpectRoundTrip(project, before, done);
    ASSERT_EQ(mixer->bands.GetBundles().size(), 2u);

    before = Save(project);
    done = Record("Reorder bands", [&] {
        mixer->bands.MoveBundle(mixer->bands.GetBundle(1), 0);
        mixer->bands.RemoveBundle(mixer->bands.GetBundle(1));
    });
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(mixer->bands.GetBundles().size(), 1u);
}

TEST_F(UndoRedo, StructuralValueReplaysItsRebuild) {
    auto* mirror = Add<MirrorOperator>(*graph);
    const std::string before = Save(project);
    const CommittedTransaction done = Record("Mirror", [&] { mirror->model.SetValue(adder); });
    ASSERT_EQ(done.records.size(), 1u);
    ASSERT_EQ(RecordKind(done.records[0]), 15);
    ExpectRoundTrip(project, before, done);
    EXPECT_EQ(mirror->GetAllParameters().size(), 3u);  // the model and one copy per parameter of the adder
}

// Redo runs the compound record before its nested records (the copy exists only after the rebuild); undo runs
// the compound record first too, then its nested records in reverse.
TEST_F(UndoRedo, CompoundRecordOrder) {
    auto* mirror = Add<MirrorOperator>(*graph);
    const Path copy = mirror->GetPath().GetChild(adder->offset.GetKey());
    const Path model = mirror->model.GetPath();
    CompoundRecord compound{model, nullptr, Serialization::SerializeParameter(mirror->model)["value"], {}};
    {
        Transaction::SuppressRecording suppress;
        mirror->model.SetValue(adder);
        compound.next = mirror->model.SerializeValue();
        mirror->model.SetValue(nullptr);
    }
    compound.nested = {ParameterValueRecord{copy, 0.0, 1.0}, ParameterValueRecord{copy, 1.0, 2.0}};
    const CommittedTransaction done{"Mirror", {compound}};
    EXPECT_TRUE(ApplyTransaction(project, done));
    auto* copied = dynamic_cast<Testing::NumberParameter*>(project.Resolve(copy));
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(copied->Value(), 2.0);

    LogCapture log;
    EXPECT_FALSE(UndoTransaction(project, done));  // the copy went with the rebuild of the compound record
    const std::string drift = "[Error] ApplyRecord: " + copy.ToString() +
                              " was not found. The history and the model have drifted apart.\n";
    EXPECT_EQ(log.Text(), drift + drift);
    EXPECT_EQ(mirror->model.Value(), nullptr);

    const Path offset = adder->offset.GetPath();
    const CommittedTransaction plain{
        "Offsets",
        {CompoundRecord{source->value.GetPath(),
                        0.0,
                        3.0,
                        {ParameterValueRecord{offset, 0.0, 1.0}, ParameterValueRecord{offset, 1.0, 2.0}}}}};
    EXPECT_TRUE(ApplyTransaction(project, plain));
    EXPECT_EQ(adder->offset.Value(), 2.0);
    EXPECT_TRUE(UndoTransaction(project, plain));
    EXPECT_EQ(adder->offset.Value(), 0.0);
    EXPECT_EQ(source->value.Value(), 0.0);
}

TEST_F(UndoRedo, StructureRecordRestoresUserParameters) {
    Graph* inner = Add<Graph>(*graph);
    const std::string before = Save(project);
    inner->AddUserParameter(Testing::NumberParameter::Type(), false)->SetName("Level");
    const nlohmann::json structure = Serialization::SerializeOwnStructure(*inner);
    const std::string after = Save(project);
    inner->RemoveParameter(inner->GetAllParameters().at(0));
    ASSERT_EQ(Save(project), before);

    const CommittedTransaction done{"Restructure",
                                    {StructureRecord{inner->GetPath(), nlohmann::json::array(), structure}}};
    EXPECT_TRUE(ApplyTransaction(project, done));
    EXPECT_EQ(Save(project), after);
    EXPECT_TRUE(ApplyTransaction(project, done));  // already in place: nothing to do
    EXPECT_EQ(Save(project), after);
    EXPECT_TRUE(UndoTransaction(project, done));
    EXPECT_EQ(Save(project), before);
    EXPECT_EQ(DescribeRecord(done.records[0]), "Rebuild the structure of " + inner->GetPath().ToString());
}

TEST_F(UndoRedo, DriftFailsTheStepAndReplayGoesOn) {
    const CommittedTransaction done = Record("Two values", [&] {
        adder->offset.SetValue(1.0);
        source->value.SetValue(2.0);
    });
    const std::string path = adder->offset.GetPath().ToString();
    graph->RemoveOperator(adder);
    LogCapture log;
    EXPECT_FALSE(UndoTransaction(project, done));
    EXPECT_EQ(log.Text(), "[Error] ApplyRecord: " + path +
                              " was not found. The history and the model have drifted apart.\n");
    EXPECT_EQ(source->value.Value(), 0.0);  // the step after the failing one still ran
}

TEST_F(UndoRedo, EmptyTransactionAndNoRecording) {
    EXPECT_TRUE(UndoTransaction(project, CommittedTransaction{"Nothing", {}}));
    EXPECT_TRUE(ApplyTransaction(project, CommittedTransaction{"Nothing", {}}));

    const CommittedTransaction done = Record("Edit", [&] {
        source->value.SetValue(4.0);
        Add<SourceOperator>(*graph);
    });
    Transaction open("Open");
    EXPECT_TRUE(UndoTransaction(project, done));
    EXPECT_TRUE(ApplyTransaction(project, done));
    EXPECT_TRUE(open.GetRecords().empty());
    EXPECT_TRUE(Transaction::IsRecording());
}

}  // namespace
}  // namespace Vantel
