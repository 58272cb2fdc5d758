// Transform3DParameter.h: a parameter holding a 4 x 4 transform of 32-bit floats.
//
//   Transform3DParameter placement{ParameterScope(this), "Placement", glm::mat4(1.0f)};
//   placement = glm::translate(glm::mat4(1.0f), glm::vec3(0.0f, 2.0f, 0.0f));
//   float y = placement.Value()[3][1];    // column 3, row 1
#pragma once

#include <memory>
#include <string_view>

#include <glm/mat4x4.hpp>
#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// Transform3DParameter
//
// A 4 x 4 matrix stored column after column, as the math library does. Its data is a 4 x 4 Matrix, so it
// counts as one component and is not numeric; it is written whole. Stored in the project file as a JSON array
// of the four columns, each an array of four numbers. Owned like every parameter; main thread only.
class VANTEL_API Transform3DParameter : public Parameter {
public:
    // Detached, with an empty name and the identity.
    Transform3DParameter();
    Transform3DParameter(ParameterScope scope, std::string_view name, const glm::mat4& value);
    ~Transform3DParameter() override;

    // "Vantel.Transform3DParameter"
    VANTEL_DECLARE_OBJECT_TYPE(Transform3DParameter);

    const glm::mat4& Value() const;
    // Every entry compares exactly.
    void SetValue(const glm::mat4& value);
    Transform3DParameter& operator=(const glm::mat4& value);

    // Entry (column c, row r) is data.GetFloat(c, r); entries the data does not hold are 0. A list of floats
    // (one column) thus fills the first column only.
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Entries start at 0; up to 4 columns of up to 4 numbers are read. A non-array, as the whole or as a
    // column, throws type error 305 "cannot use operator[] with a numeric argument with <type>", a
    // non-number entry type error 302 "type must be number, but is <type>".
    void DeserializeValue(const nlohmann::json& value) override;

private:
    ParameterData BuildData() const override;

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
