// ParameterNode.h: the base of everything in an operator's parameter tree.
//
//   Operator* owner = radius.GetOperator();         // through the groups up to the root group's operator
//   std::size_t row = radius.GetIndex();            // position among its siblings
#pragma once

#include <cstddef>
#include <memory>

#include <Vantel/Export.h>
#include <Vantel/Objects/Object.h>

namespace Vantel {

class Operator;
class ParameterBundle;
class ParameterGroup;

// ParameterNode
//
// A parameter or a group in the tree. It knows its parent group (null while detached); its object parent is
// that group, or for a group without parent the operator that owns it, so that paths run from a parameter
// through its groups to the operator. Destroying a node detaches it from its parent first. Main thread only.
class VANTEL_API ParameterNode : public Object {
public:
    // An enumerator rather than a static member: MinGW's g++ leaves an inline member of an exported class out
    // of the DLL, so a caller that binds it to a reference (as EXPECT_EQ does) would fail to link.
    enum : std::size_t { npos = static_cast<std::size_t>(-1) };

    ParameterNode();
    ~ParameterNode() override;

    VANTEL_DECLARE_OBJECT_TYPE(ParameterNode);

    ParameterGroup* GetParent() const;
    // npos without a parent.
    std::size_t GetIndex() const;
    // The operator that owns the root group of this node's tree; null for a tree without one.
    Operator* GetOperator() const;
    // The nearest bundle above this node, starting with its parent; null when there is none.
    ParameterBundle* GetBundle() const;

protected:
    Object* GetParentObjectImplementation() override;
    // Removes this node from its parent, if any (ParameterGroup::Remove).
    void DetachFromParent();

private:
    friend class ParameterGroup;
    void SetParent(ParameterGroup* parent);

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
