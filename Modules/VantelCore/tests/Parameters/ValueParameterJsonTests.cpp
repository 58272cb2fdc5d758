#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

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

namespace Vantel {
namespace {

using nlohmann::json;

TEST(ValueParameters, EveryTypeIsCreatedByNameAndRoundTripsItsValue) {
    struct Row {
        const ObjectType* type;
        const char* name;
        std::function<void(Parameter&)> set;
        const char* written;
    };
    glm::mat4 shear(1.0f);
    shear[1][0] = 0.1f;
    const Row rows[] = {
        {BoolParameter::Type(), "Vantel.BoolParameter",
         [](Parameter& p) { dynamic_cast<BoolParameter&>(p) = true; }, "true"},
        {IntParameter::Type(), "Vantel.IntParameter",
         [](Parameter& p) { dynamic_cast<IntParameter&>(p) = -7; }, "-7"},
        {FloatParameter::Type(), "Vantel.FloatParameter",
         [](Parameter& p) { dynamic_cast<FloatParameter&>(p) = 2.0; }, "2.0"},
        {Vector2Parameter::Type(), "Vantel.Vector2Parameter",
         [](Parameter& p) { dynamic_cast<Vector2Parameter&>(p) = glm::dvec2(0.1, -1); }, "[0.1,-1.0]"},
        {Vector3Parameter::Type(), "Vantel.Vector3Parameter",
         [](Parameter& p) { dynamic_cast<Vector3Parameter&>(p) = glm::dvec3(1, 2, 3); }, "[1.0,2.0,3.0]"},
        {Vector4Parameter::Type(), "Vantel.Vector4Parameter",
         [](Parameter& p) { dynamic_cast<Vector4Parameter&>(p) = glm::dvec4(4); }, "[4.0,4.0,4.0,4.0]"},
        {Vector2IntParameter::Type(), "Vantel.Vector2IntParameter",
         [](Parameter& p) { dynamic_cast<Vector2IntParameter&>(p) = glm::ivec2(1, -2); }, "[1,-2]"},
        {Vector3IntParameter::Type(), "Vantel.Vector3IntParameter",
         [](Parameter& p) { dynamic_cast<Vector3IntParameter&>(p) = glm::ivec3(1, 2, 3); }, "[1,2,3]"},
        {Vector4IntParameter::Type(), "Vantel.Vector4IntParameter",
         [](Parameter& p) { dynamic_cast<Vector4IntParameter&>(p) = glm::ivec4(9); }, "[9,9,9,9]"},
        {ColorParameter::Type(), "Vantel.ColorParameter",
         [](Parameter& p) {
             dynamic_cast<ColorParameter&>(p) = Color{0.1f, 0.5f, 1.0f, 0.3f};
         },
         R"({"a":0.3,"b":1.0,"g":0.5,"r":0.1})"},
        {Transform3DParameter::Type(), "Vantel.Transform3DParameter",
         [=](Parameter& p) { dynamic_cast<Transform3DParameter&>(p) = shear; },
         "[[1.0,0.0,0.0,0.0],[0.1,1.0,0.0,0.0],[0.0,0.0,1.0,0.0],[0.0,0.0,0.0,1.0]]"},
        {StringParameter::Type(), "Vantel.StringParameter",
         [](Parameter& p) { dynamic_cast<StringParameter&>(p) = "a \"b\""; }, R"("a \"b\"")"},
        {DataParameter::Type(), "Vantel.DataParameter",
         [](Parameter& p) { dynamic_cast<DataParameter&>(p) = json::parse(R"({"k":[1,2.5,null]})"); },
         R"({"k":[1,2.5,null]})"},
        {EnumParameter::Type(), "Vantel.EnumParameter",
         [](Parameter& p) {
             auto& choice = dynamic_cast<EnumParameter&>(p);
             choice.SetPossibleValues({"x", "y"});
             choice = "y";
         },
         R"("y")"},
        {TriggerParameter::Type(), "Vantel.TriggerParameter",
         [](Parameter& p) { dynamic_cast<TriggerParameter&>(p).Trigger(); }, "null"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.type->GetName(), row.name);
        EXPECT_EQ(row.type->GetBaseType(), Parameter::Type());
        const std::unique_ptr<Object> made = row.type->CreateInstance();
        auto* written = dynamic_cast<Parameter*>(made.get());
        ASSERT_NE(written, nullptr);
        EXPECT_EQ(written->GetType(), row.type);
        EXPECT_EQ(written->GetName(), "");
        EXPECT_EQ(written->GetParent(), nullptr);
        row.set(*written);
        EXPECT_EQ(written->SerializeValue().dump(), row.written);

        const std::unique_ptr<Object> read = row.type->CreateInstance();
        auto& reader = dynamic_cast<Parameter&>(*read);
        if (auto* choice = dynamic_cast<EnumParameter*>(&reader)) {
            choice->SetPossibleValues({"x", "y"});
        }
        reader.DeserializeValue(json::parse(row.written));
        EXPECT_EQ(reader.SerializeValue().dump(), row.written);
        EXPECT_EQ(reader.GetData(), written->GetData());
    }
}

TEST(ValueParameters, ReadingAMismatchingValueThrowsTheLibrarysTypeErrorAndKeepsTheValue) {
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
}

TEST(ValueParameters, ReadingToleratesNumberKindsShortArraysAndMissingMembers) {
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

}  // namespace
}  // namespace Vantel
