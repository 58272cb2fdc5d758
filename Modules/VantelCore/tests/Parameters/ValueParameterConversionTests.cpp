#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Parameters/BoolParameter.h>
#include <Vantel/Parameters/ColorParameter.h>
#include <Vantel/Parameters/DataParameter.h>
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/StringParameter.h>
#include <Vantel/Parameters/Transform3DParameter.h>
#include <Vantel/Parameters/TriggerParameter.h>
#include <Vantel/Parameters/VectorIntParameter.h>
#include <Vantel/Parameters/VectorParameter.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using nlohmann::json;
using Make = std::function<std::unique_ptr<Parameter>()>;

template <typename T, typename... Args>
Make Maker(Args... args) {
    return [=] { return std::make_unique<T>(nullptr, "P", args...); };
}

std::unique_ptr<Parameter> MakeChoice(std::string_view chosen) {
    auto choice = std::make_unique<EnumParameter>(nullptr, "P");
    choice->SetPossibleValues({"a", "b", "c"}, {"Ay", "Bee", "Sea"});
    choice->SetValue(chosen);
    return choice;
}

glm::mat4 Counting() {
    glm::mat4 m;
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) {
            m[c][r] = static_cast<float>(1 + 4 * c + r);
        }
    }
    return m;
}

// The targets, in the column order of the table below, each starting from a value that no row gives.
const std::vector<Make>& Targets() {
    static const std::vector<Make> targets = {
        Maker<BoolParameter>(true),
        Maker<IntParameter>(-1),
        Maker<FloatParameter>(-1.5),
        Maker<Vector2Parameter>(glm::dvec2(8, 9)),
        Maker<Vector3Parameter>(glm::dvec3(7, 8, 9)),
        Maker<Vector4Parameter>(glm::dvec4(6, 7, 8, 9)),
        Maker<Vector2IntParameter>(glm::ivec2(8, 9)),
        Maker<Vector3IntParameter>(glm::ivec3(7, 8, 9)),
        Maker<Vector4IntParameter>(glm::ivec4(6, 7, 8, 9)),
        Maker<ColorParameter>(Color{0.25f, 0.5f, 0.75f, 0.125f}),
        Maker<Transform3DParameter>(glm::mat4(1.0f)),
        Maker<StringParameter>("old"),
        Maker<DataParameter>(json("old")),
        [] { return MakeChoice("a"); },
        Maker<TriggerParameter>(false),
    };
    return targets;
}

// What a table cell states: the project-file form, except that a colour reads as [r, g, b, a], a transform as
// its 16 entries column after column (a cell lists the leading ones, the rest are 0), a discarded JSON value
// as "<discarded>" and a trigger as whether it fired.
json Observe(Parameter& target) {
    if (auto* trigger = dynamic_cast<TriggerParameter*>(&target)) {
        return trigger->IsTriggered();
    }
    const json value = target.SerializeValue();
    if (dynamic_cast<ColorParameter*>(&target) != nullptr) {
        return {value["r"], value["g"], value["b"], value["a"]};
    }
    if (dynamic_cast<Transform3DParameter*>(&target) != nullptr) {
        json entries = json::array();
        for (const json& column : value) {
            entries.insert(entries.end(), column.begin(), column.end());
        }
        return entries;
    }
    return value.is_discarded() ? json("<discarded>") : value;
}

