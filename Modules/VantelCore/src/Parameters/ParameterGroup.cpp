#include <Vantel/Parameters/ParameterGroup.h>

#include <algorithm>

#include <absl/container/flat_hash_map.h>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Ptr.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Support/Logging.h>

#include "Parameters/ReferenceSupport.h"
#include "Projects/EditRecorder.h"

namespace Vantel {
namespace {

struct Annotation {
    bool continuation = false;
    std::string label;
    bool separatorAbove = false;
};

const std::string& EmptyLabel() {
    static const std::string empty;
    return empty;
}

std::string NameOf(const ParameterNode& node) {
    if (const auto* parameter = ObjectCast<Parameter>(&node)) {
        return parameter->GetName();
    }
    if (const auto* bundle = ObjectCast<ParameterBundle>(&node)) {
        return bundle->GetName();
    }
    return "";
}

// The base of the key made for a node without one: its name, or a word for what it is.
std::string KeyBase(const ParameterNode& node, const std::string& name) {
    if (!name.empty()) {
        return name;
    }
    if (ObjectCast<Parameter>(&node) != nullptr) {
        return "Parameter";
    }
    return ObjectCast<ParameterBundle>(&node) != nullptr ? "Bundle" : "Node";
}

bool IsUserParameter(const ParameterNode& node) {
    const auto* parameter = ObjectCast<Parameter>(&node);
    return parameter != nullptr && parameter->IsAddedByUser();
}

// Bundles and user-added parameters are what a user creates and removes, so only they are recorded.
bool IsRecordedNode(const ParameterNode& node) {
    return ObjectCast<ParameterBundle>(&node) != nullptr || IsUserParameter(node);
}

// A rebuild records the removal of the operator's own parameters too: undo replays the rebuild, which makes
// them again with default values, and the record gives them theirs back.
bool IsRecordedRemoval(const ParameterNode& node) {
    return IsRecordedNode(node) ||
           (ObjectCast<Parameter>(&node) != nullptr && Operator::Implementation::IsRebuildingStructure());
}

EditRecorder::PendingRemoval RemovalRecord(ParameterNode& node, std::size_t index) {
    if (!IsRecordedRemoval(node)) {
        return {};
    }
    return EditRecorder::ParameterNodeRemoving(node, index);
}

void CollectSubtreeParameters(ParameterNode& node, std::vector<Parameter*>& parameters) {
    if (auto* parameter = ObjectCast<Parameter>(&node)) {
        parameters.push_back(parameter);
        return;
    }
    if (auto* group = ObjectCast<ParameterGroup>(&node)) {
        for (ParameterNode* child : group->GetChildren()) {
            CollectSubtreeParameters(*child, parameters);
        }
    }
}

// Each disconnection notifies, and a listener may take parameters of the subtree away meanwhile.
void DisconnectSubtree(Graph& graph, ParameterNode& node) {
    std::vector<Parameter*> found;
    CollectSubtreeParameters(node, found);
    const std::vector<Ptr<Parameter>> parameters(found.begin(), found.end());
    for (const Ptr<Parameter>& parameter : parameters) {
        if (Parameter* alive = parameter.Get()) {
            graph.DisconnectParameter(*alive);
        }
    }
}

}  // namespace

class ParameterGroup::Implementation {
public:
    explicit Implementation(ParameterGroup& group) : group(group) {}

    ParameterGroup& group;
    // Written only by Attach, Own, Detach, Reposition, Reorder and DetachAll, which keep the two child lists
    // equal, the owned and annotated nodes among the children, and each child's parent pointer on the group.
    std::vector<ParameterNode*> children;
    std::vector<const ParameterNode*> constChildren;
    absl::flat_hash_map<const ParameterNode*, std::unique_ptr<ParameterNode>> owned;
    absl::flat_hash_map<const ParameterNode*, Annotation> annotations;
    Operator* owningOperator = nullptr;
    Event<ParameterNode*> childAddedEvent;
    Event<ParameterNode*> childRemovedEvent;
    Event<> childOrderChangedEvent;
    Event<> annotationsChangedEvent;

