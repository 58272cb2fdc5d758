#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Projects/UndoRedo.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"

namespace Vantel {
namespace {

using Testing::Add;
using Testing::AddOperator;
using Testing::LogCapture;
using Testing::MirrorOperator;
using Testing::MixerOperator;
using Testing::NumberParameter;
using Testing::SourceOperator;
using Testing::StackOperator;

CommittedTransaction Record(std::string_view name, const std::function<void()>& edit) {
    Transaction transaction(name);
    edit();
    return transaction.Commit().value_or(CommittedTransaction{});
}

// A port as a user adds it to an operator that is not a graph.
template <typename Port>
std::unique_ptr<Port> UserPort() {
    auto port = std::make_unique<Port>();
    Access::GetImplementation(*port)->SetAddedByUser(true);
    return port;
}

class UndoRedo : public testing::Test {
protected:
    void SetUp() override {
        Testing::RegisterProjectTestTypes();
        graph = project.GetRootGraph();
        source = &Add<SourceOperator>(*graph);
        adder = &Add<AddOperator>(*graph);
        mixer = &Add<MixerOperator>(*graph);
    }
    // Records `edit`; undo must give back the file from before it, redo the file after it, both quietly.
    CommittedTransaction RoundTrip(std::string_view name, const std::function<void()>& edit) {
        const std::string before = Serialization::SerializeProjectText(project);
        const CommittedTransaction done = Record(name, edit);
        EXPECT_FALSE(done.records.empty());
        const std::string after = Serialization::SerializeProjectText(project);
        EXPECT_NE(after, before);
        LogCapture log;
        EXPECT_TRUE(UndoTransaction(project, done));
        EXPECT_EQ(Serialization::SerializeProjectText(project), before);
        EXPECT_TRUE(ApplyTransaction(project, done));
        EXPECT_EQ(Serialization::SerializeProjectText(project), after);
        EXPECT_EQ(log.Text(), "");
        return done;
    }

    Project project;
    Graph* graph = nullptr;
    SourceOperator* source = nullptr;
    AddOperator* adder = nullptr;
    MixerOperator* mixer = nullptr;
};

TEST_F(UndoRedo, RenameAndPosition) {
    const CommittedTransaction done = RoundTrip("Rename and move", [&] {
        source->SetName("Start");
        source->value.SetName("Level");
        adder->out.SetName("Sum");
        adder->in.SetName("Addend");
        mixer->layers.SetName("Stack");
        mixer->SetPosition({10.0f, -2.0f});
    });
    // The file leaves out the names of declared members, so look at them.
    EXPECT_TRUE(UndoTransaction(project, done));
    EXPECT_EQ(source->value.GetName() + adder->in.GetName() + mixer->layers.GetName(), "ValueInLayers");
}

// What is set on an operator before it joins a graph rides in the add's own record; the root graph, in no
// graph but part of the project, records its own edits.
TEST_F(UndoRedo, EditsOutsideTheModelRideWithTheAdd) {
    const CommittedTransaction add = RoundTrip("Add node", [&] {
        auto made = std::make_unique<AddOperator>();
        made->offset.SetValue(2.0);
        made->SetName("Sum");
        made->SetPosition({3.0f, 4.0f});
        graph->AddOperator(std::move(made));
    });
    EXPECT_EQ(add.records.size(), 1u);
    RoundTrip("Add, then place and connect", [&] {
        auto made = std::make_unique<AddOperator>();
        AddOperator& sink = *made;
        graph->AddOperator(std::move(made));
        sink.SetName("Sink");
        sink.SetPosition({10.0f, 20.0f});
        EXPECT_TRUE(graph->AddDataConnection({&source->out, &sink.in}));
    });
    RoundTrip("Root", [&] {
        graph->SetName("Main");
        graph->SetPosition({1.0f, 2.0f});
        graph->AddUserParameter(NumberParameter::Type(), false)->SetComponent(0, 5.0);
    });
}

// A user's port on a plain operator comes back at the slot it had, whether its removal is undone or its
// addition redone. The file shows the order of a user's ports but not where they sit among declared ones.
TEST_F(UndoRedo, UserPortsComeBackAtTheirSlot) {
    ASSERT_TRUE(mixer->InsertDataOutput(UserPort<DataOutput>(), 99));  // past the end: last
    ASSERT_TRUE(mixer->InsertDataOutput(UserPort<DataOutput>(), 1));
    RoundTrip("Add in front", [&] {
        EXPECT_TRUE(adder->InsertDataInput(UserPort<DataInput>(), 0));
        EXPECT_FALSE(adder->InsertDataInput(&adder->in, 0));  // already in place
    });
    auto* front = std::get<DataInput*>(adder->GetAllDataInputSlots().at(0));
    ASSERT_TRUE(front->IsAddedByUser());

    const CommittedTransaction done = RoundTrip("Remove ports", [&] {
        mixer->RemoveDataOutput(mixer->GetAllDataOutputs()[1]);
        adder->RemoveDataInput(front);
    });
    EXPECT_TRUE(UndoTransaction(project, done));
    EXPECT_TRUE(std::get<DataInput*>(adder->GetAllDataInputSlots().at(0))->IsAddedByUser());

    // So does a list input that goes with its connection.
    ASSERT_NE(graph->AddDataConnection(source->out, mixer->layers), nullptr);
    ASSERT_NE(graph->AddDataConnection(adder->out, mixer->layers), nullptr);
    RoundTrip("Disconnect", [&] { graph->DisconnectDataInput(*mixer->layers.GetInput(0)); });
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
    for (std::size_t kind = 0; kind < rows.size(); ++kind) {
        SCOPED_TRACE("kind " + std::to_string(kind));
        EXPECT_EQ(KindOf(rows[kind].first), static_cast<RecordKind>(kind));
        EXPECT_EQ(DescribeRecord(rows[kind].first), rows[kind].second);
    }

    // Text that is not UTF-8, in a value or a name, shows its bytes escaped; describing never throws.
    const std::string bad =
        "a\xFF"
        "b\xC3";
    // A character that ends the text is whole, not cut off.
    EXPECT_EQ(
        DescribeRecord(ParameterValueRecord{p, 0.0, nlohmann::json::array({bad, {{bad, "\n"}}, "\xC3\xBC"})}),
        "Set " + pt + R"( to ["a\xFFb\xC3",{"a\xFFb\xC3":"\n"},")" + "\xC3\xBC\"]");
    EXPECT_EQ(DescribeRecord(RenameRecord{o, bad, "\xE2\x82\xAC"}),
              "Rename " + ot + R"( from "a\xFFb\xC3" to ")" + "\xE2\x82\xAC\"");

