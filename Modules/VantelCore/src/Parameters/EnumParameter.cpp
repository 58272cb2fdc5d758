#include <Vantel/Parameters/EnumParameter.h>

#include <algorithm>
#include <utility>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Support/Logging.h>

#include "Parameters/ValueParameterSupport.h"

namespace Vantel {
namespace {

// The position of `text` in `list`, -1 if absent.
std::int64_t IndexIn(const std::vector<std::string>& list, std::string_view text) {
    const auto found = std::find(list.begin(), list.end(), text);
    return found == list.end() ? -1 : static_cast<std::int64_t>(found - list.begin());
}

}  // namespace

class EnumParameter::Implementation {
public:
    std::vector<std::string> values;
    std::vector<std::string> labels;
    std::string value;
    std::int64_t index = -1;
};

EnumParameter::EnumParameter() : EnumParameter(nullptr, "") {}

EnumParameter::EnumParameter(ParameterScope scope, std::string_view name)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {}

EnumParameter::~EnumParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(EnumParameter, Parameter, "Vantel.EnumParameter")

const std::string& EnumParameter::Value() const {
    return implementation->value;
}

void EnumParameter::SetValue(std::string_view text) {
    const Implementation& impl = *implementation;
    std::int64_t index = IndexIn(impl.labels.empty() ? impl.values : impl.labels, text);
    if (index < 0 && !impl.labels.empty()) {
        index = IndexIn(impl.values, text);
    }
    std::string value = index < 0 ? std::string(text) : impl.values[static_cast<std::size_t>(index)];
    if (index < 0 && value != impl.value && !text.empty() && !impl.values.empty()) {
        LogWarning("EnumParameter '" + GetPath().ToString() + "': '" + std::string(text) +
                   "' is not one of the choices.");
    }
    Choose(std::move(value), index);
}

EnumParameter& EnumParameter::operator=(std::string_view text) {
    SetValue(text);
    return *this;
}

const std::vector<std::string>& EnumParameter::GetPossibleValues() const {
    return implementation->values;
}

const std::vector<std::string>& EnumParameter::GetLabels() const {
    return implementation->labels;
}

void EnumParameter::SetPossibleValues(std::vector<std::string> values, std::vector<std::string> labels) {
    if (!labels.empty() && labels.size() != values.size()) {
        LogWarning(
            "EnumParameter::SetPossibleValues: the number of labels does not match the number of values, the "
            "values will be shown instead.");
        labels.clear();
    }
    implementation->values = std::move(values);
    implementation->labels = std::move(labels);
    implementation->index = IndexIn(implementation->values, implementation->value);
    InvalidateData();
}

void EnumParameter::SetIndex(std::int64_t index) {
    const std::vector<std::string>& values = implementation->values;
    if (index < 0 || index >= static_cast<std::int64_t>(values.size())) {
        return;
    }
    Choose(values[static_cast<std::size_t>(index)], index);
}

std::int64_t EnumParameter::GetIndex() const {
    return implementation->index;
}

std::int64_t EnumParameter::GetIndexOr(std::int64_t fallback) const {
    return IsResolved() ? implementation->index : fallback;
}

bool EnumParameter::IsResolved() const {
    return implementation->index >= 0;
}

void EnumParameter::SetFromData(const ParameterData& data) {
    const ParameterData::Type type = data.GetType();
    if (type == ParameterData::Type::String || type == ParameterData::Type::Choice) {
        SetValue(data.GetString());
        return;
    }
    if (data.GetFloats().empty()) {
        return;
    }
    SetIndex(data.GetInt(0));
}

nlohmann::json EnumParameter::SerializeValue() const {
    return implementation->value;
}

void EnumParameter::DeserializeValue(const nlohmann::json& value) {
    SetValue(value.get<std::string>());
}

ParameterData EnumParameter::BuildData() const {
    const Implementation& impl = *implementation;
    if (impl.index < 0) {
        return ParameterData(impl.value, -1);
    }
    const auto at = static_cast<std::size_t>(impl.index);
    return ParameterData(impl.labels.empty() ? impl.values[at] : impl.labels[at], impl.index);
}

void EnumParameter::Choose(std::string value, std::int64_t index) {
    if (value == implementation->value) {
        if (index != implementation->index) {
            implementation->index = index;
            InvalidateData();
        }
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = std::move(value);
    implementation->index = index;
    MarkChanged(std::move(previous));
}

}  // namespace Vantel
