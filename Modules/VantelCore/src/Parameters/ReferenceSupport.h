// ReferenceSupport.h: the filter test, project walk and path forms shared by the reference parameters.
//
//   if (ReferenceSupport::PassesFilter(filter, *this, object)) { ... }
//   nlohmann::json saved = ReferenceSupport::ToJson(*this, referent);
#pragma once

#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Parameters/ObjectFilter.h>

namespace Vantel {

class Object;
class Parameter;

namespace ReferenceSupport {

bool PassesFilter(const ObjectFilter& filter, const Parameter& parameter, const Object* object);

// The objects of the project around `parameter` that pass, in the documented walk order.
std::vector<Object*> GetAllowedObjects(const ObjectFilter& filter, const Parameter& parameter);

// True when `object` is `ancestor` or has it among its object parents; false when either is null.
bool IsAtOrBelow(const Object* object, const Object* ancestor);

// The referent's path text relative to the parameter's reference context; null when it has none or the
// referent lies outside it.
nlohmann::json ToJson(const Parameter& parameter, Object* referent);

// The object that `text` names from the parameter's reference context; null when nothing answers.
Object* Resolve(const Parameter& parameter, std::string_view text);

// Clears every reference in the project around `target` (a parameter node or an operator) that points at
// `target` or below it, through the parameters' own setters so that the clearing is recorded and marked.
// References held inside `target` are kept. Nothing for a target without operator.
void ClearReferencesInto(Object& target);

}  // namespace ReferenceSupport
}  // namespace Vantel
