// ObjectType.h: the run-time type of an object, with the factory that creates it by name.
//
//   const ObjectType* type = TypeLibrary::Get()->GetType("Vantel.IntParameter");
//   if (type && type->Inherits(Parameter::Type())) { std::unique_ptr<Object> made = type->CreateInstance(); }
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <Vantel/Export.h>

namespace Vantel {

class Object;

// ObjectType
//
// Describes one class: its dotted name ("Vantel.Object"), its base type, and an optional factory. Each class
// builds its type once, on the first call of its static Type(); types are singletons compared by address, and
// live until the library (or the plug-in that made them) is unloaded. Thread-safe to read.
class VANTEL_API ObjectType {
public:
    using Factory = std::function<std::unique_ptr<Object>()>;

    ObjectType(std::string_view name, const ObjectType* baseType, Factory factory);
    // For types whose display name cannot be derived from the type name ("Vantel.PtrParameter" is shown as
    // "Reference"). An empty `displayName` means none was given.
    ObjectType(std::string_view name, const ObjectType* baseType, Factory factory,
               std::string_view displayName);
    virtual ~ObjectType();
    ObjectType(const ObjectType&) = delete;
    // A type that is never destroyed, for the type macros: an object may still ask for its type as the
    // process's statics are destroyed at exit, its own owner among them (a host's project kept in a global).
    // A plug-in's types outlive its unloading the same way, as a few hundred bytes each.
    static const ObjectType& Declare(std::string_view name, const ObjectType* baseType, Factory factory,
                                     std::string_view displayName);
    ObjectType& operator=(const ObjectType&) = delete;

    const std::string& GetName() const;
    // The name shown to users and used for the type's documentation file. Unless one was given, it is made
    // from the last dotted part of the type name, less a trailing "Operator" or "Parameter" when more
    // remains, with blanks at the word boundaries: "Vantel.General.GraphInputsOperator" -> "Graph Inputs",
    // "Vantel.Vector3IntParameter" -> "Vector 3 Int", "Vantel.Transform3DParameter" -> "Transform 3D".
    const std::string& GetDisplayName() const;
    // Null for a root type.
    const ObjectType* GetBaseType() const;

    bool CanCreate() const;
    // Null when the type has no factory. The caller owns the result.
    std::unique_ptr<Object> CreateInstance() const;

    // True when `other` is this type or on its base chain.
    bool Inherits(const ObjectType* other) const;
    // Identity, not name: two types with equal names are still different types.
    bool IsSameTypeAs(const ObjectType* other) const { return this == other; }

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

// A factory for the common case of a default-constructible class.
template <typename T>
ObjectType::Factory MakeFactory() {
    return [] { return std::unique_ptr<Object>(new T()); };
}

}  // namespace Vantel
