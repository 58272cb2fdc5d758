#include <Vantel/Support/FileImportRegistry.h>

#include <algorithm>
#include <cctype>

#include <absl/container/flat_hash_map.h>

#include <Vantel/Objects/EventSubscription.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Support/Logging.h>

namespace Vantel {
namespace {

std::string ToLower(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

}  // namespace

class FileImportRegistry::Implementation {
public:
    std::vector<std::unique_ptr<Importer>> importers;
    absl::flat_hash_map<std::string, const Importer*> byExtension;
    EventSubscription typeRemoved;

    void Forget(const ObjectType* type) {
        for (const std::unique_ptr<Importer>& importer : importers) {
            if (importer->type != type) {
                continue;
            }
            for (const std::string& extension : importer->extensions) {
                if (auto found = byExtension.find(extension);
                    found != byExtension.end() && found->second == importer.get()) {
                    byExtension.erase(found);
                }
            }
        }
        std::erase_if(importers,
                      [type](const std::unique_ptr<Importer>& importer) { return importer->type == type; });
    }
};

FileImportRegistry::FileImportRegistry() : implementation(std::make_unique<Implementation>()) {
    implementation->typeRemoved = TypeLibrary::Get()->TypeRemovedEvent().Subscribe(
        [state = implementation.get()](const ObjectType* type) { state->Forget(type); });
}

FileImportRegistry::~FileImportRegistry() = default;

FileImportRegistry* FileImportRegistry::Get() {
    static const std::unique_ptr<FileImportRegistry> registry(new FileImportRegistry());
    return registry.get();
}

void FileImportRegistry::RegisterImporter(
    std::vector<std::string> extensions, const ObjectType* type,
    std::function<void(Operator&, const std::filesystem::path&)> import) {
    if (type == nullptr || extensions.empty()) {
        LogWarning("Failed to register file importer: no operator type or no extensions given.");
        return;
    }
    for (std::string& extension : extensions) {
        extension = ToLower(std::move(extension));
    }
    auto importer = std::make_unique<Importer>(Importer{std::move(extensions), type, std::move(import)});
    const Importer* registered = importer.get();
    implementation->importers.push_back(std::move(importer));
    for (const std::string& extension : registered->extensions) {
        auto [entry, inserted] = implementation->byExtension.try_emplace(extension, registered);
        if (!inserted) {
            LogWarning("File importer for extension \"" + extension +
                       "\" is being overwritten by a later registration.");
            entry->second = registered;
        }
    }
}

const FileImportRegistry::Importer* FileImportRegistry::FindImporter(
    const std::filesystem::path& file) const {
    const auto found = implementation->byExtension.find(ToLower(file.extension().string()));
    return found == implementation->byExtension.end() ? nullptr : found->second;
}

}  // namespace Vantel
