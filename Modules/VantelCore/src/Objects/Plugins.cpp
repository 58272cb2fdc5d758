// Loading and unloading plug-in libraries, the part of the type library that touches shared libraries.
#include <Vantel/Objects/TypeLibrary.h>

#include <bit>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
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

// What a load changed in a reused or new record, so that a load entry that throws can be taken back. Only
// AttachLibrary makes one, every field given.
struct RecordMark {
    std::size_t types;
    std::size_t recordedTypes;
    std::size_t dataTypeIds;
    PluginEntryPoint load;
    PluginEntryPoint unload;
    bool hadLibrary;
    bool created;
};

// Finds or makes the record of `name` and hands it the library and its entries.
std::pair<PluginRecord*, RecordMark> AttachLibrary(TypeLibrary::Implementation& state,
                                                   const std::string& name,
                                                   std::unique_ptr<Platform::SharedLibrary> library,
                                                   PluginEntryPoint load, PluginEntryPoint unload) {
    auto [found, created] = state.plugins.try_emplace(name);
    if (created) {
        found->second = std::make_unique<PluginRecord>();
        state.loadedPluginNames.push_back(name);
    }
    PluginRecord* const record = found->second.get();
    const RecordMark mark{record->types.size(),
                          record->recordedTypes.size(),
                          record->dataTypeIds.size(),
                          record->load,
                          record->unload,
                          record->library != nullptr,
                          created};
    // A second load under a loaded name takes over the record; the earlier library stays loaded, since the
    // types it registered are still in use and are removed only when the plug-in is unloaded.
    if (record->library != nullptr) {
        record->earlierLibraries.push_back(std::move(record->library));
    }
    record->library = std::move(library);
    record->load = load;
    record->unload = unload;
    return {record, mark};
}

// Calls a plug-in's load entry; what it threw, or nothing when it returned.
std::optional<std::string> CallLoadEntry(PluginEntryPoint load) {
    try {
        load();
    } catch (const std::exception& error) {
        return std::string(error.what());
    } catch (...) {
        return std::string("an exception that is no std::exception");
    }
    return std::nullopt;
}

// After a failed load: a new record goes, a reused one gets its earlier library and entries back.
void TakeBackLibrary(TypeLibrary::Implementation& state, const std::string& name, const RecordMark& mark) {
    const auto found = state.plugins.find(name);  // found again: nested loads may have moved the map
    if (mark.created) {
        const std::unique_ptr<PluginRecord> record = std::move(found->second);
        state.plugins.erase(found);
        std::erase(state.loadedPluginNames, name);
        return;
    }
    PluginRecord& record = *found->second;
    record.library.reset();
    if (mark.hadLibrary) {
        record.library = std::move(record.earlierLibraries.back());
        record.earlierLibraries.pop_back();
    }
    record.load = mark.load;
    record.unload = mark.unload;
}

// Runs the record's load entry with the record current. When the entry throws, logs it and takes back what
// this load registered and attached; false then.
bool RunLoadEntry(TypeLibrary::Implementation& state, PluginRecord& record, const std::string& name,
                  const RecordMark& mark) {
    // Raised until what a failed entry registered is gone: meanwhile nothing may unload or reload the record.
    ++record.loading;
    std::optional<std::string> failure;
    {
        const CurrentPluginScope scope(state.currentPlugin, &record);
        failure = CallLoadEntry(record.load);
    }
    if (failure) {
        LogError("Failed to load plugin " + Quoted(name) +
                 ", its VantelPluginLoad entry point threw: " + *failure);
        state.RemoveRegistrations(record, mark.types, mark.recordedTypes, mark.dataTypeIds);
    }
    --record.loading;
    if (failure) {
        TakeBackLibrary(state, name, mark);
    }
    return !failure;
}

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

void TypeLibrary::Implementation::RemoveRegistrations(PluginRecord& record, std::size_t typeCount,
                                                      std::size_t recordedTypeCount,
                                                      std::size_t dataTypeCount) {
    for (std::size_t index = dataTypeCount; index < record.dataTypeIds.size(); ++index) {
        RemoveDataType(record.dataTypeIds[index]);
    }
    for (std::size_t index = typeCount; index < record.types.size(); ++index) {
        RemoveType(record.types[index]);
    }
    for (std::size_t index = recordedTypeCount; index < record.recordedTypes.size(); ++index) {
        TakeRecords(record.recordedTypes[index]);
    }
    record.dataTypeIds.resize(dataTypeCount);
    record.types.resize(typeCount);
    record.recordedTypes.resize(recordedTypeCount);
}

bool TypeLibrary::Implementation::LoadPlugin(const std::filesystem::path& path, const std::string& name) {
    LogInfo("Loading plugin: " + path.string());
    // Its load entry is on the stack: loading it again there would take over the record it writes to.
    if (const auto found = plugins.find(name); found != plugins.end() && found->second->loading > 0) {
        LogWarning("Failed to load plugin, it is still loading: " + Quoted(name));
        return false;
    }
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

    const auto [record, mark] = AttachLibrary(*this, name, std::move(library), load, unload);
    return RunLoadEntry(*this, *record, name, mark);
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
    // Its load entry, or one of a plug-in it loads, is on the stack and registers into the record.
    if (found->second->loading > 0) {
        LogWarning("Failed to unload plugin, it is still loading: " + Quoted(pluginName));
        return;
    }
    LogInfo("Unloading plugin: " + pluginName);
    // The record is taken out first: the unload entry and the subscribers of TypeRemovedEvent may load or
    // unload plug-ins themselves, and unloading this one again from there must find it gone.
    const std::unique_ptr<PluginRecord> record = std::move(found->second);
    state.plugins.erase(found);
    std::erase(state.loadedPluginNames, pluginName);

    if (record->unload != nullptr) {
        record->unload();
    }
    state.RemoveRegistrations(*record, 0, 0, 0);
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
