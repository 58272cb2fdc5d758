// PtrParameter.h: a parameter that refers to one other object of the project.
//
//   PtrParameter camera{ParameterScope(this), "Camera", nullptr};
//   camera.SetFilter({.types = {CameraOperator::Type()}, .scope = ObjectFilter::Scope::SameGraph});
//   camera = someCamera;             // an object the filter refuses clears the reference instead
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

// PtrParameter
//
// Holds one object weakly: once the object dies the value reads null, without a change being marked. What it
// may hold is restricted by an ObjectFilter, which its operator sets; the filter of a new parameter has no
// types and so admits nothing. An object the filter refuses is never an error: the reference is cleared
// instead. In the project file the referent is the text of its path relative to the reference context: the
// graph that contains the parameter's operator, or the operator itself when it is a graph in no graph.
// Removing a parameter node from its group clears the references into it, recorded like any other change.
// Owned like every parameter; main thread only.
class VANTEL_API PtrParameter : public Parameter {
public:
    // Detached, with an empty name and no referent.
    PtrParameter();
    // `value` is kept unchecked until the operator sets the filter, which then clears it if it fails.
    PtrParameter(ParameterScope scope, std::string_view name, Object* value);
    ~PtrParameter() override;

    // "Vantel.PtrParameter", shown as "Reference"
    VANTEL_DECLARE_OBJECT_TYPE(PtrParameter);

    // Null when there is no referent or it has died.
    Object* Value() const;
    // An object that fails the filter is taken as null.
    void SetValue(Object* value);
    PtrParameter& operator=(Object* value);

    const ObjectFilter& GetFilter() const;
    // Stores the filter, then sets the current referent again: one that no longer passes is cleared and the
    // clearing is recorded.
    void SetFilter(const ObjectFilter& filter);
    // Null passes. Checked in this order: type, flags (for a referenced parameter), then, when this parameter
    // has an operator, exclusion of that operator and the scope; scopes other than OwnOperator fail while
    // the operator is in no graph.
    bool PassesFilter(const Object* object) const;
    // Every object of the project that passes, depth first from the topmost graph above this parameter's
    // operator: each operator, then its inputs (a data input list followed by its inputs), its outputs, its
    // parameter nodes (a group before its children), and for a graph its operators. Operators' root groups
    // are not listed: no path names them. Empty when this parameter has no operator.
    std::vector<Object*> GetAllowedObjects() const;

    // The datum's referent; any datum that is not a Pointer clears the reference.
    void SetFromData(const ParameterData& data) override;
    // The referent's path relative to the reference context as a string ("" for the context itself); null
    // without referent, operator or context, and for a referent outside the context.
    nlohmann::json SerializeValue() const override;
    // A value that is not a string clears the reference. A path that does not resolve from the reference
    // context logs "PtrParameter::DeserializeValue: could not resolve '<text>', the value is cleared." and
    // clears it. A resolved object still has to pass the filter.
    void DeserializeValue(const nlohmann::json& value) override;
    bool ValueReferencesObjects() const override;

private:
    ParameterData BuildData() const override;

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
