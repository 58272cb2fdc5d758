// VectorParameter.h: parameters holding 2, 3 or 4 64-bit floats (Vector2Parameter, Vector3Parameter,
// Vector4Parameter).
//
//   Vector3Parameter offset{ParameterScope(this), "Offset", glm::dvec3(0.0, 1.0, 0.0)};
//   offset.SetComponent(2, 4.0);    // recorded as a write of component 2 alone
#pragma once

// The names are aliases of BasicVectorParameter's instances, declared beside it.
#include <Vantel/Parameters/BasicVectorParameter.h>
