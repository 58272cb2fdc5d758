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
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/Operator.h>
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
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"

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
        {"Transform3D",
         Maker<Transform3DParameter>(glm::mat4(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16)),
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
            const json before = Observe(*target);
            const bool marked = target->HasValueChanged();  // an enum's choice was set as it was made
            target->SetFromData(source->GetData());
            json cell = expected[column];
            if (dynamic_cast<Transform3DParameter*>(target.get()) != nullptr) {
                cell.insert(cell.end(), 16 - cell.size(), 0);
            }
            EXPECT_EQ(Observe(*target), cell);
            EXPECT_EQ(target->HasValueChanged(),
                      marked || cell != before);  // a new value is marked, the same not
        }
    }
    // Only texts that name no choice leave an enum unresolved; a detached parameter's path is the root.
    EXPECT_EQ(log.Text(),
              "[Warning] EnumParameter '/': '0.9' is not one of the choices.\n"
              "[Warning] EnumParameter '/': '{\"k\":[1,2]}' is not one of the choices.\n");
}

// A connection hands a value on component by component exactly when the target has numeric components, which
// a type may state without describing its value: the statement must match the description.
TEST(ValueParameters, NumericComponentsMatchWhatTheDataDescribes) {
    for (const Make& make : Targets()) {
        const std::unique_ptr<Parameter> parameter = make();
        SCOPED_TRACE(parameter->GetType()->GetName());
        const ParameterData& data = parameter->GetData();
        const ParameterData::Type type = data.GetType();
        EXPECT_EQ(parameter->HasNumericComponents(),
                  type == ParameterData::Type::Floats || type == ParameterData::Type::Ints);
        // Read straight from the value, one past each end included.
        for (int component = -1; component <= parameter->GetComponentCount(); ++component) {
            const double expected = component < 0 ? 0.0 : data.GetFloat(static_cast<std::size_t>(component));
            EXPECT_EQ(parameter->GetComponent(component), expected) << component;
        }
    }
}

TEST(ValueParameters, ComponentWritesRoundAndIgnoreForeignComponents) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    {
        // Rounded, where driving the whole value truncates (the table above).
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
    }
    {
        EXPECT_FALSE(BoolParameter().Value());  // a detached switch starts off
        BoolParameter on(nullptr, "On", false);
        on.SetComponent(0, 0.9);
        EXPECT_TRUE(on.Value());
        on.SetComponent(1, 0.0);
        EXPECT_TRUE(on.Value());
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
        EXPECT_TRUE(tint.IsAlphaEnabled());
        tint.SetAlphaEnabled(false);  // only a user interface hides alpha then: it is still written
        EXPECT_FALSE(tint.IsAlphaEnabled());
        tint.SetComponent(3, 0.5);
        tint.SetComponent(1, 1e300);
        tint.SetComponent(0, 0.25);
        tint.SetComponent(4, 1.0);
        tint.SetComponent(-1, 1.0);
        EXPECT_EQ(tint.Value(), (Color{0.25f, std::numeric_limits<float>::infinity(), 0.0f, 0.5f}));
    }
}

// Sets a parameter, which must be a T, to `value`.
template <typename T, typename V>
std::function<void(Parameter&)> Assign(V value) {
    return [=](Parameter& p) { dynamic_cast<T&>(p) = value; };
}

