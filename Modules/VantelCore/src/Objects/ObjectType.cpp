#include <Vantel/Objects/ObjectType.h>

#include <Vantel/Objects/Object.h>

namespace Vantel {

class ObjectType::Implementation {
public:
    std::string name;
    const ObjectType* baseType = nullptr;
    Factory factory;
};

ObjectType::ObjectType(std::string_view name, const ObjectType* baseType, Factory factory)
    : implementation(std::make_unique<Implementation>()) {
    implementation->name = name;
    implementation->baseType = baseType;
    implementation->factory = std::move(factory);
}

ObjectType::~ObjectType() = default;

const std::string& ObjectType::GetName() const {
    return implementation->name;
}

const ObjectType* ObjectType::GetBaseType() const {
    return implementation->baseType;
}

bool ObjectType::CanCreate() const {
    return static_cast<bool>(implementation->factory);
}

std::unique_ptr<Object> ObjectType::CreateInstance() const {
    if (!implementation->factory) {
        return nullptr;
    }
    return implementation->factory();
}

bool ObjectType::Inherits(const ObjectType* other) const {
    for (const ObjectType* type = this; type != nullptr; type = type->GetBaseType()) {
        if (type == other) {
            return true;
        }
    }
    return false;
}

}  // namespace Vantel
