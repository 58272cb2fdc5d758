// FloatParameter.h: a parameter holding a 64-bit float.
//
//   FloatParameter radius{ParameterScope(this), "Radius", 2.0};
//   radius = 3.5;                   // recorded while a transaction records, then ValueChangedEvent fires
//   double r = radius.Value();
#pragma once

#include <memory>
#include <string_view>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// FloatParameter
//
// A real number. Driven by another parameter it takes the first float of that data. Stored in the project
// file as a JSON number. Values compare exactly, so setting NaN over NaN counts as a change. Owned like every
// parameter; main thread only.
class VANTEL_API FloatParameter : public Parameter {
public:
    // Detached, with an empty name and the value 0.0.
    FloatParameter();
    FloatParameter(ParameterScope scope, std::string_view name, double value);
    ~FloatParameter() override;

    // "Vantel.FloatParameter"
    VANTEL_DECLARE_OBJECT_TYPE(FloatParameter);

    const double& Value() const;
    void SetValue(double value);
    FloatParameter& operator=(double value);

    // The first float; 0.0 when the data holds no number.
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Any JSON number. Anything else, booleans included, throws type error 302 "type must be number, but is
    // <type>".
    void DeserializeValue(const nlohmann::json& value) override;
    int GetComponentCount() const override;
    double GetComponent(int component) const override;
    // Component 0 only, the value as it is.
    void SetComponent(int component, double value) override;

private:
    ParameterData BuildData() const override;
    bool BuildsNumericData() const override { return true; }

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
