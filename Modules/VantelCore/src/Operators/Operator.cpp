#include <Vantel/Operators/Operator.h>

#include <optional>

#include <Vantel/Objects/KeySettling.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/SuppressUpdateStructure.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Support/Logging.h>

namespace Vantel {
namespace {

constexpr int kMaxStructureRebuilds = 8;

// How many structure rebuilds run on this thread; parameters changed during one do not start another.
thread_local int structureRebuildDepth = 0;

void CollectParameters(ParameterGroup& group, std::vector<Parameter*>& parameters) {
    for (ParameterNode* child : group.GetChildren()) {
        if (auto* parameter = dynamic_cast<Parameter*>(child)) {
            parameters.push_back(parameter);
        } else if (auto* subgroup = dynamic_cast<ParameterGroup*>(child)) {
            CollectParameters(*subgroup, parameters);
        }
    }
}

}  // namespace

// ---- Operator::Implementation ----

Operator::Implementation::Implementation(Operator& owner) : owner(owner) {
    parameterGroup.SetOwningOperator(&owner);
}

Operator::Implementation::~Implementation() = default;

void Operator::Implementation::UpdateStructureIfDirty() {
    if (updatingStructure || !structureDirty || SuppressUpdateStructure::IsActive()) {
        return;
    }
    struct RebuildScope {
        explicit RebuildScope(bool& updating) : updating(updating) {
            updating = true;
            ++structureRebuildDepth;
        }
        ~RebuildScope() {
            --structureRebuildDepth;
            updating = false;
        }
        bool& updating;
    } scope(updatingStructure);

    // In a graph the rebuild is undoable as one step below the change that caused it.
    const bool recorded = Transaction::IsRecording() && graph != nullptr;
    std::optional<Transaction> nested;
    nlohmann::json before;
    if (recorded) {
        before = Serialization::SerializeOwnStructure(owner);
        nested.emplace("Update structure");
    }
    int rebuilds = 0;
    do {
        structureDirty = false;
        owner.UpdateStructure();
        ++rebuilds;
    } while (structureDirty && rebuilds < kMaxStructureRebuilds);
    if (structureDirty) {
        LogError("UpdateStructureIfDirty: '" + owner.GetPath().ToString() +
                 "' still changes its own structural parameters after 8 rebuilds, giving up.");
    }
    if (recorded) {
        nlohmann::json after = Serialization::SerializeOwnStructure(owner);
        if (after != before) {
            Transaction::AddRecord(StructureRecord{owner.GetPath(), std::move(before), std::move(after)});
        }
    }
}

bool Operator::Implementation::IsRebuildingStructure() {
    return structureRebuildDepth > 0;
}

void Operator::Implementation::RebuildFlatParametersIfNeeded() {
    if (!flatParametersStale) {
        return;
    }
    flatParameters.clear();
    CollectParameters(parameterGroup, flatParameters);
    constFlatParameters.assign(flatParameters.begin(), flatParameters.end());
    flatParametersStale = false;
}

void Operator::Implementation::MarkParameterTreeChanged() {
    flatParametersStale = true;
}

void Operator::Implementation::SettleChildKey(Object& child, std::string_view base) {
    Vantel::SettleChildKey(child, base, "operator '" + owner.GetKey() + "'",
                           [this](std::string_view key) { return owner.FindChild(key) == nullptr; });
}

// ---- Operator ----

Operator::Operator() : implementation(std::make_unique<Implementation>(*this)) {}

Operator::~Operator() = default;

const ObjectType* Operator::Type() {
    static const ObjectType type("Vantel.General.Operator", Object::Type(), nullptr);
    return &type;
}

const ObjectType* Operator::GetType() const {
    return Type();
}

const std::string& Operator::GetName() const {
    return implementation->name;
}

void Operator::SetName(std::string_view name) {
    if (name == implementation->name) {
        return;
    }
    if (Transaction::IsRecording()) {
        Transaction::AddRecord(RenameRecord{GetPath(), implementation->name, std::string(name)});
    }
    implementation->name = name;
}

const glm::vec2& Operator::GetPosition() const {
    return implementation->position;
}

void Operator::SetPosition(const glm::vec2& position) {
    if (position == implementation->position) {
        return;
    }
    if (Transaction::IsRecording()) {
        Transaction::AddRecord(OperatorPositionRecord{GetPath(), implementation->position, position});
    }
    implementation->position = position;
    implementation->positionChangedEvent.Fire();
}

Graph* Operator::GetGraph() const {
    return implementation->graph;
}

ParameterRootGroup& Operator::GetParameterGroup() {
    return implementation->parameterGroup;
}

const ParameterRootGroup& Operator::GetParameterGroup() const {
    return implementation->parameterGroup;
}

bool Operator::AddParameter(Parameter* parameter) {
    return implementation->parameterGroup.Add(parameter);
}

bool Operator::AddParameter(std::unique_ptr<Parameter>&& parameter) {
    return implementation->parameterGroup.Add(std::unique_ptr<ParameterNode>(std::move(parameter)));
}

bool Operator::InsertParameter(Parameter* parameter, std::size_t index) {
    return implementation->parameterGroup.Insert(parameter, index);
}

bool Operator::InsertParameter(std::unique_ptr<Parameter>&& parameter, std::size_t index) {
    return implementation->parameterGroup.Insert(std::unique_ptr<ParameterNode>(std::move(parameter)), index);
}

bool Operator::RemoveParameter(Parameter* parameter) {
    return implementation->parameterGroup.Remove(parameter);
}

const std::vector<Parameter*>& Operator::GetAllParameters() {
    implementation->RebuildFlatParametersIfNeeded();
    return implementation->flatParameters;
}

const std::vector<const Parameter*>& Operator::GetAllParameters() const {
    implementation->RebuildFlatParametersIfNeeded();
    return implementation->constFlatParameters;
}

void Operator::Execute(ExecutionContext&) {}

bool Operator::Outdated() const {
    if (implementation->dirty) {
        return true;
    }
    for (const Parameter* parameter : GetAllParameters()) {
        if (parameter->HasValueChanged() && parameter->HasParameterFlag(ParameterFlag::MarksOutdated)) {
            return true;
        }
    }
    return false;
}

void Operator::MarkDirty() {
    implementation->dirty = true;
}

bool Operator::IsStructureDirty() const {
    return implementation->structureDirty;
}

Event<ParameterNode*>& Operator::ParameterNodeAddedEvent() {
    return implementation->parameterNodeAddedEvent;
}

Event<ParameterNode*>& Operator::ParameterNodeRemovedEvent() {
    return implementation->parameterNodeRemovedEvent;
}

Event<>& Operator::ParameterTreeChangedEvent() {
    return implementation->parameterTreeChangedEvent;
}

Event<>& Operator::PositionChangedEvent() {
    return implementation->positionChangedEvent;
}

Object* Operator::GetParentObjectImplementation() {
    return implementation->graph;
}

Object* Operator::FindChildImplementation(std::string_view key) {
    return implementation->parameterGroup.Find(key);
}

void Operator::UpdateStructure() {}

}  // namespace Vantel
