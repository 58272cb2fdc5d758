// VectorIntParameter.h: parameters holding 2, 3 or 4 32-bit integers (Vector2IntParameter,
// Vector3IntParameter, Vector4IntParameter).
//
//   Vector2IntParameter size{ParameterScope(this), "Size", glm::ivec2(640, 480)};
//   size.SetComponent(0, 799.5);    // 800; recorded as a write of component 0 alone
#pragma once

#include <Vantel/Parameters/BasicVectorParameter.h>

namespace Vantel {

// VectorIntParameter<N>
//
// A vector of N signed 32-bit integers, N from 2 to 4, with the type "Vantel.Vector<N>IntParameter"; see
// BasicVectorParameter for its behaviour (rounding, saturation).
template <int N>
using VectorIntParameter = BasicVectorParameter<int, N>;

using Vector2IntParameter = VectorIntParameter<2>;
using Vector3IntParameter = VectorIntParameter<3>;
using Vector4IntParameter = VectorIntParameter<4>;

}  // namespace Vantel
