#include <Vantel/Parameters/StringParameter.h>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"

namespace Vantel {

class StringParameter::Implementation {
public:
    std::string value;
    EditorType editorType = EditorType::SingleLine;
};

StringParameter::StringParameter() : StringParameter(nullptr, "", "") {}

StringParameter::StringParameter(ParameterScope scope, std::string_view name, std::string_view value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

StringParameter::~StringParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(StringParameter, Parameter, "Vantel.StringParameter")

const std::string& StringParameter::Value() const {
    return implementation->value;
}

void StringParameter::SetValue(std::string_view value) {
    if (value == implementation->value) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

StringParameter& StringParameter::operator=(std::string_view value) {
    SetValue(value);
    return *this;
}

StringParameter::EditorType StringParameter::GetEditorType() const {
    return implementation->editorType;
}

void StringParameter::SetEditorType(EditorType editorType) {
    implementation->editorType = editorType;
}

void StringParameter::SetFromData(const ParameterData& data) {
    SetValue(data.GetString());
}

nlohmann::json StringParameter::SerializeValue() const {
    return implementation->value;
}

void StringParameter::DeserializeValue(const nlohmann::json& value) {
    SetValue(value.get<std::string>());
}

ParameterData StringParameter::BuildData() const {
    return ParameterData(std::string_view(implementation->value));
}

}  // namespace Vantel