    // The edges of well-formed UTF-8 are the JSON library's (it refuses to print the escaped ones): a
    // sequence is kept whole or escaped byte by byte.
    const auto renamedTo = [&](const char* text) { return DescribeRecord(RenameRecord{o, "x", text}); };
    for (const char* whole : {"\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xF0\x90\x80\x80",
                              "\xF1\x80\x80\x80", "\xF3\xBF\xBF\xBF", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(renamedTo(whole), "Rename " + ot + R"( from "x" to ")" + whole + "\"");
    }
    // Overlong two-, three- and four-byte forms, a surrogate, above U+10FFFF, a lead byte no sequence has,
    // cut short.
    const std::pair<const char*, const char*> escaped[] = {{"\xC1\xBF", R"(\xC1\xBF)"},
                                                           {"\xE0\x9F\xBF", R"(\xE0\x9F\xBF)"},
                                                           {"\xF0\x8F\xBF\xBF", R"(\xF0\x8F\xBF\xBF)"},
                                                           {"\xED\xA0\x80", R"(\xED\xA0\x80)"},
                                                           {"\xF4\x90\x80\x80", R"(\xF4\x90\x80\x80)"},
                                                           {"\xF5\x80\x80\x80", R"(\xF5\x80\x80\x80)"},
                                                           {"\xE2\x82", R"(\xE2\x82)"}};
    for (const auto& [text, shown] : escaped) {
        EXPECT_EQ(renamedTo(text), "Rename " + ot + R"( from "x" to ")" + shown + "\"");
    }
}

