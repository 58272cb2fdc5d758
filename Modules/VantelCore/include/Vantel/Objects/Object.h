// Object.h: the base of every named element of the model.
//
//   Object* radius = graph.Resolve(*Path::Parse("Blur [k3x]/Radius"));
//   Ptr<Object> weak(radius);                                // reads null once the parameter dies
//   radius->GetPath().ToString();                            // "/Blur [k3x]/Radius"
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Objects/TypeDeclaration.h>

namespace Vantel {

class ObjectType;
template <typename T>
class Ptr;

// Object
//
// Operators, parameters, groups, ports and graphs derive from Object. An object has a key (its name among its
// siblings), a parent found through a virtual call, a run-time type, a destruction event, and a shared cell
// through which weak references (Ptr) learn that it died. It is created detached, gets its key, and is then
// attached to a container that owns it through a unique pointer; while attached its key is fixed. Main thread
// only, except that Ptr copies may be made and released anywhere.
//
// On destruction, in order: the destruction event fires, the attached subscriptions are released, every Ptr
// to it reads null, and the private state is freed.
class VANTEL_API Object {
public:
    Object();
    // As Object() followed by SetKey(key).
    explicit Object(std::string_view key);
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    virtual const ObjectType* GetType() const;
    // "Vantel.Object": no base type, no factory.
    static const ObjectType* Type();
    // The root of the checks that VANTEL_OBJECT_TYPE and its kin make of the base a class names.
    VANTEL_DETAIL_TYPE_PROBE(Object)

    const std::string& GetKey() const;
    // Logs "Object::SetKey: '<key>' is not a valid key." for an invalid key, and a refusal for an object that
    // has a parent; the old key stays in both cases. Never throws.
    void SetKey(std::string_view key);

    Object* GetParentObject();
    Object* FindChild(std::string_view key);
    // Walks `path` down from this object, ignoring its absolute flag; this object for an empty path, null as
    // soon as a key is not found.
    Object* Resolve(const Path& path);
    // The absolute path from the root; the root itself (and objects without keys) add no component.
    Path GetPath();
    // Throws std::invalid_argument("GetRelativePath: the given object is not an ancestor.") when `ancestor`
    // is not above this object (also for the object itself).
    Path GetRelativePath(const Object& ancestor);

    // Keeps `subscription` until this object dies: ties a callback's life to the object's.
    void AttachSubscription(EventSubscription&& subscription);
    const Event<>& DestructionEvent() const;

protected:
    // Null here: an object has no parent unless a subclass supplies one.
    virtual Object* GetParentObjectImplementation();
    // Null here: an object has no children unless a subclass supplies them.
    virtual Object* FindChildImplementation(std::string_view key);

private:
    template <typename T>
    friend class Ptr;
    // The cell that Ptr shares; made on first use, nulled when this object dies.
    std::shared_ptr<Object*> GetObjectPtr();

    class Implementation;
    // Made on first use: most data values never need a key, a subscription or a Ptr, and a frame makes
    // many of them.
    Implementation& Block() const;
    mutable std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
