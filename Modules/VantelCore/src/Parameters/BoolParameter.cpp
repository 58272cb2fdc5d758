#include <Vantel/Parameters/BoolParameter.h>

#include <cstdint>
#include <vector>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"

namespace Vantel {

class BoolParameter::Implementation {
public:
    bool value = false;
};

BoolParameter::BoolParameter() : BoolParameter(nullptr, "", false) {}

BoolParameter::BoolParameter(ParameterScope scope, std::string_view name, bool value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

BoolParameter::~BoolParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(BoolParameter, Parameter, "Vantel.BoolParameter")

const bool& BoolParameter::Value() const {
    return implementation->value;
}

void BoolParameter::SetValue(bool value) {
    if (value == implementation->value) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

BoolParameter& BoolParameter::operator=(bool value) {
    SetValue(value);
    return *this;
}

void BoolParameter::SetFromData(const ParameterData& data) {
    SetValue(data.GetInt(0) != 0);
}

nlohmann::json BoolParameter::SerializeValue() const {
    return implementation->value;
}

void BoolParameter::DeserializeValue(const nlohmann::json& value) {
    SetValue(value.get<bool>());
}

int BoolParameter::GetComponentCount() const {
    return 1;
}

double BoolParameter::GetComponent(int component) const {
    return component == 0 && implementation->value ? 1.0 : 0.0;
}

void BoolParameter::SetComponent(int component, double value) {
    if (component != 0) {
        return;
    }
    SetValue(value != 0.0);
}

ParameterData BoolParameter::BuildData() const {
    return ParameterData(std::vector<std::int64_t>{implementation->value ? 1 : 0});
}

}  // namespace Vantel