    static constexpr std::size_t kFirstCapacity = 4;

    std::size_t IndexOf(const ParameterNode* node) const {
        const auto found = std::find(constChildren.begin(), constChildren.end(), node);
        return found == constChildren.end() ? ParameterNode::npos
                                            : static_cast<std::size_t>(found - constChildren.begin());
    }

    // Appends the node, then moves it to `index` (an index past the end leaves it last).
    void Attach(ParameterNode* node, std::size_t index) {
        node->SetParent(&group);
        if (children.empty()) {
            // Most groups hold a handful of parameters: room for them at once rather than three regrowths.
            children.reserve(kFirstCapacity);
            constChildren.reserve(kFirstCapacity);
        }
        children.push_back(node);
        constChildren.push_back(node);
        const std::size_t last = children.size() - 1;
        Reposition(last, std::min(index, last));
    }

    // Only for a node that is a child.
    void Own(ParameterNode* node, std::unique_ptr<ParameterNode>&& owner) {
        owned.emplace(node, std::move(owner));
    }

    // Takes the child at `index` out; the result owns it when the group did.
    std::unique_ptr<ParameterNode> Detach(std::size_t index) {
        ParameterNode* node = children[index];
        node->SetParent(nullptr);
        children.erase(children.begin() + static_cast<std::ptrdiff_t>(index));
        constChildren.erase(constChildren.begin() + static_cast<std::ptrdiff_t>(index));
        annotations.erase(node);
        auto found = owned.extract(node);
        return found ? std::move(found.mapped()) : nullptr;
    }

    // A dying group: every child is let go, and the lists emptied, before the owned ones are destroyed, so
    // that nothing their destructors notify can reach a dying child through the group. The annotations
    // only compare their keys and die with the group.
    void DetachAll() {
        for (ParameterNode* child : children) {
            child->SetParent(nullptr);
        }
        children.clear();
        constChildren.clear();
        owned.clear();
    }

    // The same children in a new order.
    void Reorder(std::vector<ParameterNode*>&& reordered) {
        children = std::move(reordered);
        constChildren.assign(children.begin(), children.end());
    }

    // Moves the child at `from` to `to` in both vectors; the ones in between shift by one.
    void Reposition(std::size_t from, std::size_t to) {
        const auto move = [from, to](auto& vector) {
            const auto item = vector[from];
            vector.erase(vector.begin() + static_cast<std::ptrdiff_t>(from));
            vector.insert(vector.begin() + static_cast<std::ptrdiff_t>(to), item);
        };
        move(children);
        move(constChildren);
    }

