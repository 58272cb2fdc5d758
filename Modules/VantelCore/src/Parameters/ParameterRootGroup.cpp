#include <Vantel/Parameters/ParameterRootGroup.h>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundleList.h>

namespace Vantel {

ParameterRootGroup::ParameterRootGroup() = default;

ParameterRootGroup::~ParameterRootGroup() = default;

const ObjectType* ParameterRootGroup::Type() {
    static const ObjectType type("Vantel.ParameterRootGroup", ParameterGroup::Type(),
                                 MakeFactory<ParameterRootGroup>());
    return &type;
}

const ObjectType* ParameterRootGroup::GetType() const {
    return Type();
}

bool ParameterRootGroup::AcceptsChild(const ParameterNode& node) {
    if (!ParameterGroup::AcceptsChild(node)) {
        return false;
    }
    return dynamic_cast<const Parameter*>(&node) != nullptr ||
           dynamic_cast<const ParameterBundleList*>(&node) != nullptr;
}

}  // namespace Vantel
