// StringParameter.h: a parameter holding a text.
//
//   StringParameter file{ParameterScope(this), "File", ""};
//   file.SetEditorType(StringParameter::EditorType::FilePath);
//   file = "images/sky.png";        // recorded while a transaction records, then ValueChangedEvent fires
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// StringParameter
//
// A text. Driven by another parameter it takes that data's text: numbers as their ", "-joined form ("1, 2.5,
// 3"), a choice as its label, a reference as the object's name, a matrix or nothing as the empty text. Its
// own data is a String, whose numbers can in turn drive numeric parameters. Stored in the project file as a
// JSON string. Owned like every parameter; main thread only.
class VANTEL_API StringParameter : public Parameter {
public:
    // How a user interface edits the text; it changes nothing else and is not recorded or saved here.
    enum class EditorType {
        SingleLine,  // a one-line field; the default
        MultiLine,   // a text box for prose
        FilePath,    // a path, with a way to browse for a file
        Code,        // a source text: fixed-width, no wrapping
    };

    // Detached, with an empty name and the empty text.
    StringParameter();
    StringParameter(ParameterScope scope, std::string_view name, std::string_view value);
    ~StringParameter() override;

    // "Vantel.StringParameter"
    VANTEL_DECLARE_OBJECT_TYPE(StringParameter);

    const std::string& Value() const;
    void SetValue(std::string_view value);
    StringParameter& operator=(std::string_view value);

    EditorType GetEditorType() const;
    void SetEditorType(EditorType editorType);

    void SetFromData(const ParameterData& data) override;
    nlohmann::json SerializeValue() const override;
    // Throws type error 302 "type must be string, but is <type>" for anything but a JSON string.
    void DeserializeValue(const nlohmann::json& value) override;

private:
    ParameterData BuildData() const override;

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
