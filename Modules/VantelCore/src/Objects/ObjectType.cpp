#include <Vantel/Objects/ObjectType.h>

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Objects/Object.h>

namespace Vantel {
namespace {

// ASCII only: type names are dotted identifiers, and a locale must not change how a name is shown.
bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

bool IsLower(char c) {
    return c >= 'a' && c <= 'z';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsLetter(char c) {
    return IsUpper(c) || IsLower(c);
}

// Whether a blank goes before s[i].
bool StartsWord(std::string_view s, std::size_t i) {
    if (i == 0) {
        return false;
    }
    const char previous = s[i - 1];
    const char current = s[i];
    if (IsLower(previous) && IsUpper(current)) {
        return true;
    }
    if (IsLetter(previous) && IsDigit(current)) {
        return true;
    }
    if (IsDigit(previous) && IsLower(current)) {
        return true;
    }
    if (IsDigit(previous) && IsUpper(current)) {
        // "3D" stays one word, but in "3Int" the capital starts a word of its own.
        return i + 1 < s.size() && IsLower(s[i + 1]);
    }
    if (IsUpper(previous) && IsUpper(current) && i + 1 < s.size() && IsLower(s[i + 1])) {
        // The last capital of a run that follows a digit starts the next word: "2DArray" -> "2D Array".
        const std::size_t beforeRun = s.find_last_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ", i);
        return beforeRun != std::string_view::npos && IsDigit(s[beforeRun]);
    }
    return false;
}

std::string DeriveDisplayName(std::string_view typeName) {
    std::string_view last = typeName.substr(typeName.rfind('.') + 1);
    for (std::string_view suffix : {std::string_view("Operator"), std::string_view("Parameter")}) {
        if (last.size() > suffix.size() && last.ends_with(suffix)) {
            last.remove_suffix(suffix.size());
            break;
        }
    }
    std::string result;
    for (std::size_t i = 0; i < last.size(); ++i) {
        if (StartsWord(last, i)) {
            result += ' ';
        }
        result += last[i];
    }
    return result;
}

}  // namespace

class ObjectType::Implementation {
public:
    std::string name;
    std::string displayName;
    const ObjectType* baseType = nullptr;
    Factory factory;
};

ObjectType::ObjectType(std::string_view name, const ObjectType* baseType, Factory factory)
    : implementation(std::make_unique<Implementation>()) {
    implementation->name = name;
    implementation->baseType = baseType;
    implementation->factory = std::move(factory);
    implementation->displayName = DeriveDisplayName(name);
}

ObjectType::ObjectType(std::string_view name, const ObjectType* baseType, Factory factory,
                       std::string_view displayName)
    : ObjectType(name, baseType, std::move(factory)) {
    if (!displayName.empty()) {
        implementation->displayName = displayName;
    }
}

ObjectType::~ObjectType() = default;

const ObjectType& ObjectType::Declare(std::string_view name, const ObjectType* baseType, Factory factory,
                                      std::string_view displayName) {
    // Kept, so that the types stay reachable for leak checkers. Neither the list, nor its lock, nor its types
    // are ever destroyed: a first use of a type may come while the statics are destroyed at exit.
    struct Declared {
        std::mutex mutex;
        std::vector<const ObjectType*> types;
    };
    static auto* const declared = new Declared;
    auto* type = new ObjectType(name, baseType, std::move(factory), displayName);
    const std::lock_guard lock(declared->mutex);
    declared->types.push_back(type);
    return *type;
}

const std::string& ObjectType::GetName() const {
    return implementation->name;
}

const std::string& ObjectType::GetDisplayName() const {
    return implementation->displayName;
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
