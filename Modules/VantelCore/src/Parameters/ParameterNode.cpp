#include <Vantel/Parameters/ParameterNode.h>

#include <algorithm>

#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterGroup.h>

namespace Vantel {

class ParameterNode::Implementation {
public:
    ParameterGroup* parent = nullptr;
};

ParameterNode::ParameterNode() : implementation(std::make_unique<Implementation>()) {}

ParameterNode::~ParameterNode() {
    DetachFromParent();
}

VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(ParameterNode, Object, "Vantel.ParameterNode")

ParameterGroup* ParameterNode::GetParent() const {
    return implementation->parent;
}

std::size_t ParameterNode::GetIndex() const {
    const ParameterGroup* parent = implementation->parent;
    if (parent == nullptr) {
        return npos;
    }
    const std::vector<const ParameterNode*>& siblings = parent->GetChildren();
    const auto found = std::find(siblings.begin(), siblings.end(), this);
    return found == siblings.end() ? npos : static_cast<std::size_t>(found - siblings.begin());
}

Operator* ParameterNode::GetOperator() const {
    // Climbing from the parent reaches the same top group as climbing from a group itself, so only a node
    // without parent needs to know whether it is a group (saving asks this of every connected parameter).
    const ParameterGroup* top = implementation->parent;
    if (top == nullptr) {
        top = ObjectCast<ParameterGroup>(this);
        if (top == nullptr) {
            return nullptr;
        }
    }
    for (const ParameterGroup* parent = top->GetParent(); parent != nullptr; parent = parent->GetParent()) {
        top = parent;
    }
    return top->GetOwningOperator();
}

ParameterBundle* ParameterNode::GetBundle() const {
    for (ParameterGroup* group = implementation->parent; group != nullptr; group = group->GetParent()) {
        if (auto* bundle = ObjectCast<ParameterBundle>(group)) {
            return bundle;
        }
    }
    return nullptr;
}

Object* ParameterNode::GetParentObjectImplementation() {
    if (implementation->parent != nullptr) {
        return implementation->parent;
    }
    if (auto* group = ObjectCast<ParameterGroup>(this)) {
        return group->GetOwningOperator();
    }
    return nullptr;
}

void ParameterNode::DetachFromParent() {
    if (implementation->parent != nullptr) {
        implementation->parent->Remove(this);
    }
}

void ParameterNode::SetParent(ParameterGroup* parent) {
    implementation->parent = parent;
}

}  // namespace Vantel