TEST(ValueParameters, EveryTypeIsCreatedByNameAndRoundTripsItsValue) {
    Testing::RegisterProjectTestTypes();
    struct Row {
        const char* name;
        std::function<void(Parameter&)> set;
        const char* written;
    };
    glm::mat4 shear(1.0f);
    shear[1][0] = 0.1f;
    const Row rows[] = {
        {"Vantel.BoolParameter", Assign<BoolParameter>(true), "true"},
        {"Vantel.IntParameter", Assign<IntParameter>(-7), "-7"},
        {"Vantel.FloatParameter", Assign<FloatParameter>(2.0), "2.0"},
        {"Vantel.Vector2Parameter", Assign<Vector2Parameter>(glm::dvec2(0.1, -1)), "[0.1,-1.0]"},
        {"Vantel.Vector3Parameter", Assign<Vector3Parameter>(glm::dvec3(1, 2, 3)), "[1.0,2.0,3.0]"},
        {"Vantel.Vector4Parameter", Assign<Vector4Parameter>(glm::dvec4(4)), "[4.0,4.0,4.0,4.0]"},
        {"Vantel.Vector2IntParameter", Assign<Vector2IntParameter>(glm::ivec2(1, -2)), "[1,-2]"},
        {"Vantel.Vector3IntParameter", Assign<Vector3IntParameter>(glm::ivec3(1, 2, 3)), "[1,2,3]"},
        {"Vantel.Vector4IntParameter", Assign<Vector4IntParameter>(glm::ivec4(9)), "[9,9,9,9]"},
        {"Vantel.ColorParameter", Assign<ColorParameter>(Color{0.1f, 0.5f, 1.0f, 0.3f}),
         R"({"a":0.3,"b":1.0,"g":0.5,"r":0.1})"},
        {"Vantel.Transform3DParameter", Assign<Transform3DParameter>(shear),
         "[[1.0,0.0,0.0,0.0],[0.1,1.0,0.0,0.0],[0.0,0.0,1.0,0.0],[0.0,0.0,0.0,1.0]]"},
        {"Vantel.StringParameter", Assign<StringParameter>("a \"b\""), R"("a \"b\"")"},
        {"Vantel.DataParameter", Assign<DataParameter>(json::parse(R"({"k":[1,2.5,null]})")),
         R"({"k":[1,2.5,null]})"},
        {"Vantel.EnumParameter",
         [](Parameter& p) {
             auto& choice = dynamic_cast<EnumParameter&>(p);
             choice.SetPossibleValues({"x", "y"});
             choice = "y";
         },
         R"("y")"},
        {"Vantel.TriggerParameter", [](Parameter& p) { dynamic_cast<TriggerParameter&>(p).Trigger(); },
         "null"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const ObjectType* type = TypeLibrary::Get()->GetType(row.name);
        ASSERT_NE(type, nullptr);
        EXPECT_EQ(type->GetBaseType(), Parameter::Type());
        const std::unique_ptr<Object> made = type->CreateInstance();
        auto* written = dynamic_cast<Parameter*>(made.get());
        ASSERT_NE(written, nullptr);  // made as its own type: the core types' test
        row.set(*written);
        EXPECT_EQ(written->SerializeValue().dump(), row.written);

        const std::unique_ptr<Object> read = type->CreateInstance();
        auto& reader = dynamic_cast<Parameter&>(*read);
        if (auto* choice = dynamic_cast<EnumParameter*>(&reader)) {
            choice->SetPossibleValues({"x", "y"});
        }
        reader.DeserializeValue(json::parse(row.written));
        EXPECT_EQ(reader.SerializeValue().dump(), row.written);
        EXPECT_EQ(reader.GetData(), written->GetData());
    }
}

TEST(ValueParameters, ReadingAMismatchThrowsTheLibrarysTypeErrorButOtherNumberKindsAndShapesAreRead) {
    struct Row {
        std::function<std::unique_ptr<Parameter>()> make;
        const char* value;
        const char* error;
    };
    const std::string mustBe = "[json.exception.type_error.302] type must be ";
    const std::string index =
        "[json.exception.type_error.305] cannot use operator[] with a numeric argument with ";
    const Row rows[] = {
        {[] { return std::make_unique<BoolParameter>(); }, R"("true")", "boolean, but is string"},
        {[] { return std::make_unique<BoolParameter>(); }, "1", "boolean, but is number"},
        {[] { return std::make_unique<IntParameter>(); }, "true", "number, but is boolean"},
        {[] { return std::make_unique<IntParameter>(); }, R"("3")", "number, but is string"},
        {[] { return std::make_unique<FloatParameter>(); }, "false", "number, but is boolean"},
        {[] { return std::make_unique<FloatParameter>(); }, "null", "number, but is null"},
        {[] { return std::make_unique<Vector2Parameter>(); }, R"({"x": 1})", "object"},
        {[] { return std::make_unique<Vector3Parameter>(); }, "[1, true]", "number, but is boolean"},
        {[] { return std::make_unique<Vector4IntParameter>(); }, "5", "number"},
        {[] { return std::make_unique<Vector2IntParameter>(); }, "[1, false]", "number, but is boolean"},
        {[] { return std::make_unique<ColorParameter>(); }, R"({"r": 1, "g": "1", "b": 0})",
         "number, but is string"},
        {[] { return std::make_unique<Transform3DParameter>(); }, R"("I")", "string"},
        {[] { return std::make_unique<Transform3DParameter>(); }, "[[1, 0, 0, 0], null]", "null"},
        {[] { return std::make_unique<StringParameter>(); }, "5", "string, but is number"},
        {[] { return std::make_unique<EnumParameter>(); }, "[]", "string, but is array"},
    };
    for (const Row& row : rows) {
        const std::unique_ptr<Parameter> parameter = row.make();
        SCOPED_TRACE(parameter->GetType()->GetName() + std::string(" reading ") + row.value);
        const json before = parameter->SerializeValue();
        try {
            parameter->DeserializeValue(json::parse(row.value));
            ADD_FAILURE() << "no exception";
        } catch (const json::type_error& error) {
            const std::string prefix = std::string(error.what()).starts_with(mustBe) ? mustBe : index;
            EXPECT_EQ(error.what(), prefix + row.error);
        }
        EXPECT_EQ(parameter->SerializeValue(), before);
        EXPECT_FALSE(parameter->HasValueChanged());
    }

    // Other number kinds, short or long arrays and missing members are no mismatch.
    IntParameter count;
    const std::pair<const char*, std::int64_t> counts[] = {
        {"3.9", 3}, {"-3.9", -3}, {"18446744073709551615", INT64_MAX}, {"-1e300", INT64_MIN}, {"12", 12}};
    for (const auto& [text, expected] : counts) {
        count.DeserializeValue(json::parse(text));
        EXPECT_EQ(count.Value(), expected) << text;
    }
    Vector3IntParameter cells(nullptr, "Cells", glm::ivec3(5));
    cells.DeserializeValue(json::parse("[2.7, 1e12]"));
    EXPECT_EQ(cells.Value(), glm::ivec3(2, INT32_MAX, 0));
    Vector2Parameter offset(nullptr, "Offset", glm::dvec2(5));
    offset.DeserializeValue(json::parse("[1, 2, 3]"));
    EXPECT_EQ(offset.Value(), glm::dvec2(1, 2));

    ColorParameter tint(nullptr, "Tint", Color{0.5f, 0.5f, 0.5f, 0.5f});
    tint.DeserializeValue(json::parse(R"({"r": 1, "g": 0.5, "b": 0.25})"));
    EXPECT_EQ(tint.Value(), (Color{1.0f, 0.5f, 0.25f, 1.0f}));
    tint.DeserializeValue(json::parse("[1, 1, 1, 1]"));
    EXPECT_EQ(tint.Value(), Color{});

    Transform3DParameter placement;
    placement.DeserializeValue(json::parse("[[2], [0, 3]]"));
    glm::mat4 expected(0.0f);
    expected[0][0] = 2.0f;
    expected[1][1] = 3.0f;
    EXPECT_EQ(placement.Value(), expected);
}

TEST(ValueParameters, WholeAndComponentWritesRecordWhatChanged) {
    Operator op;
    Testing::JoinModel(op);
    IntParameter count(ParameterScope(&op), "Count", 1);
    Vector3Parameter offset(ParameterScope(&op), "Offset", glm::dvec3(1, 2, 3));
    Vector2IntParameter size(ParameterScope(&op), "Size", glm::ivec2(4, 5));
    ColorParameter tint(ParameterScope(&op), "Tint", Color{});
    StringParameter label(ParameterScope(&op), "Label", "a");
    DataParameter data(ParameterScope(&op), "Data", json::array({1}));
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
    data = json::array({1});
    data = json::object({{"k", 2}});
    data = json::object({{"k", 2}});
    gain = 2.0;
    gain.SetComponent(0, 3.0);

    const std::vector<Record> expected = {
        ParameterValueRecord{count.GetPath(), 5, 6},
        ParameterComponentRecord{offset.GetPath(), 1, 2.0, 2.5},
        ParameterComponentRecord{size.GetPath(), 0, 4.0, 7.0},
        ParameterComponentRecord{tint.GetPath(), 3, 1.0, 0.5},
        ParameterValueRecord{label.GetPath(), "a", "b"},
        ParameterValueRecord{data.GetPath(), json::array({1}), json::object({{"k", 2}})},
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

    Graph graph;
    Operator& placed = Testing::Add<Operator>(graph);
    TriggerParameter rebuild(ParameterScope(&placed), "Rebuild", true);
    rebuild.Trigger();
    EXPECT_FALSE(placed.IsStructureDirty());  // in a graph the rebuild follows at once
}

TEST(EnumParameter, ChoosesByLabelThenValueAndResolvesTheChoiceAgainstNewPossibleValues) {
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
    // Two labels of one value: the other label keeps the value and renews the data.
    mode.SetPossibleValues({"a", "a"}, {"First", "Second"});
    mode.SetValue("First");
    EXPECT_EQ(mode.GetData(), ParameterData("First", 0));
    mode.SetValue("Second");
    EXPECT_EQ(mode.GetData(), ParameterData("Second", 1));

    // New possible values resolve the kept choice, without a record.
    mode.SetPossibleValues({"a", "b"});
    mode.SetValue("b");
    {
        Testing::LogCapture log;
        mode.SetPossibleValues({"x", "y", "z"});
        EXPECT_EQ(mode.Value(), "b");
        EXPECT_EQ(mode.GetIndex(), -1);
        EXPECT_EQ(mode.GetData(), ParameterData("b", -1));  // read, so that new choices must renew it
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
