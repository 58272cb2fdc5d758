#include <Vantel/Parameters/IntParameter.h>

#include <vector>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"

namespace Vantel {

class IntParameter::Implementation {
public:
    std::int64_t value = 0;
    EditorType editorType = EditorType::Number;
};

IntParameter::IntParameter() : IntParameter(nullptr, "", 0) {}

IntParameter::IntParameter(ParameterScope scope, std::string_view name, std::int64_t value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

IntParameter::~IntParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(IntParameter, Parameter, "Vantel.IntParameter")

const std::int64_t& IntParameter::Value() const {
    return implementation->value;
}

void IntParameter::SetValue(std::int64_t value) {
    if (value == implementation->value) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

IntParameter& IntParameter::operator=(std::int64_t value) {
    SetValue(value);
    return *this;
}

IntParameter::EditorType IntParameter::GetEditorType() const {
    return implementation->editorType;
}

void IntParameter::SetEditorType(EditorType editorType) {
    implementation->editorType = editorType;
}

void IntParameter::SetFromData(const ParameterData& data) {
    SetValue(data.GetInt(0));
}

nlohmann::json IntParameter::SerializeValue() const {
    return implementation->value;
}

void IntParameter::DeserializeValue(const nlohmann::json& value) {
    SetValue(ValueParameterSupport::ReadInt64(value));
}

int IntParameter::GetComponentCount() const {
    return 1;
}

double IntParameter::GetComponent(int component) const {
    return component == 0 ? static_cast<double>(implementation->value) : 0.0;
}

void IntParameter::SetComponent(int component, double value) {
    if (component != 0) {
        return;
    }
    SetValue(ValueParameterSupport::RoundToInt64(value));
}

ParameterData IntParameter::BuildData() const {
    return ParameterData(std::vector<std::int64_t>{implementation->value});
}

}  // namespace Vantel
