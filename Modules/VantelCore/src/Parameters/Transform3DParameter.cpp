#include <Vantel/Parameters/Transform3DParameter.h>

#include <cstdint>
#include <vector>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"
#include "Support/SameValue.h"

namespace Vantel {
namespace {

constexpr int kSize = 4;

}  // namespace

class Transform3DParameter::Implementation {
public:
    glm::mat4 value{1.0f};
};

Transform3DParameter::Transform3DParameter() : Transform3DParameter(nullptr, "", glm::mat4(1.0f)) {}

Transform3DParameter::Transform3DParameter(ParameterScope scope, std::string_view name,
                                           const glm::mat4& value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

Transform3DParameter::~Transform3DParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(Transform3DParameter, Parameter, "Vantel.Transform3DParameter")

const glm::mat4& Transform3DParameter::Value() const {
    return implementation->value;
}

void Transform3DParameter::SetValue(const glm::mat4& value) {
    if (IsSameValue(value, implementation->value)) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

Transform3DParameter& Transform3DParameter::operator=(const glm::mat4& value) {
    SetValue(value);
    return *this;
}

void Transform3DParameter::SetFromData(const ParameterData& data) {
    glm::mat4 value(0.0f);
    for (int c = 0; c < kSize; ++c) {
        for (int r = 0; r < kSize; ++r) {
            const double entry = data.GetFloat(static_cast<std::uint64_t>(c), static_cast<std::uint64_t>(r));
            value[c][r] = ValueParameterSupport::NarrowToFloat(entry);
        }
    }
    SetValue(value);
}

nlohmann::json Transform3DParameter::SerializeValue() const {
    nlohmann::json columns = nlohmann::json::array();
    for (int c = 0; c < kSize; ++c) {
        nlohmann::json column = nlohmann::json::array();
        for (int r = 0; r < kSize; ++r) {
            column.push_back(ValueParameterSupport::FloatToJson(implementation->value[c][r]));
        }
        columns.push_back(std::move(column));
    }
    return columns;
}

void Transform3DParameter::DeserializeValue(const nlohmann::json& value) {
    using ValueParameterSupport::ReadArrayElements;
    glm::mat4 read(0.0f);
    ReadArrayElements(value, kSize, [&](std::size_t c, const nlohmann::json& column) {
        ReadArrayElements(column, kSize, [&](std::size_t r, const nlohmann::json& entry) {
            read[static_cast<int>(c)][static_cast<int>(r)] =
                ValueParameterSupport::NarrowToFloat(entry.get<double>());
        });
    });
    SetValue(read);
}

ParameterData Transform3DParameter::BuildData() const {
    std::vector<float> entries;
    entries.reserve(kSize * kSize);
    for (int c = 0; c < kSize; ++c) {
        for (int r = 0; r < kSize; ++r) {
            entries.push_back(implementation->value[c][r]);
        }
    }
    return ParameterData(entries, kSize, kSize);
}

}  // namespace Vantel
