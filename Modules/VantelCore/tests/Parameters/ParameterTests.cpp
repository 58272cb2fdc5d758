#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"

namespace Vantel {
namespace {

using Testing::KeysOf;
using Testing::LogCapture;
using Testing::NumberParameter;

// Counts how often the cache is rebuilt.
class CountingParameter : public NumberParameter {
public:
    using NumberParameter::NumberParameter;
    mutable int builds = 0;

private:
    ParameterData BuildData() const override {
        ++builds;
        return ParameterData(std::vector<double>{Value()});
    }
};

TEST(Parameter, EqualValueChangesNothingAndADifferentOneIsMarkedOnce) {
    Operator op;
    Testing::JoinModel(op);
    CountingParameter parameter(&op, "Gain", 1.0);
    int events = 0;
    EventSubscription subscription = parameter.ValueChangedEvent().Subscribe([&] { ++events; });
    Transaction transaction("Edit");

    parameter.SetValue(1.0);
    EXPECT_FALSE(parameter.HasValueChanged());
    EXPECT_EQ(events, 0);
    EXPECT_TRUE(transaction.GetRecords().empty());

    parameter.SetValue(2.0);
    EXPECT_TRUE(parameter.HasValueChanged());
    EXPECT_EQ(events, 1);
    EXPECT_EQ(parameter.GetData().GetFloat(0), 2.0);
    EXPECT_EQ(parameter.GetData().GetFloat(0), 2.0);
    EXPECT_EQ(parameter.builds, 1);
    EXPECT_EQ(transaction.GetRecords(),
              (std::vector<Record>{ParameterValueRecord{parameter.GetPath(), 1.0, 2.0}}));
    EXPECT_TRUE(op.Outdated());
}

TEST(Parameter, FlagsTransientAndConnectability) {
    LogCapture log;
    NumberParameter parameter(nullptr, "Size");
    EXPECT_TRUE(parameter.HasParameterFlag(ParameterFlag::MarksOutdated));
    EXPECT_TRUE(parameter.AcceptsInputConnection());
    EXPECT_EQ(parameter.GetUpdatePolicy(), UpdatePolicy::Immediate);

    parameter.SetParameterFlag(ParameterFlag::Output, true);
    EXPECT_FALSE(parameter.AcceptsInputConnection());
    parameter.SetParameterFlag(ParameterFlag::Structural, true);
    EXPECT_EQ(
        log.Text(),
        "[Error] Parameter 'Size' cannot be an output parameter and a structural parameter at the same time, "
        "the second one is ignored.\n");
    EXPECT_FALSE(parameter.HasParameterFlag(ParameterFlag::Structural));
    parameter.SetParameterFlag(ParameterFlag::Output, false);
    parameter.SetParameterFlag(ParameterFlag::Structural, true);
    EXPECT_FALSE(parameter.AcceptsInputConnection());
    EXPECT_EQ(parameter.GetUpdatePolicy(), UpdatePolicy::Deferred);
    parameter.SetUpdatePolicy(UpdatePolicy::Immediate);  // an explicit policy wins over the default
    EXPECT_EQ(parameter.GetUpdatePolicy(), UpdatePolicy::Immediate);
    parameter.SetParameterFlag(ParameterFlag::Structural, false);
    parameter.SetParameterFlag(ParameterFlag::NotConnectable, true);
    EXPECT_FALSE(parameter.AcceptsInputConnection());

    // Host bits are kept as given.
    const auto hostBit = static_cast<ParameterFlag>(1ULL << 40);
    parameter.SetParameterFlag(hostBit, true);
    EXPECT_TRUE(parameter.HasParameterFlag(hostBit));
    EXPECT_FALSE(parameter.HasParameterFlag(hostBit | ParameterFlag::Output));

    Operator op;
    NumberParameter transient(&op, "Preview");
    transient.SetTransient();
    EXPECT_FALSE(transient.HasParameterFlag(ParameterFlag::MarksOutdated));
    EXPECT_TRUE(transient.HasParameterFlag(ParameterFlag::NotSaved | ParameterFlag::NotUndoable));
    Transaction transaction("Preview");
    transient.SetValue(3.0);
    EXPECT_TRUE(transient.HasValueChanged());
    EXPECT_FALSE(op.Outdated());
    EXPECT_TRUE(transaction.GetRecords().empty());
}

TEST(Parameter, OnlyParametersOfAnOperatorInAModelRecordAndStructuralOnesWhole) {
    LogCapture log;
    Transaction transaction("Edit");
    NumberParameter loose(nullptr, "Loose");
    EXPECT_EQ(loose.GetOperator(), nullptr);
    loose.SetValue(1.0);
    loose.SetName("Renamed");
    EXPECT_TRUE(transaction.GetRecords().empty());

    Operator op;
    NumberParameter attached(&op, "Attached");
    attached.SetName("Renamed");  // in no model yet: adding the operator records what it holds
    attached.SetComponent(0, 4.0);
    EXPECT_TRUE(transaction.GetRecords().empty());
    Testing::JoinModel(op);
    attached.SetComponent(0, 5.0);

    // A structural parameter written per component is not recorded; written whole, it is a compound record.
    NumberParameter mode(&op, "Mode");
    mode.SetParameterFlag(ParameterFlag::Structural, true);
    mode.SetComponent(0, 1.0);
    EXPECT_EQ(
        log.Text(),
        "[Error] Parameter 'Mode' is structural and was written per component, the write is not in the undo "
        "history. Structural parameters are written whole.\n");
    EXPECT_EQ(mode.Value(), 1.0);
    EXPECT_TRUE(op.IsStructureDirty());
    mode.SetValue(2.0);
    EXPECT_EQ(transaction.GetRecords(),
              (std::vector<Record>{ParameterComponentRecord{*Path::Parse("/Attached"), 0, 4.0, 5.0},
                                   CompoundRecord{mode.GetPath(), 1.0, 2.0, {}}}));
}

TEST(ParameterGroup, InsertSettlesKeysAndMovesExistingChildren) {
    LogCapture log;
    ParameterGroup group;
    group.SetKey("Settings");
    NumberParameter a(nullptr, "Gain");
    NumberParameter b(nullptr, "Gain");
    NumberParameter unnamed(nullptr, "");
    EXPECT_TRUE(group.Add(&a));
    EXPECT_TRUE(group.Add(&b));
    EXPECT_TRUE(group.Insert(&unnamed, 0));
    EXPECT_EQ(unnamed.GetKey().rfind("Parameter [", 0), 0u);
    EXPECT_EQ(KeysOf(group.GetChildren()), (std::vector<std::string>{unnamed.GetKey(), "Gain", "Gain_"}));
    EXPECT_EQ(
        log.Text(),
        "[Error] The key 'Gain' is already taken in parameter group 'Settings'. Keys must be unique among "
        "all children of their parent. Using 'Gain_' instead. Values stored under that key are lost once the "
        "collision is fixed.\n");

    // Inserting a child again moves it, clamped to the last position.
    EXPECT_TRUE(group.Insert(&unnamed, ParameterNode::npos));
    EXPECT_EQ(KeysOf(group.GetChildren()), (std::vector<std::string>{"Gain", "Gain_", unnamed.GetKey()}));
    EXPECT_FALSE(group.Move(&unnamed, 2));
    EXPECT_FALSE(group.Move(&unnamed, 3));
    FloatParameter stranger(nullptr, "Stranger", 0.0);
    EXPECT_FALSE(group.Move(&stranger, 0));
    EXPECT_FALSE(group.Move(nullptr, 0));
    EXPECT_EQ(unnamed.GetIndex(), 2u);
    EXPECT_EQ(group.FindParameter("Gain_"), &b);
    EXPECT_EQ(group.Resolve(*Path::Parse("Gain_")), &b);

    log.Clear();
    ParameterGroup other;
    EXPECT_FALSE(other.Add(&a));
    EXPECT_EQ(
        log.Text(),
        "[Error] ParameterGroup::Insert: the node already belongs to another group. Remove it from that one "
        "first.\n");
    EXPECT_FALSE(group.Add(static_cast<ParameterNode*>(nullptr)));
    EXPECT_FALSE(group.Add(&group));

    // A subgroup is found by its key, but FindParameter takes the first match and finds no parameter.
    auto subgroup = std::make_unique<ParameterGroup>();
    subgroup->SetKey("Shared");
    group.Add(std::move(subgroup));
    EXPECT_NE(group.Find("Shared"), nullptr);
    EXPECT_EQ(group.FindParameter("Shared"), nullptr);
    EXPECT_EQ(group.Find(""), nullptr);
}

TEST(ParameterGroup, RefusesItselfAndAncestorsAndRootRefusesPlainGroups) {
    ParameterGroup outer;
    auto inner = std::make_unique<ParameterGroup>();
    ParameterGroup* innerGroup = inner.get();
    ASSERT_TRUE(outer.Add(std::move(inner)));
    EXPECT_FALSE(innerGroup->Add(&outer));

    Operator op;
    ParameterRootGroup& root = op.GetParameterGroup();
    EXPECT_FALSE(root.Add(std::make_unique<ParameterGroup>()));
    ParameterBundleList list(&op, "Layers", {});
    EXPECT_EQ(list.GetParent(), &root);
    ParameterBundleList second(root, "Second", {});
    EXPECT_EQ(second.GetParent(), &root);
    EXPECT_TRUE(root.MoveToBack(&list));
    EXPECT_EQ(std::as_const(root).GetChild(1), &list);
    EXPECT_EQ(std::as_const(root).GetChild(2), nullptr);
    EXPECT_FALSE(ParameterGroup().MoveToBack(&list));
    NumberParameter direct(nullptr, "Loose");
    EXPECT_FALSE(list.Add(&direct));
    ParameterBundle* bundle = list.CreateBundle("Image", "First");
    ASSERT_NE(bundle, nullptr);
    EXPECT_FALSE(static_cast<ParameterGroup*>(bundle)->Add(list.CreateBundle("Image", "")));
    EXPECT_TRUE(bundle->Add(&direct));
    EXPECT_EQ(direct.GetBundle(), bundle);
    EXPECT_EQ(direct.GetOperator(), &op);
    EXPECT_EQ(direct.GetPath().ToString(), "/Layers/First/Loose");
    EXPECT_EQ(op.Resolve(*Path::Parse("Layers/First/Loose")), &direct);
}

TEST(ParameterGroup, RowsLabelsAndSeparators) {
    LogCapture log;
    ParameterGroup group;
    NumberParameter a(nullptr, "a"), b(nullptr, "b"), c(nullptr, "c"), d(nullptr, "d"), e(nullptr, "e");
    for (NumberParameter* p : {&a, &b, &c, &d, &e}) {
        group.Add(p);
    }
    int annotationEvents = 0;
    int orderEvents = 0;
    EventSubscription subscription = group.AnnotationsChangedEvent().Subscribe([&] { ++annotationEvents; });
    EventSubscription reordered = group.ChildOrderChangedEvent().Subscribe([&] { ++orderEvents; });

    group.MakeRow({&b}, "ignored");
    EXPECT_EQ(annotationEvents, 0);
    group.MakeRow({&d, &b, &e}, "Offset");
    EXPECT_EQ(orderEvents, 1);
    EXPECT_EQ(KeysOf(group.GetChildren()), (std::vector<std::string>{"a", "c", "d", "b", "e"}));
    EXPECT_EQ(group.GetRow(&b), (std::vector<ParameterNode*>{&d, &b, &e}));
    EXPECT_EQ(group.GetRowPrimary(&e), &d);
    EXPECT_EQ(group.GetRowLabel(&b), "Offset");
    EXPECT_EQ(group.GetRow(&c), std::vector<ParameterNode*>{&c});
    EXPECT_EQ(group.GetRowLabel(&c), "");
    EXPECT_EQ(annotationEvents, 1);

    group.SetRowLabel(&e, "Shift");
    group.SetRowLabel(&e, "Shift");
    EXPECT_EQ(group.GetRowLabel(&d), "Shift");
    group.SetSeparatorAbove(&c, true);
    group.SetSeparatorAbove(&c, true);
    EXPECT_TRUE(group.HasSeparatorAbove(&c));
    group.SetRowContinuation(&e, false);
    EXPECT_EQ(group.GetRow(&d), (std::vector<ParameterNode*>{&d, &b}));
    EXPECT_EQ(annotationEvents, 4);

    group.MakeRow({&a, &c, &a}, "Twice");  // a node named twice stands in the row once
    EXPECT_EQ(KeysOf(group.GetChildren()), (std::vector<std::string>{"a", "c", "d", "b", "e"}));
    EXPECT_EQ(group.GetRow(&a), (std::vector<ParameterNode*>{&a, &c}));

    NumberParameter stranger(nullptr, "x");
    group.MakeRow({&a, &stranger}, "bad");
    EXPECT_EQ(log.Text(),
              "[Error] ParameterGroup::MakeRow: all nodes must already be children of this group.\n");
    EXPECT_TRUE(group.GetRow(&stranger).empty());

    // A first child marked as a continuation still starts its row.
    ParameterNode* front = group.GetChildren().front();
    group.SetRowContinuation(front, true);
    EXPECT_EQ(group.GetRow(front).front(), front);

    // Removing a node forgets its annotations.
    group.Remove(&c);
    group.Add(&c);
    EXPECT_FALSE(group.HasSeparatorAbove(&c));
}

// The layout is part of the tree an editor shows: each change of it reaches the operator.
TEST(ParameterGroup, LayoutChangesReachTheOperator) {
    Testing::MixerOperator mixer;
    ParameterGroup& group = mixer.GetParameterGroup();
    int changes = 0;
    EventSubscription subscription = mixer.ParameterTreeChangedEvent().Subscribe([&] { ++changes; });
    group.MakeRow({&mixer.focus, &mixer.mix}, "Pair");
    group.SetRowLabel(&mixer.mix, "Both");
    group.SetSeparatorAbove(&mixer.mix, true);
    group.SetRowContinuation(&mixer.mix, false);
    EXPECT_TRUE(group.MoveToBack(&mixer.focus));
    EXPECT_EQ(changes, 5);
}

// A node of a kind the library does not know detaches itself too.
class BareNode : public ParameterNode {};

TEST(ParameterGroup, DestructionDetachesBothWays) {
    auto group = std::make_unique<ParameterGroup>();
    NumberParameter member(nullptr, "Member");
    group->Add(&member);
    std::string events;
    const EventSubscription added = group->ChildAddedEvent().Subscribe(
        [&events](ParameterNode* node) { events += "+" + node->GetKey(); });
    const EventSubscription removed = group->ChildRemovedEvent().Subscribe(
        [&events](ParameterNode* node) { events += "-" + node->GetKey(); });
    {
        NumberParameter shortLived(nullptr, "Short");
        BareNode bare;
        bare.SetKey("Bare");
        group->Add(&shortLived);
        group->Add(&bare);
        EXPECT_EQ(group->GetChildCount(), 3u);
    }
    EXPECT_EQ(group->GetChildCount(), 1u);
    EXPECT_EQ(events, "+Short+Bare-Bare-Short");
    group.reset();
    EXPECT_EQ(member.GetParent(), nullptr);
    EXPECT_EQ(member.GetIndex(), ParameterNode::npos);
}

TEST(ParameterGroup, UserEditsAreRecordedDeclaredOnesAreNot) {
    Operator op;
    Testing::JoinModel(op);
    NumberParameter declared(&op, "Declared");
    ParameterBundleList list(&op, "Layers", {.created = [](ParameterBundle& bundle) {
        bundle.Add(std::make_unique<NumberParameter>(nullptr, "Opacity", 1.0));
    }});
    Transaction transaction("Edit tree");
    auto user = std::make_unique<NumberParameter>(nullptr, "Extra");
    Access::GetImplementation(*user)->SetAddedByUser(true);
    NumberParameter* extra = user.get();
    ASSERT_TRUE(op.AddParameter(std::move(user)));
    const std::string key = extra->GetKey();
    ParameterBundle* bundle = list.CreateBundle("Image", "Layer");
    ASSERT_NE(bundle, nullptr);
    Parameter* opacity = bundle->FindParameter("Opacity");
    EXPECT_EQ(bundle->GetParameters(), std::vector<Parameter*>{opacity});
    EXPECT_EQ(std::as_const(*bundle).GetParameters(), std::vector<const Parameter*>{opacity});
    int reorders = 0;
    const EventSubscription onOrder =
        op.GetParameterGroup().ChildOrderChangedEvent().Subscribe([&reorders] { ++reorders; });
    EXPECT_FALSE(op.GetParameterGroup().Move(extra, extra->GetIndex()));
    EXPECT_TRUE(op.GetParameterGroup().Move(extra, 0));
    EXPECT_EQ(reorders, 1);
    EXPECT_TRUE(op.RemoveParameter(&declared));
    EXPECT_TRUE(op.RemoveParameter(extra));

    EXPECT_EQ(key.rfind("Extra [", 0), 0u);  // a user's parameters get made keys
    const Path path = *Path::Parse("/" + key);
    const nlohmann::json node{
        {"key", key}, {"name", "Extra"}, {"type", "Vantel.Test.NumberParameter"}, {"value", 0.0}};
    const nlohmann::json layer{
        {"key", "Layer"}, {"kind", "Image"}, {"parameters", {{{"key", "Opacity"}, {"value", 1.0}}}}};
    EXPECT_EQ(
        transaction.GetRecords(),
        (std::vector<Record>{ParameterAddedRecord{path, 2, node},
                             BundleAddedRecord{*Path::Parse("/Layers/Layer"), 0, layer},
                             ParameterNodeMoveRecord{path, 2, 0}, ParameterRemovedRecord{path, 0, node}}));
}

TEST(ParameterBundleList, CreatesRemovesAndMovesWithHandlers) {
    const LogCapture quiet;
    Operator op;
    std::vector<std::string> calls;
    ParameterBundleList list(
        &op, "Items",
        {.created = [&](ParameterBundle& b) { calls.push_back("created " + b.GetKind()); },
         .removing = [&](ParameterBundle& b) { calls.push_back("removing " + b.GetKey()); },
         .reordered = [&] { calls.push_back("reordered"); }});
    ParameterBundle* first = list.CreateBundle("A", "First");
    ParameterBundle* second = list.CreateBundle("B", "First");  // settled as any group's child, and logged
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->GetKey(), "First_");
    EXPECT_EQ(second->GetBundleList(), &list);
    EXPECT_TRUE(list.MoveBundle(second, 0));
    EXPECT_EQ(list.IndexOf(first), 1u);

