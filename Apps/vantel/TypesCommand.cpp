// vantel types and vantel doc: what the type library knows, from the core and the loaded plug-ins.
#include <algorithm>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/ParameterInfo.h>

#include "Commands.h"
#include "Output.h"
#include "Session.h"

namespace VantelHost {
namespace {

struct TypeLine {
    std::string typeName;
    std::string displayName;
    std::string summary;
};

void PrintGroup(const char* title, std::vector<TypeLine> lines) {
    std::ranges::sort(lines, {}, &TypeLine::typeName);
    std::size_t width = 0;
    for (const TypeLine& line : lines) {
        width = std::max(width, line.typeName.size());
    }
    Out() << title << " (" << lines.size() << ")\n";
    for (const TypeLine& line : lines) {
        Out() << "  " << line.typeName << std::string(width - line.typeName.size() + 2, ' ')
              << line.displayName;
        if (!line.summary.empty()) {
            Out() << ": " << line.summary;
        }
        Out() << '\n';
    }
}

// The help text of the operator or parameter type of that name, or of the data type of that id.
std::optional<std::string> FindDocText(const std::string& name) {
    const Vantel::TypeLibrary& library = *Vantel::TypeLibrary::Get();
    if (const Vantel::ObjectType* type = library.GetType(name)) {
        if (const Vantel::OperatorInfo* info = library.FindOperatorInfo(type)) {
            return info->text;
        }
        if (const Vantel::ParameterInfo* info = library.FindParameterInfo(type)) {
            return info->text;
        }
    }
    if (const Vantel::DataTypeInfo* info = library.FindDataTypeById(name)) {
        return info->text;
    }
    return std::nullopt;
}

}  // namespace

int TypesCommand(const Arguments& arguments) {
    const Session session(arguments.plugins);
    const Vantel::TypeLibrary& library = *Vantel::TypeLibrary::Get();
    std::vector<TypeLine> operators;
    for (const Vantel::OperatorInfo* info : library.GetOperatorInfos()) {
        std::string display = info->name;
        if (!info->category.empty()) {
            display += " [" + info->category + "]";
        }
        operators.push_back({info->type->GetName(), display, info->summary});
    }
    std::vector<TypeLine> parameters;
    for (const Vantel::ParameterInfo* info : library.GetParameterInfos()) {
        parameters.push_back({info->type->GetName(), info->name, info->summary});
    }
    std::vector<TypeLine> dataTypes;
    for (const Vantel::DataTypeInfo* info : library.GetDataTypes()) {
        dataTypes.push_back({info->id, info->name, info->summary});
    }
    PrintGroup("Operators", std::move(operators));
    Out() << '\n';
    PrintGroup("Parameter types", std::move(parameters));
    Out() << '\n';
    PrintGroup("Data types", std::move(dataTypes));
    return kExitOk;
}

int DocCommand(const Arguments& arguments) {
    const Session session(arguments.plugins);
    const std::string& name = arguments.operands[0];
    const std::optional<std::string> text = FindDocText(name);
    if (!text) {
        Fail(kExitFailed, "unknown type '" + name + "'; 'vantel types' lists them");
    }
    Out() << *text;
    if (!text->ends_with('\n')) {
        Out() << '\n';
    }
    return kExitOk;
}

}  // namespace VantelHost
