#include <Vantel/Parameters/ParameterRootGroup.h>

#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundleList.h>

namespace Vantel {

ParameterRootGroup::ParameterRootGroup() = default;

ParameterRootGroup::~ParameterRootGroup() = default;

VANTEL_DEFINE_OBJECT_TYPE(ParameterRootGroup, ParameterGroup, "Vantel.ParameterRootGroup")

// The root has no ancestors, so no cycle check is needed.
bool ParameterRootGroup::AcceptsChild(const ParameterNode& node) {
    return ObjectCast<Parameter>(&node) != nullptr || ObjectCast<ParameterBundleList>(&node) != nullptr;
}

}  // namespace Vantel