    ParameterBundleList other(&op, "Others", {});
    EXPECT_EQ(other.IndexOf(first), ParameterBundleList::npos);
    EXPECT_EQ(other.IndexOf(nullptr), ParameterBundleList::npos);
    EXPECT_FALSE(other.Insert(first, 0));
    EXPECT_FALSE(other.RemoveBundle(first));
    EXPECT_FALSE(list.RemoveBundle(nullptr));
    list.SetBundlesRemovable(false);
    EXPECT_TRUE(list.RemoveBundle(first));
    EXPECT_EQ(list.GetBundleCount(), 1u);
    EXPECT_EQ(calls, (std::vector<std::string>{"created A", "created B", "reordered", "removing First"}));
}

// The removing handler may take other bundles out first; the leaving one is found again afterwards, and its
// record holds the place it had when it left, so that undo puts it back after the handler's own changes.
TEST(ParameterBundleList, RemovingHandlerMayRemoveOtherBundles) {
    Operator op;
    Testing::JoinModel(op);
    ParameterBundleList* items = nullptr;
    ParameterBundleList list(&op, "Items", {.removing = [&](ParameterBundle& leaving) {
        if (leaving.GetKey() == "C") {
            items->RemoveBundle(items->GetBundle(0));
        }
    }});
    items = &list;
    for (const char* key : {"A", "B", "C", "D"}) {
        list.CreateBundle("Item", key);
    }
    Transaction transaction("Remove");
    EXPECT_TRUE(list.RemoveBundle(list.GetBundle(2)));
    EXPECT_EQ(KeysOf(list.GetChildren()), (std::vector<std::string>{"B", "D"}));
    ASSERT_EQ(transaction.GetRecords().size(), 2u);
    const auto* removed = std::get_if<BundleRemovedRecord>(&transaction.GetRecords()[1]);
    ASSERT_NE(removed, nullptr);
    EXPECT_EQ(removed->path.ToString(), "/Items/C");
    EXPECT_EQ(removed->index, 1u);
}

// Clearing the references into a node that is being removed may rebuild the structure that holds it.
TEST(ParameterBundleList, RemovalSurvivesARebuildFromClearedReferences) {
    Graph graph;
    auto& stack = Testing::Add<Testing::StackOperator>(graph);
    stack.count.SetValue(2.0);
    ParameterBundle* second = stack.layers.GetBundle(1);
    stack.focus.SetValue(second);
    ASSERT_EQ(stack.focus.Value(), second);
    EventSubscription collapse =
        stack.focus.ValueChangedEvent().Subscribe([&] { stack.count.SetValue(0.0); });
    EXPECT_TRUE(stack.layers.RemoveBundle(second));
    EXPECT_EQ(stack.layers.GetBundleCount(), 0u);
    EXPECT_EQ(stack.GetAllParameters().size(), 2u);  // Count and Focus
}

// A list whose operator type refuses further bundles.
class FullList : public ParameterBundleList {
public:
    using ParameterBundleList::ParameterBundleList;

protected:
    bool AcceptsChild(const ParameterNode& node) override {
        return GetBundleCount() < 1 && ParameterBundleList::AcceptsChild(node);
    }
};

TEST(ParameterBundleList, RefusedBundleLeavesNothingBehind) {
    Operator op;
    Testing::JoinModel(op);
    int created = 0;
    FullList list(&op, "Single", {.created = [&](ParameterBundle&) { ++created; }});
    Transaction transaction("Create");
    EXPECT_NE(list.CreateBundle("A", "One"), nullptr);
    EXPECT_EQ(list.CreateBundle("A", "Two"), nullptr);
    EXPECT_EQ(list.GetBundleCount(), 1u);
    EXPECT_EQ(created, 1);
    EXPECT_EQ(transaction.GetRecords().size(), 1u);
}

}  // namespace
}  // namespace Vantel
