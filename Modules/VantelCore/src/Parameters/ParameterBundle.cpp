#include <Vantel/Parameters/ParameterBundle.h>

#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundleList.h>

namespace Vantel {

class ParameterBundle::Implementation {
public:
    std::string kind;
    std::string name;
};

ParameterBundle::ParameterBundle(std::string_view kind) : implementation(std::make_unique<Implementation>()) {
    implementation->kind = kind;
}

ParameterBundle::~ParameterBundle() = default;

// No factory: bundles are made by their list, which gives them their kind.
VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(ParameterBundle, ParameterGroup, "Vantel.ParameterBundle")

ParameterBundleList* ParameterBundle::GetBundleList() const {
    return ObjectCast<ParameterBundleList>(GetParent());
}

const std::string& ParameterBundle::GetKind() const {
    return implementation->kind;
}

const std::string& ParameterBundle::GetName() const {
    return implementation->name;
}

void ParameterBundle::SetName(std::string_view name) {
    implementation->name = name;
}

bool ParameterBundle::Add(Parameter* parameter) {
    return ParameterGroup::Add(parameter);
}

bool ParameterBundle::Add(std::unique_ptr<Parameter>&& parameter) {
    return Insert(std::move(parameter), npos);
}

bool ParameterBundle::Insert(Parameter* parameter, std::size_t index) {
    return ParameterGroup::Insert(parameter, index);
}

bool ParameterBundle::Insert(std::unique_ptr<Parameter>&& parameter, std::size_t index) {
    return ParameterGroup::Insert(std::unique_ptr<ParameterNode>(std::move(parameter)), index);
}

std::vector<Parameter*> ParameterBundle::GetParameters() {
    std::vector<Parameter*> parameters;
    for (ParameterNode* child : GetChildren()) {
        parameters.push_back(static_cast<Parameter*>(child));  // a bundle accepts parameters only
    }
    return parameters;
}

std::vector<const Parameter*> ParameterBundle::GetParameters() const {
    std::vector<const Parameter*> parameters;
    for (const ParameterNode* child : GetChildren()) {
        parameters.push_back(static_cast<const Parameter*>(child));
    }
    return parameters;
}

// A parameter has no children, so it is never one of the bundle's ancestors: no cycle check is needed.
bool ParameterBundle::AcceptsChild(const ParameterNode& node) {
    return ObjectCast<Parameter>(&node) != nullptr;
}

}  // namespace Vantel
