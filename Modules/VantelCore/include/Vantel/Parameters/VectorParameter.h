// VectorParameter.h: parameters holding 2, 3 or 4 64-bit floats (Vector2Parameter, Vector3Parameter,
// Vector4Parameter).
//
//   Vector3Parameter offset{ParameterScope(this), "Offset", glm::dvec3(0.0, 1.0, 0.0)};
//   offset.SetComponent(2, 4.0);    // recorded as a write of component 2 alone
#pragma once

#include <Vantel/Parameters/BasicVectorParameter.h>

namespace Vantel {

// VectorParameter<N>
//
// A vector of N floats (x, y, z, w), N from 2 to 4, with the type "Vantel.Vector<N>Parameter"; see
// BasicVectorParameter for its behaviour.
template <int N>
using VectorParameter = BasicVectorParameter<double, N>;

using Vector2Parameter = VectorParameter<2>;
using Vector3Parameter = VectorParameter<3>;
using Vector4Parameter = VectorParameter<4>;

}  // namespace Vantel
