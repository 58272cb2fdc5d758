// DataTypeInfo.h: the record of one kind of data that flows between operators, with its port types and help
// text.
//
//   DataTypeInfo info = ParseDataTypeDoc("Texture", TextureOutput::Type(), TextureInput::Type(), path, text);
//   TypeLibrary::Get()->RegisterDataType(info);   // id "Example.Texture" is taken from the doc's "type"
#pragma once

#include <string>
#include <vector>

namespace Vantel {

class ObjectType;

// DataTypeInfo
//
// A record, copied by value: the type library owns the one it is given at registration and maps both port
// types to it. The first four fields declare the data type; the rest come from its documentation
// (ParseDataTypeDoc).
struct DataTypeInfo {
    std::string id;                          // e.g. "Example.Texture", unique among data types
    std::string name;                        // the display name, e.g. "Texture"
    const ObjectType* inputType = nullptr;   // the DataInput subclass that receives this data
    const ObjectType* outputType = nullptr;  // the DataOutput subclass that produces it
    std::string summary;
    std::vector<std::string> tags;
    std::string text;  // the Markdown help text
    std::string path;  // the doc's path
};

}  // namespace Vantel
