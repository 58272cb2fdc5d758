#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterInfo.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

// Registration is once per process, so one test walks the whole registry it makes.
TEST(CoreTypes, RegisterSilentlyAndEveryTypeIsUsable) {
    Testing::LogCapture log;
    RegisterCoreTypes();
    EXPECT_EQ(log.Text(), "");  // every compiled-in doc passes its own checks

    TypeLibrary& library = *TypeLibrary::Get();
    const char* names[] = {"Vantel.Object",
                           "Vantel.General.Operator",
                           "Vantel.Parameter",
                           "Vantel.DataInput",
                           "Vantel.DataOutput",
                           "Vantel.General.Graph",
                           "Vantel.General.GraphInputsOperator",
                           "Vantel.General.GraphOutputsOperator",
                           "Vantel.BoolParameter",
                           "Vantel.TriggerParameter",
                           "Vantel.FloatParameter",
                           "Vantel.Vector2Parameter",
                           "Vantel.Vector3Parameter",
                           "Vantel.Vector4Parameter",
                           "Vantel.IntParameter",
                           "Vantel.Vector2IntParameter",
                           "Vantel.Vector3IntParameter",
                           "Vantel.Vector4IntParameter",
                           "Vantel.ColorParameter",
                           "Vantel.Transform3DParameter",
                           "Vantel.StringParameter",
                           "Vantel.EnumParameter",
                           "Vantel.PtrParameter",
                           "Vantel.PtrListParameter",
                           "Vantel.DataParameter"};
    for (const char* name : names) {
        SCOPED_TRACE(name);
        const ObjectType* type = library.GetType(name);
        ASSERT_NE(type, nullptr);
        EXPECT_EQ(type->GetName(), name);
    }
    // Other tests of this program register types of their own; look at the core ones only.
    int operators = 0;
    int parameters = 0;
    for (const char* name : names) {
        SCOPED_TRACE(name);
        const ObjectType* type = library.GetType(name);
        if (const OperatorInfo* info = library.FindOperatorInfo(type)) {
            ++operators;
            EXPECT_EQ(info->category, "General");
            EXPECT_FALSE(info->summary.empty());
            const std::unique_ptr<Object> made = type->CreateInstance();
            ASSERT_NE(made, nullptr);
            EXPECT_EQ(made->GetType(), type);
        }
        if (const ParameterInfo* info = library.FindParameterInfo(type)) {
            ++parameters;
            EXPECT_EQ(library.FindParameterInfoByName(info->name), info);
            const std::unique_ptr<Object> made = type->CreateInstance();
            ASSERT_NE(dynamic_cast<Parameter*>(made.get()), nullptr);
            EXPECT_EQ(made->GetType(), type);
        }
    }
    EXPECT_EQ(operators, 3);
    EXPECT_EQ(parameters, 16);
    EXPECT_EQ(library.FindParameterInfoByName("Reference")->type->GetName(), "Vantel.PtrParameter");

    log.Clear();
    RegisterCoreTypes();  // a second registration is refused type by type
    EXPECT_NE(log.Text().find("[Warning] Failed to register type, name is already taken: \"Vantel.Object\""),
              std::string::npos);
    EXPECT_EQ(library.FindParameterInfoByName("Vector 3")->type->GetName(), "Vantel.Vector3Parameter");
}

}  // namespace
}  // namespace Vantel
