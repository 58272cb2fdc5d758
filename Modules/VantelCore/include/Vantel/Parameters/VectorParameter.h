// VectorParameter.h: parameters holding 2, 3 or 4 64-bit floats (Vector2Parameter, Vector3Parameter,
// Vector4Parameter).
//
//   Vector3Parameter offset{ParameterScope(this), "Offset", glm::dvec3(0.0, 1.0, 0.0)};
//   offset.SetComponent(2, 4.0);    // recorded as a write of component 2 alone
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

// VectorParameter<N>
//
// A vector of N floats (x, y, z, w), N from 2 to 4; use it through the names Vector2Parameter,
// Vector3Parameter and Vector4Parameter, which are its only instances and have a type each
// ("Vantel.Vector3Parameter"). Driven by another parameter, a single number sets every component and a list
// sets the leading components, the others keep their values. Stored in the project file as a JSON array of N
// numbers. Owned like every parameter; main thread only.
template <int N>
class VANTEL_API VectorParameter : public Parameter {
    static_assert(N >= 2 && N <= 4, "vector parameters have 2, 3 or 4 components");

public:
    using ValueType = glm::vec<N, double>;

    // Detached, with an empty name and every component 0.0.
    VectorParameter();
    VectorParameter(ParameterScope scope, std::string_view name, const ValueType& value);
    ~VectorParameter() override;

    // "Vantel.Vector2Parameter", "Vantel.Vector3Parameter" or "Vantel.Vector4Parameter".
    static const ObjectType* Type();
    const ObjectType* GetType() const override;

    const ValueType& Value() const;
    // Every component compares exactly.
    void SetValue(const ValueType& value);
    VectorParameter& operator=(const ValueType& value);

    // No floats: unchanged. One float: every component takes it. More: components 0 to min(count, N) - 1
    // take them in order, the others stay.
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Reads elements 0 to N - 1 of a JSON array as numbers; components the array lacks become 0. A non-array
    // throws type error 305 "cannot use operator[] with a numeric argument with <type>", a non-number
    // element type error 302 "type must be number, but is <type>".
    void DeserializeValue(const nlohmann::json& value) override;
    int GetComponentCount() const override;
    // Ignored outside 0 to N - 1. Records only this component.
    void SetComponent(int component, double value) override;

private:
    ParameterData BuildData() const override;

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

extern template class VectorParameter<2>;
extern template class VectorParameter<3>;
extern template class VectorParameter<4>;

using Vector2Parameter = VectorParameter<2>;
using Vector3Parameter = VectorParameter<3>;
using Vector4Parameter = VectorParameter<4>;

}  // namespace Vantel
