#include <Vantel/Parameters/PtrListParameter.h>

#include <algorithm>
#include <string>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Support/Logging.h>

#include "Parameters/ReferenceSupport.h"
#include "Parameters/ValueParameterSupport.h"

namespace Vantel {

class PtrListParameter::Implementation {
public:
    std::vector<Ptr<Object>> entries;  // may hold dead entries until the next change
    ObjectFilter filter;
};

PtrListParameter::PtrListParameter() : PtrListParameter(nullptr, "") {}

PtrListParameter::PtrListParameter(ParameterScope scope, std::string_view name)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {}

PtrListParameter::~PtrListParameter() = default;

VANTEL_DEFINE_OBJECT_TYPE(PtrListParameter, Parameter, "Vantel.PtrListParameter", "Reference List")

std::vector<Object*> PtrListParameter::Value() const {
    std::vector<Object*> living;
    living.reserve(implementation->entries.size());
    for (const Ptr<Object>& entry : implementation->entries) {
        if (Object* object = entry.Get()) {
            living.push_back(object);
        }
    }
    return living;
}

void PtrListParameter::SetValue(const std::vector<Object*>& value) {
    std::vector<Object*> admitted;
    for (Object* object : value) {
        if (object != nullptr && PassesFilter(object) &&
            std::find(admitted.begin(), admitted.end(), object) == admitted.end()) {
            admitted.push_back(object);
        }
    }
    Replace(admitted);
}

bool PtrListParameter::Add(Object* object) {
    if (object == nullptr || !PassesFilter(object) || Contains(object)) {
        return false;
    }
    std::vector<Object*> entries = Value();
    entries.push_back(object);
    Replace(entries);
    return true;
}

bool PtrListParameter::Remove(Object* object) {
    std::vector<Object*> entries = Value();
    const auto found = std::find(entries.begin(), entries.end(), object);
    if (object == nullptr || found == entries.end()) {
        return false;
    }
    entries.erase(found);
    Replace(entries);
    return true;
}

bool PtrListParameter::Contains(const Object* object) const {
    if (object == nullptr) {
        return false;
    }
    return std::any_of(implementation->entries.begin(), implementation->entries.end(),
                       [object](const Ptr<Object>& entry) { return entry.Get() == object; });
}

bool PtrListParameter::RemoveReferencesTo(Object& object) {
    std::vector<Object*> entries = Value();
    const auto removed = std::remove_if(entries.begin(), entries.end(), [&object](const Object* entry) {
        return ReferenceSupport::IsAtOrBelow(entry, &object);
    });
    if (removed == entries.end()) {
        return false;
    }
    entries.erase(removed, entries.end());
    Replace(entries);
    return true;
}

const ObjectFilter& PtrListParameter::GetFilter() const {
    return implementation->filter;
}

void PtrListParameter::SetFilter(const ObjectFilter& filter) {
    implementation->filter = filter;
    SetValue(Value());
}

bool PtrListParameter::PassesFilter(const Object* object) const {
    return ReferenceSupport::PassesFilter(implementation->filter, *this, object);
}

std::vector<Object*> PtrListParameter::GetAllowedObjects() const {
    return ReferenceSupport::GetAllowedObjects(implementation->filter, *this);
}

nlohmann::json PtrListParameter::SerializeValue() const {
    nlohmann::json paths = nlohmann::json::array();
    for (Object* object : Value()) {
        nlohmann::json path = ReferenceSupport::ToJson(*this, object);
        if (path.is_string()) {
            paths.push_back(std::move(path));
        }
    }
    return paths;
}

void PtrListParameter::DeserializeValue(const nlohmann::json& value) {
    std::vector<Object*> found;
    if (value.is_array()) {
        for (const nlohmann::json& element : value) {
            const std::string text = element.is_string() ? element.get<std::string>() : element.dump();
            Object* object = element.is_string() ? ReferenceSupport::Resolve(*this, text) : nullptr;
            if (object == nullptr) {
                LogWarning("PtrListParameter::DeserializeValue: could not resolve '" + text +
                           "', the entry is dropped.");
                continue;
            }
            found.push_back(object);
        }
    }
    SetValue(found);
}

bool PtrListParameter::ValueReferencesObjects() const {
    return true;
}

void PtrListParameter::Replace(const std::vector<Object*>& entries) {
    if (entries == Value()) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->entries.assign(entries.begin(), entries.end());
    MarkChanged(std::move(previous));
}

}  // namespace Vantel