TEST(ValueParameters, EveryTypeTakesEveryOtherTypesData) {
    struct Row {
        const char* source;
        Make make;
        // Bool, Int, Float, Vector2/3/4, Vector2/3/4Int, Color, Transform3D, String, Data, Enum, Trigger
        const char* expected;
    };
    const Row rows[] = {
        {"Bool on", Maker<BoolParameter>(true),
         R"([true, 1, 1, [1,1], [1,1,1], [1,1,1,1], [1,1], [1,1,1], [1,1,1,1], [1,1,1,1], [1], "1", 1, "b",
             true])"},
        {"Int -7", Maker<IntParameter>(-7),
         R"([true, -7, -7, [-7,-7], [-7,-7,-7], [-7,-7,-7,-7], [-7,-7], [-7,-7,-7], [-7,-7,-7,-7],
             [-7,-7,-7,-7], [-7], "-7", -7, "a", true])"},
        {"Float 2.75", Maker<FloatParameter>(2.75),
         R"([true, 2, 2.75, [2.75,2.75], [2.75,2.75,2.75], [2.75,2.75,2.75,2.75], [2,2], [2,2,2], [2,2,2,2],
             [2.75,2.75,2.75,2.75], [2.75], "2.75", 2.75, "c", true])"},
        {"Vector2", Maker<Vector2Parameter>(glm::dvec2(2.75, -1.5)),
         R"([true, 2, 2.75, [2.75,-1.5], [2.75,-1.5,9], [2.75,-1.5,8,9], [2,-1], [2,-1,9], [2,-1,8,9],
             [2.75,-1.5,0.75,0.125], [2.75,-1.5], "2.75, -1.5", "<discarded>", "c", true])"},
        {"Vector3", Maker<Vector3Parameter>(glm::dvec3(1, 2.5, 3)),
         R"([true, 1, 1, [1,2.5], [1,2.5,3], [1,2.5,3,9], [1,2], [1,2,3], [1,2,3,9], [1,2.5,3,0.125], [1,2.5,3],
             "1, 2.5, 3", "<discarded>", "b", true])"},
        {"Vector4", Maker<Vector4Parameter>(glm::dvec4(0.5, 1, 1.5, 2)),
         R"([false, 0, 0.5, [0.5,1], [0.5,1,1.5], [0.5,1,1.5,2], [0,1], [0,1,1], [0,1,1,2], [0.5,1,1.5,2],
             [0.5,1,1.5,2], "0.5, 1, 1.5, 2", "<discarded>", "a", true])"},
        {"Vector2Int", Maker<Vector2IntParameter>(glm::ivec2(4, -5)),
         R"([true, 4, 4, [4,-5], [4,-5,9], [4,-5,8,9], [4,-5], [4,-5,9], [4,-5,8,9], [4,-5,0.75,0.125], [4,-5],
             "4, -5", "<discarded>", "a", true])"},
        {"Vector3Int", Maker<Vector3IntParameter>(glm::ivec3(4, -5, 6)),
         R"([true, 4, 4, [4,-5], [4,-5,6], [4,-5,6,9], [4,-5], [4,-5,6], [4,-5,6,9], [4,-5,6,0.125], [4,-5,6],
             "4, -5, 6", "<discarded>", "a", true])"},
        {"Vector4Int", Maker<Vector4IntParameter>(glm::ivec4(2, -1, 0, 3)),
         R"([true, 2, 2, [2,-1], [2,-1,0], [2,-1,0,3], [2,-1], [2,-1,0], [2,-1,0,3], [2,-1,0,3], [2,-1,0,3],
             "2, -1, 0, 3", "<discarded>", "c", true])"},
        {"Color", Maker<ColorParameter>(Color{0.5f, 0.25f, 0.0f, 1.0f}),
         R"([false, 0, 0.5, [0.5,0.25], [0.5,0.25,0], [0.5,0.25,0,1], [0,0], [0,0,0], [0,0,0,1], [0.5,0.25,0,1],
             [0.5,0.25,0,1], "0.5, 0.25, 0, 1", "<discarded>", "a", true])"},
        {"Transform3D", Maker<Transform3DParameter>(Counting()),
         R"([true, 1, 1, [1,2], [1,2,3], [1,2,3,4], [1,2], [1,2,3], [1,2,3,4], [1,2,3,4],
             [1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16], "", "<discarded>", "b", true])"},
        {"String 'c'", Maker<StringParameter>("c"),
         R"([false, 0, 0, [8,9], [7,8,9], [6,7,8,9], [8,9], [7,8,9], [6,7,8,9], [0.25,0.5,0.75,0.125], [], "c",
             "<discarded>", "c", true])"},
        {"String '0.9'", Maker<StringParameter>("0.9"),
         R"([false, 0, 0.9, [0.9,0.9], [0.9,0.9,0.9], [0.9,0.9,0.9,0.9], [0,0], [0,0,0], [0,0,0,0],
             [0.9,0.9,0.9,0.9], [0.9], "0.9", 0.9, "0.9", true])"},
        {"Data", Maker<DataParameter>(json::parse(R"({"k": [1, 2]})")),
         R"([true, 1, 1, [1,2], [1,2,9], [1,2,8,9], [1,2], [1,2,9], [1,2,8,9], [1,2,0.75,0.125], [1,2],
             "{\"k\":[1,2]}", {"k": [1, 2]}, "{\"k\":[1,2]}", true])"},
        {"Enum 'b'", [] { return MakeChoice("b"); },
         R"([true, 1, 1, [1,1], [1,1,1], [1,1,1,1], [1,1], [1,1,1], [1,1,1,1], [1,1,1,1], [1], "Bee",
             "<discarded>", "b", true])"},
        {"Trigger", Maker<TriggerParameter>(false),
         R"([false, 0, 0, [8,9], [7,8,9], [6,7,8,9], [8,9], [7,8,9], [6,7,8,9], [0.25,0.5,0.75,0.125], [], "",
             "<discarded>", "a", true])"},
    };
    Testing::LogCapture log;
    for (const Row& row : rows) {
        const std::unique_ptr<Parameter> source = row.make();
        const json expected = json::parse(row.expected);
        ASSERT_EQ(expected.size(), Targets().size()) << row.source;
        for (std::size_t column = 0; column < Targets().size(); ++column) {
            const std::unique_ptr<Parameter> target = Targets()[column]();
            SCOPED_TRACE(std::string(row.source) + " -> " + target->GetType()->GetName());
            target->SetFromData(source->GetData());
            json cell = expected[column];
            if (dynamic_cast<Transform3DParameter*>(target.get()) != nullptr) {
                cell.insert(cell.end(), 16 - cell.size(), 0);
            }
            EXPECT_EQ(Observe(*target), cell);
        }
    }
    // Only texts that name no choice leave an enum unresolved; a detached parameter's path is the root.
    EXPECT_EQ(log.Text(),
              "[Warning] EnumParameter '/': '0.9' is not one of the choices.\n"
              "[Warning] EnumParameter '/': '{\"k\":[1,2]}' is not one of the choices.\n");
}

