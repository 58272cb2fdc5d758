// TypeLibraryImplementation.h: the private state of the type library, shared by its registration and plug-in
// sources.
#pragma once

#include <cstddef>
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
    // Types of the core or of other plug-ins that this one registered a record for: unloading takes the
    // records and leaves the types.
    std::vector<const ObjectType*> recordedTypes;
    std::vector<std::string> dataTypeIds;
    // Load entries of this plug-in that are running; meanwhile it can neither be unloaded nor loaded again.
    int loading = 0;
};

// The operator and parameter records of one type, taken out of the library's maps.
struct TakenRecords {
    std::unique_ptr<OperatorInfo> operatorInfo;
    std::unique_ptr<ParameterInfo> parameterInfo;
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
    // Takes out one type of an unloading plug-in, with its records, and fires TypeRemovedEvent.
    void RemoveType(const ObjectType* type);
    TakenRecords TakeRecords(const ObjectType* type);
    void RemoveDataType(const std::string& id);
    // Takes out what `record` registered since its lists had the given lengths, in the order of unloading.
    void RemoveRegistrations(PluginRecord& record, std::size_t types, std::size_t recordedTypes,
                             std::size_t dataTypeIds);
    // False, with a warning, for an input type that is no DataInput, an output type that is no DataOutput, or
    // a port type that another data type has.
    bool HasUsablePortTypes(const DataTypeInfo& info) const;
    // Loads the plug-in library at `path` under `name` and runs its load entry.
    bool LoadPlugin(const std::filesystem::path& path, const std::string& name);
};

}  // namespace Vantel
