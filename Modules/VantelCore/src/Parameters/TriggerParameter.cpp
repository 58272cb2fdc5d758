#include <Vantel/Parameters/TriggerParameter.h>

#include <Vantel/Objects/ObjectType.h>

namespace Vantel {

class TriggerParameter::Implementation {
public:
    std::string buttonText;
    Event<> triggeredEvent;
};

TriggerParameter::TriggerParameter() : TriggerParameter(nullptr, "", false) {}

TriggerParameter::TriggerParameter(ParameterScope scope, std::string_view name, bool structural)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    SetParameterFlag(ParameterFlag::Structural, structural);
}

TriggerParameter::~TriggerParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(TriggerParameter, Parameter, "Vantel.TriggerParameter")

void TriggerParameter::Trigger() {
    MarkDirty();
    implementation->triggeredEvent.Fire();
    UpdateOperatorStructure();
}

bool TriggerParameter::IsTriggered() const {
    return HasValueChanged();
}

Event<>& TriggerParameter::TriggeredEvent() {
    return implementation->triggeredEvent;
}

const std::string& TriggerParameter::GetButtonText() const {
    return implementation->buttonText;
}

void TriggerParameter::SetButtonText(std::string_view text) {
    implementation->buttonText = text;
}

void TriggerParameter::SetFromData(const ParameterData&) {
    Trigger();
}

nlohmann::json TriggerParameter::SerializeValue() const {
    return nullptr;
}

void TriggerParameter::DeserializeValue(const nlohmann::json&) {}

ParameterData TriggerParameter::BuildData() const {
    return ParameterData();
}

}  // namespace Vantel
