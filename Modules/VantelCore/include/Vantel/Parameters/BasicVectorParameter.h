// BasicVectorParameter.h: the one class template behind the float and the integer vector parameters.
//
//   Vector3Parameter offset{ParameterScope(this), "Offset", glm::dvec3(0.0, 1.0, 0.0)};
//   Vector2IntParameter size{ParameterScope(this), "Size", glm::ivec2(640, 480)};   // both are instances
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

// BasicVectorParameter<Scalar, N>
//
// A vector of N components of `Scalar` (double or int), N from 2 to 4. Not used by this name: its six
// instances are VectorParameter<N> (Vector2Parameter ...) and VectorIntParameter<N> (Vector2IntParameter
// ...), each with a type of its own. The scalar decides how data, JSON and component writes are read: floats
// as they are; integers rounded or truncated, then saturated at the 32-bit range. Driven by another
// parameter, a single number sets every component and a list sets the leading components, the others keep
// their values. Stored in the project file as a JSON array of N numbers. Owned like every parameter; main
// thread only.
template <typename Scalar, int N>
class VANTEL_API BasicVectorParameter : public Parameter {
    static_assert(N >= 2 && N <= 4, "vector parameters have 2, 3 or 4 components");

public:
    using ValueType = glm::vec<N, Scalar>;

    // Detached, with an empty name and every component 0.
    BasicVectorParameter();
    BasicVectorParameter(ParameterScope scope, std::string_view name, const ValueType& value);
    ~BasicVectorParameter() override;

    // "Vantel.Vector<N>Parameter" for floats, "Vantel.Vector<N>IntParameter" for integers.
    VANTEL_DECLARE_OBJECT_TYPE(BasicVectorParameter);

    const ValueType& Value() const;
    // Every component compares exactly.
    void SetValue(const ValueType& value);
    BasicVectorParameter& operator=(const ValueType& value);

    // No numbers: unchanged. One: every component takes it. More: components 0 to min(count, N) - 1 take them
    // in order, the others stay. Integer vectors take the data's integers (floats truncated toward zero).
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Reads elements 0 to N - 1 of a JSON array as numbers (integer vectors as IntParameter reads a number);
    // components the array lacks become 0. A non-array throws type error 305 "cannot use operator[] with a
    // numeric argument with <type>", a non-number element type error 302 "type must be number, but is
    // <type>" (for integer vectors a boolean too).
    void DeserializeValue(const nlohmann::json& value) override;
    int GetComponentCount() const override;
    double GetComponent(int component) const override;
    // Ignored outside 0 to N - 1. An integer vector rounds `value` to the nearest integer, halves away from
    // zero, saturated at the 32-bit range (NaN gives 0). Records only this component, old and new as floats.
    void SetComponent(int component, double value) override;

private:
    ParameterData BuildData() const override;
    bool BuildsNumericData() const override { return true; }

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

extern template class BasicVectorParameter<double, 2>;
extern template class BasicVectorParameter<double, 3>;
extern template class BasicVectorParameter<double, 4>;
extern template class BasicVectorParameter<int, 2>;
extern template class BasicVectorParameter<int, 3>;
extern template class BasicVectorParameter<int, 4>;

// VectorParameter<N>: N floats (x, y, z, w), type "Vantel.Vector<N>Parameter".
template <int N>
using VectorParameter = BasicVectorParameter<double, N>;
using Vector2Parameter = VectorParameter<2>;
using Vector3Parameter = VectorParameter<3>;
using Vector4Parameter = VectorParameter<4>;

// VectorIntParameter<N>: N signed 32-bit integers, type "Vantel.Vector<N>IntParameter".
template <int N>
using VectorIntParameter = BasicVectorParameter<int, N>;
using Vector2IntParameter = VectorIntParameter<2>;
using Vector3IntParameter = VectorIntParameter<3>;
using Vector4IntParameter = VectorIntParameter<4>;

}  // namespace Vantel
