#include <Vantel/Parameters/Parameter.h>

#include <algorithm>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Parameters/ParameterScope.h>
#include <Vantel/Support/Logging.h>

#include "Projects/EditRecorder.h"
#include "Support/OperatorArena.h"

namespace Vantel {
namespace {

bool RemoveConnection(std::vector<ParameterConnection>& connections, ParameterConnectionEndpoints endpoints) {
    const auto found =
        std::find_if(connections.begin(), connections.end(),
                     [&](const ParameterConnection& c) { return c.GetEndpoints() == endpoints; });
    if (found == connections.end()) {
        return false;
    }
    connections.erase(found);
    return true;
}

// The operator's note that a marked parameter makes it outdated may no longer hold once a flag changed.
void ForgetOperatorsOutdatingMark(Parameter& parameter) {
    if (Operator* op = parameter.GetOperator()) {
        Access::GetImplementation(*op)->ForgetOutdatingParameterMark();
    }
}

}  // namespace

// ---- Parameter::Implementation ----

void* Parameter::Implementation::operator new(std::size_t size) {
    return OperatorArena::Allocate(size);
}

void Parameter::Implementation::operator delete(void* block, std::size_t size) noexcept {
    OperatorArena::Free(block, size);
}

Parameter::Implementation::Implementation(std::string_view name) : name(name) {}

void Parameter::Implementation::SetAddedByUser(bool added) {
    addedByUser = added;
}

void Parameter::Implementation::AddIncomingConnection(const ParameterConnection& connection) {
    incoming.push_back(connection);
}

void Parameter::Implementation::AddOutgoingConnection(const ParameterConnection& connection) {
    outgoing.push_back(connection);
}

bool Parameter::Implementation::RemoveIncomingConnection(ParameterConnectionEndpoints endpoints) {
    return RemoveConnection(incoming, endpoints);
}

bool Parameter::Implementation::RemoveOutgoingConnection(ParameterConnectionEndpoints endpoints) {
    return RemoveConnection(outgoing, endpoints);
}

// ---- Parameter ----

Parameter::Parameter() : implementation(std::make_unique<Implementation>("")) {}

Parameter::Parameter(ParameterScope scope, std::string_view name)
    : implementation(std::make_unique<Implementation>(name)) {
    scope.Attach(*this);
}

Parameter::~Parameter() {
    DetachFromParent();
}

VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(Parameter, ParameterNode, "Vantel.Parameter")

const std::string& Parameter::GetName() const {
    return implementation->name;
}

void Parameter::SetName(std::string_view name) {
    if (name == implementation->name) {
        return;
    }
    EditRecorder::Renamed(*this, GetOperator(), implementation->name, name);
    implementation->name = name;
    if (Operator* owner = GetOperator()) {
        Access::GetImplementation(*owner)->MemberRenamedEvent().Fire(this);
    }
}

Flags<ParameterFlag> Parameter::GetParameterFlags() const {
    return implementation->flags;
}

bool Parameter::HasParameterFlag(ParameterFlag flag) const {
    return implementation->flags.Has(flag);
}

void Parameter::SetParameterFlag(ParameterFlag flag, bool on) {
    const Flags<ParameterFlag> wanted(flag);
    const Flags<ParameterFlag>& current = implementation->flags;
    const bool output = wanted.Has(ParameterFlag::Output) || current.Has(ParameterFlag::Output);
    const bool structural = wanted.Has(ParameterFlag::Structural) || current.Has(ParameterFlag::Structural);
    const bool adds = !current.Has(flag);
    if (on && adds && output && structural) {
        LogError(
            "Parameter '" + implementation->name +
            "' cannot be an output parameter and a structural parameter at the same time, the second one is "
            "ignored.");
        return;
    }
    implementation->flags.Set(flag, on);
    ForgetOperatorsOutdatingMark(*this);
}

void Parameter::SetTransient() {
    implementation->flags.Set(ParameterFlag::NotSaved | ParameterFlag::NotUndoable, true);
    implementation->flags.Set(ParameterFlag::MarksOutdated, false);
    ForgetOperatorsOutdatingMark(*this);
}

UpdatePolicy Parameter::GetUpdatePolicy() const {
    if (implementation->updatePolicySet) {
        return implementation->updatePolicy;
    }
    return HasParameterFlag(ParameterFlag::Structural) ? UpdatePolicy::Deferred : UpdatePolicy::Immediate;
}

void Parameter::SetUpdatePolicy(UpdatePolicy policy) {
    implementation->updatePolicy = policy;
    implementation->updatePolicySet = true;
}

bool Parameter::IsAddedByUser() const {
    return implementation->addedByUser;
}

const ParameterData& Parameter::GetData() const {
    if (implementation->dataInvalid) {
        implementation->dataCache = BuildData();
        implementation->dataInvalid = false;
    }
    return implementation->dataCache;
}

bool Parameter::HasNumericComponents() const {
    if (BuildsNumericData()) {
        return true;
    }
    const ParameterData::Type type = GetData().GetType();
    return type == ParameterData::Type::Floats || type == ParameterData::Type::Ints;
}

bool Parameter::HasValueChanged() const {
    return implementation->valueChanged;
}

Event<>& Parameter::ValueChangedEvent() {
    return implementation->valueChangedEvent;
}

const std::vector<ParameterConnection>& Parameter::GetIncomingConnections() const {
    return implementation->incoming;
}

const std::vector<ParameterConnection>& Parameter::GetOutgoingConnections() const {
    return implementation->outgoing;
}

bool Parameter::HasIncomingConnection() const {
    return !implementation->incoming.empty();
}

const ParameterConnection* Parameter::FindIncomingConnection(int component) const {
    for (const ParameterConnection& connection : implementation->incoming) {
        for (const ComponentLink& link : connection.links) {
            if (link.target == component) {
                return &connection;
            }
        }
    }
    return nullptr;
}

bool Parameter::AcceptsInputConnection() const {
    const Flags<ParameterFlag>& flags = implementation->flags;
    return !flags.Has(ParameterFlag::Output) && !flags.Has(ParameterFlag::Structural) &&
           !flags.Has(ParameterFlag::NotConnectable);
}

void Parameter::SetFromData(const ParameterData&) {}

nlohmann::json Parameter::SerializeValue() const {
    return nullptr;
}

void Parameter::DeserializeValue(const nlohmann::json&) {}

bool Parameter::ValueReferencesObjects() const {
    return false;
}

int Parameter::GetComponentCount() const {
    return 1;
}

double Parameter::GetComponent(int component) const {
    return component < 0 ? 0.0 : GetData().GetFloat(static_cast<std::size_t>(component));
}

void Parameter::SetComponent(int, double) {}

Object* Parameter::FindChildImplementation(std::string_view) {
    return nullptr;
}

ParameterData Parameter::BuildData() const {
    return ParameterData();
}

bool Parameter::BuildsNumericData() const {
    return false;
}

void Parameter::MarkChanged(nlohmann::json previousValue) {
    EditRecorder::ValueWritten(*this, std::move(previousValue));
    MarkDirty();
    Notify();
}

void Parameter::MarkComponentChanged(int component, double previousValue, double newValue) {
    EditRecorder::ComponentWritten(*this, component, previousValue, newValue);
    MarkDirty();
    Notify();
}

void Parameter::MarkDirty() {
    implementation->valueChanged = true;
    implementation->dataInvalid = true;
    if (Operator* op = GetOperator()) {
        Operator::Implementation& opImplementation = *Access::GetImplementation(*op);
        opImplementation.NoteParameterMarked(*this, HasParameterFlag(ParameterFlag::MarksOutdated));
        if (HasParameterFlag(ParameterFlag::Structural)) {
            opImplementation.MarkStructureDirty();
        }
    }
}

void Parameter::InvalidateData() {
    implementation->dataInvalid = true;
}

void Parameter::UpdateOperatorStructure() {
    Operator* op = GetOperator();
    if (op == nullptr || op->GetGraph() == nullptr || Operator::Implementation::IsRebuildingStructure()) {
        return;
    }
    Access::GetImplementation(*op)->UpdateStructureIfDirty();
}

void Parameter::Notify() {
    implementation->valueChangedEvent.Fire();
    if (HasParameterFlag(ParameterFlag::Structural)) {
        UpdateOperatorStructure();
    }
}

}  // namespace Vantel
