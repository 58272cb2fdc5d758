// The standard plug-in's entry points: registers the Number and Image data types and their operators, each
// with its compiled-in doc, and the file importer that turns a dropped picture into a Load Image operator.
#include <filesystem>
#include <string_view>

#include <Vantel/Documentation/TypeDocumentation.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Plugin.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Support/FileImportRegistry.h>

#include "EmbeddedDocs.h"
#include "ImageData.h"
#include "ImageOperators.h"
#include "MathOperators.h"
#include "NumberData.h"

namespace VantelStandard {
namespace {

void RegisterDataType(std::string_view name, const Vantel::ObjectType* output,
                      const Vantel::ObjectType* input) {
    const std::string path = "Docs/DataTypes/" + std::string(name) + ".md";
    Vantel::TypeLibrary::Get()->RegisterDataType(
        Vantel::ParseDataTypeDoc(name, output, input, path, EmbeddedDocs::Find(path)));
}

// The doc of an operator lies under its category folder, named by the type's display name.
void RegisterOperator(const Vantel::ObjectType* type, std::string_view category) {
    const std::string path = "Docs/Operators/" + std::string(category) + "/" + type->GetDisplayName() + ".md";
    Vantel::TypeLibrary::Get()->RegisterOperator(
        Vantel::ParseOperatorDoc(type, path, EmbeddedDocs::Find(path)));
}

}  // namespace
}  // namespace VantelStandard

VANTEL_PLUGIN_EXPORT void VantelPluginLoad() {
    using namespace VantelStandard;
    RegisterDataType("Number", NumberOutput::Type(), NumberInput::Type());
    RegisterDataType("Image", ImageOutput::Type(), ImageInput::Type());
    for (const Vantel::ObjectType* type :
         {ArithmeticOperator::Type(), OscillatorOperator::Type(), CounterOperator::Type()}) {
        RegisterOperator(type, "Math");
    }
    for (const Vantel::ObjectType* type :
         {LoadImageOperator::Type(), SaveImageOperator::Type(), BlurOperator::Type(), ResizeOperator::Type(),
          InvertOperator::Type()}) {
        RegisterOperator(type, "Image");
    }
    // The registry forgets the importer when the Load Image type leaves the type library with this plug-in.
    Vantel::FileImportRegistry::Get()->RegisterImporter(
        {".png", ".jpg", ".jpeg", ".bmp", ".tga"}, LoadImageOperator::Type(),
        [](Vantel::Operator& op, const std::filesystem::path& file) {
            if (auto* load = dynamic_cast<LoadImageOperator*>(&op)) {
                load->SetFile(file.string());
            }
        });
}
