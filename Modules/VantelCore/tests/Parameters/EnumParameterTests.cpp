#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Strings = std::vector<std::string>;

TEST(EnumParameter, ChoosesByLabelThenValueAndKeepsUnknownTextsUnresolved) {
    Operator op;
    EnumParameter mode(ParameterScope(&op), "Mode");
    // Labels and values overlap crosswise so that the lookup order shows.
    mode.SetPossibleValues({"add", "mul", "Add"}, {"Add", "Multiply", "Sum"});
    struct Row {
        std::string text;
        std::string value;
        std::int64_t index;
        std::string shown;  // the data's text
        std::string log;
    };
    const Row rows[] = {
        {"Multiply", "mul", 1, "Multiply", ""},
        {"Add", "add", 0, "Add", ""},       // the label wins over the equal value
        {"Add", "add", 0, "Add", ""},       // unchanged
        {"mul", "mul", 1, "Multiply", ""},  // no label matches: by value
        {"Sum", "Add", 2, "Sum", ""},       // a label chooses its value
        {"div", "div", -1, "div", "[Warning] EnumParameter '/Mode': 'div' is not one of the choices.\n"},
        {"", "", -1, "", ""},  // the empty text is no complaint
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        Testing::LogCapture log;
        mode.SetValue(row.text);
        EXPECT_EQ(mode.Value(), row.value);
        EXPECT_EQ(mode.GetIndex(), row.index);
        EXPECT_EQ(mode.GetIndexOr(7), row.index < 0 ? 7 : row.index);
        EXPECT_EQ(mode.IsResolved(), row.index >= 0);
        EXPECT_EQ(mode.GetData(), ParameterData(row.shown, row.index));
        EXPECT_EQ(log.Text(), row.log);
    }
    EnumParameter empty(nullptr, "Empty");
    Testing::LogCapture log;
    empty = "anything";  // without choices there is nothing to complain about
    EXPECT_EQ(empty.Value(), "anything");
    EXPECT_EQ(log.Text(), "");
}

TEST(EnumParameter, NewPossibleValuesResolveTheKeptChoiceWithoutRecording) {
    Operator op;
    EnumParameter mode(ParameterScope(&op), "Mode");
    mode.SetPossibleValues({"a", "b"});
    mode.SetValue("b");
    {
        Testing::LogCapture log;
        mode.SetPossibleValues({"x", "y", "z"});
        EXPECT_EQ(mode.Value(), "b");
        EXPECT_EQ(mode.GetIndex(), -1);
        Transaction transaction("Options");
        mode.SetPossibleValues({"z", "b"}, {"Zed"});
        EXPECT_EQ(
            log.Text(),
            "[Warning] EnumParameter::SetPossibleValues: the number of labels does not match the number of "
            "values, the values will be shown instead.\n");
        EXPECT_TRUE(mode.GetLabels().empty());
        EXPECT_EQ(mode.GetIndex(), 1);
        EXPECT_EQ(mode.GetData(), ParameterData("b", 1));
        EXPECT_TRUE(transaction.GetRecords().empty());
    }
    const std::vector<std::pair<ParameterData, std::string>> drives = {
        {ParameterData(std::vector<std::int64_t>{0}), "z"},
        {ParameterData(std::vector<std::int64_t>{2}), "z"},  // one past the end
        {ParameterData(std::vector<double>{-1.0}), "z"},
        {ParameterData(std::vector<double>{1.9}), "b"},  // truncated
        {ParameterData("z"), "z"},
        {ParameterData("b", 0), "b"},  // a choice by its text, not its index
        {ParameterData(), "b"},
        {ParameterData(nullptr), "b"},
    };
    for (const auto& [data, expected] : drives) {
        mode.SetFromData(data);
        EXPECT_EQ(mode.Value(), expected) << data.GetString();
    }
    mode.SetIndex(0);
    EXPECT_EQ(mode.Value(), "z");
    mode.SetIndex(5);
    EXPECT_EQ(mode.Value(), "z");
}

}  // namespace
}  // namespace Vantel
