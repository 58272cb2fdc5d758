// Loading and unloading plug-in libraries, the part of the type library that touches shared libraries.
#include <Vantel/Objects/TypeLibrary.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <Vantel/Support/Logging.h>

#include "Objects/TypeLibraryImplementation.h"
#include "Platform/SharedLibrary.h"

namespace Vantel {
namespace {

// The exported names of a plug-in's entry points (see Vantel/Objects/Plugin.h).
constexpr const char* kPluginLoadEntryName = "VantelPluginLoad";
constexpr const char* kPluginUnloadEntryName = "VantelPluginUnload";

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string NameOrEmpty(const char* name) {
    return name != nullptr ? std::string(name) : std::string();
}

// A plug-in loaded from a file is known by the file's stem, less a "lib" prefix when more than that remains,
// so that libImaging.so and Imaging.dll are both "Imaging".
std::string PluginNameOfFile(const std::filesystem::path& path) {
    std::string stem = path.stem().string();
    if (stem.size() > 3 && stem.starts_with("lib")) {
        stem.erase(0, 3);
    }
    return stem;
}

PluginEntryPoint FindEntryPoint(const Platform::SharedLibrary& library, const char* name) {
    return std::bit_cast<PluginEntryPoint>(library.FindSymbol(name));
}

// Where the libraries of plug-ins that are still loaded when the type library is destroyed are kept.
// Reachable from a static until the process ends, so that leak checkers do not count them; never freed.
std::vector<std::unique_ptr<Platform::SharedLibrary>>& LibrariesLeftLoaded() {
    static auto* const libraries = new std::vector<std::unique_ptr<Platform::SharedLibrary>>();
    return *libraries;
}

// Makes `record` current for the duration of one load entry, and restores the previous one even if the entry
// throws, so that a plug-in may load another from its entry point.
class CurrentPluginScope {
public:
    CurrentPluginScope(PluginRecord*& currentPlugin, PluginRecord* record)
        : current(currentPlugin), previous(currentPlugin) {
        current = record;
    }
    ~CurrentPluginScope() { current = previous; }
    CurrentPluginScope(const CurrentPluginScope&) = delete;
    CurrentPluginScope& operator=(const CurrentPluginScope&) = delete;

private:
    PluginRecord*& current;
    PluginRecord* const previous;
};

}  // namespace

// ---- TypeLibrary::Implementation ----

// The type library is destroyed when the process ends (or this library is unloaded). A host is expected to
// have called UnloadAllPlugins by then; whatever is still loaded is left as it is. By this time the plug-ins'
// own statics, their ObjectTypes among them, have usually been destroyed already (they were made after the
// type library, so they go first), which rules out calling their unload entries or firing TypeRemovedEvent,
// and unmapping their code while the exit still runs destructors gains nothing. The process takes it all
// down.
TypeLibrary::Implementation::~Implementation() {
    for (auto& [name, record] : plugins) {
        if (record->library != nullptr) {
            LibrariesLeftLoaded().push_back(std::move(record->library));
        }
        for (std::unique_ptr<Platform::SharedLibrary>& library : record->earlierLibraries) {
            LibrariesLeftLoaded().push_back(std::move(library));
        }
    }
}

bool TypeLibrary::Implementation::LoadPlugin(const std::filesystem::path& path, const std::string& name) {
    LogInfo("Loading plugin: " + path.string());
    std::unique_ptr<Platform::SharedLibrary> library = Platform::SharedLibrary::Load(path);
    if (library == nullptr) {
        LogWarning("Failed to load plugin: " + Quoted(path.string()));
        return false;
    }
    const PluginEntryPoint load = FindEntryPoint(*library, kPluginLoadEntryName);
    if (load == nullptr) {
        LogWarning("Plugin library has no VantelPluginLoad entry point: " + Quoted(path.string()));
        return false;
    }
    const PluginEntryPoint unload = FindEntryPoint(*library, kPluginUnloadEntryName);

    auto [found, inserted] = plugins.try_emplace(name);
    if (inserted) {
        found->second = std::make_unique<PluginRecord>();
        loadedPluginNames.push_back(name);
    }
    PluginRecord* const record = found->second.get();
    // A second load under a loaded name takes over the record; the earlier library stays loaded, since the
    // types it registered are still in use and are removed only when the plug-in is unloaded.
    if (record->library != nullptr) {
        record->earlierLibraries.push_back(std::move(record->library));
    }
    record->library = std::move(library);
    record->load = load;
    record->unload = unload;

    const CurrentPluginScope scope(currentPlugin, record);
    load();
    return true;
}

// ---- TypeLibrary ----

bool TypeLibrary::LoadPlugin(const char* name) {
    const std::string pluginName = NameOrEmpty(name);
    const std::filesystem::path folder = Platform::GetExecutableFolder();
    // Without the executable's folder there is nowhere to look (a relative path would search the working
    // folder).
    if (!folder.empty()) {
        for (const std::filesystem::path& file : Platform::PluginFileNames(pluginName)) {
            const std::filesystem::path candidate = folder / file;
            if (std::filesystem::exists(candidate)) {
                return implementation->LoadPlugin(candidate, pluginName);
            }
        }
    }
    LogWarning("Could not find a plugin library for " + Quoted(pluginName) +
               " in any of the expected locations.");
    return false;
}

bool TypeLibrary::LoadPluginFromFile(const std::filesystem::path& path) {
    return implementation->LoadPlugin(path, PluginNameOfFile(path));
}

void TypeLibrary::UnloadPlugin(const char* name) {
    Implementation& state = *implementation;
    const std::string pluginName = NameOrEmpty(name);
    const auto found = state.plugins.find(pluginName);
    if (found == state.plugins.end()) {
        LogWarning("Failed to unload plugin, it was never loaded: " + Quoted(pluginName));
        return;
    }
    LogInfo("Unloading plugin: " + pluginName);
    // The record is taken out first: the unload entry and the subscribers of TypeRemovedEvent may load or
    // unload plug-ins themselves, and unloading this one again from there must find it gone.
    const std::unique_ptr<PluginRecord> record = std::move(found->second);
    state.plugins.erase(found);
    state.loadedPluginNames.erase(
        std::remove(state.loadedPluginNames.begin(), state.loadedPluginNames.end(), pluginName),
        state.loadedPluginNames.end());

    if (record->unload != nullptr) {
        record->unload();
    }
    for (const std::string& id : record->dataTypeIds) {
        state.RemoveDataType(id);
    }
    for (const ObjectType* type : record->types) {
        state.RemoveType(type);
    }
    // Freed last: until here the types were still valid for the subscribers of TypeRemovedEvent.
    record->library.reset();
    record->earlierLibraries.clear();
}

void TypeLibrary::UnloadAllPlugins() {
    const std::vector<std::string> names = implementation->loadedPluginNames;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        UnloadPlugin(name->c_str());
    }
}

}  // namespace Vantel
