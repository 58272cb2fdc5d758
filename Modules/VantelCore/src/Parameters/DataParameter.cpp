#include <Vantel/Parameters/DataParameter.h>

#include <string>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"

namespace Vantel {

class DataParameter::Implementation {
public:
    nlohmann::json value;
};

DataParameter::DataParameter() : DataParameter(nullptr, "", nullptr) {}

DataParameter::DataParameter(ParameterScope scope, std::string_view name, nlohmann::json value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = std::move(value);
}

DataParameter::~DataParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(DataParameter, Parameter, "Vantel.DataParameter")

const nlohmann::json& DataParameter::Value() const {
    return implementation->value;
}

void DataParameter::SetValue(nlohmann::json value) {
    const nlohmann::json& current = implementation->value;
    // The library never calls a discarded value equal, not even to itself.
    if (value == current || (value.is_discarded() && current.is_discarded())) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = std::move(value);
    MarkChanged(std::move(previous));
}

DataParameter& DataParameter::operator=(nlohmann::json value) {
    SetValue(std::move(value));
    return *this;
}

void DataParameter::SetFromData(const ParameterData& data) {
    SetValue(nlohmann::json::parse(data.GetString(), nullptr, false));
}

nlohmann::json DataParameter::SerializeValue() const {
    return implementation->value;
}

void DataParameter::DeserializeValue(const nlohmann::json& value) {
    SetValue(value);
}

ParameterData DataParameter::BuildData() const {
    // Replacing invalid UTF-8 rather than throwing: describing a value must not fail.
    const std::string text =
        implementation->value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return ParameterData(std::string_view(text));
}

}  // namespace Vantel
