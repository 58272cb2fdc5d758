#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Projects/SuppressUpdateStructure.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::CountedOperator;
using Testing::LogCapture;
using Testing::NumberParameter;

TEST(Data, SerialsAreUniqueIncreasingNeverZeroAndDecideAnInputsChange) {
    const Data first;
    const Data second;
    EXPECT_GT(first.GetSerial(), 0u);
    EXPECT_GT(second.GetSerial(), first.GetSerial());

    // Enough values that each thread takes several batches of serials while the other does too.
    constexpr int kEach = 5000;
    std::vector<std::uint64_t> serials[2];
    auto make = [&serials](int thread) {
        for (int i = 0; i < kEach; ++i)
            serials[thread].push_back(Data().GetSerial());
    };
    std::thread a(make, 0);
    std::thread b(make, 1);
    a.join();
    b.join();
    std::set<std::uint64_t> unique(serials[0].begin(), serials[0].end());
    unique.insert(serials[1].begin(), serials[1].end());
    EXPECT_EQ(unique.size(), 2u * kEach);
    EXPECT_EQ(unique.count(0), 0u);
    EXPECT_TRUE(std::is_sorted(serials[0].begin(), serials[0].end()));
    EXPECT_TRUE(std::is_sorted(serials[1].begin(), serials[1].end()));

    // An input's change is decided by the serial.
    DataInput input;
    input.Clear();
    EXPECT_FALSE(input.HasDataChanged());

    auto value = std::make_shared<Data>();
    input.Receive(value);
    EXPECT_TRUE(input.HasDataChanged());
    EXPECT_EQ(input.GetDataSerial(), value->GetSerial());
    EXPECT_EQ(input.GetData(), value);

    DataInput again;
    again.Receive(value);
    again.Receive(value);
    EXPECT_TRUE(again.HasDataChanged());

    input.Clear();
    EXPECT_FALSE(input.HasData());
    EXPECT_EQ(input.GetDataSerial(), 0u);
    EXPECT_EQ(input.GetData(), nullptr);
}

TEST(DataOutput, SecondWriteInAFrameWarnsAndWins) {
    Operator op;
    op.SetKey("Blur");
    DataOutput output(&op, "Result");
    auto first = std::make_shared<Data>();
    auto second = std::make_shared<Data>();
    int activations = 0;
    EventSubscription subscription = output.ActivatedEvent().Subscribe([&] { ++activations; });

    LogCapture log;
    output.Activate(first);
    output.Activate(first);
    EXPECT_EQ(log.Text(), "");
    output.Activate(second);
    output.Clear();
    const std::string warning =
        "[Warning] DataOutput '/Result' is written more than once per frame, whichever write happens last "
        "wins.\n";
    EXPECT_EQ(log.Text(), warning + warning);
    EXPECT_FALSE(output.HasData());
    EXPECT_EQ(output.GetDataSerial(), 0u);
    EXPECT_EQ(activations, 3);
}

// Overrides Activate without a type of its own, as a plug-in's output may.
class WatchedOutput : public DataOutput {
public:
    using DataOutput::DataOutput;
    void Activate(const std::shared_ptr<Data>& data) override {
        seen.push_back(data);
        DataOutput::Activate(data);
    }
    std::vector<std::shared_ptr<Data>> seen;
};

TEST(DataOutput, AGivenUpValueIsTakenOverUnlessASubclassWatchesActivate) {
    Operator op;
    DataOutput output(&op, "Result");
    int activations = 0;
    EventSubscription subscription = output.ActivatedEvent().Subscribe([&] { ++activations; });
    auto value = std::make_shared<Data>();
    const Data* raw = value.get();
    output.Activate(std::move(value));
    EXPECT_EQ(output.GetData().get(), raw);
    EXPECT_EQ(output.GetData().use_count(), 1);                // taken over, not shared with the caller
    output.Activate(std::shared_ptr<Data>(output.GetData()));  // the same serial writes nothing
    EXPECT_EQ(activations, 1);

    WatchedOutput watched(&op, "Watched");
    DataOutput& plain = watched;
    plain.Activate(std::make_shared<Data>());
    watched.Activate(std::make_shared<Data>());
    ASSERT_EQ(watched.seen.size(), 2u);
    EXPECT_EQ(watched.GetData(), watched.seen[1]);
}