// Both directions run the compound record before its nested records: its replay rebuilds the structure, and
// the nested records then apply to what that rebuild made. Records of members the rebuild took away are done.
TEST_F(UndoRedo, CompoundRecordOrder) {
    auto* mirror = &Add<MirrorOperator>(*graph);
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
    EXPECT_TRUE(UndoTransaction(project, done));
    EXPECT_EQ(log.Text(), "");
    EXPECT_EQ(mirror->model.Value(), nullptr);
    EXPECT_EQ(project.Resolve(copy), nullptr);

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

// What a rebuild takes away comes back on undo: the values of the members it removed, bundles included, the
// connections to them (data and parameter) and the references into them.
TEST_F(UndoRedo, StructuralWritesAndStructureRecordsRoundTrip) {
    auto* stack = &Add<StackOperator>(*graph);
    stack->count.SetValue(3.0);
    source->value.SetValue(0.5);
    Parameter* weight = stack->GetParameterGroup().FindParameter("Weight 3");
    ASSERT_NE(weight, nullptr);
    ASSERT_TRUE(graph->AddParameterConnection({&source->value, weight, {{0, 0}}}, false));
    ASSERT_TRUE(graph->AddDataConnection({&mixer->out, stack->GetAllDataInputs().back()}));
    stack->GetParameterGroup().FindParameter("Weight 2")->SetComponent(0, 0.75);
    stack->layers.GetBundle(2)->FindParameter("Opacity")->SetComponent(0, 0.25);
    stack->focus.SetValue(stack->layers.GetBundle(2));
    ASSERT_NE(stack->focus.Value(), nullptr);

    RoundTrip("Fewer", [&] { stack->count.SetValue(1.0); });
    ASSERT_EQ(stack->layers.GetBundleCount(), 1u);
    RoundTrip("More", [&] { stack->count.SetValue(2.0); });

    // A structure record replaces only what the user added: a parameter the graph's type made itself stays.
    Graph* inner = &Add<Graph>(*graph);
    inner->AddParameter(std::make_unique<Testing::NumberParameter>(nullptr, "Own"));
    const std::string before = Serialization::SerializeProjectText(project);
    Parameter* level = inner->AddUserParameter(Testing::NumberParameter::Type(), false);
    level->SetName("Level");
    const nlohmann::json structure = Serialization::SerializeOwnStructure(*inner);
    const std::string after = Serialization::SerializeProjectText(project);
    inner->RemoveParameter(level);
    ASSERT_EQ(Serialization::SerializeProjectText(project), before);

    const CommittedTransaction done{"Restructure",
                                    {StructureRecord{inner->GetPath(), nlohmann::json::array(), structure}}};
    EXPECT_TRUE(ApplyTransaction(project, done));
    EXPECT_EQ(Serialization::SerializeProjectText(project), after);
    EXPECT_TRUE(ApplyTransaction(project, done));  // already in place: nothing to do
    EXPECT_EQ(Serialization::SerializeProjectText(project), after);
    EXPECT_TRUE(UndoTransaction(project, done));
    EXPECT_EQ(Serialization::SerializeProjectText(project), before);
}

TEST_F(UndoRedo, DriftFailsTheStepAndReplayGoesOnRecordingNothing) {
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

    // A parameter or an operator whose type is no longer registered cannot come back.
    const nlohmann::json node{{"key", "Extra"}, {"type", "Vantel.Test.Gone"}, {"name", "Extra"}};
    const CommittedTransaction gone{
        "Add", {ParameterAddedRecord{*Path::Parse(source->GetPath().ToString() + "/Extra"), 0, node}}};
    EXPECT_FALSE(ApplyTransaction(project, gone));
    EXPECT_NE(log.Text().find("type 'Vantel.Test.Gone' not found"), std::string::npos) << log.Text();
    const CommittedTransaction lost{
        "Add", {OperatorRecord{*Path::Parse("/Extra"), 0, node, Presence::Added}}};  // into the root
    EXPECT_FALSE(ApplyTransaction(project, lost));

    // Replay records nothing, even inside an open transaction, and an empty history replays.
    EXPECT_TRUE(UndoTransaction(project, CommittedTransaction{"Nothing", {}}));
    EXPECT_TRUE(ApplyTransaction(project, CommittedTransaction{"Nothing", {}}));
    const CommittedTransaction edit = Record("Edit", [&] {
        source->value.SetValue(4.0);
        Add<SourceOperator>(*graph);
    });
    Transaction open("Open");
    EXPECT_TRUE(UndoTransaction(project, edit));
    EXPECT_TRUE(ApplyTransaction(project, edit));
    EXPECT_TRUE(open.GetRecords().empty());
    EXPECT_TRUE(Transaction::IsRecording());
}

// Undo of a removal gives back the references that pointed into the removed operator, redo clears them again.
// Undo re-makes the middle operator's connections in the recorded order; the chain's end still gets the
// start's value, not the restored middle's default. The end is cleared meanwhile, so that only a settled
// chain gives its value back. A chain in a nested graph settles as well.
TEST_F(UndoRedo, AChainRemadeAroundItsMiddleEndsSettled) {
    auto& middle = Add<SourceOperator>(*graph);
    mixer->focus = &middle;
    source->value.SetValue(3.0);
    ASSERT_TRUE(graph->AddParameterConnection({&source->value, &middle.value, {{0, 0}}}, false));
    ASSERT_TRUE(graph->AddParameterConnection({&middle.value, &adder->offset, {{0, 0}}}, false));
    const CommittedTransaction done = RoundTrip("Remove", [&] { graph->RemoveOperator(&middle).reset(); });
    adder->offset.SetValue(0.0);
    ASSERT_TRUE(UndoTransaction(project, done));
    EXPECT_EQ(adder->offset.Value(), 3.0);

    auto& inner = Add<Graph>(*graph);
    auto& start = Add<SourceOperator>(inner);
    auto& between = Add<SourceOperator>(inner);
    auto& end = Add<AddOperator>(inner);
    start.value.SetValue(5.0);
    ASSERT_TRUE(inner.AddParameterConnection({&start.value, &between.value, {{0, 0}}}, false));
    ASSERT_TRUE(inner.AddParameterConnection({&between.value, &end.offset, {{0, 0}}}, false));
    const CommittedTransaction nested = Record("Remove", [&] { inner.RemoveOperator(&between).reset(); });
    end.offset.SetValue(0.0);
    ASSERT_TRUE(UndoTransaction(project, nested));
    EXPECT_EQ(end.offset.Value(), 5.0);
}

}  // namespace
}  // namespace Vantel
