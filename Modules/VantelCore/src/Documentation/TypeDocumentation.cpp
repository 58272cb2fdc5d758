#include <Vantel/Documentation/TypeDocumentation.h>

#include <optional>
#include <string>

#include <Vantel/Objects/ObjectType.h>

#include "Documentation/DocChecker.h"
#include "Documentation/FrontMatter.h"

namespace Vantel {

using Documentation::DocChecker;

OperatorInfo ParseOperatorDoc(const ObjectType* type, std::string_view path, std::string_view text) {
    OperatorInfo info;
    info.type = type;
    info.name = Documentation::FileStem(path);
    info.category = Documentation::OperatorCategory(path);
    info.path = path;

    DocChecker doc(path);
    if (doc.CheckTypeGiven(type != nullptr)) {
        doc.CheckFileName(type->GetDisplayName(),
                          "the path must end in the operator's name, e.g. \"Math/Remap.md\".");
    }
    const std::optional<YAML::Node> root = doc.ReadFrontMatter(text, info.text);
    if (!root) {
        return info;
    }
    if (type != nullptr) {
        doc.ReadTypeName(*root, type->GetName(), true);
    }
    info.summary = doc.ReadSummary(*root);
    info.tags = doc.ReadTags(*root);
    doc.ReadMembers(*root, info);
    doc.ReportUnknownKeys(*root, {"type", "summary", "tags", "outputs", "inputs", "parameters"});
    return info;
}

ParameterInfo ParseParameterDoc(const ObjectType* type, std::string_view path, std::string_view text) {
    ParameterInfo info;
    info.type = type;
    info.name = type != nullptr ? type->GetDisplayName() : std::string(Documentation::FileStem(path));
    info.path = path;

    DocChecker doc(path);
    if (doc.CheckTypeGiven(type != nullptr)) {
        doc.CheckFileName(type->GetDisplayName(),
                          "the path must end in the parameter type's name, e.g. \"Vector 3.md\".");
    }
    const std::optional<YAML::Node> root = doc.ReadFrontMatter(text, info.text);
    if (!root) {
        return info;
    }
    if (type != nullptr) {
        doc.ReadTypeName(*root, type->GetName(), true);
    }
    info.summary = doc.ReadSummary(*root);
    info.tags = doc.ReadTags(*root);
    doc.ReportUnknownKeys(*root, {"type", "summary", "tags"});
    return info;
}

DataTypeInfo ParseDataTypeDoc(std::string_view name, const ObjectType* outputType,
                              const ObjectType* inputType, std::string_view path, std::string_view text) {
    DataTypeInfo info;
    info.name = name;
    info.inputType = inputType;
    info.outputType = outputType;
    info.path = path;

    DocChecker doc(path);
    doc.CheckTypeGiven(outputType != nullptr && inputType != nullptr);
    doc.CheckFileName(name, "the path must end in the data type's name, e.g. \"Texture.md\".");
    const std::optional<YAML::Node> root = doc.ReadFrontMatter(text, info.text);
    if (!root) {
        return info;
    }
    // The doc declares the id, so there is nothing to compare its "type" with.
    info.id = doc.ReadTypeName(*root, name, false);
    info.summary = doc.ReadSummary(*root);
    info.tags = doc.ReadTags(*root);
    doc.ReportUnknownKeys(*root, {"type", "summary", "tags"});
    return info;
}

}  // namespace Vantel
