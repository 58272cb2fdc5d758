#include <gtest/gtest.h>

#include <variant>
#include <vector>

#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/ColorParameter.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/StringParameter.h>
#include <Vantel/Parameters/TriggerParameter.h>
#include <Vantel/Parameters/VectorIntParameter.h>
#include <Vantel/Parameters/VectorParameter.h>
#include <Vantel/Projects/Transaction.h>

namespace Vantel {
namespace {

TEST(ValueParameters, WholeAndComponentWritesRecordWhatChanged) {
    Operator op;
    IntParameter count(ParameterScope(&op), "Count", 1);
    Vector3Parameter offset(ParameterScope(&op), "Offset", glm::dvec3(1, 2, 3));
    Vector2IntParameter size(ParameterScope(&op), "Size", glm::ivec2(4, 5));
    ColorParameter tint(ParameterScope(&op), "Tint", Color{});
    StringParameter label(ParameterScope(&op), "Label", "a");
    FloatParameter gain(ParameterScope(&op), "Gain", 1.0);
    gain.SetTransient();
    int changes = 0;
    EventSubscription subscription = offset.ValueChangedEvent().Subscribe([&] { ++changes; });

    count = 5;  // outside a transaction: nothing to record into
    Transaction transaction("Edit");
    count = 6;
    count = 6;
    offset.SetComponent(1, 2.5);
    offset.SetComponent(1, 2.5);
    offset.SetComponent(3, 9.0);
    offset = glm::dvec3(1, 2.5, 3);
    size.SetComponent(0, 6.5);
    tint.SetComponent(3, 0.5);
    label = "b";
    gain = 2.0;
    gain.SetComponent(0, 3.0);

    const std::vector<Record> expected = {
        ParameterValueRecord{count.GetPath(), 5, 6},
        ParameterComponentRecord{offset.GetPath(), 1, 2.0, 2.5},
        ParameterComponentRecord{size.GetPath(), 0, 4.0, 7.0},
        ParameterComponentRecord{tint.GetPath(), 3, 1.0, 0.5},
        ParameterValueRecord{label.GetPath(), "a", "b"},
    };
    EXPECT_EQ(transaction.GetRecords(), expected);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(gain.Value(), 3.0);
    EXPECT_TRUE(gain.HasValueChanged());
}

TEST(TriggerParameter, FiresWithoutRecordingOrValueChangedEvent) {
    Operator op;
    TriggerParameter press(ParameterScope(&op), "Press", false);
    TriggerParameter reload(ParameterScope(&op), "Reload", true);
    int pressed = 0;
    int valueChanged = 0;
    EventSubscription onPress = press.TriggeredEvent().Subscribe([&] { ++pressed; });
    EventSubscription onChange = press.ValueChangedEvent().Subscribe([&] { ++valueChanged; });
    EXPECT_FALSE(press.IsTriggered());

    Transaction transaction("Press");
    press.Trigger();
    EXPECT_TRUE(press.IsTriggered());
    EXPECT_FALSE(op.IsStructureDirty());
    press.SetFromData(ParameterData());
    press.SetComponent(0, 1.0);
    press.DeserializeValue(nlohmann::json(true));
    EXPECT_EQ(pressed, 2);
    EXPECT_EQ(valueChanged, 0);
    EXPECT_EQ(press.GetData().GetType(), ParameterData::Type::Empty);

    EXPECT_TRUE(reload.HasParameterFlag(ParameterFlag::Structural));
    EXPECT_FALSE(reload.AcceptsInputConnection());
    reload.Trigger();
    EXPECT_TRUE(op.IsStructureDirty());  // not rebuilt: the operator is in no graph
    EXPECT_TRUE(transaction.GetRecords().empty());
}

}  // namespace
}  // namespace Vantel
