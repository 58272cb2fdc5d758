#include "Parameters/ReferenceSupport.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <variant>

#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterGroup.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Parameters/PtrListParameter.h>
#include <Vantel/Parameters/PtrParameter.h>

namespace Vantel::ReferenceSupport {
namespace {

// Climbing parents only reads links, so a const object may be walked.
Object* ParentOf(const Object& object) {
    return const_cast<Object&>(object).GetParentObject();
}

const Operator* FindOwningOperator(const Object& object) {
    for (const Object* current = &object; current != nullptr; current = ParentOf(*current)) {
        if (const auto* op = ObjectCast<Operator>(current)) {
            return op;
        }
    }
    return nullptr;
}

bool IsInsideGraph(const Operator& op, const Graph& graph) {
    for (const Graph* enclosing = op.GetGraph(); enclosing != nullptr; enclosing = enclosing->GetGraph()) {
        if (enclosing == &graph) {
            return true;
        }
    }
    return false;
}

bool PassesScope(ObjectFilter::Scope scope, const Operator& owner, const Operator& own) {
    if (scope == ObjectFilter::Scope::OwnOperator) {
        return &owner == &own;
    }
    const Graph* graph = own.GetGraph();
    if (graph == nullptr) {
        return false;
    }
    switch (scope) {
        case ObjectFilter::Scope::ContainingGraph:
            return &owner == graph;
        case ObjectFilter::Scope::SameGraph:
            return owner.GetGraph() == graph;
        case ObjectFilter::Scope::BelowContainingGraph:
            return IsInsideGraph(owner, *graph);
        default:
            return false;  // values outside the four admit nothing
    }
}

bool PassesFlags(const ObjectFilter& filter, const Object& object) {
    const auto* parameter = ObjectCast<Parameter>(&object);
    if (parameter == nullptr) {
        return true;
    }
    const std::uint64_t flags = parameter->GetParameterFlags().GetBits();
    const std::uint64_t required = filter.requiredFlags.GetBits();
    return (flags & required) == required && (flags & filter.forbiddenFlags.GetBits()) == 0;
}

Operator& FindTopmostOperator(Operator& op) {
    Operator* top = &op;
    while (Graph* graph = top->GetGraph()) {
        top = graph;
    }
    return *top;
}

// Saved paths are written and read from here: the graph around the operator, or a root graph itself.
Object* FindContext(const Parameter& parameter) {
    Operator* op = parameter.GetOperator();
    if (op == nullptr) {
        return nullptr;
    }
    if (Graph* graph = op->GetGraph()) {
        return graph;
    }
    return ObjectCast<Graph>(op);
}

template <typename Visit>
void VisitNode(ParameterNode& node, Visit& visit) {
    visit(node);
    if (auto* group = ObjectCast<ParameterGroup>(&node)) {
        for (ParameterNode* child : group->GetChildren()) {
            VisitNode(*child, visit);
        }
    }
}

// Depth first, in the order GetAllowedObjects promises. The root group itself is skipped: it has no key, so
// no path could name it.
template <typename Visit>
void VisitOperator(Operator& op, Visit& visit) {
    visit(op);
    for (const DataInputSlot& slot : op.GetAllDataInputSlots()) {
        if (DataInput* const* input = std::get_if<DataInput*>(&slot)) {
            visit(**input);
        } else {
            DataInputList& list = *std::get<DataInputList*>(slot);
            visit(list);
            for (DataInput* listed : list.GetInputs()) {
                visit(*listed);
            }
        }
    }
    for (DataOutput* output : op.GetAllDataOutputs()) {
        visit(*output);
    }
    for (ParameterNode* node : op.GetParameterGroup().GetChildren()) {
        VisitNode(*node, visit);
    }
    if (auto* graph = ObjectCast<Graph>(&op)) {
        for (Operator* child : graph->GetOperators()) {
            VisitOperator(*child, visit);
        }
    }
}

}  // namespace

bool PassesFilter(const ObjectFilter& filter, const Parameter& parameter, const Object* object) {
    if (object == nullptr) {
        return true;
    }
    const ObjectType* type = object->GetType();
    const bool typeMatches =
        std::any_of(filter.types.begin(), filter.types.end(),
                    [type](const ObjectType* t) { return t != nullptr && type->Inherits(t); });
    if (!typeMatches || !PassesFlags(filter, *object)) {
        return false;
    }
    const Operator* own = parameter.GetOperator();
    if (own == nullptr) {
        return true;
    }
    const Operator* owner = FindOwningOperator(*object);
    if (owner == nullptr) {
        return false;
    }
    if (filter.excludeOwnOperator && owner == own) {
        return false;
    }
    return PassesScope(filter.scope, *owner, *own);
}

std::vector<Object*> GetAllowedObjects(const ObjectFilter& filter, const Parameter& parameter) {
    std::vector<Object*> allowed;
    Operator* op = parameter.GetOperator();
    if (op == nullptr) {
        return allowed;
    }
    auto visit = [&](Object& object) {
        if (PassesFilter(filter, parameter, &object)) {
            allowed.push_back(&object);
        }
    };
    VisitOperator(FindTopmostOperator(*op), visit);
    return allowed;
}

bool IsAtOrBelow(const Object* object, const Object* ancestor) {
    for (const Object* current = object; current != nullptr; current = ParentOf(*current)) {
        if (current == ancestor) {
            return true;
        }
    }
    return false;
}

nlohmann::json ToJson(const Parameter& parameter, Object* referent) {
    Object* context = FindContext(parameter);
    // A referent outside the context is possible once the operator moved to another graph.
    if (!IsAtOrBelow(referent, context)) {
        return nullptr;
    }
    if (referent == context) {
        return "";  // GetRelativePath refuses the ancestor itself; the empty path resolves to it
    }
    return referent->GetRelativePath(*context).ToString();
}

Object* Resolve(const Parameter& parameter, std::string_view text) {
    Object* context = FindContext(parameter);
    const std::optional<Path> path = Path::Parse(text);
    if (context == nullptr || !path) {
        return nullptr;
    }
    return context->Resolve(*path);
}

void ClearReferencesInto(Object& target) {
    // Found through const links; the operator itself is not const.
    Operator* op = const_cast<Operator*>(FindOwningOperator(target));
    if (op == nullptr) {
        return;
    }
    // Collect first and clear afterwards: a cleared parameter notifies, and what its listeners (or a
    // structural rebuild) do to the tree must not disturb the walk. The Ptrs notice holders that die
    // meanwhile.
    std::vector<Ptr<Parameter>> holders;
    auto visit = [&](Object& object) {
        if (IsAtOrBelow(&object, &target)) {
            return;  // goes along with the target, references and all
        }
        if (auto* single = ObjectCast<PtrParameter>(&object)) {
            Object* referent = single->Value();
            if (IsAtOrBelow(referent, &target)) {
                holders.emplace_back(single);
            }
        } else if (auto* list = ObjectCast<PtrListParameter>(&object)) {
            const std::vector<Object*> entries = list->Value();
            if (std::any_of(entries.begin(), entries.end(),
                            [&](const Object* entry) { return IsAtOrBelow(entry, &target); })) {
                holders.emplace_back(list);
            }
        }
    };
    VisitOperator(FindTopmostOperator(*op), visit);

    for (const Ptr<Parameter>& holder : holders) {
        if (auto* single = ObjectCast<PtrParameter>(holder.Get())) {
            Object* referent = single->Value();  // a listener may have changed it meanwhile
            if (IsAtOrBelow(referent, &target)) {
                single->SetValue(nullptr);
            }
        } else if (auto* list = ObjectCast<PtrListParameter>(holder.Get())) {
            list->RemoveReferencesTo(target);
        }
    }
}

}  // namespace Vantel::ReferenceSupport
