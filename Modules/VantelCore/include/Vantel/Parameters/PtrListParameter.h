// PtrListParameter.h: a parameter that refers to an ordered list of other objects of the project.
//
//   PtrListParameter lights{ParameterScope(this), "Lights"};
//   lights.SetFilter({.types = {LightOperator::Type()}, .scope = ObjectFilter::Scope::BelowContainingGraph});
//   lights.Add(key);                 // false when the filter refuses it or it is listed already
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Parameters/ObjectFilter.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// PtrListParameter
//
// Holds an ordered list of distinct objects, each weakly: an entry whose object died is skipped wherever the
// list is read and is dropped by the next change. One ObjectFilter, with the rules of PtrParameter, governs
// every entry; a new parameter's filter admits nothing. Every change is recorded as one whole-value change.
// The list exchanges no objects through parameter connections: its data is the empty value and it ignores
// SetFromData. In the project file it is a JSON array of paths relative to the reference context (see
// PtrParameter). Owned like every parameter; main thread only.
class VANTEL_API PtrListParameter : public Parameter {
public:
    // Detached, with an empty name and an empty list.
    PtrListParameter();
    PtrListParameter(ParameterScope scope, std::string_view name);
    ~PtrListParameter() override;

    // "Vantel.PtrListParameter", shown as "Reference List"
    VANTEL_DECLARE_OBJECT_TYPE(PtrListParameter);

    // The living entries, in order.
    std::vector<Object*> Value() const;
    // Keeps, in order, the objects that are not null, pass the filter and were not given before.
    void SetValue(const std::vector<Object*>& value);
    // Appends; false for null, an object the filter refuses, or one already listed.
    bool Add(Object* object);
    // False when the object is not listed.
    bool Remove(Object* object);
    // False for null.
    bool Contains(const Object* object) const;
    // Drops every entry that is `object` or lies below it (as a parameter lies below its group and its
    // operator); false when there was none.
    bool RemoveReferencesTo(Object& object);

    const ObjectFilter& GetFilter() const;
    // Stores the filter, then sets the current list again: entries that no longer pass are dropped.
    void SetFilter(const ObjectFilter& filter);
    // As PtrParameter::PassesFilter.
    bool PassesFilter(const Object* object) const;
    // As PtrParameter::GetAllowedObjects.
    std::vector<Object*> GetAllowedObjects() const;

    // An array of the entries' paths relative to the reference context; entries that cannot be written
    // (without context, or outside it) are left out, so the value is always an array.
    nlohmann::json SerializeValue() const override;
    // A value that is not an array clears the list. Each element that does not resolve from the reference
    // context (a text that is no path or names nothing, or an element that is not a string, shown in its JSON
    // form) logs "PtrListParameter::DeserializeValue: could not resolve '<text>', the entry is dropped.";
    // the objects found are then set with SetValue.
    void DeserializeValue(const nlohmann::json& value) override;
    bool ValueReferencesObjects() const override;

private:
    // Stores entries that were already checked; records and marks only when the living list changes.
    void Replace(const std::vector<Object*>& entries);

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
