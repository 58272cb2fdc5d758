#include <Vantel/Parameters/PtrParameter.h>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Support/Logging.h>

#include "Parameters/ReferenceSupport.h"
#include "Parameters/ValueParameterSupport.h"

namespace Vantel {

class PtrParameter::Implementation {
public:
    Ptr<Object> value;
    ObjectFilter filter;
};

PtrParameter::PtrParameter() : PtrParameter(nullptr, "", nullptr) {}

PtrParameter::PtrParameter(ParameterScope scope, std::string_view name, Object* value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    // Kept as given: the operator sets the filter after constructing its members, and SetFilter then
    // clears a value that does not pass.
    implementation->value = Ptr<Object>(value);
}

PtrParameter::~PtrParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(PtrParameter, Parameter, "Vantel.PtrParameter", "Reference")

Object* PtrParameter::Value() const {
    return implementation->value.Get();
}

void PtrParameter::SetValue(Object* value) {
    if (!PassesFilter(value)) {
        value = nullptr;
    }
    if (value == Value()) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = Ptr<Object>(value);
    MarkChanged(std::move(previous));
}

PtrParameter& PtrParameter::operator=(Object* value) {
    SetValue(value);
    return *this;
}

const ObjectFilter& PtrParameter::GetFilter() const {
    return implementation->filter;
}

void PtrParameter::SetFilter(const ObjectFilter& filter) {
    implementation->filter = filter;
    SetValue(Value());
}

bool PtrParameter::PassesFilter(const Object* object) const {
    return ReferenceSupport::PassesFilter(implementation->filter, *this, object);
}

std::vector<Object*> PtrParameter::GetAllowedObjects() const {
    return ReferenceSupport::GetAllowedObjects(implementation->filter, *this);
}

void PtrParameter::SetFromData(const ParameterData& data) {
    SetValue(data.GetPointer().Get());  // every kind but Pointer gives no object
}

nlohmann::json PtrParameter::SerializeValue() const {
    return ReferenceSupport::ToJson(*this, Value());
}

void PtrParameter::DeserializeValue(const nlohmann::json& value) {
    if (!value.is_string()) {
        SetValue(nullptr);
        return;
    }
    const auto& text = value.get_ref<const std::string&>();
    Object* found = ReferenceSupport::Resolve(*this, text);
    if (found == nullptr) {
        LogWarning("PtrParameter::DeserializeValue: could not resolve '" + text + "', the value is cleared.");
    }
    SetValue(found);
}

bool PtrParameter::ValueReferencesObjects() const {
    return true;
}

ParameterData PtrParameter::BuildData() const {
    return ParameterData(implementation->value);
}

}  // namespace Vantel
