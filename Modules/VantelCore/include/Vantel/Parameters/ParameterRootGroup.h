// ParameterRootGroup.h: the top group of an operator's parameter tree.
//
//   ParameterRootGroup& root = op.GetParameterGroup();
//   root.Add(std::make_unique<IntParameter>(ParameterScope(nullptr), "Count", 3));
#pragma once

#include <Vantel/Export.h>
#include <Vantel/Parameters/ParameterGroup.h>

namespace Vantel {

// ParameterRootGroup
//
// Owned by its operator, which it names as its object parent. It holds parameters and bundle lists only;
// keys of its children are settled among all children of the operator (ports included).
class VANTEL_API ParameterRootGroup : public ParameterGroup {
public:
    ParameterRootGroup();
    ~ParameterRootGroup() override;

    VANTEL_DECLARE_OBJECT_TYPE(ParameterRootGroup);

protected:
    bool AcceptsChild(const ParameterNode& node) override;
};

}  // namespace Vantel
