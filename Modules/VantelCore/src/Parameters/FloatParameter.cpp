#include <Vantel/Parameters/FloatParameter.h>

#include <vector>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"
#include "Support/OperatorArena.h"
#include "Support/SameValue.h"

namespace Vantel {

class FloatParameter::Implementation : public OperatorArena::Block {
public:
    double value = 0.0;
};

FloatParameter::FloatParameter() : FloatParameter(nullptr, "", 0.0) {}

FloatParameter::FloatParameter(ParameterScope scope, std::string_view name, double value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

FloatParameter::~FloatParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(FloatParameter, Parameter, "Vantel.FloatParameter")

const double& FloatParameter::Value() const {
    return implementation->value;
}

void FloatParameter::SetValue(double value) {
    if (IsSameValue(value, implementation->value)) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

FloatParameter& FloatParameter::operator=(double value) {
    SetValue(value);
    return *this;
}

void FloatParameter::SetFromData(const ParameterData& data) {
    SetValue(data.GetFloat(std::size_t{0}));
}

nlohmann::json FloatParameter::SerializeValue() const {
    return implementation->value;
}

void FloatParameter::DeserializeValue(const nlohmann::json& value) {
    SetValue(value.get<double>());
}

int FloatParameter::GetComponentCount() const {
    return 1;
}

double FloatParameter::GetComponent(int component) const {
    return component == 0 ? implementation->value : 0.0;
}

void FloatParameter::SetComponent(int component, double value) {
    if (component != 0) {
        return;
    }
    SetValue(value);
}

ParameterData FloatParameter::BuildData() const {
    return ParameterData(std::vector<double>{implementation->value});
}

}  // namespace Vantel
