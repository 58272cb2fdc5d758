#include <gtest/gtest.h>

#include <vector>

#include <Vantel/Operators/Operator.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/TestParameters.h"

namespace Vantel {
namespace {

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
    ASSERT_EQ(transaction.GetRecords().size(), 1u);
    const auto& record = std::get<ParameterValueRecord>(transaction.GetRecords()[0]);
    EXPECT_EQ(record.path.ToString(), "/Gain");
    EXPECT_EQ(record.previous, 1.0);
    EXPECT_EQ(record.next, 2.0);
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
    parameter.SetUpdatePolicy(UpdatePolicy::Immediate);
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

TEST(Parameter, OnlyParametersOfAnOperatorRecord) {
    Transaction transaction("Edit");
    NumberParameter loose(nullptr, "Loose");
    EXPECT_EQ(loose.GetOperator(), nullptr);
    loose.SetValue(1.0);
    loose.SetName("Renamed");
    EXPECT_TRUE(transaction.GetRecords().empty());

    Operator op;
    NumberParameter attached(&op, "Attached");
    attached.SetName("Renamed");  // renames are recorded only in a graph, where paths resolve
    attached.SetComponent(0, 4.0);
    ASSERT_EQ(transaction.GetRecords().size(), 1u);
    const auto& component = std::get<ParameterComponentRecord>(transaction.GetRecords()[0]);
    EXPECT_EQ(component.path.ToString(), "/Attached");
    EXPECT_EQ(component.previous, 0.0);
    EXPECT_EQ(component.next, 4.0);
    EXPECT_EQ(attached.GetName(), "Renamed");
    EXPECT_EQ(attached.GetKey(), "Attached");
}

TEST(Parameter, StructuralWritesAreWholeAndCompound) {
    LogCapture log;
    Operator op;
    NumberParameter mode(&op, "Mode");
    mode.SetParameterFlag(ParameterFlag::Structural, true);
    Transaction transaction("Mode");
    mode.SetComponent(0, 1.0);
    EXPECT_EQ(
        log.Text(),
        "[Error] Parameter 'Mode' is structural and was written per component, the write is not in the undo "
        "history. Structural parameters are written whole.\n");
    EXPECT_EQ(mode.Value(), 1.0);
    EXPECT_TRUE(op.IsStructureDirty());
    EXPECT_TRUE(transaction.GetRecords().empty());

    mode.SetValue(2.0);
    ASSERT_EQ(transaction.GetRecords().size(), 1u);
    const auto& compound = std::get<CompoundRecord>(transaction.GetRecords()[0]);
    EXPECT_EQ(compound.previous, 1.0);
    EXPECT_EQ(compound.next, 2.0);
}

}  // namespace
}  // namespace Vantel
