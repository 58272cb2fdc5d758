// Ptr.h: a weak reference to an object.
//
//   Ptr<Operator> source(blur);
//   delete-or-remove blur ...;
//   if (Operator* op = source.Get()) { ... }  // null: the operator is gone
#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>

#include <Vantel/Objects/Object.h>

namespace Vantel {

// Ptr<T>
//
// Shares the target's object cell (two words) and never keeps the target alive; it reads null once the target
// has died, or when it was never set. Copies share the cell. Copying and releasing are thread-safe; reading
// the target must happen on the model's thread. Two Ptrs are equal when they name the same living object.
template <typename T>
class Ptr {
    static_assert(std::is_base_of_v<Object, T>, "Ptr<T> needs a class derived from Object");

public:
    Ptr() = default;
    Ptr(std::nullptr_t) {}
    Ptr(T* object) : cell(object != nullptr ? static_cast<Object*>(object)->GetObjectPtr() : nullptr) {}
    template <typename U>
    requires std::is_base_of_v<T, U> Ptr(const Ptr<U>& other) : cell(other.cell) {}

    T* Get() const { return cell != nullptr && *cell != nullptr ? static_cast<T*>(*cell) : nullptr; }
    T* operator->() const { return Get(); }
    T& operator*() const { return *Get(); }
    explicit operator bool() const { return Get() != nullptr; }

    // A Ptr to the same object as a U, null when the object is not a U (or gone).
    template <typename U>
    Ptr<U> DynamicCast() const {
        Ptr<U> result;
        if (dynamic_cast<U*>(Get()) != nullptr) {
            result.cell = cell;
        }
        return result;
    }

    template <typename U>
    bool operator==(const Ptr<U>& other) const {
        return static_cast<const Object*>(Get()) == static_cast<const Object*>(other.Get());
    }

    void Reset() { cell.reset(); }

private:
    template <typename U>
    friend class Ptr;
    std::shared_ptr<Object*> cell;
};

}  // namespace Vantel
