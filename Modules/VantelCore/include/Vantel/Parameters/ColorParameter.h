// ColorParameter.h: a parameter holding a Color.
//
//   ColorParameter tint{ParameterScope(this), "Tint", Color{1.0f, 0.5f, 0.0f}};
//   tint.SetAlphaEnabled(false);    // the user interface hides alpha
//   tint.SetComponent(3, 0.5);      // alpha; recorded as a write of component 3 alone
#pragma once

#include <memory>
#include <string_view>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Color.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// ColorParameter
//
// A colour with the components r, g, b, a (0 to 3). Driven by another parameter it takes floats as a
// four-component vector does: a single number sets all four, alpha included, a list the leading components.
// Stored in the project file as a JSON object {"r", "g", "b", "a"}. The alpha-enabled switch only tells a
// user interface whether to offer alpha; conversion and storage ignore it. Owned like every parameter; main
// thread only.
class VANTEL_API ColorParameter : public Parameter {
public:
    // Detached, with an empty name and opaque black.
    ColorParameter();
    ColorParameter(ParameterScope scope, std::string_view name, const Color& value);
    ~ColorParameter() override;

    // "Vantel.ColorParameter"
    VANTEL_DECLARE_OBJECT_TYPE(ColorParameter);

    const Color& Value() const;
    void SetValue(const Color& value);
    ColorParameter& operator=(const Color& value);

    // True unless switched off. Not recorded, not saved here.
    bool IsAlphaEnabled() const;
    void SetAlphaEnabled(bool enabled);

    // No floats: unchanged. One float: r, g, b and a take it. More: the leading components take them in
    // order, the others stay. Floats beyond the 32-bit range become infinities.
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // From a JSON object: "r", "g", "b" (0 when missing) and "a" (1 when missing). A member that is not a
    // number throws type error 302 "type must be number, but is <type>". Anything but an object gives opaque
    // black.
    void DeserializeValue(const nlohmann::json& value) override;
    int GetComponentCount() const override;
    double GetComponent(int component) const override;
    // Ignored outside 0 to 3. Records only this component.
    void SetComponent(int component, double value) override;

private:
    ParameterData BuildData() const override;
    bool BuildsNumericData() const override { return true; }

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