    const Annotation* FindAnnotation(const ParameterNode* node) const {
        const auto found = annotations.find(node);
        return found == annotations.end() ? nullptr : &found->second;
    }
};

ParameterGroup::ParameterGroup() : implementation(std::make_unique<Implementation>(*this)) {}

ParameterGroup::~ParameterGroup() {
    DetachFromParent();
    implementation->DetachAll();
}

VANTEL_DEFINE_OBJECT_TYPE(ParameterGroup, ParameterNode, "Vantel.ParameterGroup")

bool ParameterGroup::Add(ParameterNode* node) {
    return Insert(node, npos);
}

bool ParameterGroup::Add(std::unique_ptr<ParameterNode>&& node) {
    return Insert(std::move(node), npos);
}

bool ParameterGroup::Insert(std::unique_ptr<ParameterNode>&& node, std::size_t index) {
    std::unique_ptr<ParameterNode> taken = std::move(node);  // a refused node dies here, whatever its type
    ParameterNode* raw = taken.get();
    if (!Insert(raw, index)) {
        return false;
    }
    implementation->Own(raw, std::move(taken));
    return true;
}

bool ParameterGroup::Insert(ParameterNode* node, std::size_t index) {
    if (node == nullptr || node == this || !AcceptsChild(*node)) {
        return false;
    }
    if (node->GetParent() == this) {
        return Move(node, std::min(index, implementation->children.size() - 1));
    }
    if (node->GetParent() != nullptr) {
        LogError(
            "ParameterGroup::Insert: the node already belongs to another group. Remove it from that one "
            "first.");
        return false;
    }

    // A declared parameter is keyed by its name, so that saved values find it again when it is re-created.
    const std::string name = NameOf(*node);
    const std::string wanted = KeyBase(*node, name);
    // A user's parameters get made keys instead, so that two of one type do not collide.
    if (node->GetKey().empty() && !IsUserParameter(*node) && Path::IsValidKey(name)) {
        node->SetKey(name);
    }
    if (implementation->owningOperator != nullptr) {
        Access::GetImplementation(*implementation->owningOperator)->SettleChildKey(*node, wanted);
    } else {
        Vantel::SettleChildKey(
            *node, wanted, [this] { return "parameter group '" + GetKey() + "'"; },
            [this](std::string_view key) { return Find(key) == nullptr; });
    }

    implementation->Attach(node, index);

    if (IsRecordedNode(*node)) {
        EditRecorder::ParameterNodeAdded(*node);
    }
    implementation->childAddedEvent.Fire(node);
    NotifyTreeChanged(node, true);
    return true;
}

bool ParameterGroup::Remove(ParameterNode* node) {
    if (node == nullptr || node->GetParent() != this) {
        return false;
    }
    // Each step below fires listeners that may rebuild the structure and take the node out (and destroy it)
    // themselves; the weak pointer tells when that happened, and then the removal is done.
    const Ptr<ParameterNode> alive(node);
    const auto stillHere = [&] { return alive.Get() != nullptr && node->GetParent() == this; };
    // Through the parameters' setters, while the node is still attached, so that each clearing is recorded
    // with a path that resolves and is undone after the node comes back.
    ReferenceSupport::ClearReferencesInto(*node);
    Operator* op = GetOperator();
    if (op != nullptr && stillHere()) {
        Access::GetImplementation(*op)->ParameterNodeRemovingEvent().Fire(node);
    }
    if (Graph* graph = op != nullptr ? op->GetGraph() : nullptr; graph != nullptr && stillHere()) {
        DisconnectSubtree(*graph, *node);
    }
    if (!stillHere()) {
        return true;
    }
    std::unique_ptr<ParameterNode> owned = Detach(node);
    return true;  // `owned` dies here, destroying a node the group owned
}

std::unique_ptr<ParameterNode> ParameterGroup::Detach(ParameterNode* node) {
    if (node == nullptr || implementation->IndexOf(node) == npos) {
        return nullptr;
    }
    // The handler may remove or move other children, or this one: look for it again afterwards, and take
    // the record only then, so that its index is where undo puts it back after undoing the handler's changes.
    const Ptr<ParameterNode> alive(node);
    ChildRemoving(node);
    const std::size_t index = alive.Get() != nullptr ? implementation->IndexOf(node) : npos;
    if (index == npos) {
        return nullptr;
    }
    EditRecorder::PendingRemoval record = RemovalRecord(*node, index);
    std::unique_ptr<ParameterNode> owned = implementation->Detach(index);
    record.Record();
    implementation->childRemovedEvent.Fire(node);
    NotifyTreeChanged(node, false);
    return owned;
}

bool ParameterGroup::Move(ParameterNode* node, std::size_t index) {
    const std::size_t current = implementation->IndexOf(node);
    if (node == nullptr || current == npos || index >= implementation->children.size() || current == index) {
        return false;
    }
    implementation->Reposition(current, index);
    EditRecorder::ParameterNodeMoved(*node, current, index);
    ChildrenReordered();
    implementation->childOrderChangedEvent.Fire();
    NotifyLayoutChanged();
    return true;
}

bool ParameterGroup::MoveToBack(ParameterNode* node) {
    if (implementation->children.empty()) {
        return false;
    }
    return Move(node, implementation->children.size() - 1);
}

const std::vector<const ParameterNode*>& ParameterGroup::GetChildren() const {
    return implementation->constChildren;
}

const std::vector<ParameterNode*>& ParameterGroup::GetChildren() {
    return implementation->children;
}

std::size_t ParameterGroup::GetChildCount() const {
    return implementation->children.size();
}

const ParameterNode* ParameterGroup::GetChild(std::size_t index) const {
    return index < implementation->constChildren.size() ? implementation->constChildren[index] : nullptr;
}

ParameterNode* ParameterGroup::GetChild(std::size_t index) {
    return index < implementation->children.size() ? implementation->children[index] : nullptr;
}

ParameterNode* ParameterGroup::Find(std::string_view key) const {
    if (key.empty()) {
        return nullptr;
    }
    for (ParameterNode* child : implementation->children) {
        if (child->GetKey() == key) {
            return child;
        }
    }
    return nullptr;
}

Parameter* ParameterGroup::FindParameter(std::string_view key) const {
    return ObjectCast<Parameter>(Find(key));
}

void ParameterGroup::MakeRow(const std::vector<ParameterNode*>& given, std::string_view label) {
    if (given.size() < 2) {
        return;
    }
    for (const ParameterNode* node : given) {
        if (node == nullptr || node->GetParent() != this) {
            LogError("ParameterGroup::MakeRow: all nodes must already be children of this group.");
            return;
        }
    }
    // A node named twice stands in the row once, at its first place.
    std::vector<ParameterNode*> nodes;
    for (ParameterNode* node : given) {
        if (std::find(nodes.begin(), nodes.end(), node) == nodes.end()) {
            nodes.push_back(node);
        }
    }
    if (nodes.size() < 2) {
        return;
    }
    // Take the row's nodes out, then put them back side by side where the first one stood.
    const std::vector<ParameterNode*>& children = implementation->children;
    const std::size_t firstIndex = implementation->IndexOf(nodes.front());
    std::size_t insertAt = 0;
    std::vector<ParameterNode*> others;
    for (std::size_t i = 0; i < children.size(); ++i) {
        if (i == firstIndex) {
            insertAt = others.size();
        }
        if (std::find(nodes.begin(), nodes.end(), children[i]) == nodes.end()) {
            others.push_back(children[i]);
        }
    }
    others.insert(others.begin() + static_cast<std::ptrdiff_t>(insertAt), nodes.begin(), nodes.end());
    implementation->Reorder(std::move(others));

    for (std::size_t i = 0; i < nodes.size(); ++i) {
        Annotation& annotation = implementation->annotations[nodes[i]];
        annotation.continuation = i > 0;
        if (i == 0) {
            annotation.label = label;
        }
    }
    implementation->childOrderChangedEvent.Fire();
    implementation->annotationsChangedEvent.Fire();
    NotifyLayoutChanged();
}

std::vector<ParameterNode*> ParameterGroup::GetRow(const ParameterNode* node) const {
    std::size_t index = implementation->IndexOf(node);
    if (index == npos) {
        return {};
    }
    while (index > 0 && IsRowContinuation(implementation->children[index])) {
        --index;
    }
    std::vector<ParameterNode*> row{implementation->children[index]};
    for (++index;
         index < implementation->children.size() && IsRowContinuation(implementation->children[index]);
         ++index) {
        row.push_back(implementation->children[index]);
    }
    return row;
}

const ParameterNode* ParameterGroup::GetRowPrimary(const ParameterNode* node) const {
    const std::vector<ParameterNode*> row = GetRow(node);
    return row.empty() ? node : row.front();
}

ParameterNode* ParameterGroup::GetRowPrimary(ParameterNode* node) {
    const std::vector<ParameterNode*> row = GetRow(node);
    return row.empty() ? node : row.front();
}

const std::string& ParameterGroup::GetRowLabel(const ParameterNode* node) const {
    const Annotation* annotation = implementation->FindAnnotation(GetRowPrimary(node));
    return annotation != nullptr ? annotation->label : EmptyLabel();
}

void ParameterGroup::SetRowLabel(const ParameterNode* node, std::string_view label) {
    const ParameterNode* primary = GetRowPrimary(node);
    if (implementation->IndexOf(primary) == npos || GetRowLabel(primary) == label) {
        return;
    }
    implementation->annotations[primary].label = label;
    implementation->annotationsChangedEvent.Fire();
    NotifyLayoutChanged();
}

bool ParameterGroup::IsRowContinuation(const ParameterNode* node) const {
    const Annotation* annotation = implementation->FindAnnotation(node);
    return annotation != nullptr && annotation->continuation;
}

void ParameterGroup::SetRowContinuation(const ParameterNode* node, bool continuation) {
    if (implementation->IndexOf(node) == npos || IsRowContinuation(node) == continuation) {
        return;
    }
    implementation->annotations[node].continuation = continuation;
    implementation->annotationsChangedEvent.Fire();
    NotifyLayoutChanged();
}

bool ParameterGroup::HasSeparatorAbove(const ParameterNode* node) const {
    const Annotation* annotation = implementation->FindAnnotation(node);
    return annotation != nullptr && annotation->separatorAbove;
}

void ParameterGroup::SetSeparatorAbove(const ParameterNode* node, bool separator) {
    if (implementation->IndexOf(node) == npos || HasSeparatorAbove(node) == separator) {
        return;
    }
    implementation->annotations[node].separatorAbove = separator;
    implementation->annotationsChangedEvent.Fire();
    NotifyLayoutChanged();
}

Event<ParameterNode*>& ParameterGroup::ChildAddedEvent() {
    return implementation->childAddedEvent;
}

Event<ParameterNode*>& ParameterGroup::ChildRemovedEvent() {
    return implementation->childRemovedEvent;
}

Event<>& ParameterGroup::ChildOrderChangedEvent() {
    return implementation->childOrderChangedEvent;
}

Event<>& ParameterGroup::AnnotationsChangedEvent() {
    return implementation->annotationsChangedEvent;
}

Object* ParameterGroup::FindChildImplementation(std::string_view key) {
    return Find(key);
}

bool ParameterGroup::AcceptsChild(const ParameterNode& node) {
    for (const ParameterNode* ancestor = this; ancestor != nullptr; ancestor = ancestor->GetParent()) {
        if (ancestor == &node) {
            return false;
        }
    }
    return true;
}

void ParameterGroup::ChildRemoving(ParameterNode*) {}

void ParameterGroup::ChildrenReordered() {}

Operator* ParameterGroup::GetOwningOperator() const {
    return implementation->owningOperator;
}

void ParameterGroup::SetOwningOperator(Operator* owner) {
    implementation->owningOperator = owner;
}

void ParameterGroup::NotifyTreeChanged(ParameterNode* node, bool added) {
    Operator* op = GetOperator();
    if (op == nullptr) {
        return;
    }
    Access::GetImplementation(*op)->MarkParameterTreeChanged();
    (added ? op->ParameterNodeAddedEvent() : op->ParameterNodeRemovedEvent()).Fire(node);
    op->ParameterTreeChangedEvent().Fire();
}

void ParameterGroup::NotifyLayoutChanged() {
    Operator* op = GetOperator();
    if (op == nullptr) {
        return;
    }
    Access::GetImplementation(*op)->MarkParameterTreeChanged();
    op->ParameterTreeChangedEvent().Fire();
}

}  // namespace Vantel
