// ObjectCast.h: dynamic_cast for objects, through their declared types.
//
//   if (auto* parameter = ObjectCast<Parameter>(node)) { ... }
#pragma once

#include <type_traits>

#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>

namespace Vantel {

// What dynamic_cast<T*>(object) gives, for a T that declares its own type (with one of the type macros),
// at a fraction of the cost. The macros check each declared chain against the real bases, so an object whose
// type inherits T's is a T; the C++ run time instead searches the class tree and compares type names across
// shared libraries, which loading or closing a large project paid for several times per parameter. Like
// dynamic_cast, it sees an object under construction or destruction as the class whose constructor or
// destructor runs. Null for a null `object`.
template <typename T, typename From>
auto ObjectCast(From* object) -> std::conditional_t<std::is_const_v<From>, const T*, T*> {
    static_assert(std::is_base_of_v<Object, T> && std::is_base_of_v<std::remove_const_t<From>, T>);
    // A class without a type of its own would answer with its base's, and every object of the base would
    // pass.
    static_assert(
        std::is_same_v<decltype(VantelTypeProbe(static_cast<const T*>(nullptr), Detail::TypeTag<void>{})),
                       T*>,
        "ObjectCast needs a class that declares its own type");
    if (object == nullptr || !object->GetType()->Inherits(T::Type())) {
        return nullptr;
    }
    return static_cast<std::conditional_t<std::is_const_v<From>, const T*, T*>>(object);
}

}  // namespace Vantel
