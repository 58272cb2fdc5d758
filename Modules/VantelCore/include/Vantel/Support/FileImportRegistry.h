// FileImportRegistry.h: which operator type turns a dropped file into an operator.
//
//   FileImportRegistry::Get()->RegisterImporter({".png", ".jpg"}, LoadImage::Type(),
//       [](Operator& op, const std::filesystem::path& file) { static_cast<LoadImage&>(op).file =
//       file.string(); });
//   if (const auto* importer = FileImportRegistry::Get()->FindImporter("photo.PNG")) { ... }
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <Vantel/Export.h>

namespace Vantel {

class ObjectType;
class Operator;

// FileImportRegistry
//
// Maps lower-case file extensions (with their dot, ".png") to importers: an operator type and a function that
// sets a new operator of that type up from the file. Plug-ins register importers for their operator types; an
// importer is forgotten as soon as its type leaves the type library. The host creates the operator and
// decides where it goes. Main thread only (only the singleton's construction is thread-safe).
class VANTEL_API FileImportRegistry {
public:
    struct Importer {
        std::vector<std::string> extensions;
        const ObjectType* type = nullptr;
        std::function<void(Operator&, const std::filesystem::path&)> import;
    };

    static FileImportRegistry* Get();

    FileImportRegistry(const FileImportRegistry&) = delete;
    FileImportRegistry& operator=(const FileImportRegistry&) = delete;

    // Warns "Failed to register file importer: no operator type or no extensions given." for a null type or
    // no extensions. A later importer for an extension takes it over, with the warning "File importer for
    // extension \"<ext>\" is being overwritten by a later registration."
    void RegisterImporter(std::vector<std::string> extensions, const ObjectType* type,
                          std::function<void(Operator&, const std::filesystem::path&)> import);
    // The importer for the file's extension, compared without regard to case; null when there is none.
    const Importer* FindImporter(const std::filesystem::path& file) const;

private:
    FileImportRegistry();
    ~FileImportRegistry();
    friend struct std::default_delete<FileImportRegistry>;

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
