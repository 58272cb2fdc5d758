#include <Vantel/Objects/TypeLibrary.h>

#include <string>
#include <string_view>

#include <Vantel/Documentation/TypeDocumentation.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/BoolParameter.h>
#include <Vantel/Parameters/ColorParameter.h>
#include <Vantel/Parameters/DataParameter.h>
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/ParameterInfo.h>
#include <Vantel/Parameters/PtrListParameter.h>
#include <Vantel/Parameters/PtrParameter.h>
#include <Vantel/Parameters/StringParameter.h>
#include <Vantel/Parameters/Transform3DParameter.h>
#include <Vantel/Parameters/TriggerParameter.h>
#include <Vantel/Parameters/VectorIntParameter.h>
#include <Vantel/Parameters/VectorParameter.h>
#include <Vantel/Support/Logging.h>
#include <Vantel/Support/Resources.h>

namespace Vantel {
namespace {

struct DocumentedType {
    const ObjectType* type;
    std::string_view path;
};

std::string_view CompiledDoc(std::string_view path) {
    const std::optional<std::string_view> text = Resources::Find(path);
    if (!text) {
        LogWarning("VantelCore has no resource file \"" + std::string(path) + "\"");
        return {};
    }
    return *text;
}

}  // namespace

void RegisterCoreTypes() {
    TypeLibrary& library = *TypeLibrary::Get();
    for (const ObjectType* type :
         {Object::Type(), Operator::Type(), Parameter::Type(), DataInput::Type(), DataOutput::Type()}) {
        library.RegisterType(type);
    }

    const DocumentedType operators[] = {
        {Graph::Type(), "Docs/Operators/General/Graph.md"},
        {GraphInputsOperator::Type(), "Docs/Operators/General/Graph Inputs.md"},
        {GraphOutputsOperator::Type(), "Docs/Operators/General/Graph Outputs.md"},
    };
    for (const DocumentedType& entry : operators) {
        library.RegisterOperator(ParseOperatorDoc(entry.type, entry.path, CompiledDoc(entry.path)));
    }

    const DocumentedType parameters[] = {
        {BoolParameter::Type(), "Docs/ParameterTypes/Bool.md"},
        {TriggerParameter::Type(), "Docs/ParameterTypes/Trigger.md"},
        {FloatParameter::Type(), "Docs/ParameterTypes/Float.md"},
        {Vector2Parameter::Type(), "Docs/ParameterTypes/Vector 2.md"},
        {Vector3Parameter::Type(), "Docs/ParameterTypes/Vector 3.md"},
        {Vector4Parameter::Type(), "Docs/ParameterTypes/Vector 4.md"},
        {IntParameter::Type(), "Docs/ParameterTypes/Int.md"},
        {Vector2IntParameter::Type(), "Docs/ParameterTypes/Vector 2 Int.md"},
        {Vector3IntParameter::Type(), "Docs/ParameterTypes/Vector 3 Int.md"},
        {Vector4IntParameter::Type(), "Docs/ParameterTypes/Vector 4 Int.md"},
        {ColorParameter::Type(), "Docs/ParameterTypes/Color.md"},
        {Transform3DParameter::Type(), "Docs/ParameterTypes/Transform 3D.md"},
        {StringParameter::Type(), "Docs/ParameterTypes/String.md"},
        {EnumParameter::Type(), "Docs/ParameterTypes/Enum.md"},
        {PtrParameter::Type(), "Docs/ParameterTypes/Reference.md"},
        {PtrListParameter::Type(), "Docs/ParameterTypes/Reference List.md"},
    };
    for (const DocumentedType& entry : parameters) {
        library.RegisterParameter(ParseParameterDoc(entry.type, entry.path, CompiledDoc(entry.path)));
    }

    library.RegisterType(DataParameter::Type());
}

}  // namespace Vantel
