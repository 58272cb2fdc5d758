#include <Vantel/Projects/Serialization.h>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterRootGroup.h>

namespace Vantel::Serialization {
namespace {

// A value that connections recompute after loading is not stored.
bool IsEveryComponentDriven(const Parameter& parameter) {
    for (int component = 0; component < parameter.GetComponentCount(); ++component) {
        if (parameter.FindIncomingConnection(component) == nullptr) {
            return false;
        }
    }
    return true;
}

nlohmann::json SerializeBundle(const ParameterBundle& bundle) {
    return {{"key", bundle.GetKey()},
            {"kind", bundle.GetKind()},
            {"parameters", SerializeParameterScope(bundle)}};
}

}  // namespace

nlohmann::json SerializeParameter(const Parameter& parameter) {
    nlohmann::json entry = nlohmann::json::object();
    if (!parameter.GetKey().empty()) {
        entry["key"] = parameter.GetKey();
    }
    const bool stored = !parameter.HasParameterFlag(ParameterFlag::Output) &&
                        !parameter.HasParameterFlag(ParameterFlag::NotSaved);
    if (stored && !IsEveryComponentDriven(parameter)) {
        entry["value"] = parameter.SerializeValue();
    }
    if (parameter.IsAddedByUser()) {
        entry["type"] = parameter.GetType()->GetName();
        entry["name"] = parameter.GetName();
        if (parameter.HasParameterFlag(ParameterFlag::Output)) {
            entry["output"] = true;
        }
    }
    return entry;
}

nlohmann::json SerializeParameterNode(const ParameterNode& node) {
    if (const auto* list = dynamic_cast<const ParameterBundleList*>(&node)) {
        nlohmann::json bundles = nlohmann::json::array();
        for (const ParameterBundle* bundle : list->GetBundles()) {
            bundles.push_back(SerializeBundle(*bundle));
        }
        return {{"key", list->GetKey()}, {"bundles", std::move(bundles)}};
    }
    if (const auto* bundle = dynamic_cast<const ParameterBundle*>(&node)) {
        return SerializeBundle(*bundle);
    }
    if (const auto* group = dynamic_cast<const ParameterGroup*>(&node)) {
        return SerializeParameterScope(*group);
    }
    if (const auto* parameter = dynamic_cast<const Parameter*>(&node)) {
        return SerializeParameter(*parameter);
    }
    return nullptr;
}

nlohmann::json SerializeParameterScope(const ParameterGroup& group) {
    nlohmann::json scope = nlohmann::json::array();
    for (const ParameterNode* child : group.GetChildren()) {
        scope.push_back(SerializeParameterNode(*child));
    }
    return scope;
}

nlohmann::json SerializeOwnStructure(const Operator& op) {
    nlohmann::json structure = nlohmann::json::array();
    for (const ParameterNode* child : op.GetParameterGroup().GetChildren()) {
        const auto* parameter = dynamic_cast<const Parameter*>(child);
        if (parameter != nullptr && parameter->IsAddedByUser()) {
            structure.push_back(SerializeParameter(*parameter));
        }
    }
    return structure;
}

}  // namespace Vantel::Serialization
