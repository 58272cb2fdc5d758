// DataParameter.h: a parameter holding any JSON value.
//
//   DataParameter settings{ParameterScope(this), "Settings", nlohmann::json::object()};
//   settings = nlohmann::json{{"quality", "high"}};
//   settings.GetData().GetString();   // "{\"quality\":\"high\"}"
#pragma once

#include <memory>
#include <string_view>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// DataParameter
//
// Structured data an operator keeps for itself, as a JSON value. Its data is the value written as compact
// JSON text; driven by another parameter it parses that data's text, and a text that is not JSON gives the
// JSON library's discarded value, which is kept as it is (and written as "<discarded>"). Stored in the
// project file as the value itself. Owned like every parameter; main thread only.
class VANTEL_API DataParameter : public Parameter {
public:
    // Detached, with an empty name and JSON null.
    DataParameter();
    DataParameter(ParameterScope scope, std::string_view name, nlohmann::json value);
    ~DataParameter() override;

    // "Vantel.DataParameter"
    VANTEL_DECLARE_OBJECT_TYPE(DataParameter);

    const nlohmann::json& Value() const;
    // Equal as the JSON library compares (1 equals 1.0); two discarded values count as equal too.
    void SetValue(nlohmann::json value);
    DataParameter& operator=(nlohmann::json value);

    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Any value, taken as it is.
    void DeserializeValue(const nlohmann::json& value) override;

private:
    ParameterData BuildData() const override;

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
