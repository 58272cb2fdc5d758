// TypeLibrary.h: the process-wide registry of types, by dotted name, with their descriptive records.
//
//   RegisterCoreTypes();                                     // once, at start-up
//   TypeLibrary::Get()->LoadPlugin("Imaging");               // libImaging.so beside the host executable
//   const ObjectType* type = TypeLibrary::Get()->GetType("Vantel.General.Graph");
//   std::unique_ptr<Object> graph = type->CreateInstance();
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>

namespace Vantel {

class ObjectType;
struct DataTypeInfo;
struct OperatorInfo;
struct ParameterInfo;

// TypeLibrary
//
// Everything that can be created by name (operators, parameters, data ports) is registered here, operator and
// parameter types with their OperatorInfo or ParameterInfo, data types with their DataTypeInfo. Plug-ins
// register their types from their load entry point; those types belong to the plug-in and are removed when it
// is unloaded. Registration problems are logged as warnings and the registration is skipped; lookups return
// null when nothing matches; nothing throws except file-system errors while probing for a plug-in. Main
// thread only (only the construction of the singleton is thread-safe).
class VANTEL_API TypeLibrary {
public:
    class Implementation;

    // The one instance, made on first use.
    static TypeLibrary* Get();

    TypeLibrary(const TypeLibrary&) = delete;
    TypeLibrary& operator=(const TypeLibrary&) = delete;

    // For types without a descriptive record. A name already registered logs
    // "Failed to register type, name is already taken: \"<name>\"".
    void RegisterType(const ObjectType* type);
    void RegisterOperator(OperatorInfo info);
    void RegisterParameter(ParameterInfo info);
    void RegisterDataType(DataTypeInfo info);

    const ObjectType* GetType(const std::string& name) const;
    const std::vector<const ObjectType*>& GetTypes() const;
    const std::vector<const OperatorInfo*>& GetOperatorInfos() const;
    const std::vector<const ParameterInfo*>& GetParameterInfos() const;
    const std::vector<const DataTypeInfo*>& GetDataTypes() const;
    std::vector<std::string> GetDataTypeIds() const;

    const OperatorInfo* FindOperatorInfo(const ObjectType* type) const;
    const ParameterInfo* FindParameterInfo(const ObjectType* type) const;
    const ParameterInfo* FindParameterInfoByName(std::string_view name) const;
    const DataTypeInfo* FindDataTypeById(const std::string& id) const;
    const DataTypeInfo* FindDataTypeByName(std::string_view name) const;
    // `type` may be the data type's input type or its output type.
    const DataTypeInfo* FindDataType(const ObjectType* type) const;
    const ObjectType* FindDataInputType(const ObjectType* type) const;
    const ObjectType* FindDataOutputType(const ObjectType* type) const;

    // Fired after a type was added, and before a removed type goes away (it is still valid then).
    Event<const ObjectType*>& TypeAddedEvent() const;
    Event<const ObjectType*>& TypeRemovedEvent() const;

    // Loads the plug-in library `name` from the host executable's folder ("lib<name>.so" or "<name>.so" on
    // Linux, "<name>.dll" on Windows). False, with a warning, when there is none or it fails to load.
    bool LoadPlugin(const char* name);
    // Loads a plug-in library under the name of its file stem ("lib" cut off a stem longer than three
    // letters). A load entry that throws is logged as an error, what it registered is removed and the
    // library freed: false. A plug-in whose load entry is running cannot be loaded again (warning, false).
    bool LoadPluginFromFile(const std::filesystem::path& path);
    // Calls the plug-in's unload entry, removes its types and data types and the records it registered for
    // other types, frees its libraries. Refused with the warning
    // "Failed to unload plugin, it is still loading: \"<name>\"" while its load entry runs.
    void UnloadPlugin(const char* name);
    // Unloads every plug-in, the last loaded first.
    void UnloadAllPlugins();

private:
    TypeLibrary();
    ~TypeLibrary();
    friend struct std::default_delete<TypeLibrary>;

    std::unique_ptr<Implementation> implementation;
};

// Registers the core object, operator and parameter types with the records parsed from their compiled-in
// docs.
VANTEL_API void RegisterCoreTypes();

}  // namespace Vantel
