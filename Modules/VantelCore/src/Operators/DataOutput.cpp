#include <Vantel/Operators/DataOutput.h>

#include <algorithm>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Support/Logging.h>

#include "Projects/EditRecorder.h"

namespace Vantel {

bool DataOutput::Implementation::RemoveConnection(DataConnection connection) {
    const auto found = std::find(connections.begin(), connections.end(), connection);
    if (found == connections.end()) {
        return false;
    }
    connections.erase(found);
    return true;
}

DataOutput::DataOutput() : implementation(std::make_unique<Implementation>()) {}

DataOutput::DataOutput(Operator* op, std::string_view name) : DataOutput() {
    implementation->name = name;
    if (op != nullptr) {
        op->AddDataOutput(this);
    }
}

DataOutput::~DataOutput() {
    if (implementation->op != nullptr) {
        implementation->op->RemoveDataOutput(this);
    }
}

const ObjectType* DataOutput::Type() {
    static const ObjectType type("Vantel.DataOutput", Object::Type(), MakeFactory<DataOutput>());
    return &type;
}

const ObjectType* DataOutput::GetType() const {
    return Type();
}

const std::string& DataOutput::GetName() const {
    return implementation->name;
}

void DataOutput::SetName(std::string_view name) {
    if (name == implementation->name) {
        return;
    }
    EditRecorder::Renamed(*this, implementation->op, implementation->name, name);
    implementation->name = name;
    if (implementation->op != nullptr) {
        Access::GetImplementation(*implementation->op)->MemberRenamedEvent().Fire(this);
    }
}

Operator* DataOutput::GetOperator() {
    return implementation->op;
}

const Operator* DataOutput::GetOperator() const {
    return implementation->op;
}

Color DataOutput::GetUIColor() const {
    return implementation->uiColor;
}

void DataOutput::SetUIColor(Color color) {
    implementation->uiColor = color;
}

bool DataOutput::HasData() const {
    return implementation->data != nullptr;
}

bool DataOutput::HasDataChanged() const {
    return implementation->changed;
}

const std::shared_ptr<Data>& DataOutput::GetData() const {
    return implementation->data;
}

std::uint64_t DataOutput::GetDataSerial() const {
    return implementation->lastSerial;
}

bool DataOutput::IsAddedByUser() const {
    return implementation->addedByUser;
}

bool DataOutput::HasConnections() const {
    return !implementation->connections.empty();
}

const std::vector<DataConnection>& DataOutput::GetConnections() const {
    return implementation->connections;
}

void DataOutput::Activate(const std::shared_ptr<Data>& data) {
    const std::uint64_t serial = data ? data->GetSerial() : 0;
    if (serial == implementation->lastSerial) {
        return;
    }
    if (implementation->changed) {
        LogWarning("DataOutput '" + GetPath().ToString() +
                   "' is written more than once per frame, whichever write happens last wins.");
    }
    implementation->lastSerial = serial;
    implementation->data = data;
    implementation->changed = true;
    if (implementation->op != nullptr) {
        Access::GetImplementation(*implementation->op)->NoteMemberMarked();
    }
    implementation->activatedEvent.Fire();
}

void DataOutput::Clear() {
    Activate(nullptr);
}

Event<>& DataOutput::ActivatedEvent() {
    return implementation->activatedEvent;
}

Object* DataOutput::GetParentObjectImplementation() {
    return implementation->op;
}

}  // namespace Vantel