TEST(ValueParameters, ComponentWritesRoundAndIgnoreForeignComponents) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    {
        IntParameter count(nullptr, "Count", 7);
        const std::vector<std::pair<double, std::int64_t>> writes = {
            {2.5, 3},           {-2.5, -3},          {2.4999, 2}, {-0.5, -1},
            {1e300, INT64_MAX}, {-1e300, INT64_MIN}, {kNaN, 0}};
        for (const auto& [written, expected] : writes) {
            count.SetComponent(0, written);
            EXPECT_EQ(count.Value(), expected) << written;
        }
        count.SetComponent(1, 9.0);
        EXPECT_EQ(count.Value(), 0);
        count.SetFromData(ParameterData(std::vector<double>{2.9}));
        EXPECT_EQ(count.Value(), 2);  // driven whole it truncates instead
    }
    {
        BoolParameter on(nullptr, "On", false);
        on.SetComponent(0, 0.9);
        EXPECT_TRUE(on.Value());
        on.SetComponent(1, 0.0);
        EXPECT_TRUE(on.Value());
        on.SetFromData(ParameterData("0.9"));
        EXPECT_FALSE(on.Value());
    }
    {
        Vector3IntParameter cells(nullptr, "Cells", glm::ivec3(1, 2, 3));
        cells.SetComponent(2, -2.5);
        cells.SetComponent(1, 1e10);
        cells.SetComponent(0, -1e10);
        EXPECT_EQ(cells.Value(), glm::ivec3(INT32_MIN, INT32_MAX, -3));
        bool changed = false;
        EventSubscription subscription = cells.ValueChangedEvent().Subscribe([&] { changed = true; });
        cells.SetComponent(3, 5.0);
        cells.SetComponent(-1, 5.0);
        cells.SetComponent(2, -3.4);  // rounds to the stored value
        EXPECT_FALSE(changed);
        EXPECT_EQ(cells.Value(), glm::ivec3(INT32_MIN, INT32_MAX, -3));
    }
    {
        Vector2Parameter offset(nullptr, "Offset", glm::dvec2(1, 2));
        offset.SetComponent(1, 0.25);
        offset.SetComponent(2, 9.0);
        EXPECT_EQ(offset.Value(), glm::dvec2(1, 0.25));
        ColorParameter tint(nullptr, "Tint", Color{});
        tint.SetComponent(3, 0.5);
        tint.SetComponent(1, 1e300);
        tint.SetComponent(4, 1.0);
        EXPECT_EQ(tint.Value(), (Color{0.0f, std::numeric_limits<float>::infinity(), 0.0f, 0.5f}));
    }
}

}  // namespace
}  // namespace Vantel
