// VectorIntParameter.h: parameters holding 2, 3 or 4 32-bit integers (Vector2IntParameter,
// Vector3IntParameter, Vector4IntParameter).
//
//   Vector2IntParameter size{ParameterScope(this), "Size", glm::ivec2(640, 480)};
//   size.SetComponent(0, 799.5);    // 800; recorded as a write of component 0 alone
#pragma once

// The names are aliases of BasicVectorParameter's instances, declared beside it.
#include <Vantel/Parameters/BasicVectorParameter.h>
