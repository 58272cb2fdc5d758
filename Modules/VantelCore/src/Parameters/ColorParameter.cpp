#include <Vantel/Parameters/ColorParameter.h>

#include <vector>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"
#include "Support/SameValue.h"

namespace Vantel {
namespace {

constexpr float Color::*kComponents[] = {&Color::r, &Color::g, &Color::b, &Color::a};
constexpr int kComponentCount = 4;

}  // namespace

class ColorParameter::Implementation {
public:
    Color value;
    bool alphaEnabled = true;
};

ColorParameter::ColorParameter() : ColorParameter(nullptr, "", Color{}) {}

ColorParameter::ColorParameter(ParameterScope scope, std::string_view name, const Color& value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

ColorParameter::~ColorParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(ColorParameter, Parameter, "Vantel.ColorParameter")

const Color& ColorParameter::Value() const {
    return implementation->value;
}

void ColorParameter::SetValue(const Color& value) {
    if (IsSameValue(value, implementation->value)) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

ColorParameter& ColorParameter::operator=(const Color& value) {
    SetValue(value);
    return *this;
}

bool ColorParameter::IsAlphaEnabled() const {
    return implementation->alphaEnabled;
}

void ColorParameter::SetAlphaEnabled(bool enabled) {
    implementation->alphaEnabled = enabled;
}

void ColorParameter::SetFromData(const ParameterData& data) {
    const std::vector<double>& floats = data.GetFloats();
    if (floats.empty()) {
        return;
    }
    using ValueParameterSupport::NarrowToFloat;
    Color value = implementation->value;
    if (floats.size() == 1) {
        const float all = NarrowToFloat(floats[0]);
        value = Color{all, all, all, all};
    } else {
        for (std::size_t i = 0; i < std::min<std::size_t>(floats.size(), kComponentCount); ++i) {
            value.*kComponents[i] = NarrowToFloat(floats[i]);
        }
    }
    SetValue(value);
}

nlohmann::json ColorParameter::SerializeValue() const {
    using ValueParameterSupport::FloatToJson;
    const Color& value = implementation->value;
    return {{"r", FloatToJson(value.r)},
            {"g", FloatToJson(value.g)},
            {"b", FloatToJson(value.b)},
            {"a", FloatToJson(value.a)}};
}

void ColorParameter::DeserializeValue(const nlohmann::json& value) {
    if (!value.is_object()) {
        SetValue(Color{});
        return;
    }
    using ValueParameterSupport::NarrowToFloat;
    SetValue(Color{NarrowToFloat(value.value("r", 0.0)), NarrowToFloat(value.value("g", 0.0)),
                   NarrowToFloat(value.value("b", 0.0)), NarrowToFloat(value.value("a", 1.0))});
}

int ColorParameter::GetComponentCount() const {
    return kComponentCount;
}

double ColorParameter::GetComponent(int component) const {
    if (component < 0 || component >= kComponentCount) {
        return 0.0;
    }
    return implementation->value.*kComponents[component];
}

void ColorParameter::SetComponent(int component, double value) {
    if (component < 0 || component >= kComponentCount) {
        return;
    }
    const float narrowed = ValueParameterSupport::NarrowToFloat(value);
    float& stored = implementation->value.*kComponents[component];
    if (IsSameValue(stored, narrowed)) {
        return;
    }
    const float previous = stored;
    stored = narrowed;
    MarkComponentChanged(component, previous, narrowed);
}

ParameterData ColorParameter::BuildData() const {
    const Color& value = implementation->value;
    return ParameterData(std::vector<float>{value.r, value.g, value.b, value.a});
}

}  // namespace Vantel
