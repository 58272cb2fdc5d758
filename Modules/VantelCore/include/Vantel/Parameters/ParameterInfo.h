// ParameterInfo.h: the declared description of a parameter type: its display name and help text.
//
//   ParameterInfo info = ParseParameterDoc(IntParameter::Type(), "Docs/ParameterTypes/Int.md", text);
//   std::string label = info.name + " Parameter";   // info.name is "Int"
#pragma once

#include <string>
#include <vector>

namespace Vantel {

class ObjectType;

// ParameterInfo
//
// A record, copied by value: the type library owns the one it is given at registration and looks parameter
// types up by `name`. Filled from the type's documentation (ParseParameterDoc); what the doc lacks stays
// empty.
struct ParameterInfo {
    const ObjectType* type = nullptr;
    std::string name;  // the type's display name, e.g. "Vector 3"
    std::string summary;
    std::vector<std::string> tags;
    std::string text;  // the Markdown help text
    std::string path;  // the doc's path, e.g. "Docs/ParameterTypes/Vector 3.md"
};

}  // namespace Vantel
