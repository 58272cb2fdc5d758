#include <Vantel/Objects/Object.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Support/Logging.h>

namespace Vantel {

class Object::Implementation {
public:
    // Out of ~Object, which most objects (a frame's data values among them) leave at its first test: kept
    // inline, this would have every object save and restore registers on the way. The block goes here too,
    // though ~Object would delete it anyway, because inlined after the call its deletion brings that back.
    [[gnu::noinline]] static void Finish(std::unique_ptr<Implementation>& block) {
        // The event may be looked at by its subscribers, so it fires while everything is still in place.
        block->destructionEvent.Fire();
        block->subscriptions.clear();
        if (block->cell) {
            *block->cell = nullptr;
        }
        block.reset();
    }

    std::string key;
    std::shared_ptr<Object*> cell;
    Event<> destructionEvent;
    std::vector<EventSubscription> subscriptions;
};

Object::Object() = default;

Object::Object(std::string_view key) : Object() {
    SetKey(key);
}

Object::~Object() {
    // Null when nobody ever subscribed, shared a Ptr or set a key.
    if (implementation != nullptr) {
        Implementation::Finish(implementation);
    }
}

const ObjectType* Object::Type() {
    static const ObjectType& type = ObjectType::Declare("Vantel.Object", nullptr, nullptr, {});
    return &type;
}

const ObjectType* Object::GetType() const {
    return Object::Type();
}

Object::Implementation& Object::Block() const {
    if (implementation == nullptr) {
        implementation = std::make_unique<Implementation>();
    }
    return *implementation;
}

const std::string& Object::GetKey() const {
    if (implementation != nullptr) {
        return implementation->key;
    }
    static const std::string none;
    return none;
}

void Object::SetKey(std::string_view key) {
    if (!key.empty() && key == GetKey()) {
        return;
    }
    if (!Path::IsValidKey(key)) {
        LogError("Object::SetKey: '" + std::string(key) + "' is not a valid key.");
        return;
    }
    if (GetParentObjectImplementation() != nullptr) {
        LogError("Object::SetKey: refusing to change the key of an attached object ('" + GetKey() + "' -> '" +
                 std::string(key) + "'), the key is its identity.");
        return;
    }
    Block().key = key;
}

Object* Object::GetParentObject() {
    return GetParentObjectImplementation();
}

Object* Object::FindChild(std::string_view key) {
    return FindChildImplementation(key);
}

Object* Object::Resolve(const Path& path) {
    Object* current = this;
    for (unsigned long long i = 0; i < path.Size() && current != nullptr; ++i) {
        current = current->FindChildImplementation(path[i]);
    }
    return current;
}

Path Object::GetPath() {
    std::vector<const std::string*> keys;
    for (Object* object = this;;) {
        Object* parent = object->GetParentObjectImplementation();
        if (parent == nullptr) {
            break;  // the root adds nothing
        }
        if (!object->GetKey().empty()) {
            keys.push_back(&object->GetKey());
        }
        object = parent;
    }
    Path path;
    path.SetAbsolute(true);
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        path = path.GetChild(**key);
    }
    return path;
}

Path Object::GetRelativePath(const Object& ancestor) {
    Object* object = GetParentObjectImplementation();
    while (object != nullptr && object != &ancestor) {
        object = object->GetParentObjectImplementation();
    }
    if (object == nullptr) {
        throw std::invalid_argument("GetRelativePath: the given object is not an ancestor.");
    }
    return *GetPath().MakeRelative(object->GetPath());
}

void Object::AttachSubscription(EventSubscription&& subscription) {
    Block().subscriptions.push_back(std::move(subscription));
}

const Event<>& Object::DestructionEvent() const {
    return Block().destructionEvent;
}

Object* Object::GetParentObjectImplementation() {
    return nullptr;
}

Object* Object::FindChildImplementation(std::string_view) {
    return nullptr;
}

std::shared_ptr<Object*> Object::GetObjectPtr() {
    Implementation& block = Block();
    if (!block.cell) {
        block.cell = std::make_shared<Object*>(this);
    }
    return block.cell;
}

}  // namespace Vantel
