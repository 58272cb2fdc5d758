#include <Vantel/Parameters/ParameterBundleList.h>

#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterRootGroup.h>

#include "Projects/EditRecorder.h"

namespace Vantel {

class ParameterBundleList::Implementation {
public:
    BundleHandlers handlers;
    bool removable = true;
    bool movable = true;
    bool numbered = false;
};

ParameterBundleList::ParameterBundleList(ParameterRootGroup& group, std::string_view key,
                                         BundleHandlers handlers)
    : implementation(std::make_unique<Implementation>()) {
    implementation->handlers = std::move(handlers);
    SetKey(key);
    group.Add(this);
}

ParameterBundleList::ParameterBundleList(Operator* op, std::string_view key, BundleHandlers handlers)
    : implementation(std::make_unique<Implementation>()) {
    implementation->handlers = std::move(handlers);
    SetKey(key);
    if (op != nullptr) {
        op->GetParameterGroup().Add(this);
    }
}

ParameterBundleList::~ParameterBundleList() {
    // Detach while this is still a bundle list, so that the parent sees what it is removing.
    DetachFromParent();
}

VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(ParameterBundleList, ParameterGroup, "Vantel.ParameterBundleList")

ParameterBundle* ParameterBundleList::CreateBundle(std::string_view kind, std::string_view key) {
    std::unique_ptr<ParameterBundle> bundle(new ParameterBundle(kind));
    if (!key.empty()) {
        bundle->SetKey(key);
    }
    ParameterBundle* created = bundle.get();
    {
        // The bundle and what the handler puts in it are one step for undo: the record below.
        EditRecorder::Unrecorded unrecorded;
        if (!Add(std::unique_ptr<ParameterNode>(std::move(bundle)))) {
            return nullptr;
        }
        if (implementation->handlers.created) {
            implementation->handlers.created(*created);
        }
    }
    EditRecorder::ParameterNodeAdded(*created);
    return created;
}

bool ParameterBundleList::RemoveBundle(ParameterBundle* bundle) {
    if (bundle == nullptr || bundle->GetParent() != this) {
        return false;
    }
    return Remove(bundle);
}

bool ParameterBundleList::MoveBundle(ParameterBundle* bundle, std::size_t index) {
    return Move(bundle, index);
}

std::vector<ParameterBundle*> ParameterBundleList::GetBundles() {
    std::vector<ParameterBundle*> bundles;
    for (ParameterNode* child : GetChildren()) {
        bundles.push_back(static_cast<ParameterBundle*>(child));  // the list accepts bundles only
    }
    return bundles;
}

std::vector<const ParameterBundle*> ParameterBundleList::GetBundles() const {
    std::vector<const ParameterBundle*> bundles;
    for (const ParameterNode* child : GetChildren()) {
        bundles.push_back(static_cast<const ParameterBundle*>(child));
    }
    return bundles;
}

ParameterBundle* ParameterBundleList::GetBundle(std::size_t index) const {
    return static_cast<ParameterBundle*>(const_cast<ParameterBundleList*>(this)->GetChild(index));
}

std::size_t ParameterBundleList::GetBundleCount() const {
    return GetChildCount();
}

std::size_t ParameterBundleList::IndexOf(const ParameterBundle* bundle) const {
    if (bundle == nullptr || bundle->GetParent() != this) {
        return npos;
    }
    return bundle->GetIndex();
}

bool ParameterBundleList::BundlesRemovable() const {
    return implementation->removable;
}
void ParameterBundleList::SetBundlesRemovable(bool removable) {
    implementation->removable = removable;
}
bool ParameterBundleList::BundlesMovable() const {
    return implementation->movable;
}
void ParameterBundleList::SetBundlesMovable(bool movable) {
    implementation->movable = movable;
}
bool ParameterBundleList::BundlesNumbered() const {
    return implementation->numbered;
}
void ParameterBundleList::SetBundlesNumbered(bool numbered) {
    implementation->numbered = numbered;
}

// Bundles hold parameters only, so no bundle is one of the list's ancestors: no cycle check is needed.
// A bundle of another group is refused by Insert, with the same error as in any group.
bool ParameterBundleList::AcceptsChild(const ParameterNode& node) {
    return ObjectCast<ParameterBundle>(&node) != nullptr;
}

void ParameterBundleList::ChildRemoving(ParameterNode* node) {
    auto* bundle = ObjectCast<ParameterBundle>(node);
    if (bundle != nullptr && implementation->handlers.removing) {
        implementation->handlers.removing(*bundle);
    }
}

void ParameterBundleList::ChildrenReordered() {
    if (implementation->handlers.reordered) {
        implementation->handlers.reordered();
    }
}

}  // namespace Vantel