TEST(Operator, PortsGetKeysAndKnowTheirPlace) {
    Operator op;
    DataInput image(&op, "Image");
    DataOutput result(&op, "Result");
    DataInput unnamed1(&op, "");
    DataInput unnamed2(&op, "");
    EXPECT_EQ(image.GetKey(), "Image");
    EXPECT_EQ(unnamed1.GetKey().rfind("Input [", 0), 0u);
    EXPECT_NE(unnamed1.GetKey(), unnamed2.GetKey());
    EXPECT_EQ(image.GetParentObject(), &op);
    EXPECT_EQ(op.FindChild("Result"), &result);
    EXPECT_EQ(op.GetAllDataInputs().size(), 3u);
    EXPECT_FALSE(op.AddDataInput(&image));

    Operator other;
    EXPECT_FALSE(other.AddDataInput(&image));
    EXPECT_FALSE(other.RemoveDataInput(&image));
    EXPECT_FALSE(other.RemoveDataOutput(&result));
    // Plug-ins may detach directly: a port of another operator is in no slot of this one.
    EXPECT_FALSE(Access::GetImplementation(other)->DetachDataInput(&image));
    EXPECT_FALSE(Access::GetImplementation(other)->DetachDataOutput(&result));
    EXPECT_FALSE(other.AddDataInput(std::unique_ptr<DataInput>()));
    EXPECT_FALSE(other.AddDataOutput(std::unique_ptr<DataOutput>()));
    EXPECT_FALSE(other.MoveDataInput(nullptr, 0));
    EXPECT_FALSE(other.MoveDataOutput(nullptr, 0));

    int reorders = 0;
    EventSubscription subscription = op.DataPortsReorderedEvent().Subscribe([&] { ++reorders; });
    EXPECT_FALSE(op.MoveDataInput(&image, 0));
    EXPECT_FALSE(op.MoveDataInput(&image, 3));
    EXPECT_TRUE(op.MoveDataInput(&image, 2));
    EXPECT_EQ(op.GetAllDataInputs().back(), &image);
    EXPECT_EQ(reorders, 1);
    DataOutput preview(&op, "Preview");
    EXPECT_FALSE(op.MoveDataOutput(&preview, 2));
    EXPECT_TRUE(op.MoveDataOutput(&preview, 0));
    EXPECT_EQ(op.GetAllDataOutputs().front(), &preview);
    EXPECT_FALSE(op.MoveDataOutput(&preview, 0));
    EXPECT_EQ(reorders, 2);

    auto newData = std::make_shared<Data>();
    EXPECT_FALSE(op.Outdated());
    image.Receive(newData);
    EXPECT_TRUE(op.Outdated());
    EXPECT_TRUE(Access::GetImplementation(op)->DetachDataInput(&image) &&
                Access::GetImplementation(op)->DetachDataOutput(&preview));
    EXPECT_EQ(image.GetOperator(), nullptr);
}

TEST(Operator, OwnedAndMemberPortsComeAndGo) {
    auto op = std::make_unique<Operator>();
    auto owned = std::make_unique<DataOutput>();
    DataOutput* raw = owned.get();
    ASSERT_TRUE(op->AddDataOutput(std::move(owned)));
    EXPECT_EQ(raw->GetOperator(), op.get());
    {
        // A removed port that the operator does not own is let go, free to join another.
        DataInput input(op.get(), "In");
        DataOutput output(op.get(), "Out");
        ASSERT_TRUE(op->RemoveDataInput(&input) && op->RemoveDataOutput(&output));
        Operator other;
        EXPECT_TRUE(other.AddDataInput(&input));
        EXPECT_TRUE(other.AddDataOutput(&output));
    }
    {
        DataOutput member(op.get(), "Member out");  // a member port leaves its operator when it dies
    }
    EXPECT_EQ(op->GetAllDataOutputs(), std::vector<DataOutput*>{raw});
    int removed = 0;
    EventSubscription subscription = op->DataOutputRemovedEvent().Subscribe([&](DataOutput* output) {
        EXPECT_EQ(output, raw);
        ++removed;
    });
    auto member = std::make_unique<DataInput>(op.get(), "Member");
    Ptr<DataOutput> removedOutput(raw);
    auto ownedInput = std::make_unique<DataInput>();
    Ptr<DataInput> removedInput(ownedInput.get());
    ASSERT_TRUE(op->AddDataInput(std::move(ownedInput)));
    EXPECT_TRUE(op->RemoveDataOutput(raw) && op->RemoveDataInput(removedInput.Get()));  // destroys both
    EXPECT_EQ(removedOutput.Get(), nullptr);
    EXPECT_EQ(removedInput.Get(), nullptr);
    EXPECT_EQ(removed, 1);
    EXPECT_TRUE(op->GetAllDataOutputs().empty());

    member.reset();  // a member port leaves its operator when it dies
    EXPECT_TRUE(op->GetAllDataInputs().empty());

    auto survivor = std::make_unique<DataInput>(op.get(), "Survivor");
    op->AddDataInput(std::make_unique<DataInput>());
    op.reset();  // owned ports die with the operator, others are let go
    EXPECT_EQ(survivor->GetOperator(), nullptr);
}

