// BoolParameter.h: a parameter holding a truth value.
//
//   BoolParameter invert{ParameterScope(this), "Invert", false};
//   invert = true;                  // recorded while a transaction records, then ValueChangedEvent fires
//   if (invert.Value()) { ... }
#pragma once

#include <memory>
#include <string_view>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// BoolParameter
//
// A switch. Its data is the integer 0 or 1, so it can drive any numeric parameter; driven by another
// parameter it is on when the first integer of that data is not 0. Stored in the project file as a JSON
// boolean. Owned like every parameter (by its operator when declared as a member, else by its group); main
// thread only.
class VANTEL_API BoolParameter : public Parameter {
public:
    // Detached, with an empty name and the value false.
    BoolParameter();
    BoolParameter(ParameterScope scope, std::string_view name, bool value);
    ~BoolParameter() override;

    // "Vantel.BoolParameter"
    VANTEL_DECLARE_OBJECT_TYPE(BoolParameter);

    const bool& Value() const;
    void SetValue(bool value);
    BoolParameter& operator=(bool value);

    // On when the first integer is not 0: the float 0.7 truncates to 0 and switches it off, and so does data
    // without any number.
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Throws type error 302 "type must be boolean, but is <type>" for anything but a JSON boolean.
    void DeserializeValue(const nlohmann::json& value) override;
    int GetComponentCount() const override;
    double GetComponent(int component) const override;
    // Component 0 only: on when `value` is not 0.0, so 0.7 switches it on.
    void SetComponent(int component, double value) override;

private:
    ParameterData BuildData() const override;
    bool BuildsNumericData() const override { return true; }

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
