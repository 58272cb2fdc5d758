// TypeLibraryImplementation.h: the private state of the type library, shared by its registration and plug-in
// sources.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <absl/container/flat_hash_map.h>

#include <Vantel/Objects/Event.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/ParameterInfo.h>

#include "Platform/SharedLibrary.h"

namespace Vantel {

using PluginEntryPoint = void (*)();

// What one loaded plug-in brought in, so that unloading takes exactly that out again.
struct PluginRecord {
    std::unique_ptr<Platform::SharedLibrary> library;
    // Libraries loaded earlier under the same name. Their types may still be registered, so they stay loaded
    // until the plug-in is unloaded.
    std::vector<std::unique_ptr<Platform::SharedLibrary>> earlierLibraries;
    PluginEntryPoint load = nullptr;
    PluginEntryPoint unload = nullptr;
    std::vector<const ObjectType*> types;
    std::vector<std::string> dataTypeIds;
};

class TypeLibrary::Implementation {
public:
    Implementation() = default;
    // Leaves the libraries of plug-ins that are still loaded in memory (see Plugins.cpp).
    ~Implementation();
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    std::vector<const ObjectType*> types;
    absl::flat_hash_map<std::string, const ObjectType*> typesByName;
    std::vector<const OperatorInfo*> operatorInfos;
    absl::flat_hash_map<const ObjectType*, std::unique_ptr<OperatorInfo>> operatorInfosByType;
    std::vector<const ParameterInfo*> parameterInfos;
    absl::flat_hash_map<const ObjectType*, std::unique_ptr<ParameterInfo>> parameterInfosByType;
    absl::flat_hash_map<std::string, const ParameterInfo*> parameterInfosByName;
    std::vector<const DataTypeInfo*> dataTypes;
    absl::flat_hash_map<std::string, std::unique_ptr<DataTypeInfo>> dataTypesById;
    absl::flat_hash_map<const ObjectType*, const DataTypeInfo*> dataTypesByPortType;
    Event<const ObjectType*> typeAddedEvent;
    Event<const ObjectType*> typeRemovedEvent;
    // Records are held by pointer: a plug-in may load another from its entry point, and the new entry must
    // not move the record that is current.
    absl::flat_hash_map<std::string, std::unique_ptr<PluginRecord>> plugins;
    std::vector<std::string> loadedPluginNames;
    PluginRecord* currentPlugin = nullptr;

    // Adds the type without firing TypeAddedEvent; false (with the name-taken warning) for a taken name.
    bool AddType(const ObjectType* type);
    // Takes out one type of an unloading plug-in and fires TypeRemovedEvent.
    void RemoveType(const ObjectType* type);
    void RemoveDataType(const std::string& id);
    // False, with a warning, for an input type that is no DataInput, an output type that is no DataOutput, or
    // a port type that another data type has.
    bool HasUsablePortTypes(const DataTypeInfo& info) const;
    // Loads the plug-in library at `path` under `name` and runs its load entry.
    bool LoadPlugin(const std::filesystem::path& path, const std::string& name);
};

}  // namespace Vantel
