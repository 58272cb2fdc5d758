// VectorIntParameter.h: parameters holding 2, 3 or 4 32-bit integers (Vector2IntParameter,
// Vector3IntParameter, Vector4IntParameter).
//
//   Vector2IntParameter size{ParameterScope(this), "Size", glm::ivec2(640, 480)};
//   size.SetComponent(0, 799.5);    // 800; recorded as a write of component 0 alone
#pragma once

#include <memory>
#include <string_view>

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>
#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// VectorIntParameter<N>
//
// A vector of N signed 32-bit integers, N from 2 to 4; use it through the names Vector2IntParameter,
// Vector3IntParameter and Vector4IntParameter, which are its only instances and have a type each
// ("Vantel.Vector3IntParameter"). Driven by another parameter it takes that data's integers (floats
// truncated toward zero) as VectorParameter takes floats: one number sets every component, a list the leading
// ones. Numbers beyond the 32-bit range saturate. Stored in the project file as a JSON array of N integers.
// Owned like every parameter; main thread only.
template <int N>
class VANTEL_API VectorIntParameter : public Parameter {
    static_assert(N >= 2 && N <= 4, "vector parameters have 2, 3 or 4 components");

public:
    using ValueType = glm::vec<N, int>;

    // Detached, with an empty name and every component 0.
    VectorIntParameter();
    VectorIntParameter(ParameterScope scope, std::string_view name, const ValueType& value);
    ~VectorIntParameter() override;

    // "Vantel.Vector2IntParameter", "Vantel.Vector3IntParameter" or "Vantel.Vector4IntParameter".
    static const ObjectType* Type();
    const ObjectType* GetType() const override;

    const ValueType& Value() const;
    void SetValue(const ValueType& value);
    VectorIntParameter& operator=(const ValueType& value);

    // No numbers: unchanged. One: every component takes it. More: components 0 to min(count, N) - 1 take them
    // in order, the others stay.
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Reads elements 0 to N - 1 of a JSON array as IntParameter reads a number; components the array lacks
    // become 0. A non-array throws type error 305 "cannot use operator[] with a numeric argument with
    // <type>", a non-number element (a boolean too) type error 302 "type must be number, but is <type>".
    void DeserializeValue(const nlohmann::json& value) override;
    int GetComponentCount() const override;
    // Ignored outside 0 to N - 1. `value` is rounded to the nearest integer, halves away from zero, and
    // saturated at the 32-bit range (NaN gives 0). Records only this component, old and new as floats.
    void SetComponent(int component, double value) override;

private:
    ParameterData BuildData() const override;

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

extern template class VectorIntParameter<2>;
extern template class VectorIntParameter<3>;
extern template class VectorIntParameter<4>;

using Vector2IntParameter = VectorIntParameter<2>;
using Vector3IntParameter = VectorIntParameter<3>;
using Vector4IntParameter = VectorIntParameter<4>;

}  // namespace Vantel
