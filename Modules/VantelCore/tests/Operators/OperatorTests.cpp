#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Projects/SuppressUpdateStructure.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/TestParameters.h"

namespace Vantel {
namespace {

using Testing::LogCapture;
using Testing::NumberParameter;

// Adds one parameter per unit of `Count` whenever its structure is rebuilt.
class CountedOperator : public Operator {
public:
    NumberParameter count{this, "Count", 0.0};
    int rebuilds = 0;
    bool neverSettles = false;

    CountedOperator() {
        count.SetParameterFlag(ParameterFlag::Structural, true);
        SetKey("Counted");
    }

protected:
    void UpdateStructure() override {
        ++rebuilds;
        while (static_cast<double>(items.size()) < count.Value()) {
            items.push_back(std::make_unique<NumberParameter>(this, "Item"));
        }
        if (neverSettles) {
            Access::GetImplementation(*this)->MarkStructureDirty();
        }
    }

private:
    std::vector<std::unique_ptr<NumberParameter>> items;
};

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
        "children "
        "of their parent. Using 'Item_' instead. Values stored under that key are lost once the collision is "
        "fixed.\n"
        "[Error] UpdateStructureIfDirty: '/' still changes its own structural parameters after 8 rebuilds, "
        "giving up.\n");
}

TEST(Operator, OutdatedByDirtOrByParametersThatMarkIt) {
    Operator op;
    NumberParameter quiet(&op, "Quiet");
    NumberParameter loud(&op, "Loud");
    quiet.SetParameterFlag(ParameterFlag::MarksOutdated, false);
    EXPECT_FALSE(op.Outdated());
    quiet.SetValue(1.0);
    EXPECT_FALSE(op.Outdated());
    loud.SetValue(1.0);
    EXPECT_TRUE(op.Outdated());

    Operator other;
    other.MarkDirty();
    EXPECT_TRUE(other.Outdated());
    Access::GetImplementation(other)->ClearDirty();
    EXPECT_FALSE(other.Outdated());
}

TEST(Operator, FlatParametersFollowTheTree) {
    Operator op;
    NumberParameter first(&op, "First");
    ParameterBundleList list(&op, "List", {.created = [](ParameterBundle& bundle) {
        bundle.Add(std::make_unique<NumberParameter>(nullptr, "Inner"));
    }});
    NumberParameter last(&op, "Last");
    list.CreateBundle("Kind", "B");
    std::vector<std::string> keys;
    for (const Parameter* parameter : static_cast<const Operator&>(op).GetAllParameters()) {
        keys.push_back(parameter->GetKey());
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"First", "Inner", "Last"}));

    int removed = 0;
    EventSubscription subscription =
        op.ParameterNodeRemovedEvent().Subscribe([&](ParameterNode*) { ++removed; });
    EXPECT_TRUE(op.RemoveParameter(&first));
    EXPECT_FALSE(op.RemoveParameter(&first));
    EXPECT_EQ(op.GetAllParameters().size(), 2u);
    EXPECT_EQ(removed, 1);

    auto owned = std::make_unique<NumberParameter>(nullptr, "Owned");
    EXPECT_TRUE(op.InsertParameter(std::move(owned), 0));
    EXPECT_EQ(op.GetAllParameters().front()->GetKey(), "Owned");
    ParameterGroup elsewhere;
    auto taken = std::make_unique<NumberParameter>(nullptr, "Taken");
    Ptr<Parameter> weak(taken.get());
    elsewhere.Add(taken.get());
    {
        LogCapture log;
        EXPECT_FALSE(op.AddParameter(std::move(taken)));
        EXPECT_EQ(
            log.Text(),
            "[Error] ParameterGroup::Insert: the node already belongs to another group. Remove it from that "
            "one first.\n");
    }
    EXPECT_FALSE(weak);  // a refused parameter is destroyed, and leaves its other group cleanly
    EXPECT_EQ(elsewhere.GetChildCount(), 0u);
}

TEST(Operator, NameAndPositionAreRecorded) {
    Operator op;
    int moves = 0;
    EventSubscription subscription = op.PositionChangedEvent().Subscribe([&] { ++moves; });
    Transaction transaction("Edit operator");
    op.SetName("Blur");
    op.SetName("Blur");
    op.SetPosition({10.0f, 20.0f});
    op.SetPosition({10.0f, 20.0f});
    EXPECT_EQ(moves, 1);
    ASSERT_EQ(transaction.GetRecords().size(), 2u);
    EXPECT_EQ(std::get<RenameRecord>(transaction.GetRecords()[0]).next, "Blur");
    EXPECT_EQ(std::get<OperatorPositionRecord>(transaction.GetRecords()[1]).next, glm::vec2(10.0f, 20.0f));
}

}  // namespace
}  // namespace Vantel
