// Color.h: a colour of four 32-bit floats, red, green, blue and alpha.
//
//   Color orange{1.0f, 0.5f, 0.0f};          // alpha defaults to 1: opaque
//   if (tint.Value() == orange) { ... }
#pragma once

namespace Vantel {

// Color
//
// A value: copy it and compare it (exactly, component by component). Components are not clamped: 0 to 1 is
// the usual range, and colours brighter than white go beyond 1. The default is opaque black.
struct Color {
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;
    float a = 1.0f;

    bool operator==(const Color& other) const = default;
};

}  // namespace Vantel