std::vector<std::string> Names(const DataInputList& list) {
    std::vector<std::string> names;
    for (const DataInput* input : list.GetInputs()) {
        names.push_back(input->GetName());
    }
    return names;
}

TEST(DataInputList, InputsAreNumberedInOrderAndKeepTheirKeys) {
    Operator op;
    op.SetKey("Mix");
    std::vector<std::string> calls;
    DataInputList list(&op, "Layers", DataInput::Type(),
                       {.created = [&](DataInput& input) { calls.push_back("created " + input.GetKey()); },
                        .removing = [&](DataInput& input) { calls.push_back("removing " + input.GetKey()); },
                        .reordered = [&] { calls.push_back("reordered"); }});
    DataInputList::Implementation& implementation = *Access::GetImplementation(list);
    DataInput* a = implementation.CreateInput("a");
    DataInput* b = implementation.CreateInput("b");
    DataInput* c = implementation.CreateInput("c");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(Names(list), (std::vector<std::string>{"Input 1", "Input 2", "Input 3"}));
    EXPECT_EQ(b->GetParentObject(), &list);
    EXPECT_EQ(b->GetPath().ToString(), "/Layers/b");
    EXPECT_EQ(op.Resolve(*Path::Parse("Layers/b")), b);
    EXPECT_EQ(op.GetAllDataInputs(), (std::vector<DataInput*>{a, b, c}));

    EXPECT_TRUE(implementation.RemoveInput(b));
    EXPECT_FALSE(implementation.RemoveInput(b));
    EXPECT_EQ(Names(list), (std::vector<std::string>{"Input 1", "Input 2"}));
    EXPECT_EQ(list.GetInput(1)->GetKey(), "c");
    EXPECT_EQ(list.GetInput(2), nullptr);
    EXPECT_EQ(op.GetAllDataInputs(), (std::vector<DataInput*>{a, c}));
    EXPECT_FALSE(op.RemoveDataInput(a));  // list inputs go through their list

    Transaction transaction("Reorder");
    EXPECT_FALSE(list.MoveInput(a, 0));
    EXPECT_FALSE(list.MoveInput(a, 2));
    EXPECT_TRUE(list.MoveInput(a, 1));
    EXPECT_EQ(list.IndexOf(a), 1u);
    EXPECT_EQ(op.GetAllDataInputs(), (std::vector<DataInput*>{c, a}));  // the operator's view follows
    EXPECT_EQ(Names(list), (std::vector<std::string>{"Input 1", "Input 2"}));
    EXPECT_TRUE(transaction.GetRecords().empty());  // the operator is in no graph
    // A rename is announced through the operator, as a port's is, and only when the name changes.
    const EventSubscription renamed = Access::GetImplementation(op)->MemberRenamedEvent().Subscribe(
        [&](Object* member) { calls.push_back(member == &list ? "renamed " + list.GetName() : "renamed?"); });
    list.SetName("Sheets");
    list.SetName("Sheets");
    EXPECT_EQ(calls, (std::vector<std::string>{"created a", "created b", "created c", "removing b",
                                               "reordered", "renamed Sheets"}));
}

TEST(DataInputList, KeysAreSettledAndBadTypesRefused) {
    LogCapture log;
    Operator op;
    DataInputList list(&op, "Layers", DataInput::Type(), {});
    DataInputList::Implementation& implementation = *Access::GetImplementation(list);
    implementation.CreateInput("x");
    EXPECT_EQ(implementation.CreateInput("x")->GetKey(), "x_");
    EXPECT_EQ(implementation.CreateInput("")->GetKey().rfind("Input [", 0), 0u);
    EXPECT_EQ(
        log.Text(),
        "[Error] The key 'x' is already taken in data input list 'Layers'. Keys must be unique among all "
        "children of their parent. Using 'x_' instead. Values stored under that key are lost once the "
        "collision is fixed.\n");

    log.Clear();
    DataInputList untyped(&op, "Untyped", nullptr, {});
    DataInputList wrong(&op, "Wrong", Operator::Type(), {});
    EXPECT_EQ(Access::GetImplementation(untyped)->CreateInput("a"), nullptr);
    EXPECT_EQ(Access::GetImplementation(wrong)->CreateInput("a"), nullptr);
    EXPECT_EQ(log.Text(),
              "[Error] DataInputList::CreateInput: list 'Untyped' has no input type.\n"
              "[Error] DataInputList::CreateInput: 'Vantel.General.Operator' is not a data input type.\n");
    EXPECT_EQ(wrong.GetInputCount(), 0u);
    EXPECT_EQ(untyped.GetUIColor(), (Color{1.0f, 1.0f, 1.0f, 1.0f}));  // no prototype to take it from
    EXPECT_EQ(op.GetAllDataInputSlots().size(), 3u);
}

