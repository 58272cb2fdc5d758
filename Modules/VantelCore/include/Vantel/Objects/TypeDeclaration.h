// TypeDeclaration.h: one line in the class body gives a class its ObjectType, checked against its real base.
//
//   class Scale : public Vantel::Operator {
//   public:
//       VANTEL_OBJECT_TYPE(Scale, Operator, "Example.Scale");
//   };
#pragma once

#include <string_view>
#include <type_traits>

namespace Vantel {

// VANTEL_OBJECT_TYPE(Class, Base, "Name" [, "Display Name"])
// VANTEL_OBJECT_TYPE_NO_FACTORY(Class, Base, "Name" [, "Display Name"])
//
// In the public part of a class body: defines `static const ObjectType* Type()` and the `GetType()` override.
// The type is built on the first call, with MakeFactory<Class>() as its factory, or none for the second form
// (abstract classes, and values that are only made by code). Needs <Vantel/Objects/ObjectType.h>.
//
// Does not compile unless `Base` is the nearest base class of `Class` that declares its type with one of
// these macros (every type of the library does): naming a class that is not a base, or skipping one, would
// give the type a wrong chain for ObjectType::Inherits.
//
// A class whose Type() must not be inline (it is exported from a shared library, so that the type stays one
// object for every library that uses it) declares it in its header and defines it in its source file:
//
//   class VANTEL_API Graph : public Operator {
//       VANTEL_DECLARE_OBJECT_TYPE(Graph);                                          // Graph.h
//   };
//   VANTEL_DEFINE_OBJECT_TYPE(Graph, Operator, "Vantel.General.Graph")              // Graph.cpp
//   VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(Operator, Object, "Vantel.General.Operator")
#define VANTEL_OBJECT_TYPE(Class, Base, ...) \
    VANTEL_DETAIL_INLINE_OBJECT_TYPE(Class, Base, ::Vantel::MakeFactory<Class>(), __VA_ARGS__)
#define VANTEL_OBJECT_TYPE_NO_FACTORY(Class, Base, ...) \
    VANTEL_DETAIL_INLINE_OBJECT_TYPE(Class, Base, nullptr, __VA_ARGS__)

#define VANTEL_DECLARE_OBJECT_TYPE(Class)      \
    VANTEL_DETAIL_TYPE_PROBE(Class)            \
    static const ::Vantel::ObjectType* Type(); \
    const ::Vantel::ObjectType* GetType() const override
#define VANTEL_DEFINE_OBJECT_TYPE(Class, Base, ...) \
    VANTEL_DETAIL_DEFINE_OBJECT_TYPE(Class, Base, ::Vantel::MakeFactory<Class>(), __VA_ARGS__)
#define VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(Class, Base, ...) \
    VANTEL_DETAIL_DEFINE_OBJECT_TYPE(Class, Base, nullptr, __VA_ARGS__)

// ---- Implementation details follow ----

namespace Detail {

template <typename T>
struct TypeTag {};

// Made from the tag of any class but T, so that a class's own probe never answers for the class itself.
template <typename T>
struct OtherThan {
    template <typename U>
    requires(!std::is_same_v<T, U>) OtherThan(TypeTag<U>) {}
};

// Every declared type adds a probe that takes a pointer to its class. Called with a T*, overload resolution
// prefers the most derived base: the nearest proper base of T that declared its type.
template <typename T>
using NearestTypedBase =
    std::remove_pointer_t<decltype(VantelTypeProbe(static_cast<const T*>(nullptr), TypeTag<T>{}))>;

template <typename T, typename Base>
constexpr bool kNamesItsTypedBase = std::is_same_v<NearestTypedBase<T>, Base>;

// The names given to a type macro: the type name and, optionally, the display name.
struct TypeNames {
    constexpr TypeNames(std::string_view name, std::string_view displayName = {})
        : name(name), displayName(displayName) {}
    std::string_view name;
    std::string_view displayName;
};

}  // namespace Detail

#define VANTEL_DETAIL_TYPE_PROBE(Class)                                               \
    friend Class* VantelTypeProbe(const Class*, ::Vantel::Detail::OtherThan<Class>) { \
        return nullptr;                                                               \
    }

#define VANTEL_DETAIL_CHECK_BASE(Class, Base)                        \
    static_assert(::Vantel::Detail::kNamesItsTypedBase<Class, Base>, \
                  "The type of " #Class " names " #Base              \
                  " as its base, which is not the nearest base "     \
                  "class of " #Class " with a type of its own: name that class instead.")

#define VANTEL_DETAIL_MAKE_TYPE(Base, factory, ...)                                                         \
    static const ::Vantel::ObjectType& type =                                                               \
        ::Vantel::ObjectType::Declare(::Vantel::Detail::TypeNames{__VA_ARGS__}.name, Base::Type(), factory, \
                                      ::Vantel::Detail::TypeNames{__VA_ARGS__}.displayName)

#define VANTEL_DETAIL_INLINE_OBJECT_TYPE(Class, Base, factory, ...) \
    VANTEL_DETAIL_TYPE_PROBE(Class)                                 \
    static const ::Vantel::ObjectType* Type() {                     \
        VANTEL_DETAIL_CHECK_BASE(Class, Base);                      \
        VANTEL_DETAIL_MAKE_TYPE(Base, factory, __VA_ARGS__);        \
        return &type;                                               \
    }                                                               \
    const ::Vantel::ObjectType* GetType() const override {          \
        return Type();                                              \
    }

#define VANTEL_DETAIL_DEFINE_OBJECT_TYPE(Class, Base, factory, ...) \
    const ::Vantel::ObjectType* Class::Type() {                     \
        VANTEL_DETAIL_CHECK_BASE(Class, Base);                      \
        VANTEL_DETAIL_MAKE_TYPE(Base, factory, __VA_ARGS__);        \
        return &type;                                               \
    }                                                               \
    const ::Vantel::ObjectType* Class::GetType() const {            \
        return Type();                                              \
    }

}  // namespace Vantel
