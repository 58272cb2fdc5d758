// ParameterGroup.h: a node of the parameter tree that holds other nodes, in display order, laid out in rows.
//
//   group.Add(std::make_unique<FloatParameter>(ParameterScope(nullptr), "Gain", 1.0));   // owned
//   group.MakeRow({&x, &y}, "Offset");                                                 // one row, one label
//   group.Move(&y, 0);
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Parameters/ParameterNode.h>

namespace Vantel {

class Parameter;

// ParameterGroup
//
// Holds child nodes in display order and gives each a key unique among its siblings. A child is either owned
// (handed over as a unique pointer: bundles, user-added parameters) or only registered (a parameter that an
// operator class keeps as a member). Children are laid out in rows: a row is a first node followed by every
// node that continues it; a row carries a label, and a node may have a separator above it. Adding, removing
// and moving bundles and user-added parameters is recorded for undo; layout is not. Destroying a group
// detaches it, clears the parent of its remaining children and destroys those it owns. Main thread only.
class VANTEL_API ParameterGroup : public ParameterNode {
public:
    ParameterGroup();
    ~ParameterGroup() override;

    VANTEL_DECLARE_OBJECT_TYPE(ParameterGroup);

    // Insert at the end.
    bool Add(ParameterNode* node);
    bool Add(std::unique_ptr<ParameterNode>&& node);
    // False for null, for the group itself, or when AcceptsChild refuses. A node that is already a child is
    // moved to min(index, last position) instead. A node of another group is refused with the error
    // "ParameterGroup::Insert: the node already belongs to another group. Remove it from that one first."
    // An index at or past the end appends. The owning form takes the node: a refused node is destroyed.
    bool Insert(ParameterNode* node, std::size_t index);
    bool Insert(std::unique_ptr<ParameterNode>&& node, std::size_t index);
    // False unless `node` is a child. Clears references into the node's subtree, disconnects its parameters
    // in the operator's graph, detaches it, and destroys it when the group owned it. True as well when a
    // listener of those steps took the node out itself.
    bool Remove(ParameterNode* node);
    // False for null, a node that is not a child, an index not below the child count, or the current index.
    bool Move(ParameterNode* node, std::size_t index);
    bool MoveToBack(ParameterNode* node);

    const std::vector<const ParameterNode*>& GetChildren() const;
    const std::vector<ParameterNode*>& GetChildren();
    std::size_t GetChildCount() const;
    // Null past the end.
    const ParameterNode* GetChild(std::size_t index) const;
    ParameterNode* GetChild(std::size_t index);
    // The first direct child with exactly this key; null for an empty key.
    ParameterNode* Find(std::string_view key) const;
    // The first direct child with this key, as a parameter: null when that first match is not a parameter.
    Parameter* FindParameter(std::string_view key) const;

    // Moves `nodes` next to each other from the first one's position, makes them one row, labels it. A node
    // given twice counts once; fewer than two nodes do nothing; a null node or one that is not a child logs
    // "ParameterGroup::MakeRow: all nodes must already be children of this group." and changes nothing.
    void MakeRow(const std::vector<ParameterNode*>& nodes, std::string_view label);
    // The row that `node` belongs to, first node first; empty when `node` is not a child.
    std::vector<ParameterNode*> GetRow(const ParameterNode* node) const;
    const ParameterNode* GetRowPrimary(const ParameterNode* node) const;
    ParameterNode* GetRowPrimary(ParameterNode* node);
    const std::string& GetRowLabel(const ParameterNode* node) const;
    void SetRowLabel(const ParameterNode* node, std::string_view label);
    bool IsRowContinuation(const ParameterNode* node) const;
    void SetRowContinuation(const ParameterNode* node, bool continuation);
    bool HasSeparatorAbove(const ParameterNode* node) const;
    void SetSeparatorAbove(const ParameterNode* node, bool separator);

    Event<ParameterNode*>& ChildAddedEvent();
    Event<ParameterNode*>& ChildRemovedEvent();
    Event<>& ChildOrderChangedEvent();
    Event<>& AnnotationsChangedEvent();

protected:
    Object* FindChildImplementation(std::string_view key) override;
    // Refuses the group itself and its ancestors.
    virtual bool AcceptsChild(const ParameterNode& node);
    // Called before a child is taken out.
    virtual void ChildRemoving(ParameterNode* node);
    // Called after the order of the children changed.
    virtual void ChildrenReordered();

private:
    friend class Operator;
    friend class ParameterNode;
    Operator* GetOwningOperator() const;
    void SetOwningOperator(Operator* owner);
    std::unique_ptr<ParameterNode> Detach(ParameterNode* node);
    void NotifyTreeChanged(ParameterNode* node, bool added);
    void NotifyLayoutChanged();

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