TEST(Operator, StructureRebuildsUntilSettledAtMostEightTimes) {
    LogCapture log;
    CountedOperator op;
    op.count.SetValue(2.0);
    EXPECT_TRUE(op.IsStructureDirty());  // in no graph, the rebuild waits for whoever settles it
    EXPECT_EQ(op.rebuilds, 0);

    Operator::Implementation& implementation = *Access::GetImplementation(op);
    {
        SuppressUpdateStructure suppress;
        implementation.UpdateStructureIfDirty();
        EXPECT_EQ(op.rebuilds, 0);
    }
    implementation.UpdateStructureIfDirty();
    implementation.UpdateStructureIfDirty();  // settled: nothing to rebuild
    EXPECT_EQ(op.rebuilds, 1);
    EXPECT_FALSE(op.IsStructureDirty());
    EXPECT_EQ(op.GetAllParameters().size(), 3u);
    EXPECT_EQ(op.GetAllParameters()[2]->GetKey(), "Item_");

    op.neverSettles = true;
    implementation.MarkStructureDirty();
    implementation.UpdateStructureIfDirty();
    EXPECT_EQ(op.rebuilds, 9);
    EXPECT_EQ(
        log.Text(),
        "[Error] The key 'Item' is already taken in operator 'Counted'. Keys must be unique among all "
        "children of their parent. Using 'Item_' instead. Values stored under that key are lost once the "
        "collision is fixed.\n"
        "[Error] UpdateStructureIfDirty: '/' still changes its own structural parameters after 8 rebuilds, "
        "giving up.\n");
}

TEST(Operator, FlatParametersFollowTheTree) {
    Operator op;
    NumberParameter first(&op, "First");
    ParameterBundleList list(&op, "List", {.created = [](ParameterBundle& bundle) {
        bundle.Add(std::make_unique<NumberParameter>(nullptr, "Inner"));
    }});
    NumberParameter last(&op, "Last");
    list.CreateBundle("Kind", "B");
    EXPECT_EQ(Testing::KeysOf(std::as_const(op).GetAllParameters()),
              (std::vector<std::string>{"First", "Inner", "Last"}));

    std::vector<std::string> changes;
    EventSubscription removals = op.ParameterNodeRemovedEvent().Subscribe(
        [&](ParameterNode* node) { changes.push_back("removed " + node->GetKey()); });
    EventSubscription additions = op.ParameterNodeAddedEvent().Subscribe(
        [&](ParameterNode* node) { changes.push_back("added " + node->GetKey()); });
    EXPECT_TRUE(op.RemoveParameter(&first));
    EXPECT_FALSE(op.RemoveParameter(&first));
    EXPECT_EQ(op.GetAllParameters().size(), 2u);

    auto owned = std::make_unique<NumberParameter>(nullptr, "Owned");
    EXPECT_TRUE(op.InsertParameter(std::move(owned), 0));
    EXPECT_EQ(op.GetAllParameters().front()->GetKey(), "Owned");
    EXPECT_EQ(changes, (std::vector<std::string>{"removed First", "added Owned"}));
    ParameterGroup elsewhere;
    auto taken = std::make_unique<NumberParameter>(nullptr, "Taken");
    Ptr<Parameter> weak(taken.get());
    elsewhere.Add(taken.get());
    {
        const LogCapture quiet;  // the group's refusal
        EXPECT_FALSE(op.AddParameter(std::move(taken)));
    }
    EXPECT_FALSE(weak);  // a refused parameter is destroyed, and leaves its other group cleanly
    EXPECT_EQ(elsewhere.GetChildCount(), 0u);
}

// Parameters that mark it, or not, are the parameters' tests; recording in a graph is covered by the graph's
// "add node" round trip.
TEST(Operator, OutdatedByDirtUntilClearedAndEditsInNoGraphAreNotRecorded) {
    Operator op;
    op.MarkDirty();
    EXPECT_TRUE(op.Outdated());
    Access::GetImplementation(op)->ClearDirty();
    EXPECT_FALSE(op.Outdated());
    int moves = 0;
    EventSubscription subscription = op.PositionChangedEvent().Subscribe([&] { ++moves; });
    Transaction transaction("Edit operator");
    op.SetName("Blur");
    op.SetPosition({10.0f, 20.0f});
    op.SetPosition({10.0f, 20.0f});
    EXPECT_EQ(moves, 1);
    EXPECT_TRUE(transaction.GetRecords().empty());  // its path would name the root graph
}

}  // namespace
}  // namespace Vantel
