#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterInfo.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

// The library is one per process and only plug-in types are ever removed, so every test registers types of
// its own names, made here and kept until the process ends.
const ObjectType* NewType(std::string_view name, const ObjectType* base) {
    static std::deque<ObjectType> types;
    return &types.emplace_back(name, base, nullptr);
}

OperatorInfo Op(const ObjectType* type, std::string name, std::string category = "") {
    OperatorInfo info;
    info.type = type;
    info.name = std::move(name);
    info.category = std::move(category);
    return info;
}

ParameterInfo Param(const ObjectType* type, std::string name) {
    ParameterInfo info;
    info.type = type;
    info.name = std::move(name);
    return info;
}

DataTypeInfo DataType(std::string id, std::string name, std::string_view ports = "") {
    DataTypeInfo info;
    info.id = std::move(id);
    info.name = std::move(name);
    if (!ports.empty()) {
        info.inputType = NewType(std::string(ports) + "Input", DataInput::Type());
        info.outputType = NewType(std::string(ports) + "Output", DataOutput::Type());
    }
    return info;
}

TEST(TypeLibrary, RegistrationRulesAndTheirWarnings) {
    TypeLibrary& library = *TypeLibrary::Get();
    const ObjectType* op = Operator::Type();
    const ObjectType* param = Parameter::Type();
    const std::string missing = ", it needs an id, a name, an input type and an output type.\n";
    struct Row {
        const char* name;
        std::function<void()> act;
        std::string log;
        int added;  // TypeAddedEvent firings
    };
    const std::vector<Row> rows = {
        {"same type twice: one entry",
         [&] {
             const ObjectType* type = NewType("TL.Twice", Object::Type());
             library.RegisterType(type);
             library.RegisterType(type);
             EXPECT_EQ(std::count(library.GetTypes().begin(), library.GetTypes().end(), type), 1);
         },
         "[Warning] Failed to register type, name is already taken: \"TL.Twice\"\n", 1},
        {"operator that is no operator",
         [&] { library.RegisterOperator(Op(NewType("TL.NotOp", Object::Type()), "Not Op")); },
         "[Warning] Failed to register operator, the type \"TL.NotOp\" does not inherit "
         "Vantel.General.Operator\n",
         0},
        {"parameter that is no parameter",
         [&] { library.RegisterParameter(Param(NewType("TL.NotParam", op), "Not Param")); },
         "[Warning] Failed to register parameter, the type \"TL.NotParam\" does not inherit "
         "Vantel.Parameter\n",
         0},
        {"record without a type: nothing",
         [&] {
             library.RegisterOperator(Op(nullptr, "Typeless"));
             library.RegisterParameter(Param(nullptr, "Typeless"));
         },
         "", 0},
        {"empty name, checked before the base type",
         [&] {
             library.RegisterOperator(Op(NewType("TL.Nameless", Object::Type()), ""));
             library.RegisterParameter(Param(NewType("TL.NamelessParameter", param), ""));
             EXPECT_EQ(library.FindParameterInfoByName(""), nullptr);
         },
         "[Warning] Failed to register operator, no name was given for \"TL.Nameless\"\n"
         "[Warning] Failed to register parameter, no name was given for \"TL.NamelessParameter\"\n",
         0},
        {"operator registered twice: the first record stays",
         [&] {
             const ObjectType* type = NewType("TL.OpTwice", op);
             library.RegisterOperator(Op(type, "Once"));
             library.RegisterOperator(Op(type, "Again"));
             EXPECT_EQ(library.FindOperatorInfo(type)->name, "Once");
         },
         "[Warning] Failed to register operator, it is already registered: \"TL.OpTwice\"\n", 1},
        {"same name and category: both registered",
         [&] {
             const ObjectType* a = NewType("TL.BlurA", op);
             const ObjectType* b = NewType("TL.BlurB", op);
             library.RegisterOperator(Op(a, "Blur", "TL"));
             library.RegisterOperator(Op(b, "Blur", "TL"));
             library.RegisterOperator(Op(NewType("TL.BlurC", op), "Blur", "Other"));
             EXPECT_TRUE(library.FindOperatorInfo(a) && library.FindOperatorInfo(b));
         },
         "[Warning] Operator \"Blur\" in category \"TL\" is registered twice, by \"TL.BlurA\" and "
         "\"TL.BlurB\"\n",
         3},
        {"record of a type whose name is taken: kept, the type is not added",
         [&] {
             const ObjectType* first = NewType("TL.Taken", op);
             const ObjectType* second = NewType("TL.Taken", op);
             library.RegisterType(first);
             library.RegisterOperator(Op(second, "Taken"));
             EXPECT_EQ(library.GetType("TL.Taken"), first);
             EXPECT_NE(library.FindOperatorInfo(second), nullptr);
         },
         "[Warning] Failed to register type, name is already taken: \"TL.Taken\"\n", 1},
        {"parameter name used by another type",
         [&] {
             const ObjectType* first = NewType("TL.Dial1", param);
             library.RegisterParameter(Param(first, "Dial"));
             library.RegisterParameter(Param(NewType("TL.Dial2", param), "Dial"));
             EXPECT_EQ(library.FindParameterInfoByName("Dial")->type, first);
             EXPECT_EQ(library.GetType("TL.Dial2"), nullptr);
         },
         "[Warning] Failed to register parameter \"TL.Dial2\", the name \"Dial\" is already used by "
         "\"TL.Dial1\"\n",
         1},
        {"data type missing a field",
         [&] {
             DataTypeInfo noOutput = DataType("TL.D", "D", "TL.D");
             noOutput.outputType = nullptr;
             for (const DataTypeInfo& info : {DataType("", "A", "TL.A"), DataType("TL.B", "", "TL.B"),
                                              DataType("TL.C", "C"), noOutput}) {
                 library.RegisterDataType(info);
             }
         },
         "[Warning] Failed to register data type \"\"" + missing +
             "[Warning] Failed to register data type \"TL.B\"" + missing +
             "[Warning] Failed to register data type \"TL.C\"" + missing +
             "[Warning] Failed to register data type \"TL.D\"" + missing,
         0},
        {"data type id taken",
         [&] {
             library.RegisterDataType(DataType("TL.Dots", "Dots", "TL.Dots"));
             library.RegisterDataType(DataType("TL.Dots", "More Dots", "TL.MoreDots"));
             EXPECT_EQ(library.FindDataTypeById("TL.Dots")->name, "Dots");
         },
         "[Warning] Failed to register data type, id is already taken: \"TL.Dots\"\n", 2},
        {"data type name taken",
         [&] {
             library.RegisterDataType(DataType("TL.Lines", "Lines", "TL.Lines"));
             library.RegisterDataType(DataType("TL.Lines2", "Lines", "TL.Lines2"));
         },
         "[Warning] Failed to register data type \"TL.Lines2\", the name \"Lines\" is already used by "
         "\"TL.Lines\"\n",
         2},
        {"data type whose input type is registered already: the event fires for the output only",
         [&] {
             DataTypeInfo info = DataType("TL.Pre", "Pre", "TL.Pre");
             library.RegisterType(info.inputType);
             library.RegisterDataType(info);
             EXPECT_EQ(library.FindDataType(info.inputType), library.FindDataTypeById("TL.Pre"));
         },
         "[Warning] Failed to register type, name is already taken: \"TL.PreInput\"\n", 2},
        {"data type with its port types swapped, or one that another data type has",
         [&] {
             DataTypeInfo swapped = DataType("TL.Swap", "Swap", "TL.Swap");
             std::swap(swapped.inputType, swapped.outputType);
             library.RegisterDataType(swapped);
             DataTypeInfo shared = DataType("TL.Share", "Share", "TL.Share");
             shared.outputType = library.FindDataTypeById("TL.Dots")->outputType;
             library.RegisterDataType(shared);
             EXPECT_EQ(library.FindDataType(shared.outputType)->id, "TL.Dots");
             EXPECT_EQ(library.FindDataType(swapped.inputType), nullptr);
         },
         "[Warning] Failed to register data type \"TL.Swap\", the input type \"TL.SwapOutput\" does not "
         "inherit Vantel.DataInput\n"
         "[Warning] Failed to register data type \"TL.Share\", the port type \"TL.DotsOutput\" is already "
         "used by \"TL.Dots\"\n",
         0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        int added = 0;
        EventSubscription subscription =
            library.TypeAddedEvent().Subscribe([&](const ObjectType*) { ++added; });
        LogCapture log;
        row.act();
        EXPECT_EQ(log.Text(), row.log);
        EXPECT_EQ(added, row.added);
    }
}

TEST(TypeLibrary, LookupsFindDataTypesByIdNameAndEitherPort) {
    TypeLibrary& library = *TypeLibrary::Get();
    std::vector<const ObjectType*> added;
    EventSubscription subscription =
        library.TypeAddedEvent().Subscribe([&](const ObjectType* type) { added.push_back(type); });
    DataTypeInfo info = DataType("TL.Look", "Look", "TL.Look");
    library.RegisterDataType(info);
    EXPECT_EQ(added, (std::vector<const ObjectType*>{info.inputType, info.outputType}));
    EXPECT_EQ(std::vector<const ObjectType*>(library.GetTypes().end() - 2, library.GetTypes().end()), added);

    const DataTypeInfo* record = library.FindDataTypeById("TL.Look");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(library.FindDataTypeByName("Look"), record);
    EXPECT_EQ(library.FindDataType(info.inputType), record);
    EXPECT_EQ(library.FindDataType(info.outputType), record);
    EXPECT_EQ(library.FindDataInputType(info.outputType), info.inputType);
    EXPECT_EQ(library.FindDataOutputType(info.inputType), info.outputType);
    EXPECT_EQ(library.GetDataTypeIds().back(), "TL.Look");

    // Nothing matches: null, never an exception.
    const ObjectType* stranger = NewType("TL.Stranger", Object::Type());
    EXPECT_EQ(library.GetType("TL.NoSuchType"), nullptr);
    EXPECT_EQ(library.GetType(""), nullptr);
    EXPECT_EQ(library.FindOperatorInfo(stranger), nullptr);
    EXPECT_EQ(library.FindParameterInfoByName("No Such Name"), nullptr);
    EXPECT_EQ(library.FindDataTypeByName("None"), nullptr);
    EXPECT_EQ(library.FindDataInputType(stranger), nullptr);
    EXPECT_EQ(library.FindDataOutputType(nullptr), nullptr);
}

// Registration is once per process, so one test walks the whole registry it makes.
TEST(CoreTypes, RegisterSilentlyAndEveryTypeIsUsable) {
    LogCapture log;
    RegisterCoreTypes();
    EXPECT_EQ(log.Text(), "");  // every compiled-in doc passes its own checks

    TypeLibrary& library = *TypeLibrary::Get();
    // Other tests of this program register types of their own; look at the core ones only.
    int operators = 0;
    int parameters = 0;
    std::istringstream names(
        "Vantel.Object Vantel.General.Operator Vantel.Parameter Vantel.DataInput Vantel.DataOutput "
        "Vantel.General.Graph Vantel.General.GraphInputsOperator Vantel.General.GraphOutputsOperator "
        "Vantel.BoolParameter Vantel.TriggerParameter Vantel.FloatParameter Vantel.Vector2Parameter "
        "Vantel.Vector3Parameter Vantel.Vector4Parameter Vantel.IntParameter Vantel.Vector2IntParameter "
        "Vantel.Vector3IntParameter Vantel.Vector4IntParameter Vantel.ColorParameter Vantel.StringParameter "
        "Vantel.Transform3DParameter Vantel.EnumParameter Vantel.PtrParameter Vantel.PtrListParameter "
        "Vantel.DataParameter");
    for (std::string name; names >> name;) {
        SCOPED_TRACE(name);
        const ObjectType* type = library.GetType(name);
        ASSERT_NE(type, nullptr);
        EXPECT_EQ(type->GetName(), name);
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
