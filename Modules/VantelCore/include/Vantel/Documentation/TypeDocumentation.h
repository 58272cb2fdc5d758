// TypeDocumentation.h: reads the documentation file of a type into its info record, checking it as it goes.
//
//   OperatorInfo info = ParseOperatorDoc(type, "Docs/Operators/Math/Remap.md", text);
//   // a doc problem logs e.g. [Warning] Doc "Docs/Operators/Math/Remap.md": the frontmatter has no
//   "summary". TypeLibrary::Get()->RegisterOperator(std::move(info));
#pragma once

#include <string_view>

#include <Vantel/Export.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/ParameterInfo.h>

namespace Vantel {

class ObjectType;

// A doc is a line "---", a YAML mapping (the front matter), a line "---", then the Markdown help text; only
// the first two such lines count, so the help text may contain more. The front matter names the type
// ("type"), sums it up ("summary"), lists search words ("tags") and, for operators, describes the members
// ("outputs", "inputs", "parameters": maps from member key to an entry with "type" and "description", or for
// a bundle list with "summary" and "kinds", each kind holding a "parameters" map).
//
// None of these functions refuses a doc or throws: every problem is logged as one warning
// `Doc "<path>": <problem>` and the record keeps what could be read. The body is kept even when the front
// matter cannot be read. Without a type, the checks against the type are skipped.

// The record's name is the file name less ".md", its category the folder below "Operators" (or the file's
// folder when the path has no "Operators" folder).
VANTEL_API OperatorInfo ParseOperatorDoc(const ObjectType* type, std::string_view path,
                                         std::string_view text);

// The record's name is the type's display name (the file name without a type). The front matter knows only
// "type", "summary" and "tags".
VANTEL_API ParameterInfo ParseParameterDoc(const ObjectType* type, std::string_view path,
                                           std::string_view text);

// `name` is the data type's display name, which the file name must match; the record's id is what the front
// matter's "type" says. The front matter knows only "type", "summary" and "tags".
VANTEL_API DataTypeInfo ParseDataTypeDoc(std::string_view name, const ObjectType* outputType,
                                         const ObjectType* inputType, std::string_view path,
                                         std::string_view text);

}  // namespace Vantel
