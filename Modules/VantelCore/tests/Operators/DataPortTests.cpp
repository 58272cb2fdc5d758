#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Operator.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

TEST(Data, SerialsAreUniqueIncreasingAndNeverZero) {
    const Data first;
    const Data second;
    EXPECT_GT(first.GetSerial(), 0u);
    EXPECT_EQ(second.GetSerial(), first.GetSerial() + 1);

    std::vector<std::uint64_t> serials[2];
    std::thread a([&] {
        for (int i = 0; i < 1000; ++i)
            serials[0].push_back(Data().GetSerial());
    });
    std::thread b([&] {
        for (int i = 0; i < 1000; ++i)
            serials[1].push_back(Data().GetSerial());
    });
    a.join();
    b.join();
    std::set<std::uint64_t> unique(serials[0].begin(), serials[0].end());
    unique.insert(serials[1].begin(), serials[1].end());
    EXPECT_EQ(unique.size(), 2000u);
    EXPECT_TRUE(std::is_sorted(serials[0].begin(), serials[0].end()));
}

TEST(DataInput, ChangeIsDecidedBySerial) {
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

    int reorders = 0;
    EventSubscription subscription = op.DataPortsReorderedEvent().Subscribe([&] { ++reorders; });
    EXPECT_FALSE(op.MoveDataInput(&image, 0));
    EXPECT_FALSE(op.MoveDataInput(&image, 3));
    EXPECT_TRUE(op.MoveDataInput(&image, 2));
    EXPECT_EQ(op.GetAllDataInputs().back(), &image);
    EXPECT_EQ(reorders, 1);

    auto newData = std::make_shared<Data>();
    EXPECT_FALSE(op.Outdated());
    image.Receive(newData);
    EXPECT_TRUE(op.Outdated());
}

TEST(Operator, OwnedAndMemberPortsComeAndGo) {
    auto op = std::make_unique<Operator>();
    auto owned = std::make_unique<DataOutput>();
    DataOutput* raw = owned.get();
    ASSERT_TRUE(op->AddDataOutput(std::move(owned)));
    EXPECT_EQ(raw->GetOperator(), op.get());
    int removed = 0;
    EventSubscription subscription = op->DataOutputRemovedEvent().Subscribe([&](DataOutput* output) {
        EXPECT_EQ(output, raw);
        ++removed;
    });
    auto member = std::make_unique<DataInput>(op.get(), "Member");
    EXPECT_TRUE(op->RemoveDataOutput(raw));  // destroys it
    EXPECT_EQ(removed, 1);
    EXPECT_TRUE(op->GetAllDataOutputs().empty());

    member.reset();  // a member port leaves its operator when it dies
    EXPECT_TRUE(op->GetAllDataInputs().empty());

    auto survivor = std::make_unique<DataInput>(op.get(), "Survivor");
    op->AddDataInput(std::make_unique<DataInput>());
    op.reset();  // owned ports die with the operator, others are let go
    EXPECT_EQ(survivor->GetOperator(), nullptr);
}

}  // namespace
}  // namespace Vantel
