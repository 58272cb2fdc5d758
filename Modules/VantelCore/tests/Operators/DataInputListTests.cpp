#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

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
    EXPECT_EQ(op.GetAllDataInputs(), (std::vector<DataInput*>{a, c}));
    EXPECT_FALSE(op.RemoveDataInput(a));  // list inputs go through their list

    Transaction transaction("Reorder");
    EXPECT_FALSE(list.MoveInput(a, 0));
    EXPECT_FALSE(list.MoveInput(a, 2));
    EXPECT_TRUE(list.MoveInput(a, 1));
    EXPECT_EQ(list.IndexOf(a), 1u);
    EXPECT_EQ(Names(list), (std::vector<std::string>{"Input 1", "Input 2"}));
    EXPECT_EQ(a->GetName(), "Input 2");
    EXPECT_TRUE(transaction.GetRecords().empty());  // the operator is in no graph
    EXPECT_EQ(calls,
              (std::vector<std::string>{"created a", "created b", "created c", "removing b", "reordered"}));
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
    EXPECT_EQ(op.GetAllDataInputSlots().size(), 3u);
}

}  // namespace
}  // namespace Vantel
