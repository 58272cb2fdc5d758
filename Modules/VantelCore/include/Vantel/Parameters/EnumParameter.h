// EnumParameter.h: a parameter holding one choice from a list of possible values.
//
//   EnumParameter mode{ParameterScope(this), "Mode"};
//   mode.SetPossibleValues({"add", "multiply"}, {"Add", "Multiply"});
//   mode = "Multiply";              // by label or by value; Value() is "multiply", GetIndex() 1
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// EnumParameter
//
// Keeps the possible values, optional labels (one per value, shown instead of the values), the chosen value
// and its index among the possible values. A chosen value that is not among them is kept as text with the
// index -1 (unresolved), so that a project naming an option this build does not offer keeps it. Its data is
// a Choice of the chosen label (or value) and the index. Stored in the project file as a JSON string, the
// chosen value. Owned like every parameter; main thread only.
class VANTEL_API EnumParameter : public Parameter {
public:
    // Detached, with an empty name, no possible values and the empty, unresolved choice.
    EnumParameter();
    // No possible values yet and the empty, unresolved choice.
    EnumParameter(ParameterScope scope, std::string_view name);
    ~EnumParameter() override;

    // "Vantel.EnumParameter"
    VANTEL_DECLARE_OBJECT_TYPE(EnumParameter);

    // The chosen value (never the label).
    const std::string& Value() const;
    // Chooses by label first when there are labels, else (or when no label matches) by value; the first
    // match in list order wins. Without a match the text itself is kept, unresolved, and when it is not empty
    // and there are possible values the warning "EnumParameter '<path>': '<text>' is not one of the
    // choices." is logged. Choosing the current value again only brings the index up to date.
    void SetValue(std::string_view text);
    EnumParameter& operator=(std::string_view text);

    const std::vector<std::string>& GetPossibleValues() const;
    // Empty, or exactly as long as the possible values.
    const std::vector<std::string>& GetLabels() const;
    // Labels whose number differs from the values' are dropped with the warning "EnumParameter::
    // SetPossibleValues: the number of labels does not match the number of values, the values will be shown
    // instead.". The chosen value stays and its index is looked up again among the new values; this is
    // neither recorded nor notified.
    void SetPossibleValues(std::vector<std::string> values, std::vector<std::string> labels = {});
    // Chooses the possible value at `index`; a negative index or one past the end changes nothing.
    void SetIndex(std::int64_t index);
    // -1 when unresolved.
    std::int64_t GetIndex() const;
    std::int64_t GetIndexOr(std::int64_t fallback) const;
    bool IsResolved() const;

    // A String or Choice chooses by its text, as SetValue. Other data chooses by its first integer as
    // SetIndex does; data without numbers changes nothing.
    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Chooses as SetValue. Throws type error 302 "type must be string, but is <type>" for anything but a JSON
    // string.
    void DeserializeValue(const nlohmann::json& value) override;

private:
    ParameterData BuildData() const override;
    void Choose(std::string value, std::int64_t index);

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
