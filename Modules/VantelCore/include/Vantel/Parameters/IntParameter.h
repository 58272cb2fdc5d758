// IntParameter.h: a parameter holding a signed 64-bit integer.
//
//   IntParameter count{ParameterScope(this), "Count", 3};
//   count.SetEditorType(IntParameter::EditorType::Slider);
//   count = 5;                      // recorded while a transaction records, then ValueChangedEvent fires
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// IntParameter
//
// A whole number. Driven by another parameter it takes the first integer of that data, floats truncated
// toward zero; driven per component (SetComponent) it rounds instead. Stored in the project file as a JSON
// integer. Owned like every parameter; main thread only.
class VANTEL_API IntParameter : public Parameter {
public:
    // How a user interface edits the value; it changes nothing else and is not recorded or saved here.
    enum class EditorType {
        Number,  // a number field; the default
        Slider,  // a slider, for values within a range the interface settles
        Seed,    // a random seed: the interface may offer to draw a new one
    };

    // Detached, with an empty name and the value 0.
    IntParameter();
    IntParameter(ParameterScope scope, std::string_view name, std::int64_t value);
    ~IntParameter() override;

    // "Vantel.IntParameter"
    VANTEL_DECLARE_OBJECT_TYPE(IntParameter);

    const std::int64_t& Value() const;
    void SetValue(std::int64_t value);
    IntParameter& operator=(std::int64_t value);

    EditorType GetEditorType() const;
    void SetEditorType(EditorType editorType);

    // The first integer, floats truncated toward zero (2.9 gives 2); 0 when the data holds no number.
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Integers as they are (unsigned ones beyond the range saturate), floats truncated toward zero. Anything
    // else, booleans included, throws type error 302 "type must be number, but is <type>".
    void DeserializeValue(const nlohmann::json& value) override;
    int GetComponentCount() const override;
    double GetComponent(int component) const override;
    // Component 0 only: `value` rounded to the nearest integer, halves away from zero (2.5 gives 3, -2.5
    // gives -3), saturating at the 64-bit range; NaN gives 0.
    void SetComponent(int component, double value) override;

private:
    ParameterData BuildData() const override;
    bool BuildsNumericData() const override { return true; }

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
